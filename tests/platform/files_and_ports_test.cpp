#include "platform/file_error.h"
#include "platform/files.h"
#include "platform/port_names.h"
#include "tests/support/limits.h"
#include "tests/support/temporary_folder.h"

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

const std::string shortText = "short", longText = "longer by some bytes";

class ReplaceFile : public testing::Test {
protected:
    ~ReplaceFile() override { mode("", 0777); } // or the folder could not be removed
    void mode(const std::string& name, mode_t mode) { chmod(folder.file(name).c_str(), mode); }
    // A writable file in a folder with this mode.
    void fileIn(mode_t folderMode) {
        folder.write("file", longText);
        mode("file", 0666);
        mode("", folderMode);
    }
    // The error text after the name of the file; empty on success. Expects that a failure leaves no
    // other file.
    std::string attempt(const std::string& contents, const std::string& name = "file") {
        const auto open = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
        const std::vector<std::string> before = folder.names();
        const auto openBefore = open();
        try {
            platform::ReplaceFile(folder.file(name), contents);
            EXPECT_EQ(open(), openBefore);
            return "";
        } catch (const platform::FileError& error) {
            EXPECT_EQ(folder.names(), before);
            EXPECT_EQ(open(), openBefore);
            const std::string text = error.what();
            EXPECT_TRUE(text.starts_with(folder.file(name) + ": ")) << text;
            return text.substr(folder.file(name).size() + 2);
        }
    }

    TemporaryFolder folder;
};

} // namespace

TEST_F(ReplaceFile, KeepsOwnerPermissionsAndLinks) {
    folder.write("file", longText);
    const bool owned = chown(folder.file("file").c_str(), 65534, 65534) == 0;
    mode("file", 0640);
    fs::create_symlink("new", folder.file("link")); // to a file that does not exist yet
    const mode_t mask = umask(0002);
    EXPECT_EQ(attempt(shortText), "");
    EXPECT_EQ(attempt(shortText, "link"), "");
    umask(mask);
    EXPECT_EQ(folder.read("file"), shortText);
    struct stat file{};
    stat(folder.file("file").c_str(), &file);
    EXPECT_EQ(file.st_mode, mode_t{S_IFREG | 0640});
    EXPECT_EQ(file.st_uid == 65534 && file.st_gid == 65534, owned);
    EXPECT_EQ(fs::status(folder.file("new")).permissions(), fs::perms(0664));
    EXPECT_EQ(folder.read("new"), shortText);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"file", "link", "new"}));
}

TEST_F(ReplaceFile, RejectsWhatIsNotAFileAtOnce) {
    mkfifo(folder.file("pipe").c_str(), 0600);
    fs::create_symlink("/dev/null", folder.file("device"));
    fs::create_directory(folder.file("folder"));
    for (const char* name : {"pipe", "device", "folder"})
        EXPECT_EQ(attempt(shortText, name), "it is not a regular file.") << name;
    fs::create_symlink("circle", folder.file("circle"));
    EXPECT_EQ(attempt(shortText, "circle"), "too many levels of symbolic links.");
    EXPECT_EQ(attempt(shortText, "none/file"), "no file can be created in the folder " +
                                                   folder.file("none") +
                                                   ": No such file or directory.");
}

TEST_F(ReplaceFile, InAFolderThatIsNotWritableOverwritesTheFile) {
    folder.write("locked", longText);
    mode("locked", 0444);
    fileIn(0555);
    const OrdinaryUser user;
    for (const std::string& contents : {shortText, longText}) {
        EXPECT_EQ(attempt(contents), "");
        EXPECT_EQ(folder.read("file"), contents);
    }
    EXPECT_EQ(attempt(shortText, "locked"), "the file cannot be written: Permission denied.");
    EXPECT_EQ(attempt(shortText, "new"),
              "no file can be created in the folder " + folder.path() + ": Permission denied.");
    EXPECT_EQ(folder.read("locked"), longText);
}

// In a sticky folder everybody may create a file, but only its owner may replace it.
TEST_F(ReplaceFile, ARenameThatFailsChangesNothing) {
    fileIn(01777);
    const bool owner = geteuid() != 0;
    const OrdinaryUser user;
    EXPECT_EQ(attempt(shortText),
              owner ? "" : "the file cannot be replaced: Operation not permitted.");
    EXPECT_EQ(folder.read("file"), owner ? shortText : longText);
}

// At every byte, for a new file beside the old one and for a write over it.
TEST_F(ReplaceFile, AFullDiskChangesNothing) {
    const std::string longest = longText + longText;
    for (const mode_t folderMode : {0777, 0555}) {
        fileIn(folderMode);
        const OrdinaryUser user;
        for (rlim_t room = 0; room < longest.size(); ++room) {
            const FullDisk disk(room);
            EXPECT_EQ(attempt(longest), "the file cannot be written: File too large.") << room;
            EXPECT_EQ(folder.read("file"), longText) << room;
        }
        const FullDisk disk(longest.size());
        EXPECT_EQ(attempt(longest), "");
        EXPECT_EQ(folder.read("file"), longest);
    }
}

TEST(PortNames, FollowTheTableButALinkOfThePortsOwnComesFirst) {
    const TemporaryFolder folder;
    for (const auto& [number, name] :
         {std::pair(1, "/dev/ttyS0"), std::pair(4, "/dev/ttyS3"), std::pair(5, "/dev/ttyUSB0"),
          std::pair(12, "/dev/ttyUSB7"), std::pair(13, "/dev/ttyACM0"),
          std::pair(16, "/dev/ttyACM3"), std::pair(-1, ""), std::pair(0, ""), std::pair(17, "")}) {
        const std::string link = "com" + std::to_string(number);
        EXPECT_EQ(platform::PortName(number, folder.path()), name);
        folder.write("device", "");
        fs::create_symlink("device", folder.file(link));
        const std::string target = fs::canonical(folder.file("device")).string();
        EXPECT_EQ(platform::PortName(number, folder.path()), *name ? target : "");
        folder.remove("device");
        EXPECT_EQ(platform::PortName(number, folder.path()), *name ? folder.file(link) : "");
    }
}
