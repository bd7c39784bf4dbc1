// Preloaded into the program: lets one call fail, the FAIL_AT-th of those named FAIL_CALL. Only
// calls out of the program's own code count, and allocations of the standard library for it. The
// file CALL_COUNTS gets how often each was made: an int each, in the order of `calls`.
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr struct {
    const char* name;
    int error;
} calls[] = {{"write", ENOSPC}, {"fsync", EIO}, {"rename", EIO},     {"open", EMFILE},
             {"fopen", EMFILE}, {"close", EIO}, {"mkstemp", ENOSPC}, {"new", ENOMEM}};
enum Call { Write, Fsync, Rename, Open, Fopen, Close, Mkstemp, New };

struct Code {
    ElfW(Addr) first, end;
    bool contains(const void* address) const {
        return address >= reinterpret_cast<void*>(first) && address < reinterpret_cast<void*>(end);
    }
};

// Of the program, or of the library whose file name has `part`.
Code codeOf(const char* part) {
    struct Search {
        const char* part;
        Code found;
    } search{part, {}};
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* data) {
            auto& [wanted, found] = *static_cast<Search*>(data);
            const bool here = *wanted ? std::strstr(info->dlpi_name, wanted) != nullptr : true;
            for (int i = 0; here && i < info->dlpi_phnum; ++i)
                if (const ElfW(Phdr)& header = info->dlpi_phdr[i]; header.p_flags & PF_X)
                    found = {info->dlpi_addr + header.p_vaddr,
                             info->dlpi_addr + header.p_vaddr + header.p_memsz};
            return int{here};
        },
        &search);
    return search.found;
}

bool fails(Call call, const void* caller) {
    static const Code program = codeOf(""), library = codeOf("libstdc++");
    static int* const counts = static_cast<int*>(mmap(
        nullptr, sizeof calls, PROT_READ | PROT_WRITE, MAP_SHARED,
        static_cast<int>(syscall(SYS_openat, AT_FDCWD, std::getenv("CALL_COUNTS"), O_RDWR)), 0));
    static const char* const name = std::getenv("FAIL_CALL");
    static const int at = std::atoi(std::getenv("FAIL_AT"));
    if (!program.contains(caller) && !(call == New && library.contains(caller)))
        return false;
    if (++counts[call] != at || std::strcmp(calls[call].name, name) != 0)
        return false;
    errno = calls[call].error;
    return true;
}

template <class Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define REPLACE(call, result, name, parameters, arguments, failure)                                \
    extern "C" result name parameters {                                                            \
        static auto* const next = real<result parameters>(#name);                                  \
        return fails(call, __builtin_return_address(0)) ? failure : next arguments;                \
    }

REPLACE(Fsync, int, fsync, (int file), (file), -1)
REPLACE(Rename, int, rename, (const char* from, const char* to), (from, to), -1)
REPLACE(Fopen, FILE*, fopen, (const char* path, const char* mode), (path, mode), nullptr)
REPLACE(Close, int, close, (int file), (file), (next(file), errno = EIO, -1))
REPLACE(Mkstemp, int, mkstemp, (char* path), (path), -1)

extern "C" ssize_t write(int file, const void* bytes, std::size_t count) {
    static auto* const next = real<ssize_t(int, const void*, std::size_t)>("write");
    struct stat status{};
    const bool pipe = fstat(file, &status) == 0 && S_ISFIFO(status.st_mode); // only to itself
    return !pipe && fails(Write, __builtin_return_address(0)) ? -1 : next(file, bytes, count);
}

extern "C" int open(const char* path, int flags, ...) {
    static auto* const next = real<int(const char*, int, mode_t)>("open");
    va_list more;
    va_start(more, flags);
    const auto mode = va_arg(more, mode_t);
    va_end(more);
    return fails(Open, __builtin_return_address(0)) ? -1 : next(path, flags, mode);
}

void* operator new(std::size_t size) {
    static auto* const next = real<void*(std::size_t)>("_Znwm");
    if (fails(New, __builtin_return_address(0)))
        throw std::bad_alloc();
    return next(size);
}
