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

    // A programmer with these faults and a fresh chip of FF, its port open. By default unthrottled:
    // a reply arrives as soon as its frame has been sent.
    void programmer(const std::vector<simbox::Fault>& faults = {}, std::uint32_t baud = 0) {
        vm.programmer = simbox::Programmer({.baud = baud, .fill = 0xFF, .faults = faults});
        vm.queue.clear();
        vm.open = true;
        vm.messages.clear();
    }
    void device(int family, int size, int pageSize = 0) {
        modFunc::state().DeviceList[1] = {"DIP40 8K",           "",   "",
                                          std::int16_t(family), size, std::int16_t(pageSize)};
    }
    // Fills the image so that a shifted byte is detected.
    void image() {
        for (std::size_t i = 0; i < imageBytes.size(); ++i)
            imageBytes[i] = std::uint8_t(i * 7 + i / 256);
    }
    // Runs one function, or Auto with the entries after it. Also expects what holds after every
    // run: the buttons are on unless Read has closed the window, the link is free, and the socket
    // has no power.
    void run(const std::vector<FunctionCode>& functions) {
        modFunc::state().AutoCount = std::int16_t(functions.size() - 1);
        for (std::size_t i = 0; i < functions.size(); ++i)
            modFunc::state().AutoList.at(i) = std::int16_t(functions[i]);
        window = {};
        window.lines.fill("of an earlier run");
        modFunc::DeviceRun(window).Run(int(functions[0]));
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
    int viewReopened = 0;
};

// Names the tests of a table by the first field of its rows.
inline const auto rowName = [](const auto& row) { return std::string(row.param.name); };
