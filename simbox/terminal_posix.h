#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace simbox {

// A pseudo-terminal as seen from the device's side. It is raw: all 256 byte values pass in both
// directions, without echo. The line does not hang up when a program closes its side, so the
// program can open it again.
class Terminal {
public:
    // Opens the terminal and makes `linkPath` (empty: no link) a symbolic link to it. An existing
    // symbolic link is replaced. Throws std::runtime_error with the cause on failure, or if
    // `linkPath` exists and is not a symbolic link; Wait and Write throw it if the terminal fails.
    // Create only one Terminal per process, because it changes the signal handling of the process:
    // SIGTERM, SIGINT and SIGHUP arrive only in Wait, and SIGPIPE is ignored.
    explicit Terminal(std::string linkPath);
    // Removes the link if it still points to this terminal, then hangs up.
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // The path that the program opens, such as /dev/pts/3.
    const std::string& path() const { return path_; }

    // Sleeps until bytes have arrived, `timeoutUs` (microseconds; nullopt: no limit) has passed, or
    // SIGTERM, SIGINT or SIGHUP has arrived. Returns the bytes that have arrived, at most 4096; the
    // result may be empty.
    std::vector<std::uint8_t> Wait(std::optional<std::int64_t> timeoutUs);

    // Sends the bytes. If no program reads and the system's queue is full, bytes are lost, as on
    // any line without flow control.
    void Write(std::span<const std::uint8_t> bytes);

    // True if SIGTERM, SIGINT or SIGHUP has arrived.
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
    Descriptor slave_; // kept open so that the line does not hang up when the program closes it
};

} // namespace simbox
