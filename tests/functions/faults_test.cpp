// Every function with every fault at every frame, and several faults at random.
#include "tests/functions/fault_fixture.h"

#include <random>

namespace {

class EachFault : public Faults, public testing::WithParamInterface<std::tuple<int, int>> {
public:
    static auto everyFunction() {
        return testing::Combine(testing::ValuesIn(families), testing::Range(0, functionCount));
    }
};

} // namespace

TEST_P(EachFault, EndsSafelyAtEveryFrame) {
    const auto [family, function] = GetParam();
    prepare(family, "");
    run(static_cast<FunctionCode>(function));
    const auto frameCount = static_cast<unsigned>(frames().size());
    ASSERT_GE(frameCount, 2U);
    for (unsigned frame = 1; frame <= frameCount; ++frame)
        for (const std::string& kind : faultKinds)
            runWith(family, function, faultAt(kind, frame));
}

INSTANTIATE_TEST_SUITE_P(, EachFault, EachFault::everyFunction(), [](const auto& row) {
    return modFunc::DeviceRun::functions.at(std::size_t(std::get<1>(row.param))).name +
           std::to_string(std::get<0>(row.param));
});

TEST_F(Faults, AnyOfThem) {
    std::mt19937 random(20);
    for (int run = 0; run < 1500; ++run)
        runAny([&random] { return unsigned(random() % 256); });
}
