// Terminations that the user did not choose: signals, crashes, a lost display. They must not leave
// a chip powered. The only exceptions are SIGKILL, which cannot be handled, and the signals 32 and
// 33, which the C library reserves. SIGSTOP cannot be handled either: the chip stays powered until
// the process continues.
#pragma once

#include <functional>
#include <string>

// Opens /dev/null on each of the descriptors 0 to 2 that is closed: otherwise the port or the X
// connection could get that number and receive the warnings that libraries print. Call before any
// file is opened.
void OpenStandardDescriptors();

// Installs the signal handlers permanently. Requires the application object. SIGTERM, SIGINT and
// SIGHUP are handled in the running event loop: if a run is in progress, the power-down frames are
// sent; then `save` is called, and the process ends with status 0. If `save` throws, the cause is
// printed to stderr and the status is 1. For every other signal that ends a process, the power-down
// frames are also sent first if a run is in progress. SIGPIPE, SIGXFSZ, SIGTTIN and SIGTTOU are
// ignored; SIGTSTP does not stop the process during a run. A signal that was ignored when the
// process started stays ignored.
void HandleSignals(std::function<void()> save);

// Registers the open port and its lock file (empty: no lock file) for clean-up at termination.
// Descriptor -1 means that the port has been closed.
void GuardPort(int descriptor, const std::string& lockFile = {});
// Sets the power-down frames to send if the process crashes or is terminated during a run. `bytes`
// must stay valid until the next call; if it is null, no frames are sent.
void SetCrashFrames(const char* bytes, int byteCount);

// Sends the power-down frames, if any, to the guarded port. Further calls send nothing until
// SetCrashFrames() is called again.
void SendCrashFrames();
// Ends the process at once, without unwinding the running event loops. First sends the power-down
// frames and removes the lock file and any temporary file.
[[noreturn]] void EndProcess(int status);
