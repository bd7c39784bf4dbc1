#pragma once

#include <stdexcept>
#include <string>

namespace platform {

// Thrown when a file cannot be read, understood or written. what() is a message for the user: the
// file's name, the line and item or the record if known, a colon, and a sentence that states the
// cause.
struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace platform
