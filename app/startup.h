// Start-up and the start files: settings, device list, Auto sequence.
//
// All three must be in AppPath. Each procedure throws platform::FileError, which names the file,
// the item and the cause, if a file is missing, damaged or outside its limits. A text may have up
// to 65535 bytes. The Parse... procedures read a text that is already in memory.
#pragma once

#include <string>

namespace modFunc {

class DelimitedReader;

// The path of the file `name` in AppPath.
std::string DataFile(const std::string& name);

// Start-up before the main window: sets AppPath, reads settings, device list and Auto sequence and
// fills the family table. In this order, since the settings contain the number of devices.
void Main();

// quorven.cfg: five items into ComPort, DeviceCount (0..50), SelectedDevice (0..50),
// ProgramVersion, ProgramDate.
void ReadSettings();
void ParseSettings(DelimitedReader& reader);
// Replaces quorven.cfg with these five items, completely or not at all. Throws platform::FileError.
void WriteSettings();

// quorven.dev: eight items for each of DeviceList rows 1 to DeviceCount. The rest of the file is
// not read.
void ReadDeviceList();
void ParseDeviceList(DelimitedReader& reader);

// auto.cfg: AutoCount (0..20), then as many function codes into AutoList.
void ReadAutoFile();
void ParseAutoFile(DelimitedReader& reader);
// Replaces auto.cfg with AutoCount and its entries, completely or not at all. Throws
// platform::FileError.
void WriteAutoFile();

} // namespace modFunc
