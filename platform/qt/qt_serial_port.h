#pragma once

#include "platform/machine.h"

#include <functional>
#include <memory>

// The serial port on QSerialPort. A line that hangs up while open is closed by the next events; it
// takes and delivers no bytes until it is opened again.
class QtSerialPort final : public platform::SerialPort {
public:
    // `portName` gives the system's name of a port number, empty if there is no such port.
    explicit QtSerialPort(std::function<std::string(int)> portName);
    ~QtSerialPort() override;

    // Set once, before the first opening. Each has one value: "57600,N,8,1", 0 (the port is polled,
    // there are no receive events) and binary, which is all that QSerialPort knows.
    void setSettings(const std::string& settings);
    void setRThreshold(int bytes);
    void setInputModeBinary() {}

    void setCommPort(int number) override;
    bool PortOpen() const override;
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
