#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace simbox {

// A pseudo-terminal seen from the device's side: raw, all 256 byte values in both directions, no
// echo. A program that closes its side and opens it again finds the line as it was.
class Terminal {
public:
    // Opens it and makes `linkPath` (empty: no link) a symbolic link to it, which replaces an
    // existing link. Throws std::runtime_error with the cause, also if `linkPath` exists and is not
    // a symbolic link. Only one per process, because it handles SIGTERM, SIGINT and SIGHUP.
    explicit Terminal(std::string linkPath);
    // Removes the link, if it still leads here, then hangs up.
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // What the program opens, such as /dev/pts/3.
    const std::string& path() const { return path_; }

    // Sleeps until bytes have arrived, `timeoutUs` (microseconds; nullopt: no limit) has passed, or
    // one of the signals has come. Returns all bytes that have arrived, which may be none.
    std::vector<std::uint8_t> Wait(std::optional<std::int64_t> timeoutUs);

    // Bytes are lost if nobody reads and the system's queue is full, as on any line without flow
    // control.
    void Write(std::span<const std::uint8_t> bytes);

    // One of the signals has come.
    static bool StopRequested();

private:
    struct Descriptor {
        int value = -1;
        ~Descriptor();
    };

    void open();
    void makeLink();

    std::string linkPath_;
    std::string path_;
    Descriptor master_;
    Descriptor slave_; // held open: without it the line would hang up when the program closes it
};

} // namespace simbox
