// Bitmap file sizes, on files written by Python's standard library (struct), not by us:
// samples/bitmaps.py, run when the suite is built, since Windows has no Python to run.
#include "utils/render/BitmapFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "platform/host/TextCodec.h"
#include "tests/support/TestSupport.h"

namespace {

std::wstring Wide(const std::string& s) { return kiv_text::FromUtf8(s); }

void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace

TEST(BitmapFileSize, FilesOfEveryDepthAndRowOrderGiveThePaddedTwentyFourBitRowTimesTheHeight) {
    const std::string samples = KIV_TEST_SAMPLE_DIR;
    const unsigned long rowOfWidth[] = {0, 4, 8, 12};  // ((W + 1) x 3) rounded down to 4
    for (int width = 1; width <= 3; ++width) {
        for (int bits : {1, 8, 24, 32}) {
            for (bool topDown : {false, true}) {
                const std::string name = "/w" + std::to_string(width) + "_b" + std::to_string(bits) +
                                         (topDown ? "_td.bmp" : "_bu.bmp");
                // A top-down file's height is -10: the product wraps as the device's 32 bits do.
                const unsigned long expected =
                    topDown ? 4294967296ul - rowOfWidth[width] * 10 : rowOfWidth[width] * 10;
                EXPECT_EQ(GetBitmapFileSizeFromFile(Wide(samples + name).c_str()), expected) << name;
            }
        }
    }
    TBitmapFileHeader header;
    ASSERT_TRUE(ReadBitmapFileHeader(Wide(samples + "/w3_b24_bu.bmp").c_str(), header));
    EXPECT_EQ(header.blockBytes, 40u + 120u);
    EXPECT_EQ(header.block[0], 40);  // the information header comes first
    EXPECT_EQ(header.block[40 + 119], (9 * 7 + 11) & 0xFF);  // the last pixel byte was read
    ReleaseBitmapFileHeader(header);
    EXPECT_EQ(header.file, nullptr);
}

TEST(BitmapFileSize, RefusesWhatIsNoBitmapOrWhoseSizeFieldLies) {
    kiv_test::TempDeviceRoot root;
    std::string good(54 + 8, '\0');
    good[0] = 'B';
    good[1] = 'M';
    auto setSize = [](std::string& bytes, std::uint32_t size) {
        for (int i = 0; i < 4; ++i) bytes[2 + i] = static_cast<char>(size >> (8 * i));
    };
    setSize(good, 62);
    good[14] = 40;
    good[18] = 2;   // width 2
    good[22] = 10;  // height 10
    WriteBytes(root.path() + "/good.bmp", good);
    EXPECT_EQ(GetBitmapFileSizeFromFile(Wide(root.path() + "/good.bmp").c_str()), 80u);

    std::string wrongMagic = good;
    wrongMagic[0] = 'M';
    wrongMagic[1] = 'B';
    std::string beyondFile = good, belowHeaders = good;
    setSize(beyondFile, 63);
    setSize(belowHeaders, 53);
    WriteBytes(root.path() + "/magic.bmp", wrongMagic);
    WriteBytes(root.path() + "/beyond.bmp", beyondFile);
    WriteBytes(root.path() + "/below.bmp", belowHeaders);
    WriteBytes(root.path() + "/short.bmp", "BM");
    for (const char* name : {"/magic.bmp", "/beyond.bmp", "/below.bmp", "/short.bmp", "/absent.bmp"}) {
        EXPECT_EQ(GetBitmapFileSizeFromFile(Wide(root.path() + name).c_str()), 0u) << name;
    }
    EXPECT_EQ(GetBitmapFileSizeFromFile(nullptr), 0u);
}
