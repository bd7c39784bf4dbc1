#pragma once

namespace modFunc {

inline constexpr int identifyWaitMs = 100;

// Opens port ComPort, requests the firmware text and always waits identifyWaitMs. If exactly 12
// bytes have arrived by then, a programmer is found: the text is shown, the port stays open and
// ProgrammerFound is true. Otherwise the port is closed again and ProgrammerFound is false. If the
// port cannot be opened, the cause is shown. Each outcome shows one message box first and then sets
// the status bar: the port, device and size panels, or only the port panel if the port could not be
// opened. If an earlier call left a port open, that port is closed first. Does nothing while the
// link is in use: otherwise frames would mix, and closing the port would leave a chip powered.
void FindProgrammer();

} // namespace modFunc
