#include "platform/file_error.h"
#include "platform/files.h"

#include <atomic>
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
// For fchown(): keeps the owner or the group that the system gave to the new file.
constexpr auto asCreated = static_cast<uid_t>(-1);

std::filesystem::path folderOf(const std::filesystem::path& file) {
    return file.has_parent_path() ? file.parent_path() : ".";
}

// The name of the current temporary file, for RemoveTemporaryFile. Empty or null means that there
// is no temporary file.
std::atomic<const char*> temporaryName = nullptr;

// The file that receives the new contents. This is a temporary file in the folder of the target or,
// if no file can be created there, the target itself. The temporary file is removed unless it has
// been renamed over the target.
class Replacement {
public:
    explicit Replacement(const std::filesystem::path& target)
        : target_(target.string()), name_((target.parent_path() / shortName).string()) {
        temporaryName = name_.c_str(); // set first: a signal may arrive before mkstemp() returns
        descriptor_ = mkstemp(name_.data());
        if (descriptor_ >= 0)
            return;
        const int cause = errno;
        name_.clear();
        descriptor_ = open(target_.c_str(), O_WRONLY);
        errno = cause;
        temporaryName = nullptr;
        if (descriptor_ < 0)
            fail("no file can be created in the folder " + folderOf(target).string());
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (descriptor_ >= 0)
            close(descriptor_);
        if (!name_.empty())
            unlink(name_.c_str());
        temporaryName = nullptr;
    }

    // Failures are ignored: not every file system has owners and permissions, and the contents
    // matter more than these.
    void takeOver(const FileRights& rights) {
        if (inPlace())
            return;
        [[maybe_unused]] int ignored = 0;
        if (fchown(descriptor_, rights.owner, rights.group) != 0) // only root can give files away
            ignored = fchown(descriptor_, asCreated, rights.group);
        ignored = fchmod(descriptor_, rights.mode);
    }

    void write(std::string_view contents) {
        const auto length = static_cast<off_t>(contents.size());
        if (inPlace())
            takeRoom(length);
        while (!contents.empty()) {
            const ssize_t written = ::write(descriptor_, contents.data(), contents.size());
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                fail(cannotBeWritten);
            contents.remove_prefix(static_cast<std::size_t>(written));
        }
        if (fsync(descriptor_) != 0 || (inPlace() && ftruncate(descriptor_, length) != 0))
            fail(cannotBeWritten);
    }

    void finish() {
        if (close(std::exchange(descriptor_, -1)) != 0)
            fail(cannotBeWritten);
        if (inPlace())
            return;
        if (rename(name_.c_str(), target_.c_str()) != 0)
            fail("the file cannot be replaced");
        name_.clear();
    }

private:
    // This is not the target's name with a suffix, because that could exceed the length limit.
    static constexpr char shortName[] = ".quorven.XXXXXX";
    static constexpr char cannotBeWritten[] = "the file cannot be written";

    bool inPlace() const { return name_.empty(); }

    // Reserves the space before the first byte is overwritten, so that a full disk leaves the old
    // contents intact.
    void takeRoom(off_t length) {
        struct stat old{};
        if (fstat(descriptor_, &old) != 0)
            fail(cannotBeWritten);
        errno = posix_fallocate(descriptor_, 0, length);
        if (errno != ENOSPC && errno != EDQUOT && errno != EFBIG)
            return; // there is space, or the file system cannot reserve it
        const int cause = errno;
        [[maybe_unused]] const int ignored = ftruncate(descriptor_, old.st_size);
        errno = cause;
        fail(cannotBeWritten);
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw FileError(target_ + ": " + what + ": " + std::strerror(errno) + ".");
    }

    std::string target_;
    std::string name_; // of the temporary file; empty if there is none or it has been renamed
    int descriptor_ = -1;
};

// The file that a chain of symbolic links leads to; the file need not exist.
std::filesystem::path linkedTarget(std::filesystem::path path) {
    constexpr int maxLinks = 40;
    std::error_code none;
    for (int links = 0; std::filesystem::is_symlink(path, none); ++links) {
        if (links == maxLinks)
            throw FileError(path.string() + ": too many levels of symbolic links.");
        path = path.parent_path() / std::filesystem::read_symlink(path, none);
    }
    return path;
}

// Owner and permissions for the new file: those of the old file if it exists, otherwise the
// defaults. An old file without write permission is rejected, although the rename would succeed.
FileRights rightsFor(const std::string& target) {
    constexpr mode_t permissionBits = 07777;
    struct stat old{};
    if (stat(target.c_str(), &old) != 0) {
        const mode_t mask = umask(0); // the mask can only be read by setting it
        umask(mask);
        return {0666 & ~mask, asCreated, asCreated};
    }
    if (access(target.c_str(), W_OK) != 0)
        throw FileError(target + ": the file cannot be written: " + std::strerror(errno) + ".");
    return {old.st_mode & permissionBits, old.st_uid, old.st_gid};
}

// Makes the rename durable. Failures are ignored: not every file system supports this, and the file
// is complete either way.
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
    RejectSpecialFile(path);
    const FileRights rights = rightsFor(target.string());
    Replacement file(target);
    file.takeOver(rights);
    file.write(contents);
    file.finish();
    syncDirectory(folderOf(target));
}

void RemoveTemporaryFile() {
    if (const char* const name = temporaryName)
        unlink(name);
}

} // namespace platform
