#include "bench/answering_line.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <termios.h>
#include <unistd.h>

AnsweringLine::AnsweringLine(std::size_t frameBytes, std::size_t replyBytes)
    : far_(posix_openpt(O_RDWR | O_NOCTTY)) {
    if (far_ < 0 || grantpt(far_) != 0 || unlockpt(far_) != 0)
        throw std::runtime_error("cannot open a pseudo-terminal");
    path_ = ptsname(far_);
    near_ = open(path_.c_str(), O_RDWR | O_NOCTTY);
    termios raw{};
    tcgetattr(near_, &raw);
    cfmakeraw(&raw);
    tcsetattr(near_, TCSANOW, &raw);
    thread_ = std::thread([this, frameBytes, replyBytes] { answer(frameBytes, replyBytes); });
}

AnsweringLine::~AnsweringLine() {
    close(near_); // the far end's read fails once no one has the line open
    thread_.join();
    close(far_);
}

void AnsweringLine::answer(std::size_t frameBytes, std::size_t replyBytes) const {
    std::array<std::uint8_t, 512> bytes{};
    for (std::size_t got = 0;;) {
        const ssize_t count = read(far_, bytes.data(), frameBytes - got);
        if (count <= 0)
            return;
        got += static_cast<std::size_t>(count);
        if (got < frameBytes)
            continue;
        got = 0;
        if (write(far_, bytes.data(), replyBytes) < 0)
            return;
    }
}
