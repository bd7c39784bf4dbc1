// One run of a device function, from the press of Run to the last frame.
//
// What a function procedure reads and writes belongs to the run, not to the window: a successful
// Read closes the window while the run goes on. Each procedure returns normally on every outcome,
// writes to the line `MsgLine` and to no other, and leaves the power-down to EndFunction, which
// follows it always.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace modFunc {

// Function codes: positions in listFunction and values in AutoList. Auto is in the list only.
enum FunctionCode { Read = 0, Erase, Blank, Program, Verify, Lock, Auto };

inline constexpr int messageLines = 6;

// Texts of listFunction, in the order of the codes.
inline constexpr std::array functionNames = {"Read",   "Erase", "Blank", "Program",
                                             "Verify", "Lock",  "Auto"};

// The function window, as a run draws on it.
struct RunWindow {
    virtual ~RunWindow() = default;
    virtual void ShowLine(int line, const std::string& text) = 0; // line 0..5
    virtual void ShowProgress(int percent) = 0;                   // 0..100
    virtual void EnableRun(bool enabled) = 0;
    virtual void EnableClose(bool enabled) = 0;
    // The window goes; the run does not draw on it again.
    virtual void Close() = 0;
};

class DeviceRun {
public:
    explicit DeviceRun(RunWindow& window) : window_(&window) {}

    // Runs what stands at `index` of listFunction against the selected device and returns when its
    // last frame and pause are over; once for each object. An index outside 0..6 runs nothing.
    // While a run is under way nothing happens, and while discovery has the link. Should an error
    // escape, the power-down frames go out before it is passed on.
    void Run(int index);

    // A run is between its start and its end, on whatever window.
    static bool UnderWay();
    // For an error that no one handles, and for an end from outside: while a run is under way,
    // sends the two power-down frames without waiting for a reply, since nothing may be relied on
    // to wait with.
    static void PowerDownIfUnderWay();

private:
    // Fields named as the window's own; their ranges in parentheses.
    std::int16_t Percent = 0;    // progress (0..100)
    std::int32_t ByteIndex = 0;  // counter inside a block
    std::int32_t BlockIndex = 0; // counter of the blocks
    std::int32_t AddrHigh = 0;   // address of the current block, high byte (0..255)
    std::int32_t AddrLow = 0;    // low byte (0..255)
    std::int16_t AutoIndex = 0;  // position in AutoList, from 1
    std::int16_t MsgLine = 0;    // line the procedures write to (0..5)
    bool StopAuto = false;       // ends an Auto sequence after the current entry
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

    void RunFunction(int index);
    void DropLeftovers(); // before every function
    void LockPasses();
    void WaitTimer(int milliseconds);
    void tmrWait_Timer();

    void SetLine(const std::string& text);
    void AppendToLine(const std::string& text);
    void SetPercent(std::int32_t percent);
    // Refuses a device outside the limits of the catalogue: false after "Function not supported!".
    bool DeviceFits();
    void NotSupported();
    void CommunicationFailure();
    void SetBlockAddress(std::int32_t address);
    std::int32_t BlockAddress() const { return AddrHigh * 256 + AddrLow; }

    // The road that Read, Blank check and Verify share: set up the socket, then read the device
    // block by block into RxBytes and hand each to `take`, which says whether to go on. True when
    // all blocks were taken and the line says so.
    bool ReadBlocks(const std::string& openingText, const std::function<bool()>& take);
    // Byte ByteIndex of the block in RxBytes.
    std::uint8_t ReplyByte() const;
    // Compares the block in RxBytes byte by byte with what `expected` gives for ByteIndex; at the
    // first difference the line becomes `errorText` and the address, and an Auto sequence stops.
    bool CompareBlock(const std::string& errorText, const std::function<std::uint8_t()>& expected);

    // The road of Program behind its set-up, in blocks or pages of `bytes`: load and write each,
    // the first one that fails ending it. False then, with the line telling how.
    bool WriteBlocks(std::int32_t bytes);
    bool WriteBlock(std::int32_t bytes);
    bool WriteSucceeded();

    RunWindow* window_; // null once closed
};

} // namespace modFunc
