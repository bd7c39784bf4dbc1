// What must hold after any run with any faults of the programmer.
#pragma once

#include "tests/support/run_fixture.h"

struct Faults : RunTest {
    static constexpr std::array families = {1, 4, 10, 20, 31};
    static constexpr unsigned functionCount = unsigned(FunctionCode::Auto);
    static constexpr int size = 512;

    // Returns the number of frames. For Read and Verify the chip contains data, else FF.
    unsigned runWith(int family, FunctionCode function, const std::vector<simbox::Fault>& faults) {
        programmer(faults, 57600);
        device(family, size, 128);
        image();
        if (function == Read || function == Verify)
            vm.programmer.chip().Load(imageBytes);
        if (function == Read)
            imageBytes.assign(70001, 0xEE);
        vm.taken.clear();
        const Bytes before = imageBytes;
        run(function);
        EXPECT_EQ(vm.programmer.protocolErrors(), std::vector<std::string>());
        EXPECT_LE(vm.messages.size(), 1U);
        expectTruth(family, function, before);
        const auto count = unsigned(frames().size());
        if (!vm.programmer.cablePulled())
            expectHealthyNextRun();
        return count;
    }

    // Runs a function on a family with one to four faults; each choice and number uses one byte of
    // `next`.
    template <class Next>
    void runAny(const Next& next) {
        const auto byte = [&next] { return std::uint8_t(next()); };
        const int family = families[next() % families.size()];
        const auto function = FunctionCode(next() % functionCount);
        std::vector<simbox::Fault> faults(1 + next() % 4);
        for (simbox::Fault& fault : faults)
            fault = {.kind = simbox::FaultKind(next() % (unsigned(simbox::FaultKind::Pull) + 1)),
                     .number = 1 + next() % 16,
                     .count = next() * 2,
                     .delayUs = next() * 8000,
                     .address = byte(),
                     .bytes = {byte(), byte(), byte()}};
        runWith(family, function, faults);
    }

private:
    // What is shown and stored agrees with the bytes that were received, even if a late reply or
    // extra bytes have shifted them.
    void expectTruth(int family, FunctionCode function, Bytes expected) {
        Bytes received;
        for (const auto& [code, bytes] : vm.taken) {
            if (code == 'R' && bytes.size() >= 260)
                received.insert(received.end(), bytes.begin() + 4, bytes.begin() + 260);
            if (code == 'W' && !bytes.empty())
                received.push_back(bytes[0]);
        }
        if (function == Read)
            std::ranges::copy(received, expected.begin());
        EXPECT_TRUE(imageBytes == expected);
        expected.resize(size);
        if (function == Blank)
            expected.assign(size, 0xFF);
        if (function == Program)
            expected.assign(family == 20 ? 4 : 2, 'N');
        EXPECT_TRUE(!window.lines[0].ends_with("   OK!") || function == Lock ||
                    received == expected);
    }

    // On the same line with a working programmer, after every late byte has arrived.
    void expectHealthyNextRun() {
        vm.programmer.setFaults({});
        vm.programmer.chip().setLocked(false);
        vm.nowUs += 21'000'000;
        imageBytes.assign(70001, 0xEE);
        run(Read);
        EXPECT_TRUE(window.closed) << window.lines[0];
        const auto& memory = vm.programmer.chip().memory();
        EXPECT_TRUE(std::equal(memory.begin(), memory.begin() + size, imageBytes.begin()));
    }
};
