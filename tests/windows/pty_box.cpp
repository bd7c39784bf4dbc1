#include "tests/windows/pty_box.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <termios.h>
#include <unistd.h>
#include <utility>

Pty::Pty() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0)
        throw std::runtime_error("no pseudo-terminal");
    name_ = ptsname(master_);
    termios raw{};
    tcgetattr(master_, &raw);
    cfmakeraw(&raw);
    tcsetattr(master_, TCSANOW, &raw);
}

void Pty::write(const Bytes& bytes) const {
    if (::write(master_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("the pseudo-terminal does not take all bytes");
}

Bytes Pty::read() const {
    std::array<std::uint8_t, 4096> part{};
    const ssize_t got = ::read(master_, part.data(), part.size());
    return {part.begin(), part.begin() + std::max<ssize_t>(got, 0)};
}

void Pty::hangUp() {
    if (master_ >= 0)
        close(std::exchange(master_, -1));
}

PtyBox::PtyBox() : arrived_(pty.descriptor(), QSocketNotifier::Read) {
    simbox::Options options;
    options.baud = 0;
    options.fill = 0xFF;
    box = std::make_unique<simbox::Box>(options);
    clock_.start();
    due_.setSingleShot(true);
    QObject::connect(&due_, &QTimer::timeout, &due_, [this] { serve(); });
    QObject::connect(&arrived_, &QSocketNotifier::activated, &due_, [this] { serve(); });
}

void PtyBox::serve() {
    const std::int64_t nowUs = clock_.nsecsElapsed() / 1000;
    const Bytes bytes = pty.read();
    if (bytes.empty() && arrived_.isEnabled() && !due_.isActive())
        arrived_.setEnabled(false); // nobody has the other end open: the terminal says so for ever
    box->receive(nowUs, bytes);
    if (const Bytes reply = box->take(nowUs); !reply.empty())
        pty.write(reply);
    if (const auto next = box->nextEventUs())
        due_.start(static_cast<int>(std::max<std::int64_t>(0, (*next - nowUs) / 1000)));
}
