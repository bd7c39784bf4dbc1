// What must hold after any run with any faults of the programmer.
#pragma once

#include "tests/support/run_fixture.h"

class Faults : public RunTest {
protected:
    static constexpr std::array families = {1, 4, 10, 20, 31};
    static constexpr unsigned functionCount = unsigned(FunctionCode::Auto);
    static constexpr int size = 512;

    // Returns the number of frames. For Read and Verify the chip contains data, else FF.
    unsigned runWith(int family, FunctionCode function, const std::vector<simbox::Fault>& faults) {
        testing::Message trace;
        trace << "family " << family << ", function " << int(function);
        for (const simbox::Fault& fault : faults)
            trace << ", fault " << int(fault.kind) << " at frame " << fault.number;
        SCOPED_TRACE(trace);
        programmer(faults, 57600);
        device(family, size, 128);
        image();
        Bytes& bytes = modFunc::state().BufferData;
        if (function == Read || function == Verify)
            vm.programmer.chip().Load(bytes);
        if (function == Read)
            bytes.assign(70001, 0xEE);
        vm.taken.clear();
        const Bytes before = bytes;
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
        const int family = families[next() % families.size()];
        const auto function = FunctionCode(next() % functionCount);
        const auto byte = [&next] { return std::uint8_t(next()); };
        std::vector<simbox::Fault> faults;
        for (unsigned count = 1 + next() % 4; count > 0; --count)
            faults.push_back(
                {.kind = simbox::FaultKind(next() % (int(simbox::FaultKind::Pull) + 1)),
                 .number = 1 + next() % 16,
                 .count = next() * 2,
                 .delayUs = next() * 8000,
                 .address = byte(),
                 .bytes = {byte(), byte(), byte()}});
        runWith(family, function, faults);
    }

private:
    // What is shown and stored agrees with the bytes that were received, even if a late reply or
    // extra bytes have shifted them.
    void expectTruth(int family, FunctionCode function, Bytes image) {
        Bytes blocks, statuses;
        for (const auto& [code, bytes] : vm.taken) {
            if (code == 'R' && bytes.size() >= 260)
                blocks.insert(blocks.end(), bytes.begin() + 4, bytes.begin() + 260);
            if (code == 'W' && !bytes.empty())
                statuses.push_back(bytes[0]);
        }
        if (function == Read)
            std::ranges::copy(blocks, image.begin());
        EXPECT_TRUE(modFunc::state().BufferData == image);
        const bool ok = window.lines[0].ends_with("   OK!");
        EXPECT_TRUE(!ok || function != Program || statuses == Bytes(family == 20 ? 4 : 2, 'N'));
        EXPECT_TRUE(!ok || function != Blank || blocks == Bytes(size, 0xFF));
        EXPECT_TRUE(!ok || (function != Read && function != Verify) ||
                    blocks == Bytes(image.begin(), image.begin() + size));
    }

    // On the same line with a working programmer, after every late byte has arrived.
    void expectHealthyNextRun() {
        vm.programmer.setFaults({});
        vm.programmer.chip().setLocked(false);
        const std::int64_t readyUs = vm.nowUs + 21'000'000;
        vm.actions.emplace(readyUs, [] {});
        while (vm.nowUs < readyUs)
            vm.Yield();
        window = {};
        Bytes& image = modFunc::state().BufferData;
        image.assign(70001, 0xEE);
        run(Read);
        EXPECT_TRUE(window.closed) << window.lines[0];
        const auto& memory = vm.programmer.chip().memory();
        EXPECT_TRUE(std::equal(memory.begin(), memory.begin() + size, image.begin()));
    }
};
