#include "files/hex_file.h"

#include "app/delimited_text.h"
#include "app/hex_text.h"
#include "app/state.h"
#include "app/status_bar.h"
#include "buffer/buffer_view.h"
#include "buffer/image.h"
#include "platform/file_error.h"
#include "platform/files.h"
#include "platform/machine.h"

#include <algorithm>

namespace modFunc {

namespace {

using platform::FileError;
using platform::machine;

constexpr std::int32_t writtenRecordBytes = 16;
constexpr std::size_t headerCharacters = 9;
constexpr std::size_t checkCharacters = 2;
constexpr std::size_t maxLineCharacters =
    headerCharacters + std::size_t{2} * hexRecordDataBytes + checkCharacters;

// Up to `count` characters of the line from position `position` on; positions are counted from 1.
std::string_view field(std::string_view line, std::size_t position, std::size_t count) {
    return line.substr(std::min(position - 1, line.size()), count);
}

// The byte that the two characters at `position` represent, parsed tolerantly.
std::uint8_t byteAt(std::string_view line, std::size_t position) {
    const auto digitAt = [line](std::size_t index) {
        return index < line.size() ? HexDigitValue(line[index]) : -1;
    };
    const int high = digitAt(position - 1);
    const int low = digitAt(position);
    if (high < 0)
        return 0;
    return static_cast<std::uint8_t>(low < 0 ? high : high * 16 + low);
}

std::string atRecord(const std::string& fileName, int record) {
    return fileName + ", record " + std::to_string(record) + ": ";
}

// Reads every field except the data.
void readHeader(HexRec& record, std::string_view line, const std::string& fileName, int number) {
    record.Length = byteAt(line, 2);
    const auto address = StrictHex(field(line, 4, 4));
    if (!address)
        throw FileError(atRecord(fileName, number) + "the address is not a hexadecimal number.");
    record.Address = *address;
    record.RecordType = byteAt(line, 8);
    record.CheckSum = static_cast<std::int16_t>(
        TolerantHex(line.substr(line.size() - std::min(line.size(), checkCharacters))));
}

void readData(HexRec& record, const std::string& fileName, int number) {
    if (record.Length > hexRecordDataBytes)
        throw FileError(atRecord(fileName, number) + "the record has more than " +
                        std::to_string(hexRecordDataBytes) + " data bytes.");
    const std::string_view line = record.Line;
    for (std::size_t i = 0; i < static_cast<std::size_t>(record.Length); ++i)
        record.Data[i] = byteAt(line, 10 + 2 * i);
}

// The sum covers the whole line, whatever the byte count field says.
bool checkSumIsRight(const HexRec& record, std::string_view line) {
    int sum = record.CheckSum;
    for (std::size_t position = 2; position + 2 <= line.size(); position += 2)
        sum += byteAt(line, position);
    return sum % 256 == 0;
}

void storeRecords() {
    State& s = state();
    for (std::int16_t number = 1; number <= s.HexRecordCount; ++number) {
        const HexRec& record = s.HexRecords[static_cast<std::size_t>(number)];
        for (std::int32_t i = 0; i < record.Length; ++i) {
            const std::int32_t address = record.Address + i;
            if (address < s.FileAddress)
                continue;
            const std::int64_t target = std::int64_t{address} + s.BufferAddress;
            if (target > lastBufferIndex)
                throw FileError(atRecord(machine().cdia.FileName, number) +
                                "the data reach past the end of the image.");
            s.BufferData[static_cast<std::size_t>(target)] =
                record.Data[static_cast<std::size_t>(i)];
        }
    }
}

// The data record for the 16 bytes from `address` on, with its line end. HexRecords[0].Line
// contains the text.
const std::string& writtenRecord(std::int32_t address) {
    State& s = state();
    std::string& line = s.HexRecords[0].Line;
    line = ":10" + HexWord(address) + "00";
    int sum = byteAt(line, 2) + byteAt(line, 4) + byteAt(line, 6);
    std::size_t at = line.size();
    line.resize(at + 2 * writtenRecordBytes + 2);
    for (std::int32_t i = address; i < address + writtenRecordBytes; ++i, at += 2) {
        const std::uint8_t byte = i <= lastBufferIndex ? s.BufferData[std::size_t(i)] : erasedByte;
        PutHexByte(&line[at], byte);
        sum += byte;
    }
    PutHexByte(&line[at], static_cast<std::uint8_t>(-sum));
    return line += "\r\n";
}

void reject(const char* text) {
    machine().msgBox.Show("File Load Error", text, platform::MessageBox::Icon::Critical);
}

} // namespace

HexResult ReadHexText(const std::string& fileName, std::string text) {
    State& s = state();
    DelimitedReader reader(fileName, std::move(text));
    for (int number = 1; !reader.atEnd(); ++number) {
        if (number > lastHexRecord)
            throw FileError(fileName + ": the file has more than " + std::to_string(lastHexRecord) +
                            " records.");
        HexRec& record = s.HexRecords[static_cast<std::size_t>(number)];
        const std::string_view line = reader.NextString("record");
        record.Line = line.substr(0, maxLineCharacters); // a damaged file may be a single long line
        readHeader(record, line, fileName, number);
        if (record.RecordType != 0) {
            s.HexRecordCount = static_cast<std::int16_t>(number - 1);
            return HexResult::Complete;
        }
        readData(record, fileName, number);
        if (!checkSumIsRight(record, line))
            return HexResult::WrongCheckSum;
    }
    return HexResult::NoEndRecord;
}

void OpenHexFile() {
    const std::string& fileName = machine().cdia.FileName;
    switch (ReadHexText(fileName, platform::ReadWholeFile(fileName))) {
    case HexResult::WrongCheckSum:
        reject("Checksum Error in hex file!");
        return;
    case HexResult::NoEndRecord:
        reject("No end record in hex file!");
        return;
    case HexResult::Complete:
        break;
    }
    storeRecords();
    ShowFileName();
    bufferView().Reopen();
}

std::string HexFileText() {
    const std::int32_t size = selectedDevice().Size;
    if (size > lastBufferIndex + 1)
        throw FileError(machine().cdia.FileName + ": the device is larger than the image.");
    std::string text;
    for (std::int32_t address = 0; address < size; address += writtenRecordBytes)
        text += writtenRecord(address);
    return text + ":00000001FF\r\n";
}

void SaveHexFile() {
    platform::ReplaceFile(machine().cdia.FileName, HexFileText());
    ShowFileName();
}

bool LooksLikeHexFile(const std::string& fileName) {
    return fileName.ends_with("HEX") || fileName.ends_with("hex");
}

} // namespace modFunc
