// The PNG encoder of the Windows build, read back by the platform's own PNG reader on
// either host (libpng on Linux, WIC on Windows).
#include "platform/win32/PngWriter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/win32/PictureFiles.h"
#include "platform/win32/Win32.h"

namespace {

TEST(PngWriter, CrcMatchesTheCatalogueCheckValue) {
    const std::string check = "123456789";
    EXPECT_EQ(kiv_host::Crc32(reinterpret_cast<const std::uint8_t*>(check.data()), check.size()), 0xCBF43926u);
}

// 200 x 120 RGB is 72 000 raw bytes: more than one stored block, so the block split is read too.
TEST(PngWriter, PicturesReadBackPixelForPixelAcrossStoredBlocks) {
    const int width = 200, height = 120;
    std::vector<std::uint8_t> rgb(static_cast<size_t>(width) * height * 3);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            std::uint8_t* p = &rgb[(static_cast<size_t>(y) * width + x) * 3];
            p[0] = static_cast<std::uint8_t>(x);
            p[1] = static_cast<std::uint8_t>(y * 2);
            p[2] = static_cast<std::uint8_t>(x ^ y);
        }
    const std::string png = kiv_host::EncodePngRgb(width, height, rgb.data());
    HBITMAP bitmap = kiv_host::DecodePicture(png.data(), png.size());
    ASSERT_NE(bitmap, nullptr);
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, bitmap);
    for (int y = 0; y < height; y += 7)
        for (int x = 0; x < width; x += 13) {
            const std::uint8_t* p = &rgb[(static_cast<size_t>(y) * width + x) * 3];
            ASSERT_EQ(GetPixel(dc, x, y), RGB(p[0], p[1], p[2])) << x << "," << y;
        }
    SelectObject(dc, old);
    DeleteDC(dc);
    DeleteObject(bitmap);
}

}  // namespace
