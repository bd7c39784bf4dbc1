#include "platform/qt/qt_machine.h"
#include "tests/windows/pty_box.h"

#include <algorithm>
#include <ctime>
#include <gtest/gtest.h>
#include <numeric>

namespace {

class SerialPort : public testing::Test {
protected:
    SerialPort() {
        port.setSettings("57600,N,8,1");
        port.Open();
    }
    // Yields until `bytes` wait on the port, for at most a second.
    void waitFor(int bytes) {
        QtTimer limit;
        bool over = false;
        limit.Tick = [&] { over = true; };
        limit.setInterval(1000);
        limit.setEnabled(true);
        while (!over && port.InBufferCount() < bytes)
            QtEventQueue().Yield();
    }

    Pty pty;
    QtSerialPort port{[this](int) { return pty.name(); }};
};

} // namespace

TEST_F(SerialPort, PassesEveryByteValueBothWays) {
    Bytes all(256);
    std::iota(all.begin(), all.end(), std::uint8_t{0});
    port.Output(all); // in the terminal at once, without an event
    EXPECT_EQ(pty.read(), all);

    Bytes twice = all;
    twice.insert(twice.end(), all.rbegin(), all.rend());
    pty.write(all);
    waitFor(256);
    pty.write({all.rbegin(), all.rend()}); // still in the system's queue, and counted
    EXPECT_EQ(port.InBufferCount(), 512);
    EXPECT_EQ(port.Input(), twice);
    EXPECT_EQ(port.InBufferCount(), 0);
    EXPECT_TRUE(port.Input().empty());
}

TEST_F(SerialPort, DropsWhatWasQueuedWhenClosedAndOpensAgain) {
    pty.write({1, 2, 3});
    waitFor(3);
    port.Close();
    EXPECT_FALSE(port.PortOpen());
    EXPECT_EQ(port.InBufferCount(), 0);
    port.Output({1}); // nothing happens on a closed port
    port.Open();
    EXPECT_EQ(port.InBufferCount(), 0);
    pty.write({4});
    waitFor(1);
    EXPECT_EQ(port.Input(), Bytes{4});
}

TEST_F(SerialPort, KeepsMoreThanItsOwnBufferHolds) {
    const Bytes block(1000, 0xA5);
    for (int i = 0; i < 3; ++i) {
        pty.write(block);
        waitFor(1000 * (i + 1));
    }
    EXPECT_EQ(port.InBufferCount(), 3000);
    EXPECT_EQ(port.Input(), Bytes(3000, 0xA5));
}

TEST_F(SerialPort, AHungUpLineGivesNothingAndCostsNothing) {
    pty.hangUp();
    const std::clock_t before = std::clock();
    waitFor(1); // a second
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 2) << "the dead line is still listened to";
    EXPECT_FALSE(port.PortOpen());
    EXPECT_EQ(port.InBufferCount(), 0);
    EXPECT_TRUE(port.Input().empty());
    port.Output({1, 2, 3});
    EXPECT_THROW(port.Open(), platform::PortError);
}

TEST_F(SerialPort, AFailedOpeningNamesThePortAndTheCause) {
    QtSerialPort none([](int) { return std::string("/dev/no-such-port"); });
    none.setSettings("57600,N,8,1");
    try {
        none.Open();
        ADD_FAILURE();
    } catch (const platform::PortError& error) {
        EXPECT_EQ(std::string(error.what()), "/dev/no-such-port: No such file or directory");
    }
    EXPECT_FALSE(none.PortOpen());
    QtSerialPort noNumber([](int) { return std::string(); });
    EXPECT_THROW(noNumber.Open(), platform::PortError);
}
