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

    void takePermissionsOf(const std::string& path) {
        struct stat old {};
        constexpr mode_t ordinary = 0644;
        const mode_t mode = stat(path.c_str(), &old) == 0 ? old.st_mode & 07777 : ordinary;
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

    TemporaryFile file(target.string());
    file.takePermissionsOf(target.string());
    file.write(contents);
    file.finish();
    const std::filesystem::path directory = target.parent_path();
    syncDirectory(directory.empty() ? "." : directory);
}

} // namespace platform
