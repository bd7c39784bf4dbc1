#pragma once

#include <stdexcept>
#include <string>

namespace platform {

// A file that cannot be read, understood or written. what() names the file, the place and the
// cause, as a sentence for the user.
struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace platform
