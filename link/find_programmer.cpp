#include "link/find_programmer.h"

#include "app/state.h"
#include "app/status_bar.h"
#include "link/exchange.h"
#include "link/frames.h"
#include "platform/machine.h"

#include <string>

namespace modFunc {

namespace {

using platform::machine;
using Icon = platform::MessageBox::Icon;

// The bytes as UTF-8 text with one character for each byte. A byte of 80 (hexadecimal) or above
// becomes two bytes.
std::string characters(const Bytes& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        if (byte < 0x80) {
            text += static_cast<char>(byte);
        } else {
            text += static_cast<char>(0xC0 | (byte >> 6));
            text += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return text;
}

// Opens the port, sends the identify frame and waits identifyWaitMs. Throws platform::PortError.
void askForFirmware() {
    State& s = state();
    auto& m = machine();
    m.cm.Open();
    s.RxText = m.cm.Input();
    m.totmr.setInterval(identifyWaitMs);
    m.cm.Output(IdentifyFrame());
    m.totmr.setEnabled(true);
    s.TimedOut = false;
    while (!s.TimedOut)
        m.events.Yield();
}

} // namespace

void FindProgrammer() {
    if (LinkInUse())
        return;
    const LinkUse use(LinkUser::Discovery);
    State& s = state();
    auto& m = machine();
    const std::string port = std::to_string(s.ComPort);

    m.cm.Close(); // an open port cannot change its number or be opened again
    m.cm.setCommPort(s.ComPort);
    try {
        askForFirmware();
    } catch (const platform::PortError& error) {
        m.msgBox.Show("Communication Port Error", "COM" + port + ", " + error.what(),
                      Icon::Critical);
        ShowPortFailure();
        s.ProgrammerFound = false;
        return;
    }

    const bool complete = m.cm.InBufferCount() == identifyReplyBytes;
    if (complete)
        s.RxText = m.cm.Input(); // the line may have failed, or more bytes arrived, since the count
    if (complete && s.RxText.size() >= identifyReplyBytes) {
        s.RxBytes.assign(s.RxText.begin(), s.RxText.begin() + identifyReplyBytes);
        m.msgBox.Show("Device Found!", "Firmware: " + characters(s.RxBytes), Icon::Information);
        s.ProgrammerFound = true;
    } else {
        m.msgBox.Show("Communication Error", "Cannot find device at COM " + port + " !",
                      Icon::Critical);
        m.cm.Close();
        s.ProgrammerFound = false;
    }
    ShowPort();
    ShowDevice();
}

} // namespace modFunc
