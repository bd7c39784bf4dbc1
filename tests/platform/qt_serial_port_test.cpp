// The serial port on real pseudo-terminals.
#include "platform/qt/qt_serial_port.h"
#include "tests/support/limits.h"
#include "tests/support/temporary_folder.h"

#include <QTest>

#include <poll.h>
#include <pty.h>
#include <regex>
#include <sys/stat.h>

namespace {

// A pseudo-terminal: the program opens its name, the test has the other end.
struct Line : testing::Test {
    Line() {
        openpty(&master, &slave, nullptr, nullptr, nullptr);
        name = ttyname(slave);
        close(slave);
        port.setSettings("57600,N,8,1");
        std::iota(all.begin(), all.end(), std::uint8_t{0});
    }
    ~Line() override { close(master); }
    // Sends these bytes and waits until the port has counted them.
    void send(const Bytes& bytes) {
        EXPECT_EQ(::write(master, bytes.data(), bytes.size()), ssize_t(bytes.size()));
        EXPECT_TRUE(QTest::qWaitFor([&] { return port.InBufferCount() == int(bytes.size()); }));
    }
    // The error text of opening, without the port's name; "opened" on success.
    std::string cause(const std::string& path) {
        name = path;
        try {
            port.Open();
            port.Close();
            return "opened";
        } catch (const platform::PortError& error) {
            return error.what() + path.size() + 2;
        }
    }

    int master = -1, slave = -1;
    std::string name;
    QtSerialPort port{[this](int) { return name; }};
    Bytes all = Bytes(1500); // more than Qt's buffer holds: the rest is in the system's queue
};

} // namespace

// A notifier left on a dead line would make every Yield return at once.
TEST_F(Line, PassesEveryByteBothWaysAt57600BaudUntilItIsHungUp) {
    port.Open();
    termios line{};
    tcgetattr(master, &line);
    EXPECT_EQ(cfgetospeed(&line), speed_t{B57600});
    EXPECT_EQ(line.c_cflag & (CSIZE | CSTOPB | PARENB | CRTSCTS), tcflag_t{CS8});
    send(Bytes(1500));
    port.Close(); // discards the bytes
    port.Open();
    send(all);
    EXPECT_EQ(port.Input(), all);
    all.resize(256);
    port.Output(all); // written at once, without an event
    pollfd arrived{master, POLLIN, 0};
    ASSERT_EQ(poll(&arrived, 1, 500), 1);
    Bytes sent(257);
    sent.resize(std::size_t(::read(master, sent.data(), sent.size())));
    EXPECT_EQ(sent, all);
    send(Bytes(100));
    close(std::exchange(master, -1));
    QTest::qWait(100); // until Qt has warned of any notifier that is left
    EXPECT_FALSE(port.PortOpen());
}

TEST_F(Line, FailuresToOpenHaveCauses) {
    const std::string parent = std::to_string(getppid());
    const std::string command = TemporaryFolder::readFile("/proc/" + parent + "/comm");
    const std::string lock = "/var/lock/LCK..pts_" + name.substr(9);
    const std::pair<std::string, const char*> rows[] = {
        {"      " + parent + "\n", ") has locked it with the lock file /var/lock/LCK..pts_"},
        {"  " + parent + " " + command.substr(0, command.find('\n')) + " root\n",
         ") has locked it"},
        {"         0\n", " names no running program. Remove it."},
        {std::string(1025, ' '), " is not a small regular file. Remove it."},
        {"a pipe", " is not a small regular file. Remove it."},
        {"  " + parent + " other root\n", "opened"}, // the number is another program's now
        {"99999999\n", "opened"},
        {std::to_string(getpid()) + "\n", "opened"}, // removes the lock file
    };
    for (const auto& [contents, expected] : rows) {
        std::filesystem::remove(lock);
        contents == "a pipe" ? void(mkfifo(lock.c_str(), 0600))
                             : void(std::ofstream(lock) << contents);
        EXPECT_NE(cause(name).find(expected), std::string::npos) << contents;
    }

    chmod(name.c_str(), 0);
    const OrdinaryUser user;
    const std::regex group("you have no permission .* the group \"[a-z]+\", of .* member.");
    EXPECT_TRUE(std::regex_match(cause(name), group)) << cause(name);
    ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
    ioctl(slave, TIOCEXCL);
    EXPECT_EQ(cause(ttyname(slave)), "another program is using it.");
    EXPECT_EQ(cause("/dev/zero"), "it is not a serial port.");
}
