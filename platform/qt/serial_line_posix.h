// Facts about a serial line that QSerialPort does not report.
#pragma once

#include <string>

// The path of the lock file by which programs reserve the port `path`; empty if there is none. The
// lock file need not be a regular file.
std::string lockFileOf(const std::string& path);

// A description, for the user, of the lock file that bars the port `path`; empty if no lock file
// bars the port. A lock file bars the port if it contains the ID of a running process other than
// this one. If the file also contains a program name, it bars the port only if the process has that
// name or the system does not disclose its name. A lock file that cannot be read, is not a regular
// file or has more than 1024 bytes also bars the port. Any other lock file that contains a process
// ID is removed. Call before opening the port: QSerialPort waits forever if the lock file is a
// pipe, and removes a lock file older than half a minute even if its owner is running.
std::string lockedByAnother(const std::string& path);

// A message for the user that states why the port `path` could not be opened: the device does not
// exist or is not a serial port, the user is not a member of the group that owns it, another
// program is using it, the system reports another error, or there is a lock file that contains no
// process ID or could not be removed. Returns `otherwise` if none of these is the cause.
std::string whyNotOpened(const std::string& path, const std::string& otherwise);

// Number of bytes in the system's receive queue; 0 on error.
int waitingBytes(int descriptor);

// True if the other side is permanently gone: the device was unplugged or the terminal hung up.
bool lineIsDead(int descriptor);
