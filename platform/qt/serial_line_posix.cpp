#include "platform/qt/serial_line_posix.h"

#include <poll.h>
#include <sys/ioctl.h>

int waitingBytes(int descriptor) {
    int waiting = 0;
    return ioctl(descriptor, FIONREAD, &waiting) == 0 && waiting > 0 ? waiting : 0;
}

bool lineIsDead(int descriptor) {
    pollfd line{descriptor, 0, 0};
    return poll(&line, 1, 0) != 0 && (line.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}
