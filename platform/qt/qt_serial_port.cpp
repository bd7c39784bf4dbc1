#include "platform/qt/qt_serial_port.h"

#include "platform/qt/serial_line_posix.h"
#include "platform/qt/termination_posix.h"

#include <QSerialPort>
#include <QSocketNotifier>

#include <algorithm>
#include <utility>

namespace {
constexpr qint64 inBufferSize = 1024;
}

struct QtSerialPort::Line {
    std::function<std::string(int)> portName;
    int commPort = 0;
    QSerialPort port;
    std::unique_ptr<QSocketNotifier> hangUp; // exists while the port is open
    Bytes crashFrames;

    int waiting() const {
        return static_cast<int>(port.bytesAvailable()) + waitingBytes(port.handle());
    }
    void watchForHangUp();
    void close();
};

// After a hang-up, QSerialPort keeps the port open and its read notifier fires endlessly: with a
// read error each time in Qt 6.4, without emitting any signal in Qt 6.8. Our own notifier detects
// the hang-up in both versions. The port is closed by a queued call, so that it is never closed
// inside a notifier's handler.
void QtSerialPort::Line::watchForHangUp() {
    hangUp = std::make_unique<QSocketNotifier>(port.handle(), QSocketNotifier::Exception);
    QObject::connect(
        hangUp.get(), &QSocketNotifier::activated, &port,
        [this] {
            if (port.isOpen() && lineIsDead(port.handle()))
                close();
        },
        Qt::QueuedConnection);
}

void QtSerialPort::Line::close() {
    if (!port.isOpen())
        return;
    GuardPort(-1);
    hangUp.reset();
    port.clear(QSerialPort::Input); // otherwise the next program would receive the unread bytes
    port.close();
}

QtSerialPort::QtSerialPort(std::function<std::string(int)> portName)
    : line_(std::make_unique<Line>()) {
    line_->portName = std::move(portName);
    // Bytes beyond this limit stay in the system's queue, so bytes that are never read cost no CPU
    // time.
    line_->port.setReadBufferSize(inBufferSize);
}

QtSerialPort::~QtSerialPort() {
    setCrashFrames({});
    line_->close();
}

void QtSerialPort::setCommPort(int number) {
    line_->commPort = number;
}

void QtSerialPort::setSettings(const std::string& settings) {
    Q_ASSERT(settings == "57600,N,8,1");
    line_->port.setBaudRate(QSerialPort::Baud57600);
    line_->port.setParity(QSerialPort::NoParity);
    line_->port.setDataBits(QSerialPort::Data8);
    line_->port.setStopBits(QSerialPort::OneStop);
    line_->port.setFlowControl(QSerialPort::NoFlowControl);
}

void QtSerialPort::setRThreshold(int bytes) {
    Q_ASSERT(bytes == 0);
}

bool QtSerialPort::PortOpen() const {
    return line_->port.isOpen();
}

void QtSerialPort::Open() {
    const std::string name = line_->portName(line_->commPort);
    if (name.empty())
        throw platform::PortError("there is no such port.");
    if (const std::string holder = lockedByAnother(name); !holder.empty())
        throw platform::PortError(name + ": " + holder);
    QSerialPort& port = line_->port;
    port.setPortName(QString::fromStdString(name));
    if (!port.open(QIODevice::ReadWrite)) {
        const std::string cause = port.errorString().toStdString();
        throw platform::PortError(name + ": " + whyNotOpened(name, cause));
    }
    GuardPort(port.handle(), lockFileOf(name));
    line_->watchForHangUp();
    // A pseudo-terminal has neither DTR nor RTS, so a failure here is not an error.
    port.setDataTerminalReady(true);
    port.setRequestToSend(false);
}

void QtSerialPort::Close() {
    line_->close();
}

void QtSerialPort::Output(const Bytes& frame) {
    if (!line_->port.isOpen())
        return;
    line_->port.write(reinterpret_cast<const char*>(frame.data()),
                      static_cast<qint64>(frame.size()));
    line_->port.flush(); // write() only fills Qt's buffer
}

std::int16_t QtSerialPort::InBufferCount() {
    if (!line_->port.isOpen())
        return 0;
    return static_cast<std::int16_t>(std::min<int>(line_->waiting(), INT16_MAX));
}

Bytes QtSerialPort::Input() {
    Bytes bytes;
    QSerialPort& port = line_->port;
    if (!port.isOpen())
        return bytes;
    const auto takeBuffered = [&] {
        const QByteArray part = port.readAll();
        bytes.insert(bytes.end(), part.begin(), part.end());
    };
    takeBuffered();
    while (bytes.size() < INT16_MAX && waitingBytes(port.handle()) > 0 && port.waitForReadyRead(0))
        takeBuffered();
    return bytes;
}

void QtSerialPort::setCrashFrames(const Bytes& frames) {
    SetCrashFrames(nullptr, 0);
    line_->crashFrames = frames;
    if (!frames.empty())
        SetCrashFrames(reinterpret_cast<const char*>(line_->crashFrames.data()),
                       static_cast<int>(frames.size()));
}
