// Every function with every fault at every frame, and several faults at random.
#include "tests/functions/fault_fixture.h"

#include <random>

struct EachFault : Faults, testing::WithParamInterface<unsigned> {};

TEST_P(EachFault, EndsSafelyAtEveryFrame) {
    for (const int family : families) {
        SCOPED_TRACE(family);
        // Each fault is moved to every frame; faults at an address ignore the frame's number.
        for (unsigned frame = runWith(family, FunctionCode(GetParam()), {}); frame > 0; --frame) {
            for (simbox::Fault fault : parseFaults(
                     "silent@1 silent-from@1 short@1:1 short@1:259 long@1:1 long@1:300 "
                     "late@1:999ms late@1:1001ms late@1:5000ms torn@1:1:500ms torn@1:2:999ms "
                     "torn@1:1:1500ms double@1 chatter@1:1:0ms chatter@1:300:250ms status@1:00 "
                     "status@1:4E status@1:45 status@1:45012345 pull@1 lie:0101 "
                     "program-error:0181")) {
                SCOPED_TRACE(testing::Message() << "fault " << int(fault.kind) << " at " << frame);
                fault.number = frame;
                runWith(family, FunctionCode(GetParam()), {fault});
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, EachFault, testing::Range(0U, Faults::functionCount),
                         [](const auto& row) {
                             return modFunc::DeviceRun::functions.at(row.param).name;
                         });

TEST_F(Faults, AnyOfThem) {
    std::mt19937 random(20);
    for (int run = 0; run < 1500; ++run) {
        SCOPED_TRACE(run);
        runAny([&random] { return std::uint8_t(random()); });
    }
}
