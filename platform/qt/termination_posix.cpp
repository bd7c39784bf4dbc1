#include "platform/qt/termination_posix.h"

#include "platform/files.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

// Written by a signal handler, watched by the event queue.
std::array<int, 2> wakePipe = {-1, -1};

std::atomic<int> guardedDescriptor = -1;
std::string guardedLockFile; // changed only while no descriptor is guarded
std::atomic<const char*> crashFrames = nullptr;
std::atomic<int> crashFrameBytes = 0;
std::atomic<pid_t> handledProcess = 0; // the process that called HandleSignals()

// Called by signal handlers too.
void cleanUp() {
    SendCrashFrames();
    if (guardedDescriptor.exchange(-1) >= 0) // only once: exit() destroys the name later
        unlink(guardedLockFile.c_str());
    platform::RemoveTemporaryFile();
}

void wakeEventQueue(int) {
    const char any = 1;
    [[maybe_unused]] const ssize_t ignored = write(wakePipe[1], &any, 1);
}

// SA_RESETHAND has restored the default action, which raise() triggers.
void crash(int signal) {
    cleanUp();
    raise(signal);
}

void installHandler(int signal, void (*handler)(int), int flags) {
    struct sigaction action{};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
        return; // the C library reserves it, or the parent process wants it ignored
    action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(signal, &action, nullptr);
}

// A chip must not stay powered while the process is stopped.
void stopUnlessRunInProgress(int signal) {
    if (crashFrames.load())
        return;
    installHandler(signal, SIG_DFL, 0);
    raise(signal); // stops here
    installHandler(signal, stopUnlessRunInProgress, SA_RESTART | SA_NODEFER);
}

// A stack overflow leaves the handler no room on the normal stack.
void giveCrashesAStack() {
    static std::array<char, 16384> bytes;
    stack_t stack{};
    stack.ss_sp = bytes.data();
    stack.ss_size = bytes.size();
    sigaltstack(&stack, nullptr);
}

[[noreturn]] void endBySignal(const std::function<void()>& save) {
    SendCrashFrames();
    try {
        save();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quorven: %s\n", error.what());
        EndProcess(EXIT_FAILURE);
    }
    EndProcess(EXIT_SUCCESS);
}

} // namespace

// Replaces the C library's _exit(), even where a library calls it: when the compositor is lost,
// Qt's Wayland plugin calls _exit(), which runs no exit handlers. In a child process, this
// replacement does not clean up.
extern "C" void _exit(int status) { // NOLINT(bugprone-reserved-identifier)
    if (getpid() == handledProcess)
        cleanUp();
    std::_Exit(status);
}

void OpenStandardDescriptors() {
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDWR);
    close(descriptor);
}

void HandleSignals(std::function<void()> save) {
    giveCrashesAStack();
    handledProcess = getpid();
    std::atexit(cleanUp); // losing the X server ends the process through exit()
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        switch (signal) {
        case SIGCHLD: // these do not end the process by default
        case SIGCONT:
        case SIGURG:
        case SIGWINCH:
            break;
        case SIGPIPE: // the failed write returns an error instead
        case SIGXFSZ:
        case SIGTTIN: // a program stopped by these would look hung
        case SIGTTOU:
            installHandler(signal, SIG_IGN, 0);
            break;
        case SIGTSTP:
            installHandler(signal, stopUnlessRunInProgress, SA_RESTART | SA_NODEFER);
            break;
        default: // SIGKILL and SIGSTOP reject any handler
            installHandler(signal, crash, SA_RESETHAND | SA_NODEFER | SA_ONSTACK);
        }
    }
    if (pipe2(wakePipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto* woken = new QSocketNotifier(wakePipe[0], QSocketNotifier::Read, qApp);
    QObject::connect(woken, &QSocketNotifier::activated, qApp,
                     [save = std::move(save)] { endBySignal(save); });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        installHandler(signal, wakeEventQueue, SA_RESTART);
}

void GuardPort(int descriptor, const std::string& lockFile) {
    guardedDescriptor = -1;
    guardedLockFile = lockFile;
    guardedDescriptor = descriptor;
}

void SetCrashFrames(const char* bytes, int count) {
    crashFrameBytes = count;
    crashFrames = bytes;
}

// The frames are cleared after they are sent: a signal that arrives between these steps sends them
// twice, which is better than not at all.
void SendCrashFrames() {
    const char* const frames = crashFrames;
    if (frames && guardedDescriptor >= 0) {
        [[maybe_unused]] const ssize_t ignored =
            write(guardedDescriptor, frames, static_cast<std::size_t>(crashFrameBytes));
    }
    crashFrames = nullptr;
}

void EndProcess(int status) {
    cleanUp();
    std::_Exit(status);
}
