// Every function meets every fault at every frame. What must hold in all of them is said once.
#include "tests/support/run_fixture.h"

#include <algorithm>

using namespace modFunc;

namespace {

class Faults : public RunTest {
protected:
    void prepare(int family, const std::string& fault) {
        box(fault.empty() ? std::vector<std::string>{} : std::vector{fault});
        device(family, 512, 128);
        image();
        vm.box().chip().load(state().BufferData);
        if (family < 20 || family >= 30)
            vm.box().chip().fill(0xFF);
    }

    void expectSafeEnd(int code, const std::string& fault, const Bytes& before, double startMs) {
        EXPECT_FALSE(DeviceRun::UnderWay());
        if (!vm.box().cablePulled()) {
            expectPoweredDown();
            EXPECT_FALSE(vm.box().powered());
            EXPECT_TRUE(vm.box().socketReleased());
        }
        // A Read stored the chip's blocks as far as it got, whole; nothing else touches the image.
        // One case is the link's own: an answer to the set-up that comes after its second stays on
        // the port, counts for the first block and moves the data by a byte. Verify would tell.
        const bool moved = fault == "late@2:1001ms";
        Bytes expected = before;
        const auto& chip = vm.box().chip().memory();
        for (std::ptrdiff_t at = 0; code == Read && at < 512; at += 256)
            if (moved || std::equal(chip.begin() + at, chip.begin() + at + 256,
                                    state().BufferData.begin() + at))
                std::copy_n(state().BufferData.begin() + at, 256, expected.begin() + at);
        EXPECT_TRUE(state().BufferData == expected);
        EXPECT_EQ(window.buttons, window.closed ? "rc" : "rcRC");
        // No function exchanges more than 23 frames here, each a second at the most.
        EXPECT_LT(vm.nowMs() - startMs, 23 * 1000 + 10000);
        EXPECT_LE(vm.messages.size(), 1U);
    }
};

} // namespace

TEST_F(Faults, EveryFunctionEndsSafelyWhateverTheBoxDoes) {
    const std::vector<std::string> kinds = {"silent@%",       "silent-from@%", "short@%:1",
                                            "long@%:1",       "late@%:999ms",  "late@%:1001ms",
                                            "torn@%:1:500ms", "double@%",      "status@%:00",
                                            "status@%:45",    "pull@%"};
    int cases = 0;
    for (const int family : {1, 4, 10, 20, 31}) {
        for (int code = Read; code <= Lock; ++code) {
            prepare(family, "");
            run(code);
            const std::size_t frameCount = frames().size();
            for (std::size_t frame = 1; frame <= frameCount; ++frame) {
                for (std::string fault : kinds) {
                    fault.replace(fault.find('%'), 1, std::to_string(frame));
                    SCOPED_TRACE(testing::Message()
                                 << "family " << family << ", "
                                 << functionNames.at(std::size_t(code)) << ", " << fault);
                    prepare(family, fault);
                    const Bytes before = state().BufferData;
                    const double start = vm.nowMs();
                    run(code);
                    expectSafeEnd(code, fault, before, start);

                    prepare(family, ""); // a healthy box again
                    run(Blank);
                    EXPECT_EQ(window.lines[0],
                              family == 20 ? "Blank Error at 0000" : "Blank Checking ...   OK!");
                    ++cases;
                }
            }
        }
    }
    EXPECT_GT(cases, 2000);
}
