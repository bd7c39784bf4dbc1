#include "platform/qt/serial_line_posix.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <grp.h>
#include <poll.h>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

bool isRunning(pid_t process) {
    return kill(process, 0) == 0 || errno == EPERM;
}

// The names that a process may have written to a lock file: its command, its executable file or its
// script. Empty if the system does not disclose them.
std::vector<std::string> namesOf(pid_t process) {
    const std::filesystem::path folder = "/proc/" + std::to_string(process);
    std::vector<std::string> names;
    const auto add = [&names](const std::filesystem::path& path) {
        if (path.has_filename())
            names.push_back(path.filename().string());
    };
    std::string word;
    std::ifstream command(folder / "comm");
    std::getline(command, word);
    add(word);
    std::error_code unknown;
    add(read_symlink(folder / "exe", unknown));
    std::ifstream arguments(folder / "cmdline");
    for (int i = 0; i < 2 && std::getline(arguments, word, '\0'); ++i)
        add(word);
    return names;
}

std::string groupName(gid_t group) {
    const struct group* const entry = getgrgid(group);
    return entry ? entry->gr_name : std::to_string(group);
}

} // namespace

std::string lockFileOf(const std::string& path) {
    // In the order in which QSerialPort searches them.
    constexpr const char* folders[] = {"/var/lock",         "/etc/locks", "/var/spool/locks",
                                       "/var/spool/uucp",   "/tmp",       "/var/tmp",
                                       "/var/lock/lockdev", "/run/lock"};
    constexpr std::string_view devices = "/dev/";
    if (!path.starts_with(devices))
        return {};
    std::string name = path.substr(devices.size());
    std::replace(name.begin(), name.end(), '/', '_');
    for (const char* folder : folders) {
        const std::string file = folder + ("/LCK.." + name);
        struct stat any{};
        if (lstat(file.c_str(), &any) == 0)
            return file;
    }
    return {};
}

// A lock file begins with a process ID. Most programs write nothing else. Some append their own
// name and the user's name. A program that uses QSerialPort writes its name on the next line. An ID
// without a name may be that of any program, so the lock is respected as long as a process has that
// ID.
std::string lockedByAnother(const std::string& path) {
    const std::string file = lockFileOf(path);
    constexpr off_t maxBytes = 1024;
    struct stat status{};
    if (file.empty() || lstat(file.c_str(), &status) != 0)
        return {};
    if (!S_ISREG(status.st_mode) || status.st_size > maxBytes)
        return "the lock file " + file + " is not a small regular file. Remove it.";
    std::ifstream text(file);
    if (!text)
        return "the lock file " + file + " cannot be read: " + std::strerror(errno) + ".";
    pid_t holder = 0;
    std::string writer;
    if (!(text >> holder) || holder <= 0)
        return {}; // the file may be incomplete: QSerialPort respects it until it is old
    std::getline(text >> std::ws, writer);
    const std::vector<std::string> names = namesOf(holder);
    const bool sameProgram = writer.empty() || names.empty() ||
                             std::any_of(names.begin(), names.end(), [&](const std::string& name) {
                                 return writer.starts_with(name);
                             });
    if (holder != getpid() && isRunning(holder) && sameProgram)
        return "process " + std::to_string(holder) + (names.empty() ? "" : " (" + names[0] + ")") +
               " has locked it with the lock file " + file + ".";
    unlink(file.c_str()); // QSerialPort would respect some stale lock files for half a minute
    return {};
}

std::string whyNotOpened(const std::string& path, const std::string& otherwise) {
    struct stat device{};
    if (stat(path.c_str(), &device) != 0)
        return errno == ENOENT ? "there is no such device. Is the programmer plugged in?"
                               : std::strerror(errno) + std::string(".");
    if (!S_ISCHR(device.st_mode))
        return "it is not a serial port.";
    if (access(path.c_str(), R_OK | W_OK) != 0)
        return "you have no permission to use it. It belongs to the group \"" +
               groupName(device.st_gid) + "\", of which you are not a member.";
    const int descriptor = open(path.c_str(), O_RDWR | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return errno == EBUSY ? "another program is using it."
                              : std::strerror(errno) + std::string(".");
    const bool terminal = isatty(descriptor) != 0;
    close(descriptor);
    if (!terminal)
        return "it is not a serial port.";
    // The device itself can be opened, so a lock file, if there is one, is the cause: it contains
    // no process ID or could not be removed.
    const std::string lockFile = lockFileOf(path);
    if (lockFile.empty())
        return otherwise;
    return "the lock file " + lockFile + " names no running program. Remove it.";
}

int waitingBytes(int descriptor) {
    int waiting = 0;
    return ioctl(descriptor, FIONREAD, &waiting) == 0 && waiting > 0 ? waiting : 0;
}

bool lineIsDead(int descriptor) {
    pollfd line{descriptor, 0, 0};
    return poll(&line, 1, 0) != 0 && (line.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}
