// The one record of shared state, through which windows and procedures exchange values: a dialog
// stores its result here, and whoever opened the dialog reads it afterwards. Only one thread uses
// the record, so there are no locks.
#pragma once

#include "app/device_rec.h"
#include "app/family_table.h"
#include "app/hex_rec.h"
#include "platform/bytes.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace modFunc {

inline constexpr int lastDeviceRow = 50;
inline constexpr int lastAutoEntry = 20;
inline constexpr std::int32_t lastBufferIndex = 70000;
inline constexpr int lastHexRecord = 10000;

struct State {
    // Program and device.

    // Folder of all data files: the current directory when the program starts.
    std::string AppPath;
    // Serial port number, 1..16. If the settings file contains another number, no port can be
    // opened.
    std::int16_t ComPort = 0;
    // Number of rows of DeviceList in use, 0..50.
    std::int16_t DeviceCount = 0;
    // The selected device's row of DeviceList, 0..50.
    std::int16_t SelectedDevice = 0;
    // Version text, such as "1.0".
    std::string ProgramVersion;
    // Release date text.
    std::string ProgramDate;
    // The device list, rows 1..DeviceCount; row 0 stays empty.
    std::array<DeviceRec, lastDeviceRow + 1> DeviceList{};
    // The family parameters, rows 0..50; constant after start-up.
    std::array<FamilyRec, lastFamily + 1> FamilyTable{};
    // Number of entries of the Auto sequence, 0..20.
    std::int16_t AutoCount = 0;
    // The Auto sequence: entries 1..AutoCount; entry 0 is not used. Each entry is a FunctionCode
    // below Auto. Any other number, which can only come from auto.cfg, runs nothing.
    std::array<std::int16_t, lastAutoEntry + 1> AutoList{};

    // Memory image.

    // The image: bytes 0..70000, whichever device is selected. Byte n belongs to chip address n.
    Bytes BufferData = Bytes(lastBufferIndex + 1);
    // Sum of the first Size bytes of BufferData (Size of the selected device), modulo 65536, as of
    // the last ComputeCheckSum().
    std::int32_t BufferCheckSum = 0;

    // Result of frmBufferFill.

    // True if frmBufferFill was closed with OK.
    bool FillConfirmed = false;
    std::uint8_t FillByte = 0;
    // First index to fill, 0..65535.
    std::int32_t FillStart = 0;
    // Number of bytes to fill, 0..65535.
    std::int32_t FillLength = 0;

    // File exchange.

    // The records of the Intel HEX file being read, from element 1 on. When an Intel HEX file is
    // saved, the line of each data record is built in element 0.
    std::vector<HexRec> HexRecords = std::vector<HexRec>(lastHexRecord + 1);
    // Number of data records in HexRecords, 0..9999.
    std::int16_t HexRecordCount = 0;
    // Result of frmFileLoad: true if the file type is Intel HEX, false if it is binary.
    bool FileIsHex = false;
    // Result of frmFileLoad: true unless it was closed with OK.
    bool FileCancelled = false;
    // Result of frmFileLoad, 0 or above: data of the file below this address is not loaded.
    std::int32_t FileAddress = 0;
    // Result of frmFileLoad, 0 or above: the offset added to every address of the file.
    std::int32_t BufferAddress = 0;

    // Programmer link.

    // The frame last sent by SendAndWait().
    Bytes TxFrame;
    // The reply last read from the port, including any bytes that ReadReplyTail() appended.
    Bytes RxText;
    // A copy of RxText, first byte at index 0, for procedures that examine a reply.
    Bytes RxBytes;
    // Length of the reply to wait for, in bytes.
    std::int16_t RxExpected = 0;
    // totmr has ticked since this was last cleared.
    bool TimedOut = false;
    // The last discovery found a programmer and left its port open.
    bool ProgrammerFound = false;
};

// The one instance. Created at the first call and not before main(), so that a lack of memory can
// be reported.
State& state();
// Sets every field to zero, false or empty.
void ResetState();

// The selected device's rows of DeviceList and FamilyTable. selectedFamily() throws
// std::out_of_range when the device's Family is outside 0..50.
const DeviceRec& selectedDevice();
const FamilyRec& selectedFamily();

} // namespace modFunc
