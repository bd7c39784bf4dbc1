// Loaded in front of the program: once the file named by THROW_WHEN is there, the next read from a
// terminal throws, as any fault of the program might, in the middle of whatever it is doing.
#include <cstdlib>
#include <dlfcn.h>
#include <stdexcept>
#include <unistd.h>

extern "C" ssize_t read(int descriptor, void* bytes, std::size_t count) {
    using Read = ssize_t (*)(int, void*, std::size_t);
    static const auto systemRead = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "read"));
    const char* const file = std::getenv("THROW_WHEN");
    if (file && isatty(descriptor) && unlink(file) == 0)
        throw std::runtime_error("no reading to be had");
    return systemRead(descriptor, bytes, count);
}
