// Pictures saved and loaded: round trips through both formats, files from an
// independent tool, and files that lie about themselves.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/win32/PictureFiles.h"
#include "platform/win32/Win32.h"
#include "tests/platform/win32/GdiCanvas.h"
#include "tests/support/TestSupport.h"

using kiv_test::Canvas;

namespace {

std::wstring Wide(const std::string& s) { return std::filesystem::path(s).wstring(); }

COLORREF PixelOf(HBITMAP bitmap, int x, int y) {
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, bitmap);
    const COLORREF c = GetPixel(dc, x, y);
    SelectObject(dc, old);
    DeleteDC(dc);
    return c;
}

bool HaveImageTool() { return std::system("convert -version >/dev/null 2>&1") == 0; }

std::string Output(const std::string& command) {
    std::string out;
    if (FILE* p = popen(command.c_str(), "r")) {
        char buffer[256];
        while (fgets(buffer, sizeof buffer, p)) out += buffer;
        pclose(p);
    }
    return out;
}

TEST(PictureFiles, EverySurfaceDepthRoundTripsThroughPngAndBmp) {
    kiv_test::TempDeviceRoot root;
    for (int bitCount : {1, 8, 24, 32}) {
        for (auto format : {kiv_host::PictureFormat::Png, kiv_host::PictureFormat::Bmp}) {
            Canvas c(7, 5, bitCount, bitCount == 24, {RGBQUAD{255, 255, 255, 0}, RGBQUAD{0, 0, 255, 0}});
            c.Clear(RGB(255, 255, 255));
            SetPixel(c.dc, 0, 0, RGB(255, 0, 0));
            SetPixel(c.dc, 6, 4, RGB(255, 0, 0));
            SetPixel(c.dc, 3, 2, RGB(10, 200, 30));
            const std::string path =
                root.path() + "/p" + std::to_string(bitCount) + (format == kiv_host::PictureFormat::Png ? ".png" : ".bmp");
            ASSERT_TRUE(kiv_host::SavePicture(c.bitmap, Wide(path).c_str(), format));
            HBITMAP back = kiv_host::LoadPicture(Wide(path).c_str());
            ASSERT_NE(back, nullptr) << path;
            BITMAP bm{};
            GetObjectW(back, sizeof bm, &bm);
            EXPECT_EQ(bm.bmWidth, 7);
            EXPECT_EQ(bm.bmHeight, 5);
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < 7; ++x) ASSERT_EQ(PixelOf(back, x, y), GetPixel(c.dc, x, y)) << path << " " << x << "," << y;
            DeleteObject(back);
        }
    }
}

TEST(PictureFiles, AWindowIsSavedAsItShowsAndReadBackByAnIndependentTool) {
    kiv_test::TempDeviceRoot root;
    if (!HaveImageTool()) GTEST_SKIP() << "ImageMagick's convert is not installed";
    HWND window = kiv_test::MakePlainWindow(9, 4);
    HDC dc = GetDC(window);
    SetPixel(dc, 8, 3, RGB(0, 0, 255));
    SetPixel(dc, 2, 1, RGB(255, 128, 0));
    ReleaseDC(window, dc);
    for (const char* name : {"/w.png", "/w.bmp"}) {
        const std::string path = root.path() + name;
        ASSERT_TRUE(kiv_host::SavePicture(window, Wide(path).c_str()));
        EXPECT_EQ(Output("convert " + path + " -format '%wx%h %[pixel:p{8,3}] %[pixel:p{2,1}] %[pixel:p{0,0}]' info:"),
                  "9x4 srgb(0,0,255) srgb(255,128,0) srgb(255,255,255)")
            << name;
    }
    DestroyWindow(window);
}

TEST(PictureFiles, LoadsFilesWrittenByAnIndependentTool) {
    kiv_test::TempDeviceRoot root;
    if (!HaveImageTool()) GTEST_SKIP() << "ImageMagick's convert is not installed";
    // A 4x3 picture: red at (1,0), blue at (3,2), white elsewhere, written in several
    // depths by one run of the tool.
    const struct {
        const char* options;
        const char* file;
        bool colour;
    } cases[] = {
        {"-type TrueColor", "BMP3:t24.bmp", true},
        {"-type Palette", "BMP3:t8.bmp", true},
        {"-monochrome", "BMP3:t1.bmp", false},
        {"-type TrueColorAlpha", "BMP:t32.bmp", true},
        {"-define bmp:subtype=RGB565", "BMP:t16.bmp", true},
        {"", "PNG24:t.png", true},
        {"-alpha set -channel A -fx 'i==0?0:1' +channel", "PNG32:ta.png", true},
    };
    std::string command = "cd " + root.path() + " && convert -size 4x3 xc:white -fill red -draw 'point 1,0' "
                          "-fill blue -draw 'point 3,2'";
    for (const auto& c : cases) command += std::string(" \\( +clone ") + c.options + " -write " + c.file + " +delete \\)";
    ASSERT_EQ(std::system((command + " null: 2>/dev/null").c_str()), 0);
    for (const auto& c : cases) {
        const std::string file = std::string(c.file).substr(std::string(c.file).find(':') + 1);
        const std::string path = root.path() + "/" + file;
        HBITMAP b = kiv_host::LoadPicture(Wide(path).c_str());
        ASSERT_NE(b, nullptr) << file;
        if (c.colour) {
            EXPECT_EQ(PixelOf(b, 1, 0), RGB(255, 0, 0)) << file;
            EXPECT_EQ(PixelOf(b, 3, 2), RGB(0, 0, 255)) << file;
        } else {
            EXPECT_EQ(PixelOf(b, 1, 0), RGB(0, 0, 0)) << file;
        }
        // The first column of ta.png is fully transparent: laid over white.
        EXPECT_EQ(PixelOf(b, 0, 1), RGB(255, 255, 255)) << file;
        DeleteObject(b);
    }
}

TEST(PictureFiles, RefusesFilesThatLieAboutThemselves) {
    Canvas c(6, 4, 24, false);
    c.Clear(RGB(1, 2, 3));
    std::string bmp, png;
    ASSERT_TRUE(kiv_host::EncodePicture(c.bitmap, kiv_host::PictureFormat::Bmp, bmp));
    ASSERT_TRUE(kiv_host::EncodePicture(c.bitmap, kiv_host::PictureFormat::Png, png));
    auto decodes = [](const std::string& bytes) {
        HBITMAP b = kiv_host::DecodePicture(bytes.data(), bytes.size());
        if (b) DeleteObject(b);
        return b != nullptr;
    };
    EXPECT_TRUE(decodes(bmp));
    EXPECT_TRUE(decodes(png));
    for (std::size_t cut : {std::size_t(2), std::size_t(20), bmp.size() - 1}) EXPECT_FALSE(decodes(bmp.substr(0, cut))) << cut;
    EXPECT_FALSE(decodes(png.substr(0, png.size() / 2)));
    auto patched = [&](std::size_t at, std::uint32_t value) {
        std::string b = bmp;
        for (int i = 0; i < 4; ++i) b[at + i] = static_cast<char>((value >> (8 * i)) & 0xFF);
        return b;
    };
    EXPECT_FALSE(decodes(patched(10, 0xFFFFFFF0))) << "pixels beyond the file";
    EXPECT_FALSE(decodes(patched(18, 0x7FFFFFFF))) << "a width no file could hold";
    EXPECT_FALSE(decodes(patched(22, 0x80000000))) << "the most negative height";
    EXPECT_FALSE(decodes(patched(14, 0x1000))) << "a header longer than the file";
    EXPECT_FALSE(decodes("GIF89a" + std::string(40, '\0')));
    EXPECT_EQ(kiv_host::LoadPicture(L"/no/such/picture.png"), nullptr);
}

}  // namespace
