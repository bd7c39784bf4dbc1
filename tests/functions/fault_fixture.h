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
        simbox::Chip& chip = vm.programmer.chip();
        if (function == Read || function == Verify)
            chip.Load(imageBytes);
        if (function == Read)
            imageBytes.assign(70001, 0xEE);
        Bytes expected = imageBytes, received;
        vm.taken.clear();
        run({function});
        const auto frameCount = unsigned(frames().size());
        EXPECT_EQ(vm.programmer.protocolErrors(), std::vector<std::string>());
        EXPECT_LE(vm.messages.size(), 1U);

        // What is shown and stored agrees with the bytes that were received, even if a late reply
        // or extra bytes have shifted them.
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

        // The next run on the same line without faults, after every late byte has arrived.
        if (!vm.programmer.cablePulled()) {
            vm.programmer.setFaults({});
            chip.setLocked(false);
            vm.nowUs += 21'000'000;
            run({Read});
            EXPECT_TRUE(window.closed) << window.lines[0];
            EXPECT_TRUE(
                std::equal(imageBytes.begin(), imageBytes.begin() + size, chip.memory().begin()));
        }
        return frameCount;
    }

    // Runs a function on a family with one to four faults; each choice and number uses one byte of
    // `next`.
    void runAny(const std::function<std::uint8_t()>& next) {
        const int family = families[next() % families.size()];
        const auto function = FunctionCode(next() % functionCount);
        std::vector<simbox::Fault> faults(1 + next() % 4U);
        for (simbox::Fault& fault : faults)
            fault = {.kind = simbox::FaultKind(next() % (unsigned(simbox::FaultKind::Pull) + 1)),
                     .number = 1 + next() % 16U,
                     .count = next() * 2U,
                     .delayUs = next() * 8000,
                     .address = next(),
                     .bytes = {next(), next(), next()}};
        runWith(family, function, faults);
    }
    void TestBody() override {} // so that the fuzz target can create one
};
