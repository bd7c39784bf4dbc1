#include "platform/qt/qt_serial_port.h"

#include "platform/qt/serial_line_posix.h"
#include "platform/qt/sudden_end_posix.h"

#include <QSerialPort>
#include <QSocketNotifier>
#include <QStringList>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr qint64 inBufferSize = 1024;

QSerialPort::Parity parityFor(const QString& letter) {
    if (letter == QLatin1String("E"))
        return QSerialPort::EvenParity;
    if (letter == QLatin1String("O"))
        return QSerialPort::OddParity;
    return QSerialPort::NoParity;
}

} // namespace

struct QtSerialPort::Line {
    std::function<std::string(int)> portName;
    int commPort = 0;
    QSerialPort port;
    Bytes lastFrames;
    bool dead = false; // hung up; closed as soon as its handlers have returned

    // The bytes of a long reply come one by one, and none but the last is worth waking for. A wire
    // cannot bring them faster than its rate, so for that long nobody listens. A line that is no
    // wire inside can; once that shows it is listened to from the first byte on.
    microseconds byteTime{};
    bool fasterThanItsRate = false;
    QTimer deafness; // runs while nobody listens
    steady_clock::time_point deafSince;
    int waitingThen = 0;

    bool usable() const { return port.isOpen() && !dead; }
    int waiting() const;
    void errorOccurred(QSerialPort::SerialPortError error);
    void close();
    void setListening(bool on);
    void listenAfter(int bytes);
    void listenAgain();
};

int QtSerialPort::Line::waiting() const {
    return static_cast<int>(port.bytesAvailable()) + waitingBytes(port.handle());
}

void QtSerialPort::Line::setListening(bool on) {
    for (QSocketNotifier* notifier : port.findChildren<QSocketNotifier*>())
        if (notifier->type() == QSocketNotifier::Read)
            notifier->setEnabled(on);
}

void QtSerialPort::Line::listenAfter(int bytes) {
    constexpr milliseconds worthIt{2};
    if (deafness.isActive()) {
        deafness.stop();
        listenAgain();
    }
    const auto rest = duration_cast<milliseconds>(bytes * byteTime); // rounded down
    if (fasterThanItsRate || rest < worthIt)
        return;
    deafSince = steady_clock::now();
    waitingThen = waiting();
    setListening(false);
    deafness.start(rest);
}

void QtSerialPort::Line::listenAgain() {
    if (!usable())
        return;
    setListening(true);
    fasterThanItsRate = (waiting() - waitingThen) * byteTime > steady_clock::now() - deafSince;
}

// A hung-up terminal raises read errors without end and still says that it is open, so what counts
// is the descriptor. The port cannot be closed inside its own signal: its notifiers fall silent
// here, and the closing is queued.
void QtSerialPort::Line::errorOccurred(QSerialPort::SerialPortError error) {
    if (error == QSerialPort::NoError || error == QSerialPort::TimeoutError || !usable())
        return;
    if (!lineIsDead(port.handle()))
        return;
    dead = true;
    for (QSocketNotifier* notifier : port.findChildren<QSocketNotifier*>())
        notifier->setEnabled(false);
    QMetaObject::invokeMethod(
        &port,
        [this] {
            if (dead)
                close();
        },
        Qt::QueuedConnection);
}

void QtSerialPort::Line::close() {
    if (!port.isOpen())
        return;
    GuardPort(-1);
    deafness.stop();
    if (!std::exchange(dead, false))
        port.clear(QSerialPort::Input); // a terminal keeps unread bytes for whoever opens it next
    port.close();
}

QtSerialPort::QtSerialPort(std::function<std::string(int)> portName)
    : line_(std::make_unique<Line>()) {
    line_->portName = std::move(portName);
    // Beyond this the system's own queue holds what comes, and no processor time goes into bytes
    // that nobody reads.
    line_->port.setReadBufferSize(inBufferSize);
    QObject::connect(&line_->port, &QSerialPort::errorOccurred, &line_->port,
                     [this](QSerialPort::SerialPortError error) { line_->errorOccurred(error); });
    line_->deafness.setTimerType(Qt::PreciseTimer);
    line_->deafness.setSingleShot(true);
    QObject::connect(&line_->deafness, &QTimer::timeout, &line_->port,
                     [this] { line_->listenAgain(); });
}

QtSerialPort::~QtSerialPort() {
    setLastFrames({});
    line_->close();
}

void QtSerialPort::setCommPort(int number) {
    line_->commPort = number;
}

// Baud rate, parity letter, data bits, stop bits.
void QtSerialPort::setSettings(const std::string& settings) {
    const QStringList parts = QString::fromStdString(settings).split(u',');
    Q_ASSERT(parts.size() == 4);
    QSerialPort& port = line_->port;
    port.setBaudRate(parts[0].toInt());
    port.setParity(parityFor(parts[1]));
    port.setDataBits(static_cast<QSerialPort::DataBits>(parts[2].toInt()));
    port.setStopBits(static_cast<QSerialPort::StopBits>(parts[3].toInt()));
    port.setFlowControl(QSerialPort::NoFlowControl);
    const int bits =
        1 + parts[2].toInt() + (port.parity() != QSerialPort::NoParity) + parts[3].toInt();
    line_->byteTime = microseconds(1'000'000 * bits / port.baudRate());
}

// The port is polled and its bytes are bytes: there is nothing else to it.
void QtSerialPort::setRThreshold(int bytes) {
    Q_ASSERT(bytes == 0);
}
void QtSerialPort::setInputModeBinary() {}

bool QtSerialPort::PortOpen() const {
    return line_->usable();
}

void QtSerialPort::Open() {
    const std::string name = line_->portName(line_->commPort);
    if (name.empty())
        throw platform::PortError("there is no such port on this computer");
    if (const std::string holder = lockedByAnother(name); !holder.empty())
        throw platform::PortError(name + ": " + holder);
    QSerialPort& port = line_->port;
    port.setPortName(QString::fromStdString(name));
    if (!port.open(QIODevice::ReadWrite)) {
        const std::string cause = port.errorString().toStdString();
        line_->close();
        throw platform::PortError(name + ": " + whyNotOpened(name, cause));
    }
    GuardPort(port.handle());
    line_->fasterThanItsRate = false;
    // A pseudo-terminal has neither line; that is no error.
    port.setDataTerminalReady(true);
    port.setRequestToSend(false);
}

void QtSerialPort::Close() {
    line_->close();
}

void QtSerialPort::Output(const Bytes& frame) {
    if (!line_->usable())
        return;
    line_->port.write(reinterpret_cast<const char*>(frame.data()),
                      static_cast<qint64>(frame.size()));
    line_->port.flush(); // write() alone fills Qt's buffer
}

std::int16_t QtSerialPort::InBufferCount() {
    if (!line_->usable())
        return 0;
    return static_cast<std::int16_t>(std::min<int>(line_->waiting(), INT16_MAX));
}

void QtSerialPort::AwaitBytes(std::int16_t bytes) {
    if (line_->usable())
        line_->listenAfter(bytes - line_->waiting());
}

Bytes QtSerialPort::Input() {
    Bytes bytes;
    const auto takeBuffered = [&] {
        const QByteArray part = line_->port.readAll();
        bytes.insert(bytes.end(), part.begin(), part.end());
    };
    if (!line_->usable())
        return bytes;
    takeBuffered();
    while (line_->usable() && bytes.size() < INT16_MAX && waitingBytes(line_->port.handle()) > 0 &&
           line_->port.waitForReadyRead(0))
        takeBuffered();
    return bytes;
}

void QtSerialPort::setLastFrames(const Bytes& frames) {
    SetLastBytes(nullptr, 0);
    line_->lastFrames = frames;
    if (!frames.empty())
        SetLastBytes(reinterpret_cast<const char*>(line_->lastFrames.data()),
                     static_cast<int>(frames.size()));
}
