#include "platform/files.h"
#include "platform/port_names.h"
#include "tests/support/limits.h"
#include "tests/support/temporary_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace fs = std::filesystem;

namespace {

const std::string text = "short", longText(20, 'l'), longest(40, 'x');

// Files in a folder.
std::ptrdiff_t count(const std::string& path) {
    return std::distance(fs::directory_iterator(path), {});
}

class ReplaceFile : public testing::Test {
protected:
    void file(const std::string& name, mode_t mode) {
        folder.write(name, longText);
        chmod(folder.file(name).c_str(), mode);
    }
    // The error text without the folder; empty on success. A failure changes nothing and leaves no
    // other file, and no descriptor stays open.
    std::string attempt(const std::string& contents, const std::string& name = "file") {
        const auto open = count("/proc/self/fd");
        const auto before = std::pair(folder.read(name), count(folder.path()));
        const auto write = [&] { platform::ReplaceFile(folder.file(name), contents); };
        const std::string error = errorOf(write);
        const auto after = std::pair(folder.read(name), count(folder.path()));
        EXPECT_EQ(after, error.empty() ? std::pair(contents, after.second) : before);
        EXPECT_EQ(count("/proc/self/fd"), open);
        return error.empty() ? "" : error.substr(folder.path().size() + 1);
    }

    TemporaryFolder folder;
};

std::string_view failing; // one of the calls below

} // namespace

// Replace the system's functions in the whole test program.
extern "C" int fsync(int) {
    return failing == "fsync" ? errno = EIO, -1 : 0;
}
extern "C" int rename(const char* from, const char* to) noexcept {
    return failing == "rename" ? errno = EIO, -1 : renameat(AT_FDCWD, from, AT_FDCWD, to);
}
extern "C" int close(int file) {
    const auto result = static_cast<int>(syscall(SYS_close, file));
    return failing == "close" ? errno = EIO, -1 : result;
}

TEST_F(ReplaceFile, ReportsACallThatFailsAndWhatIsNotAFile) {
    folder.write("file", longText);
    for (const std::string call : {"fsync", "rename", "close"}) {
        failing = call;
        EXPECT_EQ(attempt(text), std::string("file: the file cannot be ") +
                                     (call == "rename" ? "replaced" : "written") +
                                     ": Input/output error.");
        failing = "";
    }
    mknod(folder.file("socket").c_str(), S_IFSOCK | 0600, 0);
    fs::create_symlink("circle", folder.file("circle"));
    EXPECT_EQ(attempt(text, "socket"), "socket: it is not a regular file.");
    EXPECT_EQ(attempt(text, "circle"), "circle: too many levels of symbolic links.");
}

TEST_F(ReplaceFile, KeepsOwnerPermissionsAndLinks) {
    file("file", 0640);
    const bool owned = chown(folder.file("file").c_str(), 65534, 65534) == 0;
    chown(folder.path().c_str(), geteuid(), 65534);
    chmod(folder.path().c_str(), 02777);            // a new file gets the group of the folder
    fs::create_symlink("new", folder.file("link")); // to a file that does not exist yet
    umask(0002);
    EXPECT_EQ(attempt(text) + attempt(text, "link"), "");
    struct stat file{}, created{};
    stat(folder.file("file").c_str(), &file);
    stat(folder.file("new").c_str(), &created);
    EXPECT_EQ(std::tuple(file.st_mode, file.st_uid == 65534, file.st_gid, created.st_gid),
              std::tuple(S_IFREG | 0640, owned, owned ? 65534 : getegid(), file.st_gid));
    EXPECT_EQ(fs::status(folder.file("new")).permissions(), fs::perms(0664));
    EXPECT_EQ(count(folder.path()), 3);
}

// A disk full at any byte, for a write over the file and for a new file beside it.
TEST_F(ReplaceFile, WritesCompletelyOrNotAtAll) {
    const std::string noFile = "new: no file can be created in the folder " + folder.path();
    for (const mode_t folderMode : {0555, 0777}) {
        file("file", 0666);
        file("locked", 0444);
        chmod(folder.path().c_str(), folderMode);
        const OrdinaryUser user;
        for (rlim_t room = 0; room < 40; ++room) {
            const FullDisk disk(room);
            EXPECT_EQ(attempt(longest), "file: the file cannot be written: File too large.");
        }
        const FullDisk disk(40);
        EXPECT_EQ(attempt(longest) + attempt(text) + attempt(text, "new"),
                  folderMode == 0777 ? "" : noFile + ": Permission denied.");
        EXPECT_EQ(attempt(text, "locked"),
                  "locked: the file cannot be written: Permission denied.");
    }
}

TEST(PortNames, FollowTheTableButALinkOfThePortsOwnComesFirst) {
    const TemporaryFolder folder;
    std::string names;
    for (const int number : {0, 1, 4, 5, 12, 13, 16, 17}) {
        names += platform::PortName(number, folder.path()) + " ";
        fs::create_symlink(number == 4 ? "none" : "/", folder.file("com" + std::to_string(number)));
        names += platform::PortName(number, folder.path()) + " ";
    }
    EXPECT_EQ(names, "  /dev/ttyS0 / /dev/ttyS3 " + folder.file("com4") +
                         " /dev/ttyUSB0 / /dev/ttyUSB7 / /dev/ttyACM0 / /dev/ttyACM3 /   ");
}
