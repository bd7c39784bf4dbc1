// Start-up and the three data files that it reads: the settings, the device list and the Auto
// sequence.
//
// These files must be in the folder AppPath. A procedure that reads one of them throws
// platform::FileError if the file is missing or damaged or contains a number that does not fit its
// type or is outside a range given below. Other limits are not checked here. The message names the
// file, the cause and, for a damaged file, the item. State may then be partly filled. A text item
// has at most 65535 bytes and no zero byte; a text item of the settings must not contain a double
// quote either. The Parse... procedures read a file whose text is already in memory.
#pragma once

#include <string>

namespace modFunc {

class DelimitedReader;

// The path of the file `name` in AppPath.
std::string DataFile(const std::string& name);

// The part of start-up that precedes the main window: sets AppPath, reads the settings, the device
// list and the Auto sequence, and fills the family table. The settings are read first because they
// contain the number of devices.
void Main();

// Reads the five items of quorven.cfg into ComPort, DeviceCount (0..50), SelectedDevice (0..50),
// ProgramVersion and ProgramDate.
void ReadSettings();
void ParseSettings(DelimitedReader& reader);
// Writes these five items to quorven.cfg, using platform::ReplaceFile. Throws platform::FileError.
void WriteSettings();

// Reads quorven.dev: eight items for each of the rows 1 to DeviceCount of DeviceList. DeviceCount
// must have been read. The rest of the file is ignored.
void ReadDeviceList();
void ParseDeviceList(DelimitedReader& reader);

// Reads auto.cfg: AutoCount (0..20), then that many function codes into AutoList.
void ReadAutoFile();
void ParseAutoFile(DelimitedReader& reader);
// Writes AutoCount and the entries of AutoList to auto.cfg, using platform::ReplaceFile. Throws
// platform::FileError.
void WriteAutoFile();

} // namespace modFunc
