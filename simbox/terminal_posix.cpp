#include "simbox/terminal_posix.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace simbox {

namespace {

namespace fs = std::filesystem;

volatile std::sig_atomic_t stopSignal = 0;

extern "C" void noteStop(int signal) {
    stopSignal = signal;
}

std::runtime_error failure(const std::string& what) {
    return std::runtime_error(what + ": " + std::strerror(errno));
}

// The signals are blocked except inside ppoll, so that no signal is lost between StopRequested()
// and Wait().
void catchSignals() {
    sigset_t stops;
    sigemptyset(&stops);
    struct sigaction action{};
    action.sa_handler = noteStop;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&stops, signal);
        sigaction(signal, &action, nullptr);
    }
    sigprocmask(SIG_BLOCK, &stops, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // simbox continues when the reader of its trace exits
}

} // namespace

Terminal::Descriptor::~Descriptor() {
    if (value >= 0)
        close(value);
}

Terminal::Terminal(std::string linkPath) : linkPath_(std::move(linkPath)) {
    catchSignals();
#ifdef __linux__
    // The default timer slack may lengthen every sleep by a third of a byte's time on the line.
    constexpr unsigned long slackNs = 1'000;
    prctl(PR_SET_TIMERSLACK, slackNs);
#endif
    open();
    makeLink();
}

Terminal::~Terminal() {
    std::error_code error;
    if (!linkPath_.empty() && fs::read_symlink(linkPath_, error) == path_)
        fs::remove(linkPath_, error);
}

void Terminal::open() {
    master_.value = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master_.value < 0 || grantpt(master_.value) != 0 || unlockpt(master_.value) != 0)
        throw failure("cannot open a pseudo-terminal");
    const char* name = ptsname(master_.value);
    if (name == nullptr)
        throw failure("cannot get the name of the pseudo-terminal");
    path_ = name;
    slave_.value = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios raw{};
    if (slave_.value < 0 || tcgetattr(slave_.value, &raw) != 0)
        throw failure("cannot open " + path_);
    cfmakeraw(&raw);
    if (tcsetattr(slave_.value, TCSANOW, &raw) != 0 ||
        fcntl(master_.value, F_SETFL, O_NONBLOCK) != 0)
        throw failure("cannot set up " + path_);
}

void Terminal::makeLink() {
    if (linkPath_.empty())
        return;
    const fs::file_status existing = fs::symlink_status(linkPath_);
    if (fs::exists(existing) && !fs::is_symlink(existing))
        throw std::runtime_error(linkPath_ + " exists and is not a symbolic link; left alone");
    const std::string temporary = linkPath_ + "." + std::to_string(getpid());
    fs::create_symlink(path_, temporary);
    fs::rename(temporary, linkPath_);
}

std::vector<std::uint8_t> Terminal::Wait(std::optional<std::int64_t> timeoutUs) {
    timespec timeout{};
    if (timeoutUs) {
        timeout.tv_sec = static_cast<time_t>(*timeoutUs / 1'000'000);
        timeout.tv_nsec = static_cast<long>(*timeoutUs % 1'000'000 * 1000);
    }
    sigset_t none;
    sigemptyset(&none);
    pollfd master{master_.value, POLLIN, 0};
    const int ready = ppoll(&master, 1, timeoutUs ? &timeout : nullptr, &none);
    if (ready < 0 && errno != EINTR)
        throw failure("cannot wait on " + path_);
    if (ready <= 0)
        return {};
    std::array<std::uint8_t, 4096> buffer{};
    const ssize_t count = read(master_.value, buffer.data(), buffer.size());
    if (count < 0) {
        if (errno == EAGAIN || errno == EINTR)
            return {};
        throw failure("cannot read from " + path_);
    }
    // Exclusive mode belongs to the terminal. Because simbox keeps the slave open, the mode would
    // outlast a crash of the program that set it, and no program could open the line again.
    ioctl(slave_.value, TIOCNXCL);
    return {buffer.begin(), buffer.begin() + count};
}

void Terminal::Write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(master_.value, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EAGAIN)
            return;
        if (count < 0)
            throw failure("cannot write to " + path_);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

bool Terminal::StopRequested() {
    return stopSignal != 0;
}

} // namespace simbox
