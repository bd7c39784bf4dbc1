#pragma once

namespace modFunc {

inline constexpr int identifyWaitMs = 100;

// Opens port ComPort, asks the box for its firmware text and waits identifyWaitMs, whatever comes.
// Exactly 12 bytes by then are a box: its text is shown, the port stays open and ProgrammerFound is
// true. Anything else is none: the port is closed again. A port that does not open is told with its
// own description. Each outcome shows one message box first and then sets the status bar. A port
// that is open already is closed to begin with. While a run or another discovery has the link
// nothing happens: its frames would mix with theirs, and closing the port would leave a chip under
// power.
void FindProgrammer();

// Status bar panels 2 and 3 for the selected device.
void ShowDevice();

} // namespace modFunc
