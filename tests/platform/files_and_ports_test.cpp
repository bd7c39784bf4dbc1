#include "platform/file_error.h"
#include "platform/files.h"
#include "platform/port_names.h"
#include "tests/support/limits.h"
#include "tests/support/temporary_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace fs = std::filesystem;

namespace {

const std::string shortText = "short", longText = "longer by some bytes";

class ReplaceFile : public testing::Test {
protected:
    ~ReplaceFile() override { chmod(folder.path().c_str(), 0777); } // for its removal
    void file(const std::string& name, mode_t mode) {
        folder.write(name, longText);
        chmod(folder.file(name).c_str(), mode);
    }
    // The error text after the name of the file; empty on success. A failure changes nothing and
    // leaves no other file, and no descriptor stays open.
    std::string attempt(const std::string& contents, const std::string& name = "file") {
        const auto open = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
        const auto before = std::tuple(folder.read(name), folder.names(), open());
        const std::string start = folder.file(name) + ": ";
        std::string text = start;
        try {
            platform::ReplaceFile(folder.file(name), contents);
            EXPECT_EQ(folder.read(name), contents);
            EXPECT_EQ(open(), std::get<2>(before));
        } catch (const platform::FileError& error) {
            EXPECT_EQ(std::tuple(folder.read(name), folder.names(), open()), before);
            text = error.what();
        }
        EXPECT_TRUE(text.starts_with(start)) << text;
        return text.substr(start.size());
    }

    TemporaryFolder folder;
};

std::string_view failing; // one of the calls below

} // namespace

// In place of the system's, for everything in this program.
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

TEST_F(ReplaceFile, ReportsACallThatFails) {
    file("file", 0666);
    for (const char* call : {"fsync", "rename", "close"}) {
        failing = call;
        EXPECT_EQ(attempt(shortText), failing == "rename"
                                          ? "the file cannot be replaced: Input/output error."
                                          : "the file cannot be written: Input/output error.");
        failing = "";
    }
}

TEST_F(ReplaceFile, KeepsOwnerPermissionsAndLinks) {
    file("file", 0640);
    const bool owned = chown(folder.file("file").c_str(), 65534, 65534) == 0;
    fs::create_symlink("new", folder.file("link")); // to a file that does not exist yet
    const mode_t mask = umask(0002);
    EXPECT_EQ(attempt(shortText) + attempt(shortText, "link"), "");
    umask(mask);
    struct stat file{};
    stat(folder.file("file").c_str(), &file);
    EXPECT_EQ(file.st_mode, mode_t{S_IFREG | 0640});
    EXPECT_EQ(file.st_uid == 65534 && file.st_gid == 65534, owned);
    EXPECT_EQ(fs::status(folder.file("new")).permissions(), fs::perms(0664));
    EXPECT_EQ(folder.names(), (std::set<std::string>{"file", "link", "new"}));
}

TEST_F(ReplaceFile, RejectsWhatIsNotAFile) {
    mknod(folder.file("socket").c_str(), S_IFSOCK | 0600, 0);
    fs::create_symlink("circle", folder.file("circle"));
    EXPECT_EQ(attempt(shortText, "socket"), "it is not a regular file.");
    EXPECT_EQ(attempt(shortText, "circle"), "too many levels of symbolic links.");
}

// A disk full at any byte, for a write over the file and for a new file beside it.
TEST_F(ReplaceFile, WritesCompletelyOrNotAtAll) {
    const std::string longest = longText + longText;
    for (const mode_t folderMode : {0555, 0777}) {
        file("file", 0666);
        file("locked", 0444);
        chmod(folder.path().c_str(), folderMode);
        const OrdinaryUser user;
        for (rlim_t room = 0; room < longest.size(); ++room) {
            const FullDisk disk(room);
            EXPECT_EQ(attempt(longest), "the file cannot be written: File too large.") << room;
        }
        const FullDisk disk(longest.size());
        EXPECT_EQ(attempt(longest) + attempt(shortText), "");
        EXPECT_EQ(attempt(shortText, "locked"), "the file cannot be written: Permission denied.");
        EXPECT_EQ(attempt(shortText, "new"), folderMode == 0555
                                                 ? "no file can be created in the folder " +
                                                       folder.path() + ": Permission denied."
                                                 : "");
    }
}

TEST(PortNames, FollowTheTableButALinkOfThePortsOwnComesFirst) {
    const TemporaryFolder folder;
    for (const auto& [number, name] :
         {std::pair(1, "/dev/ttyS0"), std::pair(4, "/dev/ttyS3"), std::pair(5, "/dev/ttyUSB0"),
          std::pair(12, "/dev/ttyUSB7"), std::pair(13, "/dev/ttyACM0"),
          std::pair(16, "/dev/ttyACM3"), std::pair(0, ""), std::pair(17, "")}) {
        EXPECT_EQ(platform::PortName(number, folder.path()), name);
        fs::create_symlink("/", folder.file("com" + std::to_string(number)));
        EXPECT_EQ(platform::PortName(number, folder.path()), *name ? "/" : "");
    }
    fs::create_symlink("nowhere", folder.file("com2"));
    EXPECT_EQ(platform::PortName(2, folder.path()), folder.file("com2"));
}
