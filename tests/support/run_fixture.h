// A device, a box and a run of a function on it, with verbs for what a test does and looks at.
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
        lines.at(static_cast<std::size_t>(line)) = text;
    }
    void ShowProgress(int percent) override {
        percents += (percents.empty() ? "" : " ") + std::to_string(percent);
    }
    void EnableRun(bool enabled) override { buttons += enabled ? "R" : "r"; }
    void EnableClose(bool enabled) override { buttons += enabled ? "C" : "c"; }
    void Close() override { closed = true; }

    std::array<std::string, modFunc::messageLines> lines;
    std::string percents; // each that was shown, in order
    std::string buttons;  // each change in order: capital on, small off
    bool closed = false;
};

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

    // A fresh chip of FF on a box with these faults, the port open. Without a pace a reply is there
    // as soon as its frame has gone out.
    void box(const std::vector<std::string>& faults = {}, std::uint32_t baud = 0) {
        simbox::Options options;
        options.baud = baud;
        options.fill = 0xFF;
        for (const std::string& fault : faults)
            options.faults.push_back(std::get<simbox::Fault>(simbox::ParseFault(fault)));
        vm.replaceBox(options);
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
    // An image in which every byte tells its place.
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
    void run(FunctionCode code) { modFunc::DeviceRun(window).Run(static_cast<int>(code)); }

    // The frames that the box got.
    std::vector<std::string> frames() {
        std::vector<std::string> texts;
        for (const simbox::Frame& frame : vm.box().frames())
            texts.push_back(hexText(frame.bytes));
        return texts;
    }
    void expectPoweredDown() {
        ASSERT_GE(frames().size(), 2U);
        EXPECT_EQ(frames().end()[-2], "00 00 00 04 56 00 00 00");
        EXPECT_EQ(frames().back(), "00 00 00 02 53 00");
    }
    static ShownMessage communicationError() {
        return {"Device Error", "Communication Error!", platform::MessageBox::Icon::Critical};
    }

    void Reopen() override { ++viewReopened; }

    VirtualMachine vm;
    RecordingWindow window;
    int viewReopened = 0;
};
