#pragma once

#include "simbox/chip.h"

#include <string>

namespace simbox {

// Keeps a chip on disk: the file at `path` contains the memory as plain bytes, chip address = file
// offset; a file `path`.lock beside it exists exactly while the chip is locked. An empty path keeps
// nothing.
class ChipFile {
public:
    // Fills the chip from the file, then saves it. A shorter file leaves the bytes past its end as
    // they are; a missing one leaves the whole chip as it is, not locked. Throws an exception
    // naming file and cause when the file is longer than a chip or cannot be read or written.
    ChipFile(std::string path, Chip& chip);

    // The chip has been written since the last Save.
    bool outdated() const { return !path_.empty() && chip_.revision() != savedRevision_; }

    // When outdated: writes all 64 KiB to a temporary file beside it and renames that over the
    // file, so that a reader always finds a whole chip. Throws an exception naming file and cause.
    void Save();

private:
    std::string path_;
    Chip& chip_;
    std::uint64_t savedRevision_ = UINT64_MAX;
};

} // namespace simbox
