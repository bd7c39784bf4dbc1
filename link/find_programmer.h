#pragma once

namespace modFunc {

inline constexpr int identifyWaitMs = 100;

// Opens port ComPort, asks for the firmware text and waits identifyWaitMs, whatever arrives.
// Exactly 12 bytes by then are a programmer: the text is shown, the port stays open and
// ProgrammerFound is true. Anything else is no programmer: the port is closed again. A port that
// does not open is reported with the cause. Each outcome shows one message box first and then sets
// the status bar. A port that is open already is closed first. While the link is in use nothing
// happens: the frames would mix, and closing the port would leave a chip under power.
void FindProgrammer();

} // namespace modFunc
