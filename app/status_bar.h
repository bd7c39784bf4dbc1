// The texts of the main window's status bar; panels 1 to 4 show port, device, size and file.
#pragma once

#include <array>

namespace modFunc {

// The initial texts, panel 1 first.
inline constexpr std::array initialPanelTexts = {"COM", "Device:", "Size:", "File:"};

void ShowPort();        // panel 1: the port number
void ShowPortFailure(); // panel 1: "FAIL", because the port could not be opened
void ShowDevice();      // panels 2 and 3: the selected device's name and size
void ShowFileName();    // panel 4: the file last loaded or saved

} // namespace modFunc
