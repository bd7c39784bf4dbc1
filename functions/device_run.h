// One run of a device function, from the press of Run to the last frame.
//
// The data of the function procedures belongs to the run, not to the window, because a successful
// Read closes the window while the run continues. Whether it succeeds or fails, each function
// procedure returns normally, writes only to message line `MsgLine` and leaves the power-down to
// EndFunction, which is called next. If an exception escapes, Run sends the power-down frames
// instead.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace modFunc {

// Positions in listFunction. AutoList uses the same numbers, except that of Auto, which is always
// last.
enum class FunctionCode { Read, Erase, Blank, Program, Verify, Lock, Auto };

inline constexpr int messageLines = 6;

// The parts of the function window that a run updates.
struct RunWindow {
    virtual ~RunWindow() = default;
    virtual void ShowLine(int line, const std::string& text) = 0; // line 0..5
    virtual void ShowProgress(int percent) = 0;                   // 0..100
    virtual void EnableRun(bool enabled) = 0;
    virtual void EnableClose(bool enabled) = 0;
    // Closes the window; the run does not draw on it again.
    virtual void Close() = 0;
};

class DeviceRun {
public:
    struct Function {
        const char* name;               // shown in listFunction and in the Auto editor
        void (DeviceRun::*procedure)(); // null for Auto, which runs the others
        bool inAutoEditor;              // frmEditAuto offers it
    };
    // One row for each FunctionCode, in the order of the codes.
    static constexpr std::size_t functionCount = static_cast<std::size_t>(FunctionCode::Auto) + 1;
    static const std::array<Function, functionCount> functions;

    explicit DeviceRun(RunWindow& window) : window_(&window) {}
    DeviceRun(const DeviceRun&) = delete;
    DeviceRun& operator=(const DeviceRun&) = delete;

    // Runs row `index` of listFunction on the selected device and returns after the run's last
    // frame and the pause that follows that frame. Call Run once per object. Open the port first:
    // with a closed port, every frame waits for its time-out. Sends no frame if there is no such
    // row, and does nothing at all while the link is in use. If an exception escapes, the
    // power-down frames are sent before it is passed on.
    void Run(int index);

private:
    // Numbers in parentheses are ranges.
    std::int16_t Percent = 0;    // progress (0..100)
    std::int32_t ByteIndex = 0;  // index of a byte in its block
    std::int32_t BlockIndex = 0; // index of a block or page
    std::int32_t AddrHigh = 0;   // address of the current block, high byte (0..255)
    std::int32_t AddrLow = 0;    // address of the current block, low byte (0..255)
    std::int16_t AutoIndex = 0;  // position in AutoList, from 1
    std::int16_t MsgLine = 0;    // line the procedures write to (0..5)
    bool StopAuto = false;       // true: an Auto sequence ends after the current entry
    bool WaitDone = false;       // tmrWait has ticked
    std::array<std::string, messageLines> lblMsg;

    void ShowProgress();
    void ReadDevice();
    void EraseDevice();
    void BlankCheckDevice();
    void ProgramDevice();
    void VerifyDevice();
    void LockDevice();
    void RunAuto();
    void EndFunction();

    void RunChosen(int index);
    // Runs the procedure of a function code, then EndFunction. Does nothing for Auto and for any
    // number that is not a function code.
    void RunFunction(int code);
    void DropStaleBytes(); // called when a run starts and before each entry of Auto
    void LockPasses();
    void WaitTimer(int milliseconds);
    void tmrWait_Timer();

    void SetLine(const std::string& text);
    void AppendToLine(const std::string& text);
    void SetPercent(std::int32_t percent);
    // True if the selected device's Family and Size are within the ranges given in
    // app/device_rec.h. Otherwise the message line becomes "Function not supported!".
    bool DeviceFits();
    void NotSupported();
    bool CommunicationFailure(); // shows the failure and returns false
    void SetBlockAddress(std::int32_t address);
    std::int32_t BlockAddress() const { return AddrHigh * 256 + AddrLow; }

    // The part that Read, Blank and Verify share. Sets the supplies, sets up the socket, shows
    // `openingText`, then reads the chip into RxBytes, one block at a time. Calls `take` after each
    // block; `take` returns whether to continue. After the last block, appends "OK!" to the message
    // line and returns true. After any failure, returns false.
    bool ReadBlocks(const std::string& openingText, const std::function<bool()>& take);
    // The byte at index ByteIndex of the block in RxBytes.
    std::uint8_t ReplyByte() const;
    // Compares the block in RxBytes byte by byte with the bytes that `expected` returns for
    // ByteIndex. At the first difference, sets the message line to `errorText` followed by the
    // address, stops the Auto sequence, if any, and returns false.
    bool CompareBlock(const std::string& errorText, const std::function<std::uint8_t()>& expected);

    // Writes the image to the chip in blocks or pages of `bytes` bytes. At the first failure, shows
    // it in the message line and returns false.
    bool WriteBlocks(std::int32_t bytes);
    bool WriteBlock(std::int32_t bytes);
    bool WriteSucceeded();

    RunWindow* window_; // null after Read has closed the window
};

inline constexpr std::array<DeviceRun::Function, DeviceRun::functionCount> DeviceRun::functions = {{
    {"Read", &DeviceRun::ReadDevice, false},
    {"Erase", &DeviceRun::EraseDevice, true},
    {"Blank", &DeviceRun::BlankCheckDevice, true},
    {"Program", &DeviceRun::ProgramDevice, true},
    {"Verify", &DeviceRun::VerifyDevice, true},
    {"Lock", &DeviceRun::LockPasses, true},
    {"Auto", nullptr, false},
}};

} // namespace modFunc
