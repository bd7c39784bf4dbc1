#include "platform/qt/serial_line_posix.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <grp.h>
#include <poll.h>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The file by which programs that agree on it keep each other from a port; empty where none is.
std::string lockFileOf(const std::string& path) {
    constexpr std::string_view devices = "/dev/";
    if (!path.starts_with(devices))
        return {};
    std::string name = path.substr(devices.size());
    std::replace(name.begin(), name.end(), '/', '_');
    for (const char* folder : {"/var/lock/LCK..", "/run/lock/LCK.."})
        if (access((folder + name).c_str(), F_OK) == 0)
            return folder + name;
    return {};
}

// The process that a lock file names, 0 for none that can be read.
pid_t holderOf(const std::string& lockFile) {
    long number = 0;
    std::ifstream(lockFile) >> number;
    return number > 0 ? static_cast<pid_t>(number) : 0;
}

bool isRunning(pid_t process) {
    return process > 0 && (kill(process, 0) == 0 || errno == EPERM);
}

std::string groupName(gid_t group) {
    const struct group* const entry = getgrgid(group);
    return entry ? entry->gr_name : std::to_string(group);
}

} // namespace

std::string lockedByAnother(const std::string& path) {
    const std::string lockFile = lockFileOf(path);
    const pid_t holder = lockFile.empty() ? 0 : holderOf(lockFile);
    if (!isRunning(holder) || holder == getpid())
        return {};
    return "process " + std::to_string(holder) + " holds it, by the lock file " + lockFile + ".";
}

std::string whyNotOpened(const std::string& path, const std::string& otherwise) {
    struct stat device {};
    if (stat(path.c_str(), &device) != 0)
        return errno == ENOENT ? "there is no such device. Is the box plugged in?"
                               : std::strerror(errno);
    if (!S_ISCHR(device.st_mode))
        return "it is no serial port.";
    if (access(path.c_str(), R_OK | W_OK) != 0)
        return "you may not use it. It belongs to the group \"" + groupName(device.st_gid) +
               "\", which you are no member of.";
    const int descriptor = open(path.c_str(), O_RDWR | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return errno == EBUSY ? "another program holds it." : std::strerror(errno);
    const bool terminal = isatty(descriptor) != 0;
    close(descriptor);
    if (!terminal)
        return "it is no serial port.";
    // It can be opened after all: what stands in the way is a lock file of nobody's.
    const std::string lockFile = lockFileOf(path);
    if (lockFile.empty())
        return otherwise;
    return "the lock file " + lockFile +
           " was left behind; no program that it names is running. Remove it.";
}

int waitingBytes(int descriptor) {
    int waiting = 0;
    return ioctl(descriptor, FIONREAD, &waiting) == 0 && waiting > 0 ? waiting : 0;
}

bool lineIsDead(int descriptor) {
    pollfd line{descriptor, 0, 0};
    return poll(&line, 1, 0) != 0 && (line.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}
