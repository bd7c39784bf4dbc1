// Preloaded into the program. FAULT is CALL:N: while the file "armed" is in the current folder,
// calls of that name are counted. The N-th removes the file and fails, as on a full disk or without
// memory. If FAULT_EFFECT is "interrupted", it raises SIGQUIT; if "_exit", the process ends without
// its exit handlers, as Qt does when a Wayland compositor is gone. Only calls from the program's
// own code count, allocations by the standard library, and reads of the serial port. A failing read
// throws an exception from an event that is handled inside a run.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <new>
#include <string_view>
#include <unistd.h>

static bool fails(std::string_view call, int error, const void* caller) {
    static const std::string_view fault = std::getenv("FAULT");
    static int count = 0;
    if (!fault.starts_with(call) || fault[call.size()] != ':')
        return false;
    Dl_info code{};
    const std::string_view file = dladdr(caller, &code) != 0 ? code.dli_fname : "";
    if (!file.ends_with("/quorven") && !(call == "new" && file.find("libstdc++") != file.npos) &&
        !(call == "read" && file.find("libQt6SerialPort") != file.npos))
        return false;
    if (access("armed", F_OK) != 0 || ++count != std::atoi(&fault[call.size() + 1]))
        return false;
    unlink("armed");
    const std::string_view effect = std::getenv("FAULT_EFFECT");
    if (effect == "interrupted")
        raise(SIGQUIT);
    if (effect == "_exit")
        _exit(3);
    errno = error;
    return true;
}

#define REPLACE(result, name, parameters, arguments, failure)                                      \
    extern "C" result name parameters {                                                            \
        using Function = result parameters;                                                        \
        static auto* const next = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, #name));            \
        return fails(#name, EIO, __builtin_return_address(0)) ? failure : next arguments;          \
    }

REPLACE(ssize_t, write, (int file, const void* bytes, std::size_t count), (file, bytes, count), -1)
REPLACE(int, fsync, (int file), (file), -1)
REPLACE(int, rename, (const char* from, const char* to), (from, to), -1)
REPLACE(int, open, (const char* path, int flags, int mode), (path, flags, mode), -1)
REPLACE(FILE*, fopen, (const char* path, const char* mode), (path, mode), nullptr)
REPLACE(int, close, (int file), (file), (next(file), errno = EIO, -1))
REPLACE(int, mkstemp, (char* path), (path), -1)
REPLACE(ssize_t, read, (int file, void* bytes, std::size_t count), (file, bytes, count),
        throw std::bad_alloc())

void* operator new(std::size_t size) {
    static const auto next = reinterpret_cast<void* (*)(std::size_t)>(dlsym(RTLD_NEXT, "_Znwm"));
    if (fails("new", ENOMEM, __builtin_return_address(0)))
        throw std::bad_alloc();
    return next(size);
}
