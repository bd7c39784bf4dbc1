#pragma once

#include "platform/machine.h"

#include <functional>
#include <memory>

// The serial port on QSerialPort. A port whose line hangs up is closed when the next events are
// handled; it then neither accepts nor delivers bytes until it is opened again.
class QtSerialPort final : public platform::SerialPort {
public:
    // `portName` returns the system's name of a port number, empty if there is no such port.
    explicit QtSerialPort(std::function<std::string(int)> portName);
    ~QtSerialPort() override;

    // Call each once, before the first Open(). Each has only one valid value: "57600,N,8,1", 0 (the
    // port is polled, there are no receive events) and binary, the only mode of QSerialPort.
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
