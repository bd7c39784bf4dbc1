#pragma once

#include "platform/machine.h"

#include <functional>
#include <memory>

// The serial port, implemented with QSerialPort. A port whose line hangs up is closed when the next
// events are handled; it then neither accepts nor delivers bytes until it is opened again.
class QtSerialPort final : public platform::SerialPort {
public:
    // `portName` returns the system's name for a port number, or an empty string if the number is
    // out of range; the device need not exist.
    explicit QtSerialPort(std::function<std::string(int)> portName);
    ~QtSerialPort() override;

    // Call each of the next three functions once, before the first Open(). setSettings() accepts
    // only "57600,N,8,1". setRThreshold() accepts only 0, because the port is polled and has no
    // receive events. Binary is the only mode of QSerialPort.
    void setSettings(const std::string& settings);
    void setRThreshold(int bytes);
    void setInputModeBinary() {}

    void setCommPort(int number) override;
    bool PortOpen() const; // false after the connection has been lost
    void Open() override;
    void Close() override;
    void Output(const Bytes& frame) override;
    std::int16_t InBufferCount() override;
    Bytes Input() override;
    void setCrashFrames(const Bytes& frames) override;

private:
    struct Line;
    std::unique_ptr<Line> line_;
};
