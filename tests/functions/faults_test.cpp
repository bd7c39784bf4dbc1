// Every function meets every fault at every frame, and chance on top. What must hold in all of
// them is said once.
#include "tests/support/fault_kinds.h"
#include "tests/support/run_fixture.h"

#include <algorithm>
#include <random>

using namespace modFunc;

namespace {

constexpr int families[] = {1, 4, 10, 20, 31};
constexpr int size = 512;

class Faults : public RunTest {
protected:
    void prepare(int family, const std::vector<std::string>& faults) {
        box(faults, 57600);
        device(family, size, 128);
        image();
        vm.box().chip().Load(state().BufferData);
        if (family < 20 || family >= 30)
            vm.box().chip().Fill(0xFF);
        vm.port.staleSends = 0;
    }

    void meet(int family, FunctionCode code, const std::vector<std::string>& faults) {
        SCOPED_TRACE(testing::Message() << "family " << family << ", "
                                        << DeviceRun::functions.at(std::size_t(code)).name << ": "
                                        << testing::PrintToString(faults));
        prepare(family, faults);
        const Bytes before = state().BufferData;
        const double start = vm.nowMs();
        run(code);
        // No function exchanges more than 23 frames here, each a second at the most.
        EXPECT_LT(vm.nowMs() - start, 23 * 1000 + 10000);
        expectSafeEnd();
        expectTruth(code, before, faults);

        expectHealthyNext();
        ++cases;
    }

    void expectSafeEnd() {
        EXPECT_FALSE(LinkInUse());
        EXPECT_TRUE(vm.box().protocolErrors().empty()) << vm.box().protocolErrors().front();
        if (!vm.box().cablePulled()) {
            expectPoweredDown();
            EXPECT_FALSE(vm.box().powered());
            EXPECT_TRUE(vm.box().socketReleased());
        }
        EXPECT_EQ(window.buttons, window.closed ? "rc" : "rcRC");
        EXPECT_LE(vm.messages.size(), 1U);
    }

    // The next run, on the same line and a box that works, once all that was late has come.
    void expectHealthyNext() {
        vm.box().setFaults({});
        if (vm.box().cablePulled())
            prepare(selectedDevice().Family, {});
        bool later = false;
        vm.at(static_cast<std::int64_t>(vm.nowMs()) + 6000, [&later] { later = true; });
        while (!later)
            platform::machine().events.Yield();
        window = {};
        state().BufferData.assign(70001, 0xEE);
        run(Read);
        EXPECT_TRUE(window.closed) << window.lines[0];
        const simbox::Chip& chip = vm.box().chip();
        Bytes expected(chip.memory().begin(), chip.memory().begin() + size);
        if (chip.locked())
            expected.assign(size, 0);
        expected.resize(70001, 0xEE);
        EXPECT_TRUE(state().BufferData == expected);
    }

    // What the program says and what it leaves in the image, held against the chip. One thing is
    // the link's own: bytes too many, and an answer to the set-up that came after its second, count
    // for the reply to the next frame and move what it carries.
    void expectTruth(FunctionCode code, const Bytes& before,
                     const std::vector<std::string>& faults) {
        const auto has = [&faults](const char* name) {
            return std::ranges::any_of(faults, [&](const auto& f) { return f.starts_with(name); });
        };
        const bool moved = vm.port.staleSends > 0 || has("chatter") || has("long") || has("double");
        const auto& chip = vm.box().chip().memory();
        Bytes& image = state().BufferData;
        const auto same = [&](std::ptrdiff_t from, std::ptrdiff_t to) {
            return std::equal(chip.begin() + from, chip.begin() + to, image.begin() + from);
        };
        if (window.lines[0].ends_with("   OK!") && !moved) {
            EXPECT_TRUE(code != Verify || same(0, size));
            EXPECT_TRUE(code != Program || has("lie") || same(0, size));
            EXPECT_TRUE(code != Blank ||
                        std::count(chip.begin(), chip.begin() + size, 0xFF) == size);
        }
        // A Read stored the chip's blocks as far as it got, whole; nothing else touches the image.
        Bytes expected = before;
        for (std::ptrdiff_t block = 0; code == Read && block < size; block += 256)
            if (moved || same(block, block + 256))
                std::copy_n(image.begin() + block, 256, expected.begin() + block);
        EXPECT_TRUE(image == expected);
    }

    std::size_t framesOf(int family, FunctionCode code) {
        prepare(family, {});
        run(code);
        return frames().size();
    }

    int cases = 0;
};

} // namespace

TEST_F(Faults, EveryFunctionEndsSafelyWhateverTheBoxDoes) {
    for (const int family : families)
        for (const FunctionCode code : {Read, Erase, Blank, Program, Verify, Lock})
            for (std::size_t frame = framesOf(family, code); frame > 0; --frame)
                for (const std::string& kind : faultKinds)
                    meet(family, code, {faultAt(kind, frame)});
    EXPECT_GT(cases, 4000);
}

TEST_F(Faults, AndWithSeveralAtOnce) {
    for (unsigned seed = 1; seed <= 1500; ++seed) {
        std::mt19937 random(seed);
        const auto any = [&random](std::size_t count) { return std::size_t{random() % count}; };
        std::vector<std::string> faults(2 + any(3));
        for (std::string& fault : faults)
            fault = faultAt(faultKinds[any(faultKinds.size())], 1 + any(12));
        meet(families[any(std::size(families))], static_cast<FunctionCode>(any(std::size_t(Auto))),
             faults);
    }
}
