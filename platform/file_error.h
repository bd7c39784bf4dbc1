#pragma once

#include <stdexcept>
#include <string>

namespace platform {

// Thrown when a file cannot be read, understood or written. what() is a message for the user: the
// file's name, then the position if known (line and item, or record), a colon, and a sentence that
// states the cause.
struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace platform
