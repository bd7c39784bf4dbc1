// What QSerialPort does not report of its line.
#pragma once

#include <string>

// The file by which programs that agree on it keep each other from the port `path`, whatever kind
// of file it is; empty if there is no such file.
std::string lockFileOf(const std::string& path);

// In words, that a lock file bars the port `path`; empty if no lock file does. A lock file bars the
// port while a process other than this one has its number and, where the file names a program, that
// name; so does a file that is not a small regular one. A lock file whose process has ended is
// removed. To be asked before the opening: QSerialPort waits for ever for a pipe, and takes away a
// lock file that is older than half a minute, whoever holds it.
std::string lockedByAnother(const std::string& path);

// Why the port `path` could not be opened, as sentences that say what to do: there is no device, it
// is not a serial port, its group has to be joined, another program holds it, a lock file is in the
// way. `otherwise` for any other cause.
std::string whyNotOpened(const std::string& path, const std::string& otherwise);

// Bytes that have arrived and wait in the system's queue, at least 0.
int waitingBytes(int descriptor);

// The other side has gone for good: the device was unplugged or the terminal hung up.
bool lineIsDead(int descriptor);
