// The one record of shared state. Windows and procedures meet here: a dialog writes its answer
// into it, and whoever opened the dialog reads it afterwards. One thread, so no locks.
#pragma once

#include "app/device_rec.h"
#include "app/family_table.h"
#include "files/hex_rec.h"
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

    // Directory of all data files: the current directory at start. Written by Main;
    // read by DataFile and the port names.
    std::string AppPath;
    // Serial port number, 1..16; another one in the settings file leads to no port. Written by
    // ReadSettings, frmSettings; read by FindProgrammer, frmSettings, WriteSettings.
    std::int16_t ComPort = 0;
    // Rows of DeviceList in use, 0..50. Written by ReadSettings alone; read by
    // ReadDeviceList, frmSelectDevice, WriteSettings.
    std::int16_t DeviceCount = 0;
    // Row of DeviceList in use, 0..50. Written by ReadSettings, frmSelectDevice; read by all that
    // depends on the chip, through selectedDevice(), and by frmSelectDevice, WriteSettings.
    std::int16_t SelectedDevice = 0;
    // Version text, such as "1.0". Written by ReadSettings alone; read by mdiMain, frmAbout,
    // WriteSettings.
    std::string ProgramVersion;
    // Release date text. Written by ReadSettings alone; read by frmAbout, WriteSettings.
    std::string ProgramDate;
    // The device catalogue, rows 1..DeviceCount; row 0 stays empty. Written by
    // ReadDeviceList; read through selectedDevice() and by frmSelectDevice.
    std::array<DeviceRec, lastDeviceRow + 1> DeviceList{};
    // The family parameters, rows 0..50. Written by InitFamilyTable; read through
    // selectedFamily() by the device functions.
    std::array<FamilyRec, lastFamily + 1> FamilyTable{};
    // Entries of the Auto sequence, 0..20. Written by ReadAutoFile, frmEditAuto; read by RunAuto,
    // frmEditAuto, WriteAutoFile.
    std::int16_t AutoCount = 0;
    // The Auto sequence, entries 1..AutoCount, each a function code 0..5; entry 0 is not used. What
    // else auto.cfg holds runs nothing. Written and read as AutoCount.
    std::array<std::int16_t, lastAutoEntry + 1> AutoList{};

    // Memory image.

    // The image, bytes 0..70000 for every device; chip address n is byte n. Written by Clear, Fill,
    // the file loaders, ReadDevice and the hex editor; read by the view, ProgramDevice,
    // VerifyDevice and the savers.
    Bytes BufferData = Bytes(lastBufferIndex + 1);
    // Sum of the selected device's bytes, 0..65535. Written by ComputeCheckSum; read by frmBuffer.
    std::int32_t BufferCheckSum = 0;

    // Answers of frmBufferFill, written by it and read by FillImage.

    // It ended by OK. Read by Buffer Fill.
    bool FillConfirmed = false;
    // The fill value.
    std::uint8_t FillByte = 0;
    // First index to fill, 0..65535.
    std::int32_t FillStart = 0;
    // Number of bytes to fill, 0..65535.
    std::int32_t FillLength = 0;

    // File exchange.

    // The parsed Intel HEX file, records from element 1 on. Written and read by OpenHexFile. The
    // text of element 0 is the line that HexFileText is building.
    std::vector<HexRec> HexRecords = std::vector<HexRec>(lastHexRecord + 1);
    // Data records in HexRecords. Written and read by OpenHexFile.
    std::int16_t HexRecordCount = 0;
    // frmFileLoad ended with the type Intel HEX chosen. Written by frmFileLoad's OK;
    // read by File Load and File Save.
    bool FileIsHex = false;
    // frmFileLoad ended by Cancel. Written by frmFileLoad; read by File Load, File Save.
    bool FileCancelled = false;
    // Lower limit on the file's addresses, 0 or above. Written by frmFileLoad's OK; read by
    // OpenHexFile, OpenBinFile.
    std::int32_t FileAddress = 0;
    // Added to every file address, 0 or above. Written by frmFileLoad's OK; read
    // by OpenHexFile, OpenBinFile.
    std::int32_t BufferAddress = 0;

    // Programmer link.

    // The frame being sent. Written and read by SendAndWait.
    Bytes TxFrame;
    // The bytes last taken from the port. Written by every read of the port; read by
    // the device functions and FindProgrammer.
    Bytes RxText;
    // The same bytes where a caller examines them, index 0 first. Written and read by the device
    // functions that look at a reply and by FindProgrammer.
    Bytes RxBytes;
    // Length of the reply to wait for, in bytes. Written by SendAndWait and by the functions that
    // wait for more of a reply; read by WaitReply.
    std::int16_t RxExpected = 0;
    // totmr has ticked since this was last cleared. Set by totmr_Timer; cleared by WaitReply,
    // FindProgrammer and the splash; read by these and the functions that look at time-outs.
    bool TimedOut = false;
    // The box answered at discovery. Written by FindProgrammer; read by frmFunction.
    bool ProgrammerFound = false;
};

// The one instance.
State& state();
// Every field back to zero, False or empty.
void ResetState();

// The catalogue row in use and its row of family parameters. selectedFamily() throws
// std::out_of_range when the device's Family is outside 0..50.
const DeviceRec& selectedDevice();
const FamilyRec& selectedFamily();

} // namespace modFunc
