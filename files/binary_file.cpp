#include "files/binary_file.h"

#include "app/state.h"
#include "app/status_bar.h"
#include "buffer/buffer_view.h"
#include "platform/file_error.h"
#include "platform/files.h"
#include "platform/machine.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace modFunc {

namespace {

using platform::FileError;
using platform::machine;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

[[noreturn]] void fail(const char* what) {
    throw FileError(machine().cdia.FileName + ": " + what + ": " + std::strerror(errno) + ".");
}

// Opens cdia.FileName for reading and writing without truncating it. Creates the file if it does
// not exist.
File openForBoth() {
    platform::RejectSpecialFile(machine().cdia.FileName);
    const char* const name = machine().cdia.FileName.c_str();
    std::FILE* file = std::fopen(name, "r+b");
    if (!file && errno == ENOENT)
        file = std::fopen(name, "w+b");
    return {file, &std::fclose};
}

} // namespace

void OpenBinFile() {
    State& s = state();
    File file = openForBoth();
    if (!file) // a read-only file can still be loaded
        file.reset(std::fopen(machine().cdia.FileName.c_str(), "rb"));
    if (!file)
        fail("the file cannot be opened");
    if (std::fseek(file.get(), s.FileAddress, SEEK_SET) != 0)
        fail("the file cannot be read");
    const std::int64_t first = std::int64_t{s.FileAddress} + s.BufferAddress;
    const auto room = static_cast<std::size_t>(
        std::clamp<std::int64_t>(lastBufferIndex + 1 - first, 0, lastBufferIndex + 1));
    std::size_t read = 0;
    if (room > 0)
        read = std::fread(s.BufferData.data() + first, 1, room, file.get());
    const bool more = read == room && std::fgetc(file.get()) != EOF;
    if (std::ferror(file.get()))
        fail("the file cannot be read");
    if (more)
        throw FileError(machine().cdia.FileName + ": the data reach past the end of the image.");
    ShowFileName();
    bufferView().Reopen();
}

void SaveBinFile() {
    const State& s = state();
    const std::int32_t size = std::max(selectedDevice().Size, 0);
    if (size > lastBufferIndex + 1)
        throw FileError(machine().cdia.FileName + ": the device is larger than the image.");
    File file = openForBoth();
    if (!file)
        fail("the file cannot be opened");
    const auto bytes = static_cast<std::size_t>(size);
    if (std::fwrite(s.BufferData.data(), 1, bytes, file.get()) != bytes)
        fail("the file cannot be written");
    if (std::fclose(file.release()) != 0) // writes the remaining bytes, which may fail
        fail("the file cannot be written");
    ShowFileName();
}

} // namespace modFunc
