#include "platform/qt/qt_machine.h"
#include "tests/support/limits.h"
#include "tests/support/table_file.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <numeric>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
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
    termios settings() const {
        termios line{};
        tcgetattr(master_, &line);
        return line;
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
    // Yields until `bytes` wait on the port, for at most `limitMs`.
    void waitFor(int bytes, int limitMs = 1000) {
        QtTimer limit;
        bool over = false;
        limit.Tick = [&] { over = true; };
        limit.setInterval(limitMs);
        limit.setEnabled(true);
        for (; !over && port.InBufferCount() < bytes; ++yields)
            QtEventQueue().Yield();
    }

    int yields = 0;
    Pty pty;
    QtSerialPort port{[name = pty.name()](int) { return name; }};
};

} // namespace

TEST_F(SerialPort, OpensAt57600BaudWithEightBitsAndNoParity) {
    const termios line = pty.settings();
    EXPECT_EQ(cfgetispeed(&line), speed_t{B57600});
    EXPECT_EQ(cfgetospeed(&line), speed_t{B57600});
    EXPECT_EQ(line.c_cflag & (CSIZE | CSTOPB | PARENB | CRTSCTS), tcflag_t{CS8});
    EXPECT_EQ(line.c_iflag & (IXON | IXOFF | ISTRIP | ICRNL), tcflag_t{0});
}

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

// A dead line that still has a notifier wakes every Yield. The numbers are bytes of a reply that
// have arrived before.
TEST_F(SerialPort, AHungUpLineIsClosedAtRestAndInsideAReply) {
    for (const int arrived : {0, 100}) {
        SCOPED_TRACE(arrived);
        Pty line;
        QtSerialPort hungUp([&](int) { return line.name(); });
        hungUp.Open();
        line.write(Bytes(std::size_t(arrived), 0x55));
        while (hungUp.InBufferCount() < arrived)
            QtEventQueue().Yield();
        line.hangUp();
        yields = 0;
        waitFor(260, 100); // on the other port, which is silent
        EXPECT_LT(yields, 20) << "the dead line still wakes the event queue";
        EXPECT_FALSE(hungUp.PortOpen());
        EXPECT_EQ(hungUp.InBufferCount(), 0);
        EXPECT_TRUE(hungUp.Input().empty());
        hungUp.Output({1, 2, 3});
    }
}

namespace {

// What opening the port says, without the port's name in front.
std::string causeOf(const std::string& name) {
    QtSerialPort port([name](int) { return name; });
    port.setSettings("57600,N,8,1");
    try {
        port.Open();
    } catch (const platform::PortError& error) {
        EXPECT_FALSE(port.PortOpen());
        EXPECT_TRUE(std::string(error.what()).starts_with(name + ": ")) << error.what();
        return std::string(error.what()).substr(name.size() + 2);
    }
    return "opened";
}

} // namespace

TEST(SerialPortFailures, AreToldApart) {
    EXPECT_EQ(causeOf("/dev/no-such-port"),
              "there is no such device. Is the programmer plugged in?");
    EXPECT_EQ(causeOf("/dev/zero"), "it is not a serial port.");
    EXPECT_EQ(causeOf("/etc/passwd"), "it is not a serial port.");
    EXPECT_THROW(QtSerialPort([](int) { return ""; }).Open(), platform::PortError);

    const Pty pty, barred;
    chmod(barred.name().c_str(), 0);
    chmod(pty.name().c_str(), 0666);
    const OrdinaryUser user;
    EXPECT_TRUE(
        causeOf(barred.name()).starts_with("you may not use it. It belongs to the group \""));
    const int held = open(pty.name().c_str(), O_RDWR | O_NOCTTY);
    ioctl(held, TIOCEXCL);
    EXPECT_EQ(causeOf(pty.name()), "another program holds it.");
    ioctl(held, TIOCNXCL);
    EXPECT_EQ(causeOf(pty.name()), "opened");
    close(held);
}

namespace {

const std::string running = std::to_string(getppid());

std::string commandOf(const std::string& process) {
    std::string command;
    std::getline(std::ifstream("/proc/" + process + "/comm"), command);
    return command;
}
std::string endedProcess() {
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    waitpid(child, nullptr, 0);
    return std::to_string(child);
}

constexpr char isHeld[] = " holds it by";
constexpr char isStrange[] = " is not a small regular file. Remove it.";
constexpr char isNew[] = " names no running program. Remove it.";

struct LockFileCase {
    const char* name;
    std::string contents;
    const char* cause; // a part of it
    friend void PrintTo(const LockFileCase& row, std::ostream* out) { *out << row.name; }
};
const LockFileCase lockFileCases[] = {
    {"Number", "      " + running + "\n", isHeld},
    {"NumberAndName", "      " + running + " " + commandOf(running) + " root\n", isHeld},
    {"NumberAboveName", running + "\n" + commandOf(running) + "\nhost\nid\n", isHeld},
    {"NameAtANumberGivenAway", running + " minicom root\n", "opened"},
    {"NameBelowANumberGivenAway", running + "\nquorven\nhost\n", "opened"},
    {"NumberOfTheDead", endedProcess() + "\n", "opened"},
    {"NumberAndNameOfTheDead", endedProcess() + " " + commandOf(running) + "\n", "opened"},
    {"OwnNumber", std::to_string(getpid()) + "\n", "opened"},
    {"Zero", "         0\n", isNew},
    {"Empty", "", isNew},
    {"Large", std::string(2000, ' '), isStrange},
    {"Pipe", "pipe", isStrange},
};

class LockFile : public testing::TestWithParam<LockFileCase> {};

} // namespace

TEST_P(LockFile, BarsThePortOrNot) {
    const Pty pty;
    const std::string file = "/var/lock/LCK.." + replaced(pty.name().substr(5), "/", "_");
    std::filesystem::remove(file); // of a run that was stopped
    GetParam().contents == "pipe" ? void(mkfifo(file.c_str(), 0600))
                                  : void(std::ofstream(file) << GetParam().contents);
    const std::string cause = causeOf(pty.name());
    EXPECT_NE(cause.find(GetParam().cause), std::string::npos) << cause;
    EXPECT_TRUE(cause == "opened" || cause.find("lock file " + file) != std::string::npos) << cause;
    std::filesystem::remove(file);
}

INSTANTIATE_TEST_SUITE_P(, LockFile, testing::ValuesIn(lockFileCases),
                         [](const auto& row) { return row.param.name; });
