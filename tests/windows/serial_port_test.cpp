// The serial port on real pseudo-terminals.
#include "platform/qt/qt_machine.h"
#include "tests/support/limits.h"
#include "tests/support/temporary_folder.h"

#include <QCoreApplication>

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <numeric>
#include <poll.h>
#include <pty.h>
#include <regex>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>

namespace {

// A pseudo-terminal: the program opens its name, the test has the other end.
struct Line : testing::Test {
    Line() {
        termios raw{};
        cfmakeraw(&raw);
        openpty(&master, &held, nullptr, &raw, nullptr);
        name = ttyname(held);
        close(held);
        port.setSettings("57600,N,8,1");
        port.setCommPort(3);
    }
    ~Line() override { close(master); }
    void send(const Bytes& bytes) const {
        EXPECT_EQ(::write(master, bytes.data(), bytes.size()), ssize_t(bytes.size()));
    }
    Bytes sent() const {
        Bytes bytes(4096);
        pollfd arrived{master, POLLIN, 0};
        const bool some = poll(&arrived, 1, 500) > 0 && arrived.revents & POLLIN;
        bytes.resize(some ? std::size_t(::read(master, bytes.data(), 4096)) : 0);
        return bytes;
    }
    // The error text of opening, without the port's name; "opened" on success.
    std::string cause(const std::string& path) {
        try {
            QtSerialPort([&](int) { return path; }).Open();
            return "opened";
        } catch (const platform::PortError& error) {
            EXPECT_EQ(std::string(error.what()).find(path + ": "), 0U);
            return error.what() + path.size() + 2;
        }
    }

    int master = -1, held = -1;
    std::string name;
    QtSerialPort port{[this](int number) { return number == 3 ? name : std::string(); }};
};

} // namespace

TEST_F(Line, PassesEveryByteBothWaysAt57600Baud) {
    port.Open();
    termios line{};
    tcgetattr(master, &line);
    EXPECT_EQ(cfgetospeed(&line), speed_t{B57600});
    EXPECT_EQ(line.c_cflag & (CSIZE | CSTOPB | PARENB | CRTSCTS), tcflag_t{CS8});
    Bytes all(256), more(3000, 0x55);
    std::iota(all.begin(), all.end(), std::uint8_t{0});
    port.Output(all); // written at once, without an event
    EXPECT_EQ(sent(), all);
    send(all);
    while (port.InBufferCount() < 256)
        QtEventQueue().Yield();
    send(more); // counted while still in the system's queue
    for (int i = 0; i < 1000 && port.InBufferCount() < 3256; ++i)
        usleep(1000); // without an event
    all.insert(all.end(), more.begin(), more.end());
    EXPECT_EQ(port.Input(), all);
    EXPECT_EQ(port.InBufferCount(), 0);
    send({1, 2, 3});
    while (port.InBufferCount() < 3)
        QtEventQueue().Yield();
    port.Close(); // discards queued bytes
    port.Output({1});
    EXPECT_EQ(port.InBufferCount() + int(port.PortOpen()) + int(sent().size()), 0);
}

// A dead line that still has a notifier wakes every Yield.
struct HungUp : Line, testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(WithBytesWaiting, HungUp, testing::Values(0, 100));
TEST_P(HungUp, LineIsClosed) {
    QtTimer limit;
    bool over = false;
    limit.Tick = [&] { over = true; };
    limit.setInterval(100);
    port.Open();
    send(Bytes(std::size_t(GetParam()), 0x55));
    while (port.InBufferCount() < GetParam())
        QtEventQueue().Yield();
    close(std::exchange(master, -1));
    limit.setEnabled(true);
    int yields = 0;
    for (; !over; ++yields)
        QtEventQueue().Yield();
    EXPECT_LT(yields, 20) << "the dead line still wakes the event queue";
    EXPECT_FALSE(port.PortOpen());
    EXPECT_EQ(port.InBufferCount() + int(port.Input().size()), 0);
}

TEST_F(Line, FailuresToOpenAreToldApart) {
    port.setCommPort(4);
    EXPECT_THROW(port.Open(), platform::PortError);
    EXPECT_EQ(cause("/dev/none"), "there is no such device. Is the programmer plugged in?");
    EXPECT_EQ(cause("/dev/zero"), "it is not a serial port.");
    EXPECT_EQ(cause("/etc/passwd"), "it is not a serial port.");
    chmod(name.c_str(), 0);
    const OrdinaryUser user;
    EXPECT_EQ(cause(name).find("you may not use it. It belongs to the group \""), 0U);
    ASSERT_EQ(openpty(&master, &held, nullptr, nullptr, nullptr), 0);
    ioctl(held, TIOCEXCL);
    EXPECT_EQ(cause(ttyname(held)), "another program is using it.");
}

namespace {

struct LockRow {
    const char* name;
    std::string contents;
    const char* cause; // a part of it
};
struct LockFile : Line, testing::WithParamInterface<LockRow> {};

const std::string parent = std::to_string(getppid());
const std::string command = TemporaryFolder::readFile("/proc/" + parent + "/comm");

constexpr char isHeld[] = " has locked it with",
               isStrange[] = " is not a small regular file. Remove it.";
constexpr char isNew[] = " names no running program. Remove it.";
const LockRow lockRows[] = {
    {"Number", "      " + parent + "\n", isHeld},
    {"NumberAndName", "  " + parent + " " + command, isHeld},
    {"NumberAboveName", parent + "\n" + command + "host\n", isHeld},
    {"NumberGivenAway", "  " + parent + " minicom root\n", "opened"},
    {"NumberOfTheDead", "99999999\n", "opened"},
    {"OwnNumber", std::to_string(getpid()) + "\n", "opened"},
    {"Zero", "         0\n", isNew},
    {"Empty", "", isNew},
    {"Large", std::string(1025, ' '), isStrange},
    {"Pipe", "pipe", isStrange},
};

} // namespace

INSTANTIATE_TEST_SUITE_P(, LockFile, testing::ValuesIn(lockRows),
                         [](auto& row) { return row.param.name; });
TEST_P(LockFile, BarsThePortOrNot) {
    const std::string file =
        "/var/lock/LCK.." + std::regex_replace(name.substr(5), std::regex("/"), "_");
    std::filesystem::remove(file); // left by an aborted test run
    GetParam().contents == "pipe" ? void(mkfifo(file.c_str(), 0600))
                                  : void(std::ofstream(file) << GetParam().contents);
    const std::string said = cause(name);
    EXPECT_NE(said.find(GetParam().cause), std::string::npos) << said;
    EXPECT_TRUE(said == "opened" || said.find("lock file " + file) != std::string::npos) << said;
    std::filesystem::remove(file);
}
