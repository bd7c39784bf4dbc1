#include "platform/file_error.h"
#include "platform/files.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

// A temporary file beside its target; gone again unless it was renamed over it.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& target) : target_(target), name_(target + ".XXXXXX") {
        descriptor_ = mkstemp(name_.data());
        if (descriptor_ < 0)
            fail("cannot be written");
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (descriptor_ >= 0)
            close(descriptor_);
        if (!renamed_ && created())
            unlink(name_.c_str());
    }

    // Not every file system has permissions, and the contents count for more.
    void setPermissions(mode_t mode) {
        [[maybe_unused]] const int ignored = fchmod(descriptor_, mode);
    }

    void write(std::string_view contents) {
        while (!contents.empty()) {
            const ssize_t written = ::write(descriptor_, contents.data(), contents.size());
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                fail("cannot be written");
            contents.remove_prefix(static_cast<std::size_t>(written));
        }
    }

    void finish() {
        if (fsync(descriptor_) != 0)
            fail("cannot be written");
        const int descriptor = std::exchange(descriptor_, -1);
        if (close(descriptor) != 0)
            fail("cannot be written");
        if (rename(name_.c_str(), target_.c_str()) != 0)
            fail("cannot be replaced");
        renamed_ = true;
    }

private:
    [[noreturn]] void fail(const char* what) const {
        throw FileError(target_ + ": " + what + ": " + std::strerror(errno));
    }
    bool created() const { return !name_.ends_with("XXXXXX"); }

    std::string target_;
    std::string name_;
    int descriptor_ = -1;
    bool renamed_ = false;
};

// The file that a chain of symbolic links leads to, whether it exists or not.
std::filesystem::path linkedTarget(std::filesystem::path path) {
    constexpr int longestChain = 40;
    for (int links = 0; links < longestChain && std::filesystem::is_symlink(path); ++links)
        path = path.parent_path() / std::filesystem::read_symlink(path);
    return path;
}

// The permissions that the new file gets: the old one's, or ordinary ones. What must not be written
// is not replaced, though renaming over it would work.
mode_t permissionsFor(const std::string& target) {
    constexpr mode_t all = 07777;
    constexpr mode_t ordinary = 0644;
    struct stat old {};
    if (stat(target.c_str(), &old) != 0)
        return ordinary;
    if (access(target.c_str(), W_OK) != 0)
        throw FileError(target + ": cannot be written: " + std::strerror(errno));
    return old.st_mode & all;
}

// The rename itself lasts only when the directory has reached the disk. Not every file system can
// do that, and the file is whole either way, so a failure is no failure of the replacement.
void syncDirectory(const std::filesystem::path& directory) {
    const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY);
    if (descriptor < 0)
        return;
    fsync(descriptor);
    close(descriptor);
}

} // namespace

void ReplaceFile(const std::string& path, std::string_view contents) {
    const std::filesystem::path target = linkedTarget(path);
    RefuseSpecialFile(target.string());
    const mode_t permissions = permissionsFor(target.string());
    TemporaryFile file(target.string());
    file.setPermissions(permissions);
    file.write(contents);
    file.finish();
    const std::filesystem::path directory = target.parent_path();
    syncDirectory(directory.empty() ? "." : directory);
}

} // namespace platform
