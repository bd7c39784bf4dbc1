#include "platform/qt/qt_machine.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <numeric>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace {

// The two ends of a pseudo-terminal in raw mode. The program gets the name, the test the other end.
class Pty {
public:
    Pty() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        grantpt(master_);
        unlockpt(master_);
        termios raw{};
        tcgetattr(master_, &raw);
        cfmakeraw(&raw);
        tcsetattr(master_, TCSANOW, &raw);
    }
    ~Pty() { hangUp(); }
    void hangUp() { close(std::exchange(master_, -1)); }
    std::string name() const { return ptsname(master_); }
    void write(const Bytes& bytes) const {
        EXPECT_EQ(::write(master_, bytes.data(), bytes.size()), ssize_t(bytes.size()));
    }
    Bytes read() const {
        Bytes bytes(4096);
        bytes.resize(std::size_t(std::max<ssize_t>(::read(master_, bytes.data(), 4096), 0)));
        return bytes;
    }

private:
    int master_;
};

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
        for (; !over && port.InBufferCount() < bytes; ++yields)
            QtEventQueue().Yield();
    }

    int yields = 0;
    Pty pty;
    QtSerialPort port{[name = pty.name()](int) { return name; }};
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
    pty.write({all.rbegin(), all.rend()}); // counted while still in the system's queue
    for (int i = 0; i < 1000 && port.InBufferCount() < 512; ++i)
        usleep(1000); // without an event
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

TEST_F(SerialPort, AHungUpLineGivesNothingAndCostsNothing) {
    pty.hangUp();
    waitFor(1); // a second
    EXPECT_LT(yields, 100) << "the dead line is still listened to";
    EXPECT_FALSE(port.PortOpen());
    EXPECT_EQ(port.InBufferCount(), 0);
    EXPECT_TRUE(port.Input().empty());
    port.Output({1, 2, 3});
}

TEST_F(SerialPort, AFailedOpeningNamesThePortAndTheCause) {
    for (const auto& [name, cause] :
         {std::pair("/dev/no-such-port", "there is no such device. Is the box plugged in?"),
          std::pair("/dev/zero", "it is no serial port."),
          std::pair("/etc/passwd", "it is no serial port.")}) {
        QtSerialPort none([name = name](int) { return name; });
        try {
            none.Open();
            ADD_FAILURE();
        } catch (const platform::PortError& error) {
            EXPECT_EQ(std::string(error.what()), std::string(name) + ": " + cause);
        }
        EXPECT_FALSE(none.PortOpen());
    }
    EXPECT_THROW(QtSerialPort([](int) { return ""; }).Open(), platform::PortError);
}
