#include "platform/qt/serial_line_posix.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string groupName(gid_t group) {
    const struct group* const entry = getgrgid(group);
    return entry ? entry->gr_name : std::to_string(group);
}

} // namespace

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
    // It can be opened after all: what stands in the way is a lock file that programs agree on.
    return terminal ? "another program may hold it (" + otherwise + ")." : "it is no serial port.";
}

int waitingBytes(int descriptor) {
    int waiting = 0;
    return ioctl(descriptor, FIONREAD, &waiting) == 0 && waiting > 0 ? waiting : 0;
}

bool lineIsDead(int descriptor) {
    pollfd line{descriptor, 0, 0};
    return poll(&line, 1, 0) != 0 && (line.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}
