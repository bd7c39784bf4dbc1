// Every function meets every fault at every frame. What must hold in all of them is said once.
#include "tests/support/run_fixture.h"

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
        vm.totmr.setEnabled(false);
    }

    void expectSafeEnd(int code, const Bytes& before, double startMs) {
        EXPECT_FALSE(DeviceRun::UnderWay());
        if (!vm.box().cablePulled()) {
            expectPoweredDown();
            EXPECT_FALSE(vm.box().powered());
            EXPECT_TRUE(vm.box().socketReleased());
        }
        EXPECT_TRUE(code == Read || state().BufferData == before);
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
                    expectSafeEnd(code, before, start);

                    prepare(family, ""); // a healthy box again
                    run(Blank);
                    EXPECT_TRUE(window.lines[0] == "Blank Checking ...   OK!" ||
                                window.lines[0].starts_with("Blank Error at"));
                    ++cases;
                }
            }
        }
    }
    EXPECT_GT(cases, 2000);
}
