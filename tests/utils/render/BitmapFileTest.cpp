// Bitmap file sizes, on files written by Python's standard library (struct), not by us.
#include "utils/render/BitmapFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "platform/host/TextCodec.h"
#include "tests/support/TestSupport.h"

namespace {

// Writes name.bmp for every width 1..3, bit count 1, 8, 24, 32 and row order, 10 rows.
const char* kWriter = R"PY(
import struct, sys, os
folder = sys.argv[1]
for width in (1, 2, 3):
    for bits in (1, 8, 24, 32):
        for topdown in (False, True):
            stride = (width * bits + 31) // 32 * 4
            colours = 1 << bits if bits <= 8 else 0
            pixels = bytes((r * 7 + c) & 0xFF for r in range(10) for c in range(stride))
            offset = 14 + 40 + 4 * colours
            info = struct.pack('<IiiHHIIiiII', 40, width, -10 if topdown else 10, 1, bits, 0,
                               len(pixels), 2835, 2835, colours, 0)
            palette = b''.join(struct.pack('<BBBB', i & 0xFF, i & 0xFF, i & 0xFF, 0) for i in range(colours))
            head = struct.pack('<2sIHHI', b'BM', offset + len(pixels), 0, 0, offset)
            name = 'w%d_b%d_%s.bmp' % (width, bits, 'td' if topdown else 'bu')
            with open(os.path.join(folder, name), 'wb') as f:
                f.write(head + info + palette + pixels)
)PY";

std::wstring Wide(const std::string& s) { return kiv_text::FromUtf8(s); }

void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace

TEST(BitmapFileSize, FilesOfEveryDepthAndRowOrderGiveThePaddedTwentyFourBitRowTimesTheHeight) {
    kiv_test::TempDeviceRoot root;
    const std::string script = root.path() + "/writer.py";
    WriteBytes(script, kWriter);
    ASSERT_EQ(std::system(("python3 '" + script + "' '" + root.path() + "'").c_str()), 0);

    const unsigned long rowOfWidth[] = {0, 4, 8, 12};  // ((W + 1) x 3) rounded down to 4
    for (int width = 1; width <= 3; ++width) {
        for (int bits : {1, 8, 24, 32}) {
            for (bool topDown : {false, true}) {
                const std::string name = "/w" + std::to_string(width) + "_b" + std::to_string(bits) +
                                         (topDown ? "_td.bmp" : "_bu.bmp");
                // A top-down file's height is -10: the product wraps as the device's 32 bits do.
                const unsigned long expected =
                    topDown ? 4294967296ul - rowOfWidth[width] * 10 : rowOfWidth[width] * 10;
                EXPECT_EQ(GetBitmapFileSizeFromFile(Wide(root.path() + name).c_str()), expected) << name;
            }
        }
    }
    TBitmapFileHeader header;
    ASSERT_TRUE(ReadBitmapFileHeader(Wide(root.path() + "/w3_b24_bu.bmp").c_str(), header));
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
