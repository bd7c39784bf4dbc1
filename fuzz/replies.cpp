#include "functions/device_run.h"

#include "app/family_traits.h"
#include "app/state.h"
#include "buffer/buffer_view.h"
#include "link/exchange.h"

#include "fuzz/scripted_programmer.h"

using namespace modFunc;
using fuzz::check;

namespace {

constexpr std::uint8_t imageByte = 0xA5;

struct Window final : RunWindow, BufferView {
    Window() { useBufferView(this); }
    void ShowLine(int line, const std::string& text) override {
        lines.at(static_cast<std::size_t>(line)) = text;
    }
    void ShowProgress(int percent) override {
        check(percent >= 0 && percent <= 100, "progress is 0 to 100");
    }
    void EnableRun(bool enabled) override { over = enabled; }
    void EnableClose(bool enabled) override { over = enabled; }
    void Close() override { over = true; }
    void Reopen() override {}

    std::array<std::string, messageLines> lines;
    bool over = false;
};

// One byte of the input each. An Auto sequence is of up to seven entries.
FunctionCode chooseFunctionAndDevice(fuzz::Input& input) {
    constexpr std::int16_t families[] = {1, 0, 2, 4, 5, 6, 10, 20, 21, 30, 31, 32, 40, 50, 51, -1};
    constexpr std::int32_t sizes[] = {512, 0, 255, 256, 300, 384, 65537, -1};
    constexpr std::int16_t pageSizes[] = {64, 0, 32, 100, 128, 129, 256, -1};
    State& s = state();
    const auto code = static_cast<FunctionCode>(input.byte() & 7);
    s.AutoCount = code == FunctionCode::Auto ? static_cast<std::int16_t>(input.byte() & 7) : 0;
    for (int entry = 1; entry <= s.AutoCount; ++entry)
        s.AutoList.at(static_cast<std::size_t>(entry)) = input.byte() & 7;
    DeviceRec& device = s.DeviceList[0];
    device.Family = families[input.byte() & 15];
    device.Size = sizes[input.byte() & 7];
    device.PageSize = pageSizes[input.byte() & 7];
    return code;
}

std::string times(int count, const std::string& codes) {
    std::string all;
    for (; count > 0; --count)
        all += codes;
    return all;
}

// The command codes that a function sends when nothing fails, without the power-down.
std::string fullSequence(FunctionCode code, const DeviceRec& device) {
    const FamilyTraits traits = TraitsOf(device.Family);
    const bool fits = traits.inTable && device.Size >= 0 && device.Size <= 65536;
    const bool pages = traits.write == WritePath::Pages;
    const int unit = pages ? device.PageSize : 256;
    const std::string nextPass = traits.erasePasses > 1 ? "VS" : "";
    switch (code) {
    case FunctionCode::Erase:
        if (fits && traits.erase == ErasePath::Pulses)
            return nextPass.empty() ? "VSEE" : "VSEE" + nextPass + "VSEE";
        return fits && traits.erase == ErasePath::ChipCode ? "SE" : nextPass;
    case FunctionCode::Program:
        if (!fits || traits.write == WritePath::None)
            return fits ? "V" : "";
        if (unit < 1 || unit > (pages ? 128 : 256) || 256 % unit != 0 || device.Size % unit != 0)
            return "";
        return (traits.writeSetUp == WriteSetUp::WriteSocket ? "VT" : "VS") +
               times(device.Size / unit, "DW");
    case FunctionCode::Lock:
        return fits && traits.canLock ? times(traits.lockPasses, "VSLSLSL") : "";
    default:
        return fits ? "VS" + times(device.Size / 256, "R") : "";
    }
}

void checkFunction(FunctionCode code, const std::string& line,
                   const fuzz::ScriptedProgrammer& programmer) {
    const std::string full = fullSequence(code, selectedDevice());
    const std::string sent = programmer.commandCodes.substr(0, programmer.commandCodes.size() - 2);
    check(full.starts_with(sent) &&
              (sent == full || (code != FunctionCode::Erase && code != FunctionCode::Lock)),
          "a function sends its frames; Erase and Lock, which ignore the replies, send all");
    check(programmer.vm.messages.size() <= 1, "a lost reply is reported once");
    if (!line.ends_with("OK!"))
        return;
    const int blocks = selectedDevice().Size / 256;
    check(sent == full && programmer.vm.messages.empty(), "OK means that everything was sent");
    check(code != FunctionCode::Blank || programmer.took[0xFF] >= 256 * blocks,
          "a blank chip's bytes were all FF");
    check(code != FunctionCode::Verify || programmer.took[imageByte] >= 256 * blocks,
          "a good chip's were the image's");
    check(code != FunctionCode::Program || programmer.took['N'] >= std::ranges::count(sent, 'W'),
          "all was confirmed");
}

void checkImage(std::ptrdiff_t blocks) {
    static const Bytes untouched(lastBufferIndex + 1, imageByte);
    Bytes& image = state().BufferData;
    check(std::equal(image.begin() + blocks * 256, image.end(), untouched.begin() + blocks * 256),
          "only Read changes the image, and only what it asked for");
    std::fill_n(image.begin(), blocks * 256, imageByte);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Window window;
    [[maybe_unused]] static const bool prepared = [] {
        InitFamilyTable();
        std::ranges::fill(state().BufferData, imageByte);
        return true;
    }();
    fuzz::Input input(data, size);
    const FunctionCode code = chooseFunctionAndDevice(input);
    const std::uint8_t chipFill = input.byte();
    fuzz::ScriptedProgrammer programmer(input, chipFill);
    DeviceRun(window).Run(static_cast<int>(code));

    check(!LinkInUse() && window.over, "the run has ended");
    const auto frames = static_cast<std::ptrdiff_t>(programmer.commandCodes.size());
    check(programmer.busyMs() <= 3500.0 * static_cast<double>(frames) + 1000,
          "a run ends in its time");
    check(frames == 0 ? code >= FunctionCode::Auto
                      : programmer.last ==
                            std::array{Bytes{0, 0, 0, 4, 'V', 0, 0, 0}, Bytes{0, 0, 0, 2, 'S', 0}},
          "the last frames power the socket down");
    const std::ptrdiff_t family = selectedDevice().Family;
    check(programmer.refusal.empty() || state().FamilyTable.at(std::size_t(family)).ClassByte == 0,
          "the programmer accepts every frame except those of an empty family");
    if (code < FunctionCode::Auto)
        checkFunction(code, window.lines[0], programmer);
    const auto blocks = std::min<std::ptrdiff_t>(std::ranges::count(programmer.commandCodes, 'R'),
                                                 selectedDevice().Size / 256);
    checkImage(code == FunctionCode::Read || code == FunctionCode::Auto
                   ? std::max<std::ptrdiff_t>(blocks, 0)
                   : 0);
    return 0;
}
