#pragma once

#include "simbox/chip.h"

#include <string>

namespace simbox {

// A chip on disk: `path` holds the memory as plain bytes, chip address = file offset; a file
// `path`.lock beside it exists exactly when the chip is locked.

// Fills the chip from the file. A shorter file leaves the bytes behind it as they are; a missing
// one leaves the whole chip as it is, not locked. Throws std::runtime_error naming file and cause
// when the file is longer than a chip or cannot be read.
void LoadChip(const std::string& path, Chip& chip);

// Writes all 64 KiB to a temporary file beside it and renames it over `path`, so that a reader
// always finds a whole chip. Throws std::runtime_error naming file and cause.
void SaveChip(const std::string& path, const Chip& chip);

} // namespace simbox
