// Includes <filesystem>, <set> and <string> for its users.
#pragma once

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

// A folder for one test, removed with this object.
class TemporaryFolder {
public:
    TemporaryFolder() { path_ = mkdtemp(path_.data()); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    void write(const std::string& name, const std::string& contents) const {
        std::ofstream(file(name), std::ios::binary) << contents;
    }
    void remove(const std::string& name) const { std::filesystem::remove(file(name)); }
    std::string read(const std::string& name) const { return readFile(file(name)); }
    std::set<std::string> names() const {
        std::set<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            all.insert(entry.path().filename().string());
        return all;
    }
    static std::string readFile(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

private:
    std::string path_ = (std::filesystem::temp_directory_path() / "quorven-XXXXXX").string();
};
