#include "app/startup.h"

#include "app/delimited_text.h"
#include "app/family_table.h"
#include "app/state.h"
#include "platform/files.h"

#include <filesystem>

namespace modFunc {

namespace {

constexpr char settingsFile[] = "quorven.cfg";
constexpr char deviceListFile[] = "quorven.dev";
constexpr char autoFile[] = "auto.cfg";
constexpr std::size_t maxTextBytes = 65535;

DelimitedReader openDataFile(const char* name) {
    const std::string path = DataFile(name);
    return {path, platform::ReadWholeFile(path)};
}

// Reads a text item, which a window may show. Rejects very long texts, which would block such a
// window for minutes, and texts that contain a zero byte, which would truncate them.
std::string boundedText(DelimitedReader& reader, const std::string& meaning) {
    const std::string_view text = reader.NextString(meaning);
    if (text.size() > maxTextBytes || text.find('\0') != std::string_view::npos)
        reader.Reject(meaning, "a text of at most " + std::to_string(maxTextBytes) + " bytes",
                      text);
    return std::string(text);
}

// Settings texts are written back in double quotes at exit, so they must not contain a double
// quote.
std::string settingsText(DelimitedReader& reader, const char* meaning) {
    std::string text = boundedText(reader, meaning);
    if (text.find('"') != std::string::npos)
        reader.Reject(meaning, "a text without double quotes inside", text);
    return text;
}

} // namespace

std::string DataFile(const std::string& name) {
    return (std::filesystem::path(state().AppPath) / name).string();
}

void Main() {
    state().AppPath = std::filesystem::current_path().string();
    ReadSettings();
    ReadDeviceList();
    ReadAutoFile();
    InitFamilyTable();
}

void ReadSettings() {
    DelimitedReader reader = openDataFile(settingsFile);
    ParseSettings(reader);
}

void ParseSettings(DelimitedReader& reader) {
    State& s = state();
    s.ComPort = reader.NextInt16("port number");
    s.DeviceCount = reader.NextInt16("device count", 0, lastDeviceRow);
    s.SelectedDevice = reader.NextInt16("selected device", 0, lastDeviceRow);
    s.ProgramVersion = settingsText(reader, "version");
    s.ProgramDate = settingsText(reader, "release date");
}

void WriteSettings() {
    const State& s = state();
    platform::ReplaceFile(DataFile(settingsFile),
                          DelimitedLine(s.ComPort) + DelimitedLine(s.DeviceCount) +
                              DelimitedLine(s.SelectedDevice) + DelimitedLine(s.ProgramVersion) +
                              DelimitedLine(s.ProgramDate));
}

void ReadDeviceList() {
    DelimitedReader reader = openDataFile(deviceListFile);
    ParseDeviceList(reader);
}

void ParseDeviceList(DelimitedReader& reader) {
    State& s = state();
    for (int row = 1; row <= s.DeviceCount; ++row) {
        const std::string at = "row " + std::to_string(row) + ", ";
        DeviceRec& device = s.DeviceList.at(static_cast<std::size_t>(row));
        device.Name = boundedText(reader, at + "name");
        device.Text2 = boundedText(reader, at + "text 2");
        device.Text3 = boundedText(reader, at + "text 3");
        device.Family = reader.NextInt16(at + "family");
        device.Size = reader.NextNumber(at + "size", INT32_MIN, INT32_MAX);
        device.PageSize = reader.NextInt16(at + "page size");
        device.Value7 = reader.NextInt16(at + "value 7");
        device.Value8 = reader.NextInt16(at + "value 8");
    }
}

void ReadAutoFile() {
    DelimitedReader reader = openDataFile(autoFile);
    ParseAutoFile(reader);
}

void ParseAutoFile(DelimitedReader& reader) {
    State& s = state();
    s.AutoCount = reader.NextInt16("entry count", 0, lastAutoEntry);
    for (int entry = 1; entry <= s.AutoCount; ++entry)
        s.AutoList.at(static_cast<std::size_t>(entry)) =
            reader.NextInt16("function code of entry " + std::to_string(entry));
}

void WriteAutoFile() {
    const State& s = state();
    std::string text = DelimitedLine(s.AutoCount);
    for (int entry = 1; entry <= s.AutoCount; ++entry)
        text += DelimitedLine(s.AutoList.at(static_cast<std::size_t>(entry)));
    platform::ReplaceFile(DataFile(autoFile), text);
}

} // namespace modFunc
