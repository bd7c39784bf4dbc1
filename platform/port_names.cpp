#include "platform/port_names.h"

#include <filesystem>

namespace platform {

namespace {

#ifdef _WIN32
std::string systemPort(int number) {
    return number >= 1 && number <= 16 ? "COM" + std::to_string(number) : std::string();
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
    {13, 16, "/dev/ttyACM"},
};

std::string systemPort(int number) {
    for (const PortRange& range : portRanges)
        if (number >= range.first && number <= range.last)
            return range.device + std::to_string(number - range.first);
    return {};
}
#endif

// A link that leads nowhere is still the user's word: the port next in the table may be somebody
// else's device.
std::string linkedPort(const std::filesystem::path& link) {
    std::error_code failed;
    if (!std::filesystem::exists(std::filesystem::symlink_status(link, failed)))
        return {};
    const auto target = std::filesystem::canonical(link, failed);
    return failed ? link.string() : target.string();
}

} // namespace

std::string PortName(int number, const std::string& directory) {
    const std::string linked =
        linkedPort(std::filesystem::path(directory) / ("com" + std::to_string(number)));
    return linked.empty() ? systemPort(number) : linked;
}

} // namespace platform
