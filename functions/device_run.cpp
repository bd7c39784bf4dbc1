#include "functions/device_run.h"

#include "app/family_traits.h"
#include "app/state.h"
#include "link/exchange.h"
#include "link/frames.h"
#include "platform/machine.h"

namespace modFunc {

using platform::machine;

namespace {
constexpr std::int32_t maxDeviceBytes = 65536;
}

void DeviceRun::Run(int index) {
    if (LinkInUse())
        return;
    const LinkUse use(LinkUser::Run);
    auto& m = machine();
    m.cm.setCrashFrames(PowerDownFrames());
    m.tmrWait.Tick = [this] { tmrWait_Timer(); };
    const auto release = [&m] {
        m.cm.setCrashFrames({});
        m.tmrWait.Tick = nullptr;
    };
    try {
        RunChosen(index);
    } catch (...) {
        m.cm.Output(PowerDownFrames());
        release();
        throw;
    }
    release();
}

void DeviceRun::RunChosen(int index) {
    constexpr int passPauseMs = 200;
    SetPercent(0);
    window_->EnableRun(false);
    window_->EnableClose(false);
    for (MsgLine = 0; MsgLine < messageLines; ++MsgLine)
        SetLine("");
    MsgLine = 0;
    StopAuto = false;

    if (index == static_cast<int>(FunctionCode::Auto)) {
        RunAuto();
    } else {
        DropStaleBytes();
        RunFunction(index);
    }
    if (index == static_cast<int>(FunctionCode::Erase)) {
        for (int pass = 1; pass < TraitsOf(selectedDevice().Family).erasePasses; ++pass) {
            WaitTimer(passPauseMs);
            RunFunction(index);
            WaitTimer(passPauseMs);
        }
    }

    if (window_) {
        window_->EnableRun(true);
        window_->EnableClose(true);
    }
}

void DeviceRun::RunFunction(int code) {
    if (code < 0 || code >= static_cast<int>(FunctionCode::Auto))
        return;
    (this->*functions.at(static_cast<std::size_t>(code)).procedure)();
    EndFunction();
}

// A late reply to a frame of one function would be taken for the reply to the first frame of the
// next function, and every later reply would be off by one: a Read would store the chip's bytes
// shifted by one position and show "OK!".
void DeviceRun::DropStaleBytes() {
    ReadReply();
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
    if (TraitsOf(device.Family).inTable && device.Size >= 0 && device.Size <= maxDeviceBytes)
        return true;
    NotSupported();
    return false;
}

void DeviceRun::NotSupported() {
    SetLine("Function not supported!");
}

// The chip stays powered while the message box is open. EndFunction powers it down after the
// procedure has returned.
bool DeviceRun::CommunicationFailure() {
    machine().msgBox.Show("Device Error", "Communication Error!",
                          platform::MessageBox::Icon::Critical);
    AppendToLine("   Device Fault!");
    return false;
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
