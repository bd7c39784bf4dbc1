#include "buffer/page_text.h"

#include "app/state.h"
#include "buffer/image.h"
#include "tests/support/table_file.h"

#include <gtest/gtest.h>

using namespace modFunc;

namespace {

class Image : public testing::Test {
protected:
    Image() {
        ResetState();
        state().SelectedDevice = 1;
        ClearImage();
    }
};

} // namespace

TEST_F(Image, ClearErasesAllOfIt) {
    state().BufferData.assign(70001, 0);
    ClearImage();
    EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
}

// tests/buffer/sizes.txt: what follows from a device's size.
TEST_F(Image, ChecksumAndLastTopLineFollowTheSize) {
    state().BufferData[256] = 0;
    for (const auto& row : readTable(TEST_FILES "/buffer/sizes.txt")) {
        state().DeviceList[1].Size = std::stoi(row.at(0));
        ComputeCheckSum();
        EXPECT_EQ(state().BufferCheckSum, std::stoi(row.at(1))) << row[0];
        EXPECT_EQ(LastTopLine(std::stoi(row[0])), std::stoi(row.at(2))) << row[0];
    }
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
