// What Qt's serial port does not tell of its line.
#pragma once

#include <string>

// In words, that a running process other than this one has the port `path` by a lock file; empty
// where none has. To be asked before the opening: the toolkit takes a lock away that is older than
// half a minute, whoever holds it.
std::string lockedByAnother(const std::string& path);

// Why the port `path` could not be opened, in words that tell what to do: there is none, it is no
// serial port, its group has to be joined, another program holds it, a lock file was left over.
// `otherwise` where it is none of these.
std::string whyNotOpened(const std::string& path, const std::string& otherwise);

// Bytes that have arrived and wait in the system's queue, at least 0.
int waitingBytes(int descriptor);

// The other side has gone for good: the device was unplugged or the terminal hung up.
bool lineIsDead(int descriptor);
