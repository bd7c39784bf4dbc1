#pragma once

#include "simbox/chip.h"

#include <string>

namespace simbox {

// Keeps a chip's contents on disk. The file at `path` contains the memory as raw bytes; the file
// offset of a byte is its chip address. The file `path`.lock exists while the chip is locked. If
// the path is empty, nothing is kept.
class ChipFile {
public:
    // Loads the chip from the file, then saves the chip to the file. If the file is shorter than
    // the chip, the rest of the chip is unchanged. If there is no file, the chip keeps its contents
    // and its lock state; an old lock file is removed unless the chip is locked. Throws an
    // exception that names the file and the cause if the file is longer than a chip or cannot be
    // read or written.
    ChipFile(std::string path, Chip& chip);

    // True if the path is not empty and the memory or the lock has been written since the last
    // Save.
    bool outdated() const { return !path_.empty() && chip_.revision() != savedRevision_; }

    // If outdated, writes all 64 KiB to a temporary file in the same folder and renames that file
    // to `path`, so that a reader always finds the complete contents of the chip. Also creates or
    // removes the lock file. Throws an exception that names the file and the cause.
    void Save();

private:
    std::string path_;
    Chip& chip_;
    std::uint64_t savedRevision_ = UINT64_MAX;
};

} // namespace simbox
