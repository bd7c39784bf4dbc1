// Every function with every fault at every frame, and several faults at random.
#include "tests/functions/fault_fixture.h"

#include <random>

namespace {

// Each is moved to every frame and, for those of an address, to as many addresses.
constexpr char faultKinds[] =
    "silent@1 silent-from@1 short@1:1 short@1:259 long@1:1 long@1:300 late@1:999ms late@1:1001ms "
    "late@1:5000ms torn@1:1:500ms torn@1:2:999ms torn@1:1:1500ms double@1 chatter@1:1:0ms "
    "chatter@1:300:250ms status@1:00 status@1:4E status@1:45 status@1:45012345 pull@1 lie:0000 "
    "program-error:0000";

struct EachFault : Faults, testing::WithParamInterface<std::tuple<int, unsigned>> {
    static auto everyFunction() {
        return testing::Combine(testing::ValuesIn(families), testing::Range(0U, functionCount));
    }
};

} // namespace

TEST_P(EachFault, EndsSafelyAtEveryFrame) {
    const auto [family, number] = GetParam();
    const auto function = FunctionCode(number);
    const unsigned frameCount = runWith(family, function, {});
    ASSERT_GE(frameCount, 2U);
    for (unsigned frame = 1; frame <= frameCount; ++frame) {
        for (simbox::Fault fault : parseFaults(faultKinds)) {
            fault.number = frame;
            fault.address = std::uint16_t(frame);
            runWith(family, function, {fault});
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, EachFault, EachFault::everyFunction(), [](const auto& row) {
    return modFunc::DeviceRun::functions.at(std::get<1>(row.param)).name +
           std::to_string(std::get<0>(row.param));
});

TEST_F(Faults, AnyOfThem) {
    std::mt19937 random(20);
    for (int run = 0; run < 1500; ++run)
        runAny([&random] { return unsigned(random() % 256); });
}
