// Every function with every fault at every frame, and several faults at random. The same must hold
// after each.
#include "app/family_traits.h"
#include "tests/support/fault_kinds.h"
#include "tests/support/run_fixture.h"

#include <algorithm>
#include <random>

using namespace modFunc;

namespace {

constexpr int families[] = {1, 4, 10, 20, 31};
constexpr int size = 512;
constexpr int functionCount = static_cast<int>(FunctionCode::Auto);

class Faults : public RunTest {
protected:
    void prepare(int family, const std::vector<std::string>& faults) {
        programmer(faults, 57600);
        device(family, size, 128);
        image();
        vm.programmer().chip().Load(state().BufferData);
        if (TraitsOf(family).write == WritePath::Blocks)
            vm.programmer().chip().Fill(0xFF);
        vm.port.taken.clear();
    }

    void runWith(int family, FunctionCode code, const std::vector<std::string>& faults) {
        SCOPED_TRACE(testing::Message() << "family " << family << ", "
                                        << DeviceRun::functions.at(std::size_t(code)).name << ": "
                                        << testing::PrintToString(faults));
        prepare(family, faults);
        const Bytes before = state().BufferData;
        run(code);
        // No function exchanges more than 23 frames here, each a second at most.
        EXPECT_LT(vm.nowMs() - startMs, 23 * 1000 + 10000);
        expectSafeEnd();
        expectTruth(code, before);
        expectHealthyNextRun();
    }

    void expectSafeEnd() {
        EXPECT_FALSE(LinkInUse());
        EXPECT_EQ(vm.programmer().protocolErrors(), std::vector<std::string>());
        if (!vm.programmer().cablePulled()) {
            expectPoweredDown();
            EXPECT_FALSE(vm.programmer().powered());
            EXPECT_TRUE(vm.programmer().socketReleased());
        }
        expectButtonsAfterRun();
        EXPECT_LE(vm.messages.size(), 1U);
    }

    // The bytes that the program took after frames of this command code, the first `skip` of each
    // time left out, up to `most`.
    Bytes received(char commandCode, std::size_t skip, std::size_t most) {
        Bytes all;
        for (const auto& [code, bytes] : vm.port.taken)
            if (code == commandCode && bytes.size() >= skip + most)
                all.insert(all.end(), bytes.begin() + std::ptrdiff_t(skip),
                           bytes.begin() + std::ptrdiff_t(skip + most));
        return all;
    }

    // What is shown and stored agrees with the bytes that were received, even where a late reply
    // or bytes too many have moved them.
    void expectTruth(FunctionCode code, const Bytes& before) {
        const bool ok = window.lines[0].ends_with("   OK!");
        const Bytes blocks = received('R', 4, 256);
        const Bytes wanted(before.begin(), before.begin() + size);
        EXPECT_TRUE(code != Read || !ok || blocks.size() == size);
        EXPECT_TRUE(code != Verify || !ok || blocks == wanted);
        EXPECT_TRUE(code != Blank || !ok || blocks == Bytes(size, 0xFF));
        if (code == Program && ok) {
            const Bytes status = received('W', 0, 1);
            const std::size_t unit = TraitsOf(selectedDevice().Family).write == WritePath::Pages
                                         ? std::size_t(selectedDevice().PageSize)
                                         : 256;
            EXPECT_EQ(status, Bytes(size / unit, 'N'));
        }
        Bytes expected = before;
        if (code == Read)
            std::ranges::copy(blocks, expected.begin());
        EXPECT_TRUE(state().BufferData == expected);
    }

    // On the same line and a programmer that works, once every late byte has arrived.
    void expectHealthyNextRun() {
        vm.programmer().setFaults({});
        if (vm.programmer().cablePulled())
            prepare(selectedDevice().Family, {});
        bool later = false;
        vm.at(static_cast<std::int64_t>(vm.nowMs()) + 6000, [&later] { later = true; });
        while (!later)
            platform::machine().events.Yield();
        window = {};
        state().BufferData.assign(70001, 0xEE);
        run(Read);
        EXPECT_TRUE(window.closed) << window.lines[0];
        const simbox::Chip& chip = vm.programmer().chip();
        Bytes expected(chip.memory().begin(), chip.memory().begin() + size);
        if (chip.locked())
            expected.assign(size, 0);
        expected.resize(70001, 0xEE);
        EXPECT_TRUE(state().BufferData == expected);
    }
};

class EachFault : public Faults, public testing::WithParamInterface<std::tuple<int, int>> {};

} // namespace

TEST_P(EachFault, EndsSafelyAtEveryFrame) {
    const int family = std::get<0>(GetParam());
    const auto code = static_cast<FunctionCode>(std::get<1>(GetParam()));
    prepare(family, {});
    run(code);
    const std::size_t frameCount = frames().size();
    ASSERT_GE(frameCount, 2U);
    for (std::size_t frame = 1; frame <= frameCount; ++frame)
        for (const std::string& kind : faultKinds)
            runWith(family, code, {faultAt(kind, frame)});
}

INSTANTIATE_TEST_SUITE_P(, EachFault,
                         testing::Combine(testing::ValuesIn(families),
                                          testing::Range(0, functionCount)),
                         [](const auto& row) {
                             const auto code = std::size_t(std::get<1>(row.param));
                             std::string name = DeviceRun::functions.at(code).name;
                             std::erase(name, ' ');
                             return name + "Family" + std::to_string(std::get<0>(row.param));
                         });

TEST_F(Faults, SeveralAtOnce) {
    for (unsigned seed = 1; seed <= 1500; ++seed) {
        std::mt19937 random(seed);
        const auto any = [&random](std::size_t count) { return std::size_t{random() % count}; };
        std::vector<std::string> faults(2 + any(3));
        for (std::string& fault : faults)
            fault = faultAt(faultKinds[any(faultKinds.size())], 1 + any(12));
        runWith(families[any(std::size(families))], static_cast<FunctionCode>(any(functionCount)),
                faults);
    }
}
