#include "buffer/page_text.h"

#include "app/state.h"
#include "buffer/image.h"

#include <gtest/gtest.h>
#include <map>

using namespace modFunc;

namespace {

class Image : public testing::Test {
protected:
    Image() {
        ResetState();
        state().SelectedDevice = 1;
        ClearImage();
    }
    void checkSumOf(std::int32_t size, std::int32_t sum) {
        state().DeviceList[1].Size = size;
        ComputeCheckSum();
        EXPECT_EQ(state().BufferCheckSum, sum) << size;
    }
};

} // namespace

TEST_F(Image, ClearErasesAllOfIt) {
    state().BufferData.assign(70001, 0);
    ClearImage();
    EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
}

TEST_F(Image, ChecksumIsTheSixteenBitSumOfTheDevice) {
    checkSumOf(0, 0);
    checkSumOf(-1, 0);
    checkSumOf(256, 0xFF00);
    checkSumOf(4096, 0xF000);
    checkSumOf(65536, 0);
    state().BufferData[256] = 0;
    checkSumOf(256, 0xFF00);
    checkSumOf(257, 0xFF00);
    checkSumOf(2000000000, (70000 * 255) % 65536); // as far as the image reaches
}

TEST_F(Image, PageTextStandsOnFixedPositions) {
    const std::string blanks(8, ' ');
    state().BufferData[16] = 0x48;
    state().BufferData[17] = 0x65;
    const std::uint8_t edges[] = {31, 32, 126, 127, 128, 0};
    std::copy(std::begin(edges), std::end(edges), state().BufferData.begin() + 0xFF0);

    const std::string top = PageText(0);
    ASSERT_EQ(top.size(), 1201U);
    EXPECT_EQ(top.substr(0, 65),
              "ADDR                       HEX                            ASCII\r\n");
    EXPECT_EQ(top.substr(65, 71), "0000=FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
                                  "................\r\n");
    EXPECT_EQ(top.substr(136, 71), "0010=48 65 FF FF FF FF FF FF FF FF FF FF FF FF FF FF "
                                   "He..............\r\n");
    EXPECT_EQ(PageText(0xFF).substr(65, 71), "0FF0=1F 20 7E 7F 80 00 FF FF FF FF FF FF FF FF FF FF "
                                             ". ~\x7F............\r\n");
    EXPECT_EQ(PageText(0xFF0).substr(65 + 15 * 71, 4), "FFF0");
    EXPECT_EQ(PageText(4360).size(), 16U * 72 + 65); // behind the image: five digits, no crash
}

TEST_F(Image, LastTopLineRoundsToEvenAndKeepsFourDigits) {
    for (const auto& [size, line] : std::map<int, int>{{8192, 496},
                                                       {65536, 4080},
                                                       {256, 0},
                                                       {128, 0},
                                                       {0, 0},
                                                       {256 + 8, 0}, // 0.5 to 0
                                                       {256 + 24, 2},
                                                       {256 + 25, 2},
                                                       {INT32_MAX, 4080},
                                                       {-INT32_MAX, 0}}) // 1.5 to 2
        EXPECT_EQ(LastTopLine(size), line) << size;
}
