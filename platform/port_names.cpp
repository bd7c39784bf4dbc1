#include "platform/port_names.h"

#include <filesystem>

namespace platform {

namespace {

#ifdef _WIN32
std::string systemPort(int number) {
    return "COM" + std::to_string(number);
}
#else
struct PortRange {
    int first;
    int last;
    const char* device;
};
constexpr PortRange portRanges[] = {
    {1, 4, "/dev/ttyS"},
    {5, 12, "/dev/ttyUSB"},
    {13, portCount, "/dev/ttyACM"},
};

std::string systemPort(int number) {
    for (const PortRange& range : portRanges)
        if (number >= range.first && number <= range.last)
            return range.device + std::to_string(number - range.first);
    return {};
}
#endif

// A dangling link is still the user's choice: falling back to the table could open another device.
std::string linkedPort(const std::filesystem::path& link) {
    std::error_code failed;
    if (!std::filesystem::exists(std::filesystem::symlink_status(link, failed)))
        return {};
    const auto target = std::filesystem::canonical(link, failed);
    return failed ? link.string() : target.string();
}

} // namespace

std::string PortName(int number, const std::string& directory) {
    if (number < 1 || number > portCount)
        return {};
    const std::string linked =
        linkedPort(std::filesystem::path(directory) / ("com" + std::to_string(number)));
    return linked.empty() ? systemPort(number) : linked;
}

} // namespace platform
