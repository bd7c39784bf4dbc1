// A folder for the files of a test, and the errors of its file operations. Includes <filesystem>
// and <string> for its users.
#pragma once

#include "platform/file_error.h"

#include <filesystem>
#include <fstream>
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
    std::string read(const std::string& name) const { return readFile(file(name)); }
    static std::string readFile(const std::string& path) {
        return {std::istreambuf_iterator(std::ifstream(path, std::ios::binary).rdbuf()), {}};
    }

private:
    std::string path_ = (std::filesystem::temp_directory_path() / "quorven-XXXXXX").string();
};

// The text of the FileError that `command` throws; empty if there is none.
inline std::string errorOf(const auto& command) {
    try {
        command();
    } catch (const platform::FileError& error) {
        return error.what();
    }
    return "";
}
