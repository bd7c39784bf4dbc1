// What must hold after any run with any faults of the programmer.
#pragma once

#include "app/family_traits.h"
#include "link/find_programmer.h"
#include "tests/support/run_fixture.h"

#include <algorithm>

// % is replaced by the frame or, in hexadecimal, by a part of the address.
inline const std::array<std::string, 22> faultKinds = {
    "silent@%",      "silent-from@%",    "short@%:1",           "short@%:259",
    "long@%:1",      "long@%:300",       "late@%:999ms",        "late@%:1001ms",
    "late@%:5000ms", "torn@%:1:500ms",   "torn@%:2:999ms",      "torn@%:1:1500ms",
    "double@%",      "chatter@%:1:0ms",  "chatter@%:300:250ms", "status@%:00",
    "status@%:4E",   "status@%:45",      "status@%:45012345",   "pull@%",
    "lie:01%",       "program-error:0%0"};

inline std::string faultAt(std::string kind, unsigned place) {
    const bool ofFrame = kind.find('@') != std::string::npos;
    return kind.replace(kind.find('%'), 1,
                        ofFrame ? std::to_string(place) : hexText({std::uint8_t(place)})) +
           " ";
}

class Faults : public RunTest {
protected:
    static constexpr std::array families = {1, 4, 10, 20, 31};
    static constexpr int size = 512;
    static constexpr int functionCount = static_cast<int>(FunctionCode::Auto);

    // The chip contains FF if the family writes blocks, else the image.
    void prepare(int family, const std::string& faults) {
        programmer(faults, 57600);
        device(family, size, 128);
        image();
        if (modFunc::TraitsOf(family).write != modFunc::WritePath::Blocks)
            vm.programmer().chip().Load(modFunc::state().BufferData);
        vm.port.taken.clear();
    }

    void runWith(int family, int function, const std::string& faults) {
        SCOPED_TRACE(testing::Message()
                     << "family " << family << ", function " << function << ": " << faults);
        prepare(family, faults);
        const Bytes before = modFunc::state().BufferData;
        const auto code = static_cast<FunctionCode>(function);
        run(code);
        // No function exchanges more than 23 frames here, each a second at most.
        EXPECT_LT(vm.nowMs() - startMs, 23 * 1000 + 10000);
        EXPECT_FALSE(modFunc::LinkInUse());
        EXPECT_EQ(vm.programmer().protocolErrors(), std::vector<std::string>());
        if (!vm.programmer().cablePulled()) {
            expectPoweredDown();
            EXPECT_TRUE(!vm.programmer().powered() && vm.programmer().socketReleased());
        }
        expectButtonsAfterRun();
        EXPECT_LE(vm.messages.size(), 1U);
        expectTruth(code, before);
        expectHealthyNextRun();
    }

    // Runs a function on a family with one to four faults; each choice and number uses one byte of
    // `next`.
    template <class Next>
    void runAny(const Next& next) {
        const int family = families[next() % families.size()];
        const int function = static_cast<int>(next()) % functionCount;
        std::string faults;
        for (unsigned count = 1 + next() % 4; count > 0; --count) {
            const std::size_t kind = next() % (faultKinds.size() + 4);
            const unsigned frame = 1 + next() % 16;
            const std::string at = "@" + std::to_string(frame) + ":";
            const std::string ms = std::to_string(next() * 8) + "ms ";
            switch (kind) {
            case 0:
                faults +=
                    "status" + at + simbox::HexText(next(), 2) + simbox::HexText(next(), 2) + " ";
                break;
            case 1:
                faults += "torn" + at + std::to_string(next() * 2) + ":" + ms;
                break;
            case 2:
                faults += "chatter" + at + std::to_string(next() * 2) + ":" + ms;
                break;
            case 3:
                faults += "late" + at + ms;
                break;
            default:
                faults += faultAt(faultKinds.at(kind - 4), frame);
            }
        }
        runWith(family, function, faults);
    }

private:
    // The bytes that the program read after frames of this command code: from each read that is
    // long enough, `most` bytes after the first `skip`.
    Bytes received(char commandCode, std::size_t skip, std::size_t most) {
        Bytes all;
        for (const auto& [code, bytes] : vm.port.taken)
            if (code == commandCode && bytes.size() >= skip + most)
                all.insert(all.end(), bytes.begin() + std::ptrdiff_t(skip),
                           bytes.begin() + std::ptrdiff_t(skip + most));
        return all;
    }

    // What is shown and stored agrees with the bytes that were received, even if a late reply or
    // extra bytes have shifted them.
    void expectTruth(FunctionCode code, const Bytes& before) {
        const bool ok = window.lines[0].ends_with("   OK!");
        const Bytes blocks = received('R', 4, 256);
        EXPECT_TRUE(code != Read || !ok || blocks.size() == size);
        EXPECT_TRUE(code != Verify || !ok ||
                    blocks == Bytes(before.begin(), before.begin() + size));
        EXPECT_TRUE(code != Blank || !ok || blocks == Bytes(size, 0xFF));
        if (code == Program && ok) {
            const bool pages = modFunc::selectedDevice().Family == 20;
            EXPECT_EQ(received('W', 0, 1), Bytes(pages ? 4 : 2, 'N'));
        }
        Bytes expected = before;
        if (code == Read)
            std::ranges::copy(blocks, expected.begin());
        EXPECT_TRUE(modFunc::state().BufferData == expected);
    }

    // On the same line with a working programmer, after every late byte has arrived.
    void expectHealthyNextRun() {
        vm.programmer().setFaults({});
        if (vm.programmer().cablePulled())
            prepare(modFunc::selectedDevice().Family, "");
        bool later = false;
        vm.at(static_cast<std::int64_t>(vm.nowMs()) + 21000, [&later] { later = true; });
        while (!later)
            platform::machine().events.Yield();
        window = {};
        Bytes& image = modFunc::state().BufferData;
        image.assign(70001, 0xEE);
        run(Read);
        EXPECT_TRUE(window.closed) << window.lines[0];
        const simbox::Chip& chip = vm.programmer().chip();
        Bytes expected(chip.memory().begin(), chip.memory().begin() + size);
        if (chip.locked())
            expected.assign(size, 0);
        expected.resize(70001, 0xEE);
        EXPECT_TRUE(image == expected);
    }
};
