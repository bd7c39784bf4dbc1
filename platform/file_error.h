#pragma once

#include <stdexcept>
#include <string>

namespace platform {

// A file that cannot be read, understood or written. what() is a message for the user: the file's
// name, where it helps the line and item, and after a colon a sentence with the cause.
struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace platform
