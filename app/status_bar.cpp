#include "app/status_bar.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "platform/machine.h"

namespace modFunc {

namespace {

void show(int panel, const std::string& text) {
    platform::machine().sbar.setPanel(panel, text);
}

} // namespace

void ShowPort() {
    show(1, "COM" + std::to_string(state().ComPort));
}

void ShowPortFailure() {
    show(1, "FAIL");
}

void ShowDevice() {
    show(2, "Device: " + selectedDevice().Name);
    show(3, "Size: " + HexDigits(selectedDevice().Size) + "H");
}

void ShowFileName() {
    show(4, "File: " + platform::machine().cdia.FileName);
}

} // namespace modFunc
