#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

// A folder for one test, removed with this object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "quorven-XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    void write(const std::string& name, const std::string& contents) const {
        std::filesystem::create_directories(std::filesystem::path(file(name)).parent_path());
        std::ofstream(file(name), std::ios::binary) << contents;
    }
    void remove(const std::string& name) const { std::filesystem::remove(file(name)); }
    std::string read(const std::string& name) const { return readFile(file(name)); }
    std::vector<std::string> names() const {
        std::set<std::string> sorted;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            sorted.insert(entry.path().filename().string());
        return {sorted.begin(), sorted.end()};
    }

    static std::string readFile(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

private:
    std::string path_;
};
