#include "platform/qt/sudden_end_posix.h"

#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::array endSignals = {SIGTERM, SIGINT, SIGHUP};
// All others whose own effect is the end of the process, but for those that no one sends.
constexpr std::array crashSignals = {SIGABRT, SIGSEGV, SIGBUS,  SIGFPE,  SIGILL,  SIGSYS,
                                     SIGTRAP, SIGQUIT, SIGXCPU, SIGALRM, SIGUSR1, SIGUSR2};
// A write that fails says so by its result.
constexpr std::array ignoredSignals = {SIGPIPE, SIGXFSZ};

// Written by a signal handler, read by the event queue.
std::array<int, 2> wakePipe = {-1, -1};

volatile std::sig_atomic_t guardedDescriptor = -1;
const char* volatile lastBytes = nullptr;
volatile std::sig_atomic_t lastByteCount = 0;

void wakeEventQueue(int) {
    const char any = 1;
    [[maybe_unused]] const ssize_t ignored = write(wakePipe[1], &any, 1);
}

void writeLastBytes() {
    if (lastBytes && guardedDescriptor >= 0) {
        [[maybe_unused]] const ssize_t ignored =
            write(guardedDescriptor, lastBytes, static_cast<std::size_t>(lastByteCount));
    }
    lastBytes = nullptr;
}

// The signal's own effect follows: the handler was for one time only.
void crash(int signal) {
    writeLastBytes();
    raise(signal);
}

void installHandler(int signal, void (*handler)(int), int flags) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(signal, &action, nullptr);
}

// A crash may be the stack's own overflow.
void giveCrashesAStack() {
    static std::array<char, 16384> bytes;
    stack_t stack{};
    stack.ss_sp = bytes.data();
    stack.ss_size = bytes.size();
    sigaltstack(&stack, nullptr);
}

} // namespace

EndSignals::EndSignals(std::function<void()> end) {
    if (pipe2(wakePipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // the signals keep their own effect
    auto* woken = new QSocketNotifier(wakePipe[0], QSocketNotifier::Read, this);
    connect(woken, &QSocketNotifier::activated, this, [end = std::move(end)] { end(); });
    for (const int signal : ignoredSignals)
        std::signal(signal, SIG_IGN);
    for (const int signal : endSignals) {
        struct sigaction inherited {};
        sigaction(signal, nullptr, &inherited);
        if (inherited.sa_handler != SIG_IGN) // whoever started us wants it ignored
            installHandler(signal, wakeEventQueue, SA_RESTART);
    }
}

EndSignals::~EndSignals() {
    for (const int signal : endSignals)
        installHandler(signal, SIG_DFL, 0);
    for (int& end : wakePipe)
        if (end >= 0)
            close(std::exchange(end, -1));
}

void GuardPort(int descriptor) {
    guardedDescriptor = descriptor;
    static std::once_flag installed;
    std::call_once(installed, [] {
        giveCrashesAStack();
        for (const int signal : crashSignals)
            installHandler(signal, crash, SA_RESETHAND | SA_NODEFER | SA_ONSTACK);
        std::atexit(writeLastBytes); // a lost display ends the process by exit()
    });
}

void SetLastBytes(const char* bytes, int count) {
    lastByteCount = count;
    lastBytes = bytes;
}
