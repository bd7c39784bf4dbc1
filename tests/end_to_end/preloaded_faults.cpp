// Preloaded into the program. Once the file THROW_WHEN exists, the next read from a terminal
// throws, as any fault of the program might, or ends the process with EXIT_STATUS, past the exit
// handlers. SIGNAL_IN_SAVE is the number of a signal that arrives while a file is being saved.
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <stdexcept>
#include <unistd.h>

extern "C" ssize_t read(int descriptor, void* bytes, std::size_t count) {
    using Read = ssize_t (*)(int, void*, std::size_t);
    static const auto systemRead = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "read"));
    const char* const file = std::getenv("THROW_WHEN");
    if (file && isatty(descriptor) && unlink(file) == 0) {
        if (const char* const status = std::getenv("EXIT_STATUS"))
            _exit(std::atoi(status));
        throw std::runtime_error("no reading to be had");
    }
    return systemRead(descriptor, bytes, count);
}

extern "C" int fsync(int) {
    if (const char* const number = std::getenv("SIGNAL_IN_SAVE"))
        raise(std::atoi(number));
    return 0;
}
