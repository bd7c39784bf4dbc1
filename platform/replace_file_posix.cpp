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

    void setPermissions(mode_t mode) {
        if (fchmod(descriptor_, mode) != 0)
            fail("cannot be given its permissions");
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

// The permissions that the new file gets: the old one's, or ordinary ones. What must not be written
// or is no ordinary file is not replaced, though renaming over it would work.
mode_t permissionsFor(const std::string& target) {
    constexpr mode_t all = 07777;
    constexpr mode_t ordinary = 0644;
    struct stat old {};
    if (stat(target.c_str(), &old) != 0)
        return ordinary;
    if (!S_ISREG(old.st_mode))
        throw FileError(target + ": cannot be replaced: it is no ordinary file");
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
    std::error_code none;
    std::filesystem::path target = std::filesystem::canonical(path, none);
    if (none)
        target = path;

    const mode_t permissions = permissionsFor(target.string());
    TemporaryFile file(target.string());
    file.setPermissions(permissions);
    file.write(contents);
    file.finish();
    const std::filesystem::path directory = target.parent_path();
    syncDirectory(directory.empty() ? "." : directory);
}

} // namespace platform
