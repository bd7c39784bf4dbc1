#include "platform/port_names.h"

#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

using platform::PortName;

TEST(PortNames, FollowTheFixedTable) {
    const TemporaryFolder folder;
    EXPECT_EQ(PortName(1, folder.path()), "/dev/ttyS0");
    EXPECT_EQ(PortName(4, folder.path()), "/dev/ttyS3");
    EXPECT_EQ(PortName(5, folder.path()), "/dev/ttyUSB0");
    EXPECT_EQ(PortName(12, folder.path()), "/dev/ttyUSB7");
    EXPECT_EQ(PortName(13, folder.path()), "/dev/ttyACM0");
    EXPECT_EQ(PortName(16, folder.path()), "/dev/ttyACM3");
}

TEST(PortNames, AnOwnLinkComesFirstEvenWhenItLeadsNowhere) {
    const TemporaryFolder folder;
    folder.write("device", "");
    std::filesystem::create_symlink("device", folder.file("com5"));
    EXPECT_EQ(PortName(5, folder.path()),
              std::filesystem::canonical(folder.file("device")).string());
    folder.remove("device");
    EXPECT_EQ(PortName(5, folder.path()), folder.file("com5"));
}

TEST(PortNames, OutsideOneToSixteenThereIsNoPortNotEvenByALink) {
    const TemporaryFolder folder;
    for (const int none : {-1, 0, 17}) {
        folder.write("com" + std::to_string(none), "");
        EXPECT_EQ(PortName(none, folder.path()), "") << none;
    }
}
