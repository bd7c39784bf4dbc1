// A device, a simulated programmer and a run of a function on it.
#pragma once

#include "app/state.h"
#include "buffer/buffer_view.h"
#include "functions/device_run.h"
#include "tests/support/virtual_machine.h"

#include <gtest/gtest.h>

struct RecordingWindow final : modFunc::RunWindow {
    void ShowLine(int row, const std::string& text) override { lines.at(std::size_t(row)) = text; }
    void ShowProgress(int percent) override { percents += " " + std::to_string(percent); }
    void EnableRun(bool enabled) override { buttons += enabled ? "Run on, " : "Run off, "; }
    void EnableClose(bool enabled) override { buttons += enabled ? "Close on" : "Close off, "; }
    void Close() override { closed = true; }

    std::array<std::string, modFunc::messageLines> lines;
    std::string percents, buttons; // each change, in order
    bool closed = false;
};

class RunTest : public testing::Test, protected modFunc::BufferView {
protected:
    using FunctionCode = modFunc::FunctionCode;
    using enum modFunc::FunctionCode;

    RunTest() {
        modFunc::InitFamilyTable();
        modFunc::state().SelectedDevice = 1;
        modFunc::useBufferView(this);
    }
    ~RunTest() override { modFunc::useBufferView(nullptr); }

    // A programmer with these faults and a fresh chip of FF, its port open. Unthrottled, so that a
    // reply arrives as soon as its frame has been sent.
    void programmer(const std::vector<simbox::Fault>& faults = {}, std::uint32_t baud = 0) {
        vm.programmer = simbox::Programmer({.baud = baud, .fill = 0xFF, .faults = faults});
        vm.queue.clear();
        vm.open = true;
        vm.messages.clear();
    }
    void programmer(const std::string& faults) { programmer(parseFaults(faults)); }
    void device(int family, int size, int pageSize = 0) {
        modFunc::DeviceRec& row = modFunc::state().DeviceList[1];
        row.Family = std::int16_t(family);
        row.Size = size;
        row.PageSize = std::int16_t(pageSize);
    }
    // Fills the image so that a shifted byte is detected.
    void image() {
        for (std::size_t i = 0; i < imageBytes.size(); ++i)
            imageBytes[i] = std::uint8_t(i * 7 + i / 256);
    }
    void autoSequence(const std::vector<FunctionCode>& codes) {
        modFunc::state().AutoCount = 0;
        for (const FunctionCode code : codes)
            modFunc::state().AutoList.at(++modFunc::state().AutoCount) = std::int16_t(code);
    }
    // Also expects what holds after every run: the buttons are on unless Read has closed the
    // window, the link is free, and the socket has no power.
    void run(FunctionCode code) {
        window = {};
        window.lines.fill("of an earlier run");
        startMs = vm.nowMs();
        modFunc::DeviceRun(window).Run(int(code));
        EXPECT_EQ(window.buttons,
                  std::string("Run off, Close off, ") + (window.closed ? "" : "Run on, Close on"));
        EXPECT_TRUE(!modFunc::LinkInUse() && vm.crashFrames.empty());
        EXPECT_TRUE(vm.programmer.cablePulled() ||
                    (!vm.programmer.powered() && vm.programmer.socketReleased()));
    }
    const std::vector<simbox::Frame>& frames() { return vm.programmer.frames(); }
    void Reopen() override { ++viewReopened; }

    Bytes& imageBytes = (modFunc::ResetState(), modFunc::state().BufferData);
    VirtualMachine vm;
    RecordingWindow window;
    double startMs = 0;
    int viewReopened = 0;
};

// Names the tests of a table by the first field of its rows.
inline const auto rowName = [](const auto& row) { return std::string(row.param.name); };
