// Shared by all targets. A target is one LLVMFuzzerTestOneInput: it gives the input to the program
// as if it came from outside and checks what has to hold for any input.
#pragma once

#include "tests/support/temporary_folder.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

// Ends the process, naming the property, when it does not hold.
inline void check(bool holds, const char* property) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", property);
    std::abort();
}

// The input, consumed from its front. Past its end everything is 0.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : rest_(reinterpret_cast<const char*>(data), size) {}

    std::uint8_t byte() {
        if (rest_.empty())
            return 0;
        const char first = rest_.front();
        rest_.remove_prefix(1);
        return static_cast<std::uint8_t>(first);
    }
    // Two bytes, high byte first, 0..`max`, which is a power of two less 1.
    int number(int max) {
        const int high = byte();
        return (high << 8 | byte()) & max;
    }
    // Four bytes, 0..2147483647.
    std::int32_t offset() {
        const std::int32_t high = number(0x7FFF);
        return high << 16 | number(0xFFFF);
    }
    std::string_view rest() const { return rest_; }

private:
    std::string_view rest_;
};

// A file for the program to read, in a folder of its own under TMPDIR.
class File {
public:
    explicit File(const std::string& name) : path_(folder_.file(name)) {}
    const std::string& folder() const { return folder_.path(); }
    const std::string& path() const { return path_; }

    void hold(std::string_view contents) const {
        std::FILE* const file = std::fopen(path_.c_str(), "wb");
        check(file && std::fwrite(contents.data(), 1, contents.size(), file) == contents.size() &&
                  std::fclose(file) == 0,
              "the input's file can be written");
    }

private:
    TemporaryFolder folder_;
    std::string path_;
};

} // namespace fuzz
