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

struct FileRights {
    mode_t mode;
    uid_t owner;
    gid_t group;
};

// A temporary file beside its target; gone again unless it was renamed over it.
class TemporaryFile {
public:
    // Its name is short: the target's may be as long as names can be.
    explicit TemporaryFile(const std::filesystem::path& target)
        : target_(target.string()), name_((target.parent_path() / ".quorven.XXXXXX").string()) {
        descriptor_ = mkstemp(name_.data());
        if (descriptor_ < 0)
            fail("cannot be written");
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (descriptor_ >= 0)
            close(descriptor_);
        if (!renamed_)
            unlink(name_.c_str());
    }

    // Not every file system has owners and permissions, and the contents count for more.
    void takeOver(const FileRights& rights) {
        [[maybe_unused]] int ignored = fchown(descriptor_, rights.owner, rights.group);
        ignored = fchmod(descriptor_, rights.mode);
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

    std::string target_;
    std::string name_;
    int descriptor_ = -1;
    bool renamed_ = false;
};

// The file that a chain of symbolic links leads to, whether it exists or not.
std::filesystem::path linkedTarget(std::filesystem::path path) {
    constexpr int longestChain = 40;
    std::error_code none;
    for (int links = 0; std::filesystem::is_symlink(path, none); ++links) {
        if (links == longestChain)
            throw FileError(path.string() + ": is a link that leads nowhere");
        path = path.parent_path() / std::filesystem::read_symlink(path, none);
    }
    return path;
}

// What the new file gets: the old one's, or what any new file gets. What must not be written is not
// replaced, though renaming over it would work.
FileRights rightsFor(const std::string& target) {
    constexpr mode_t permissionBits = 07777;
    struct stat old {};
    if (stat(target.c_str(), &old) != 0) {
        const mode_t mask = umask(0); // the only way to ask for it
        umask(mask);
        return {0666 & ~mask, geteuid(), getegid()};
    }
    if (access(target.c_str(), W_OK) != 0)
        throw FileError(target + ": cannot be written: " + std::strerror(errno));
    return {old.st_mode & permissionBits, old.st_uid, old.st_gid};
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
    const FileRights rights = rightsFor(target.string());
    TemporaryFile file(target);
    file.takeOver(rights);
    file.write(contents);
    file.finish();
    const std::filesystem::path directory = target.parent_path();
    syncDirectory(directory.empty() ? "." : directory);
}

} // namespace platform
