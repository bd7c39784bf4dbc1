#include "functions/device_run.h"

#include "app/state.h"
#include "link/exchange.h"
#include "link/frames.h"
#include "platform/machine.h"

namespace modFunc {

using platform::machine;

namespace {

bool runUnderWay = false;

Bytes powerDownFrames() {
    Bytes frames = SuppliesOffFrame();
    const Bytes release = ReleaseFrame();
    frames.insert(frames.end(), release.begin(), release.end());
    return frames;
}

struct UnderWayMark {
    UnderWayMark() {
        runUnderWay = true;
        machine().cm.setLastFrames(powerDownFrames());
    }
    ~UnderWayMark() {
        runUnderWay = false;
        machine().cm.setLastFrames({});
        machine().tmrWait.Tick = nullptr; // it names the run
    }
    UnderWayMark(const UnderWayMark&) = delete;
    UnderWayMark& operator=(const UnderWayMark&) = delete;
};

constexpr std::int32_t largestDevice = 65536;
constexpr int erasePassPauseMs = 200;

} // namespace

bool DeviceRun::UnderWay() {
    return runUnderWay;
}

void DeviceRun::Run(int index) {
    if (LinkInUse())
        return;
    const LinkUse use;
    const UnderWayMark mark;
    machine().tmrWait.Tick = [this] { tmrWait_Timer(); };

    SetPercent(0);
    window_->EnableRun(false);
    window_->EnableClose(false);
    for (MsgLine = 0; MsgLine < messageLines; ++MsgLine)
        SetLine("");
    MsgLine = 0;
    StopAuto = false;
    DropLeftovers();
    try {
        RunFunction(index);
    } catch (...) {
        PowerDownIfUnderWay();
        throw;
    }
    if (window_) {
        window_->EnableRun(true);
        window_->EnableClose(true);
    }
}

// An answer that came too late for an earlier function would count as one to this function's first
// frame, the answer to that as one to the second, and so on: a Read would move the chip's bytes and
// say "OK".
void DeviceRun::DropLeftovers() {
    ReadReply();
}

void DeviceRun::PowerDownIfUnderWay() {
    if (UnderWay())
        machine().cm.Output(powerDownFrames());
}

void DeviceRun::RunFunction(int index) {
    switch (index) {
    case Read:
        ReadDevice();
        EndFunction();
        break;
    case Erase:
        EraseDevice();
        EndFunction();
        if (selectedDevice().Family == 4) {
            WaitTimer(erasePassPauseMs);
            EraseDevice();
            EndFunction();
            WaitTimer(erasePassPauseMs);
        }
        break;
    case Blank:
        BlankCheckDevice();
        EndFunction();
        break;
    case Program:
        ProgramDevice();
        EndFunction();
        break;
    case Verify:
        VerifyDevice();
        EndFunction();
        break;
    case Lock:
        LockPasses();
        break;
    case Auto:
        RunAuto();
        break;
    default:
        break;
    }
}

// The socket stays powered from pass to pass.
void DeviceRun::LockPasses() {
    const int family = selectedDevice().Family;
    const int passes = family == 2 || family == 4 ? 3 : 2;
    for (int pass = 0; pass < passes; ++pass)
        LockDevice();
    EndFunction();
}

void DeviceRun::ShowProgress() {
    if (window_)
        window_->ShowProgress(Percent);
}

void DeviceRun::SetPercent(std::int32_t percent) {
    Percent = static_cast<std::int16_t>(percent);
    ShowProgress();
}

void DeviceRun::SetLine(const std::string& text) {
    lblMsg.at(static_cast<std::size_t>(MsgLine)) = text;
    if (window_)
        window_->ShowLine(MsgLine, text);
}

void DeviceRun::AppendToLine(const std::string& text) {
    SetLine(lblMsg.at(static_cast<std::size_t>(MsgLine)) + text);
}

bool DeviceRun::DeviceFits() {
    const DeviceRec& device = selectedDevice();
    if (device.Family >= 0 && device.Family <= lastFamily && device.Size >= 0 &&
        device.Size <= largestDevice)
        return true;
    NotSupported();
    return false;
}

void DeviceRun::NotSupported() {
    SetLine("Function not supported!");
}

// The chip stays powered while the box waits for the user: the power-down follows the procedure.
void DeviceRun::CommunicationFailure() {
    machine().msgBox.Show("Device Error", "Communication Error!",
                          platform::MessageBox::Icon::Critical);
    AppendToLine("   Device Fault!");
}

void DeviceRun::SetBlockAddress(std::int32_t address) {
    AddrHigh = address / 256;
    AddrLow = address % 256;
}

void DeviceRun::WaitTimer(int milliseconds) {
    auto& m = machine();
    m.tmrWait.setInterval(milliseconds);
    m.tmrWait.setEnabled(true);
    WaitDone = false;
    while (!WaitDone)
        m.events.Yield();
}

void DeviceRun::tmrWait_Timer() {
    WaitDone = true;
    machine().tmrWait.setEnabled(false);
}

} // namespace modFunc
