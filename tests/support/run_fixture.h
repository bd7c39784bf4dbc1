// A device, a simulated programmer and a run of a function on it.
#pragma once

#include "app/family_table.h"
#include "app/state.h"
#include "buffer/buffer_view.h"
#include "functions/device_run.h"
#include "link/exchange.h"
#include "tests/support/virtual_machine.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

struct RecordingWindow final : modFunc::RunWindow {
    void ShowLine(int line, const std::string& text) override {
        lines.at(std::size_t(line)) = text;
    }
    void ShowProgress(int percent) override {
        percents += (percents.empty() ? "" : " ") + std::to_string(percent);
    }
    void EnableRun(bool enabled) override { buttons += enabled ? "Run on, " : "Run off, "; }
    void EnableClose(bool enabled) override { buttons += enabled ? "Close on" : "Close off, "; }
    void Close() override { closed = true; }

    std::array<std::string, modFunc::messageLines> lines;
    std::string percents; // each that was shown, in order
    std::string buttons;  // each change, in order
    bool closed = false;
};

inline const ShownMessage communicationError{"Device Error", "Communication Error!",
                                             platform::MessageBox::Icon::Critical};

class RunTest : public testing::Test, protected modFunc::BufferView {
protected:
    using FunctionCode = modFunc::FunctionCode;
    using enum modFunc::FunctionCode;

    RunTest() {
        modFunc::ResetState();
        modFunc::InitFamilyTable();
        modFunc::state().SelectedDevice = 1;
        modFunc::useBufferView(this);
    }
    ~RunTest() override { modFunc::useBufferView(nullptr); }

    // A programmer with these faults, separated by blanks, and a fresh chip of FF, its port open.
    // Unthrottled, so that a reply arrives as soon as its frame has been sent.
    void programmer(const std::string& faults = "", std::uint32_t baud = 0) {
        vm.replaceProgrammer({.baud = baud, .fill = 0xFF, .faults = parseFaults(faults)});
        vm.port.open = true;
        window = {};
        vm.messages.clear();
    }
    void device(int family, int size, int pageSize = 0) {
        modFunc::DeviceRec& row = modFunc::state().DeviceList[1];
        row.Family = static_cast<std::int16_t>(family);
        row.Size = size;
        row.PageSize = static_cast<std::int16_t>(pageSize);
    }
    // Fills the image so that a shifted byte is detected.
    void image() {
        auto& bytes = modFunc::state().BufferData;
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    }
    void autoSequence(const std::vector<FunctionCode>& codes) {
        modFunc::state().AutoCount = static_cast<std::int16_t>(codes.size());
        for (std::size_t i = 0; i < codes.size(); ++i)
            modFunc::state().AutoList.at(i + 1) = static_cast<std::int16_t>(codes[i]);
    }
    void run(FunctionCode code) {
        startMs = vm.nowMs();
        modFunc::DeviceRun(window).Run(static_cast<int>(code));
    }

    const std::vector<simbox::Frame>& frames() { return vm.programmer().frames(); }
    void expectPoweredDown() {
        ASSERT_GE(frames().size(), 2U);
        EXPECT_EQ(hexText(frames().end()[-2].bytes), "00 00 00 04 56 00 00 00");
        EXPECT_EQ(hexText(frames().back().bytes), "00 00 00 02 53 00");
    }
    // Both buttons are off during a run and on after it, unless Read has closed the window.
    void expectButtonsAfterRun() {
        EXPECT_EQ(window.buttons,
                  std::string("Run off, Close off, ") + (window.closed ? "" : "Run on, Close on"));
    }
    void Reopen() override { ++viewReopened; }

    VirtualMachine vm;
    RecordingWindow window;
    double startMs = 0;
    int viewReopened = 0;
};

// Names the tests of a table by the first field of its rows.
inline const auto rowName = [](const auto& row) { return std::string(row.param.name); };
