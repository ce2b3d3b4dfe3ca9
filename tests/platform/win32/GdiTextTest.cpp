// Text from the DejaVu outlines: what ink it leaves, where, and how its measured
// extent agrees with the ink.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <string>

#include "platform/win32/PictureFiles.h"
#include "platform/win32/Win32.h"
#include "tests/platform/win32/GdiCanvas.h"
#include "tests/support/TestSupport.h"

using kiv_test::Canvas;

namespace {

const COLORREF kWhite = RGB(255, 255, 255);

struct Ink {
    int left = 1 << 30, top = 1 << 30, right = -1, bottom = -1;  // inclusive
    int pixels = 0, partial = 0;
    bool any() const { return pixels > 0; }
};

Ink InkOf(const Canvas& c, COLORREF background = kWhite) {
    Ink ink;
    for (int y = 0; y < c.height(); ++y)
        for (int x = 0; x < c.width(); ++x) {
            const COLORREF p = GetPixel(c.dc, x, y);
            if (p == background) continue;
            ++ink.pixels;
            if (p != RGB(0, 0, 0)) ++ink.partial;
            ink.left = std::min(ink.left, x), ink.right = std::max(ink.right, x);
            ink.top = std::min(ink.top, y), ink.bottom = std::max(ink.bottom, y);
        }
    return ink;
}

class Font {
public:
    Font(HDC dc, LONG height, LONG escapement = 0, LONG weight = FW_NORMAL) : dc_(dc) {
        LOGFONTW lf{};
        lf.lfHeight = height;
        lf.lfEscapement = escapement;
        lf.lfWeight = weight;
        std::wcscpy(lf.lfFaceName, L"DejaVu Sans");
        font_ = CreateFontIndirectW(&lf);
        old_ = SelectObject(dc_, font_);
    }
    ~Font() {
        SelectObject(dc_, old_);
        DeleteObject(font_);
    }

private:
    HDC dc_;
    HFONT font_;
    HGDIOBJ old_;
};

TEST(GdiText, ALabelAtTwelvePixelsIsLegibleAndItsExtentMatchesItsInk) {
    kiv_test::TempDeviceRoot root;
    Canvas c(360, 40);
    c.Clear(kWhite);
    Font font(c.dc, -12);
    SetBkMode(c.dc, TRANSPARENT);
    SetTextColor(c.dc, RGB(0, 0, 0));
    const std::wstring label = L"North 1250.75 m \u00b1 Benchmark BM-7 (Stake 3)";
    ASSERT_TRUE(ExtTextOutW(c.dc, 10, 10, 0, nullptr, label.c_str(), static_cast<UINT>(label.size()), nullptr));
    const std::string png = root.path() + "/label.png";
    ASSERT_TRUE(kiv_host::SavePicture(c.dc, std::filesystem::path(png).wstring().c_str()));

    const Ink ink = InkOf(c);
    ASSERT_TRUE(ink.any());
    EXPECT_GT(ink.partial, ink.pixels / 4) << "anti-aliased edges on a 32-bit surface";
    SIZE extent{};
    ASSERT_TRUE(GetTextExtentPoint32W(c.dc, label.c_str(), static_cast<int>(label.size()), &extent));
    TEXTMETRICW tm{};
    ASSERT_TRUE(GetTextMetricsW(c.dc, &tm));
    EXPECT_EQ(extent.cy, tm.tmHeight);
    // The ink ends where the advance ends, within a pixel (the closing parenthesis has
    // almost no right side bearing), and sits within the cell.
    EXPECT_LE(std::abs((ink.right + 1) - (10 + extent.cx)), 1) << "ink right " << ink.right << " extent " << extent.cx;
    EXPECT_GE(ink.left, 10 - 1);
    EXPECT_GE(ink.top, 10);
    EXPECT_LE(ink.bottom, 10 + extent.cy - 1);
    EXPECT_GE(tm.tmAscent, 11);

    // KIV_KEEP_PICTURES=1 leaves the picture in the current folder for a person to read.
    if (std::getenv("KIV_KEEP_PICTURES"))
        std::filesystem::copy_file(png, "label.png", std::filesystem::copy_options::overwrite_existing);
}

TEST(GdiText, ExtentAgreesWithInkForWordsThatEndInAStem) {
    Canvas c(200, 30);
    Font font(c.dc, -12);
    SetBkMode(c.dc, TRANSPARENT);
    for (const wchar_t* word : {L"Hill", L"MMM", L"Level", L"Station 12", L"iiii"}) {
        c.Clear(kWhite);
        TextOutW(c.dc, 0, 5, word, static_cast<int>(std::wcslen(word)));
        SIZE extent{};
        GetTextExtentPoint32W(c.dc, word, static_cast<int>(std::wcslen(word)), &extent);
        const Ink ink = InkOf(c);
        EXPECT_LE(std::abs((ink.right + 1) - extent.cx), 1) << "\"" << std::wstring(word).size() << "\" ink right "
                                                             << ink.right << " extent " << extent.cx;
    }
}

TEST(GdiText, DrawTextPlacesLinesAsAskedAndCalcRectMeasures) {
    Canvas c(200, 60);
    Font font(c.dc, -12);
    SetBkMode(c.dc, TRANSPARENT);
    const wchar_t* text = L"Stake";
    SIZE extent{};
    GetTextExtentPoint32W(c.dc, text, 5, &extent);
    RECT box{20, 10, 180, 50};

    c.Clear(kWhite);
    DrawTextW(c.dc, text, -1, &box, DT_SINGLELINE | DT_CENTER | DT_VCENTER);
    Ink centred = InkOf(c);
    EXPECT_LE(std::abs((centred.left + centred.right) / 2 - 100), 2);
    EXPECT_LE(std::abs((centred.top + centred.bottom) / 2 - 30), 3);

    c.Clear(kWhite);
    DrawTextW(c.dc, text, -1, &box, DT_SINGLELINE | DT_RIGHT | DT_BOTTOM);
    Ink right = InkOf(c);
    EXPECT_LE(std::abs(right.right + 1 - 180), 1);
    EXPECT_LE(right.bottom, 49);
    EXPECT_GT(right.bottom, 40);

    c.Clear(kWhite);
    DrawTextW(c.dc, L"&Stake", -1, &box, DT_SINGLELINE | DT_LEFT);
    Ink left = InkOf(c);
    EXPECT_LE(std::abs(left.right + 1 - (20 + extent.cx)), 1) << "the prefix & is not shown";

    RECT measure{5, 5, 5, 5};
    const int height = DrawTextW(c.dc, L"one\ntwo lines", -1, &measure, DT_CALCRECT);
    TEXTMETRICW tm{};
    GetTextMetricsW(c.dc, &tm);
    EXPECT_EQ(height, 2 * tm.tmHeight);
    EXPECT_EQ(measure.bottom, 5 + 2 * tm.tmHeight);
    SIZE second{};
    GetTextExtentPoint32W(c.dc, L"two lines", 9, &second);
    EXPECT_EQ(measure.right, 5 + second.cx);

    // Clipped to the rectangle unless told otherwise.
    c.Clear(kWhite);
    RECT narrow{20, 10, 30, 50};
    DrawTextW(c.dc, L"Wide label", -1, &narrow, DT_SINGLELINE);
    EXPECT_LE(InkOf(c).right, 29);
}

TEST(GdiText, OpaqueBackgroundsRotationAndPaletteSurfaces) {
    Canvas c(120, 120);
    c.Clear(kWhite);
    SetBkMode(c.dc, OPAQUE);
    SetBkColor(c.dc, RGB(255, 255, 0));
    {
        Font font(c.dc, -12);
        TextOutW(c.dc, 10, 10, L"ab", 2);
        SIZE extent{};
        GetTextExtentPoint32W(c.dc, L"ab", 2, &extent);
        EXPECT_EQ(GetPixel(c.dc, 10, 10), RGB(255, 255, 0)) << "the cell is filled";
        EXPECT_EQ(GetPixel(c.dc, 10 + extent.cx, 10), kWhite);
    }
    // Turned a quarter counter-clockwise, text runs up the surface.
    c.Clear(kWhite);
    SetBkMode(c.dc, TRANSPARENT);
    {
        Font font(c.dc, -12, 900);
        TextOutW(c.dc, 60, 100, L"Northing", 8);
    }
    const Ink turned = InkOf(c);
    ASSERT_TRUE(turned.any());
    EXPECT_GT(turned.bottom - turned.top, 3 * (turned.right - turned.left));
    EXPECT_LE(turned.bottom, 100);
    EXPECT_GE(turned.left, 60 - 1) << "the top of the letters faces left";

    // On a surface with a colour table the text is crisp: only the text colour appears.
    Canvas palette(60, 20, 8, false, {RGBQUAD{255, 255, 255, 0}, RGBQUAD{0, 0, 0, 0}, RGBQUAD{128, 128, 128, 0}});
    palette.Clear(kWhite);
    SetBkMode(palette.dc, TRANSPARENT);
    Font font(palette.dc, -12);
    TextOutW(palette.dc, 2, 2, L"Grid", 4);
    const Ink crisp = InkOf(palette);
    EXPECT_TRUE(crisp.any());
    EXPECT_EQ(crisp.partial, 0);
}

}  // namespace
