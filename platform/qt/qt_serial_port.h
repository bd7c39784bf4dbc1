#pragma once

#include "platform/machine.h"

#include <functional>
#include <memory>

// The serial port on QSerialPort. A line that dies while open is left at once: it gives no bytes
// and takes none until it is opened again, and says nothing by itself.
class QtSerialPort final : public platform::SerialPort {
public:
    // `portName` gives the system's name of a port number, empty for none.
    explicit QtSerialPort(std::function<std::string(int)> portName);
    ~QtSerialPort() override;

    void setCommPort(int number) override;
    void setSettings(const std::string& settings) override;
    void setRThreshold(int bytes) override;
    void setInputModeBinary() override;
    bool PortOpen() const override;
    void Open() override;
    void Close() override;
    void Output(const Bytes& frame) override;
    std::int16_t InBufferCount() override;
    void AwaitBytes(std::int16_t bytes) override;
    Bytes Input() override;
    void setLastFrames(const Bytes& frames) override;

private:
    struct Line;
    std::unique_ptr<Line> line_;
};
