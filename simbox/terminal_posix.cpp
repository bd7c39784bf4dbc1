#include "simbox/terminal_posix.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif
#include <system_error>
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
    return std::runtime_error(what + ": " + std::generic_category().message(errno));
}

// The system may add its slack to every sleep, by default a third of a byte's time on the line.
void sleepExactly() {
#ifdef __linux__
    constexpr unsigned long slackNs = 1'000;
    prctl(PR_SET_TIMERSLACK, slackNs);
#endif
}

// The signals stay blocked but for the sleep in ppoll, so none can slip in between test and sleep.
void catchSignals() {
    sigset_t stops;
    sigemptyset(&stops);
    struct sigaction action {};
    action.sa_handler = noteStop;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&stops, signal);
        sigaction(signal, &action, nullptr);
    }
    sigprocmask(SIG_BLOCK, &stops, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // a reader of the trace that goes away is no reason to end
}

} // namespace

Terminal::Terminal(std::string linkPath) : linkPath_(std::move(linkPath)) {
    catchSignals();
    sleepExactly();
    try {
        open();
        makeLink();
    } catch (...) {
        close();
        throw;
    }
}

Terminal::~Terminal() {
    std::error_code error;
    if (!linkPath_.empty() && fs::read_symlink(linkPath_, error) == path_) {
        fs::remove(linkPath_, error);
    }
    close();
}

void Terminal::open() {
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) {
        throw failure("cannot open a pseudo-terminal");
    }
    const char* name = ptsname(master_);
    if (name == nullptr) {
        throw failure("cannot name the pseudo-terminal");
    }
    path_ = name;
    // Held open for good: without it the line would hang up whenever the program closes it.
    slave_ = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios raw{};
    if (slave_ < 0 || tcgetattr(slave_, &raw) != 0) {
        throw failure("cannot open " + path_);
    }
    cfmakeraw(&raw);
    if (tcsetattr(slave_, TCSANOW, &raw) != 0 || fcntl(master_, F_SETFL, O_NONBLOCK) != 0) {
        throw failure("cannot set up " + path_);
    }
}

void Terminal::makeLink() {
    if (linkPath_.empty()) {
        return;
    }
    const fs::file_status standing = fs::symlink_status(linkPath_);
    if (fs::exists(standing) && !fs::is_symlink(standing)) {
        throw std::runtime_error(linkPath_ + " exists and is no symbolic link; left alone");
    }
    const std::string temporary = linkPath_ + "." + std::to_string(getpid());
    fs::create_symlink(path_, temporary);
    fs::rename(temporary, linkPath_);
}

void Terminal::close() {
    for (int* descriptor : {&slave_, &master_}) {
        if (*descriptor >= 0) {
            ::close(*descriptor);
            *descriptor = -1;
        }
    }
}

std::vector<std::uint8_t> Terminal::Wait(std::optional<std::int64_t> timeoutUs) {
    timespec timeout{};
    if (timeoutUs) {
        timeout.tv_sec = static_cast<time_t>(*timeoutUs / 1'000'000);
        timeout.tv_nsec = static_cast<long>(*timeoutUs % 1'000'000 * 1000);
    }
    sigset_t none;
    sigemptyset(&none);
    pollfd master{master_, POLLIN, 0};
    const int ready = ppoll(&master, 1, timeoutUs ? &timeout : nullptr, &none);
    if (ready < 0 && errno != EINTR) {
        throw failure("cannot wait on " + path_);
    }
    if (ready <= 0) {
        return {};
    }
    std::array<std::uint8_t, 4096> buffer{};
    const ssize_t count = read(master_, buffer.data(), buffer.size());
    if (count < 0) {
        if (errno == EAGAIN || errno == EINTR) {
            return {};
        }
        throw failure("cannot read from " + path_);
    }
    // Exclusive use is bound to the terminal and, with our side open, would outlive a program that
    // died with it: no one could open the line again.
    ioctl(slave_, TIOCNXCL);
    return {buffer.begin(), buffer.begin() + count};
}

void Terminal::Write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(master_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0 && errno == EAGAIN) {
            return;
        }
        if (count < 0) {
            throw failure("cannot write to " + path_);
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

bool Terminal::StopRequested() {
    return stopSignal != 0;
}

} // namespace simbox
