#include "buffer/page_text.h"

#include "app/state.h"
#include "buffer/image.h"

#include <gtest/gtest.h>

using namespace modFunc;

namespace {

struct SizeRow {
    const char* name;
    std::int32_t size, checkSum, lastTopLine;
    friend void PrintTo(const SizeRow& row, std::ostream* out) { *out << row.name; }
};
class DeviceSize : public testing::TestWithParam<SizeRow> {};

} // namespace

// Of an image of FF with a 0 at byte 256, taken as far as the image reaches.
TEST_P(DeviceSize, DecidesChecksumAndLastTopLine) {
    ResetState();
    ClearImage();
    state().BufferData[256] = 0;
    state().SelectedDevice = 1;
    state().DeviceList[1].Size = GetParam().size;
    ComputeCheckSum();
    EXPECT_EQ(state().BufferCheckSum, GetParam().checkSum);
    EXPECT_EQ(LastTopLine(GetParam().size), GetParam().lastTopLine);
}
const SizeRow sizes[] = {
    {"None", 0, 0, 0},
    {"Negative", -2147483647, 0, 0},
    {"Small", 128, 32640, 0},
    {"OnePage", 256, 65280, 0},
    {"OneByteMore", 257, 65280, 0},
    {"HalfALineToEvenBelow", 264, 1529, 0},
    {"HalfALineToEvenAbove", 280, 5609, 2},
    {"Usual", 8192, 57089, 496},
    {"FourDigits", 65536, 65281, 4080},
    {"WholeImage", 70001, 24208, 4080},
    {"LargerThanTheImage", 2147483647, 24208, 4080},
};
INSTANTIATE_TEST_SUITE_P(, DeviceSize, testing::ValuesIn(sizes),
                         [](const auto& row) { return row.param.name; });

TEST(PageText, HasFixedPositions) {
    Bytes image(70001, 0xFF);
    image[16] = 0x48;
    image[17] = 0x65;
    const std::uint8_t limits[] = {31, 32, 126, 127, 128, 0};
    std::copy(std::begin(limits), std::end(limits), image.begin() + 0xFF0);
    image[70000] = 0x5A;

    const std::string top = PageText(0, image);
    ASSERT_EQ(top.size(), 1201U);
    EXPECT_EQ(top.substr(0, 65),
              "ADDR                       HEX                            ASCII\r\n");
    EXPECT_EQ(top.substr(65, 71), "0000=FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
                                  "................\r\n");
    EXPECT_EQ(top.substr(136, 71), "0010=48 65 FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
                                   "He..............\r\n");
    EXPECT_EQ(PageText(0xFF, image).substr(65, 71),
              "0FF0=1F 20 7E 7F 80 00 FF FF FF FF FF FF FF FF FF FF . ~\x7F............\r\n");
    EXPECT_EQ(PageText(0xFF0, image).substr(65 + 15 * 71, 4), "FFF0");
    EXPECT_EQ(PageText(4375, image).substr(65, 72), // the image ends after its first byte
              "11170=5A FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF Z...............\r\n");
}
