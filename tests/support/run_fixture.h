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
        lines.at(static_cast<std::size_t>(line)) = text;
    }
    void ShowProgress(int percent) override {
        percents += (percents.empty() ? "" : " ") + std::to_string(percent);
    }
    void EnableRun(bool enabled) override { buttons.push_back(enabled ? "Run on" : "Run off"); }
    void EnableClose(bool enabled) override {
        buttons.push_back(enabled ? "Close on" : "Close off");
    }
    void Close() override { closed = true; }

    std::array<std::string, modFunc::messageLines> lines;
    std::string percents;             // each that was shown, in order
    std::vector<std::string> buttons; // each change, in order
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

    // A programmer with these faults and a fresh chip of FF, its port open. Unthrottled, so that a
    // reply arrives as soon as its frame has been sent.
    void programmer(const std::vector<std::string>& faults = {}, std::uint32_t baud = 0) {
        simbox::Options options;
        options.baud = baud;
        options.fill = 0xFF;
        for (const std::string& fault : faults)
            options.faults.push_back(std::get<simbox::Fault>(simbox::ParseFault(fault)));
        vm.replaceProgrammer(options);
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
    // An image in which a moved byte shows.
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

    // The frames that the programmer received.
    std::vector<std::string> frames() {
        std::vector<std::string> texts;
        for (const simbox::Frame& frame : vm.programmer().frames())
            texts.push_back(hexText(frame.bytes));
        return texts;
    }
    // The same by command code and parameters, "D" by the number of its data bytes, each with the
    // milliseconds until the next frame or now: "S 00 +500".
    std::string traffic() {
        std::string text;
        double beforeMs = 0;
        const auto pause = [&](double untilMs) {
            if (const int ms = static_cast<int>(untilMs - beforeMs); ms > 0 && !text.empty())
                text += " +" + std::to_string(ms);
            beforeMs = untilMs;
        };
        for (const simbox::Frame& frame : vm.programmer().frames()) {
            pause(static_cast<double>(frame.arrivedUs) / 1000);
            const Bytes parameters(frame.bytes.begin() + 5, frame.bytes.end());
            const bool data = frame.bytes[4] == 'D';
            text += (text.empty() ? "" : ", ") + std::string(1, static_cast<char>(frame.bytes[4])) +
                    " " + (data ? std::to_string(parameters.size()) : hexText(parameters));
        }
        pause(vm.nowMs());
        return text;
    }
    void expectPoweredDown() {
        ASSERT_GE(frames().size(), 2U);
        EXPECT_EQ(frames().end()[-2], "00 00 00 04 56 00 00 00");
        EXPECT_EQ(frames().back(), "00 00 00 02 53 00");
    }
    // Both buttons are off during a run and on after it, unless Read has closed the window.
    void expectButtonsAfterRun() {
        std::vector<std::string> expected = {"Run off", "Close off", "Run on", "Close on"};
        if (window.closed)
            expected.resize(2);
        EXPECT_EQ(window.buttons, expected);
    }
    static ShownMessage communicationError() {
        return {"Device Error", "Communication Error!", platform::MessageBox::Icon::Critical};
    }

    void Reopen() override { ++viewReopened; }

    VirtualMachine vm;
    RecordingWindow window;
    double startMs = 0;
    int viewReopened = 0;
};
