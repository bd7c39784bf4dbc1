// Preloaded into the program. Once the file "armed" is in the current directory, the next call of
// the function that FAULT selects removes the file and causes the fault. In a read of the serial
// port, "exception" throws from an event that is handled inside a run, and "_exit" ends the process
// without its exit handlers, as Qt does when a Wayland compositor is gone. In a write of a file,
// "interrupted" raises another signal.
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <new>
#include <string_view>
#include <unistd.h>

static const std::string_view fault = std::getenv("FAULT");

extern "C" int fsync(int) {
    if (fault == "interrupted" && unlink("armed") == 0)
        raise(SIGQUIT);
    return 0;
}

extern "C" ssize_t read(int file, void* bytes, std::size_t count) {
    using Read = ssize_t (*)(int, void*, std::size_t);
    static const auto next = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "read"));
    if (fault == "interrupted" || isatty(file) == 0 || unlink("armed") != 0)
        return next(file, bytes, count);
    if (fault == "_exit")
        _exit(3);
    throw std::bad_alloc();
}
