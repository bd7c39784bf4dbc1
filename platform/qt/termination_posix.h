// Ends of the program that the user did not choose: signals, abnormal termination, a lost display.
// No chip may stay powered after one, except where the process cannot act any more (SIGKILL).
#pragma once

#include <functional>
#include <string>

// To be called before anything opens a file. Opens /dev/null on those of the descriptors 0 to 2
// that are closed: otherwise the port or the X connection gets the number, and with it the warnings
// that libraries print.
void OpenStandardDescriptors();

// Installs the handlers of all signals for the rest of the process. Requires the application.
// SIGTERM, SIGINT and SIGHUP end it from the event queue, in whatever loop that is: crash frames,
// `save`, status 0; where `save` throws, the cause on the console and status 1. Every other signal
// that ends a process sends the crash frames first. Failed writes (SIGPIPE, SIGXFSZ) and the
// terminal (SIGTTIN, SIGTTOU) raise no signal any more, and SIGTSTP does not stop a run. A signal
// that was ignored at the start stays ignored.
void HandleSignals(std::function<void()> save);

// The open port and its lock file, empty if there is no lock file; -1: the port has been closed.
void GuardPort(int descriptor, const std::string& lockFile = {});
// Power-down frames that are sent on a crash: to be set while a run is in progress. The bytes must
// stay valid until others are set; null: no frames.
void SetCrashFrames(const char* bytes, int byteCount);

// Sends the crash frames, if any, to the guarded port: once, however often it is called.
void SendCrashFrames();
// Ends the process at once, from within whatever event loops are running: sends the crash frames,
// removes the lock file and a temporary file.
[[noreturn]] void EndProcess(int status);
