// GDI objects, device contexts and block transfers, checked pixel by pixel.
#include <gtest/gtest.h>

#include <cstring>

#include "platform/win32/Win32.h"
#include "tests/platform/win32/GdiCanvas.h"
#include "tests/platform/win32/UnderWine.h"
#include "tests/support/TestSupport.h"

using kiv_test::Canvas;

namespace {

const COLORREF kWhite = RGB(255, 255, 255);
const COLORREF kRed = RGB(255, 0, 0);
const COLORREF kBlue = RGB(0, 0, 255);
const COLORREF kMagenta = RGB(255, 0, 255);

TEST(GdiObjects, EachHandleReportsItsKindAndOnlyItsOwnReleaseWorks) {
    HDC memory = CreateCompatibleDC(nullptr);
    HDC screen = GetDC(nullptr);
    HPEN pen = CreatePen(PS_DASH, 1, kRed);
    HBRUSH brush = CreateSolidBrush(kBlue);
    LOGFONTW lf = kiv_win32::DefaultFont(false);
    HFONT font = CreateFontIndirectW(&lf);
    HBITMAP bitmap = CreateCompatibleBitmap(screen, 4, 4);
    EXPECT_EQ(GetObjectType(memory), OBJ_MEMDC);
    EXPECT_EQ(GetObjectType(screen), OBJ_DC);
    EXPECT_EQ(GetObjectType(pen), OBJ_PEN);
    EXPECT_EQ(GetObjectType(brush), OBJ_BRUSH);
    EXPECT_EQ(GetObjectType(font), OBJ_FONT);
    EXPECT_EQ(GetObjectType(bitmap), OBJ_BITMAP);
    EXPECT_EQ(GetObjectType(GetStockObject(NULL_PEN)), OBJ_PEN);

    LOGPEN described{};
    EXPECT_EQ(GetObjectW(pen, sizeof described, &described), static_cast<int>(sizeof described));
    EXPECT_EQ(described.lopnStyle, static_cast<UINT>(PS_DASH));
    EXPECT_EQ(described.lopnColor, kRed);

    // Drawing objects are not kernel objects: CloseHandle leaves them alone.
    EXPECT_FALSE(CloseHandle(pen));
    EXPECT_EQ(GetObjectType(pen), OBJ_PEN);

    // A selected bitmap may be deleted; the device context draws on it until it is
    // selected out, and then it is gone.
    HGDIOBJ oldBitmap = SelectObject(memory, bitmap);
    EXPECT_EQ(GetObjectType(oldBitmap), OBJ_BITMAP);
    HDC other = CreateCompatibleDC(nullptr);
    EXPECT_EQ(SelectObject(other, bitmap), nullptr) << "a bitmap lives in one device context at a time";
    EXPECT_TRUE(DeleteObject(bitmap));
    EXPECT_EQ(SetPixel(memory, 1, 1, kRed), kRed);
    EXPECT_EQ(GetPixel(memory, 1, 1), kRed);
    SelectObject(memory, oldBitmap);
    EXPECT_EQ(GetObjectType(bitmap), 0u);
    EXPECT_FALSE(DeleteObject(bitmap));

    SelectObject(memory, pen);
    EXPECT_TRUE(DeleteObject(pen));
    EXPECT_TRUE(LineTo(memory, 1, 0)) << "the device context still holds the pen it was given";
    EXPECT_TRUE(DeleteObject(GetStockObject(BLACK_PEN)));
    EXPECT_EQ(GetObjectType(GetStockObject(BLACK_PEN)), OBJ_PEN) << "stock objects are never deleted";

    EXPECT_TRUE(DeleteObject(memory)) << "a memory device context is deleted as by DeleteDC";
    EXPECT_EQ(GetObjectType(memory), 0u);
    EXPECT_FALSE(DeleteDC(memory));
    EXPECT_TRUE(DeleteDC(other));
    EXPECT_EQ(ReleaseDC(nullptr, screen), 1);
    EXPECT_TRUE(DeleteObject(brush));
    EXPECT_TRUE(DeleteObject(font));
}

TEST(GdiObjects, DibSectionsLayTheirRowsOutAsDescribed) {
    for (int bitCount : {1, 8, 24, 32}) {
        for (bool topDown : {true, false}) {
            SCOPED_TRACE(testing::Message() << bitCount << " bits, " << (topDown ? "top-down" : "bottom-up"));
            std::vector<RGBQUAD> palette;
            if (bitCount <= 8) palette = {RGBQUAD{0, 0, 0, 0}, RGBQUAD{255, 255, 255, 0}, RGBQUAD{0, 0, 255, 0}};
            if (bitCount == 1) palette.resize(2);
            Canvas c(5, 3, bitCount, topDown, palette);
            ASSERT_NE(c.bits, nullptr);
            const int stride = ((5 * bitCount + 31) / 32) * 4;

            DIBSECTION ds{};
            ASSERT_EQ(GetObjectW(c.bitmap, sizeof ds, &ds), static_cast<int>(sizeof ds));
            EXPECT_EQ(ds.dsBm.bmWidth, 5);
            EXPECT_EQ(ds.dsBm.bmHeight, 3);
            EXPECT_EQ(ds.dsBm.bmWidthBytes, stride);
            EXPECT_EQ(ds.dsBm.bmBitsPixel, bitCount);
            EXPECT_EQ(ds.dsBm.bmBits, c.bits);
            EXPECT_EQ(ds.dsBmih.biHeight, 3) << "the height without the row order";
            BITMAP bm{};
            EXPECT_EQ(GetObjectW(c.bitmap, sizeof bm, &bm), static_cast<int>(sizeof bm));

            // The pixel at (0, 0) is the first row in memory only when top-down.
            c.Clear(RGB(0, 0, 0));
            const COLORREF set = bitCount == 1 ? kWhite : kRed;
            EXPECT_EQ(SetPixel(c.dc, 0, 0, set), set);
            const auto* bytes = static_cast<const BYTE*>(c.bits);
            const BYTE* row = bytes + (topDown ? 0 : 2 * stride);
            switch (bitCount) {
                case 32: EXPECT_EQ(row[2], 255); EXPECT_EQ(row[0], 0); break;
                case 24: EXPECT_EQ(row[2], 255); EXPECT_EQ(row[0], 0); break;
                case 8: EXPECT_EQ(row[0], 2); break;  // the nearest entry of the table
                default: EXPECT_EQ(row[0], 0x80);
            }
            EXPECT_EQ(GetPixel(c.dc, 0, 0), set);
            EXPECT_EQ(GetPixel(c.dc, 5, 0), CLR_INVALID);
            EXPECT_EQ(GetPixel(c.dc, 0, -1), CLR_INVALID);
        }
    }
}

TEST(GdiObjects, CompatibleBitmapsFollowTheDeviceContextsBitmap) {
    HDC screen = GetDC(nullptr);
    HDC memory = CreateCompatibleDC(screen);
    BITMAP bm{};
    HBITMAP fromMemory = CreateCompatibleBitmap(memory, 8, 2);  // still holding its 1x1 monochrome bitmap
    GetObjectW(fromMemory, sizeof bm, &bm);
    EXPECT_EQ(bm.bmBitsPixel, 1);
    HBITMAP fromScreen = CreateCompatibleBitmap(screen, 8, 2);
    GetObjectW(fromScreen, sizeof bm, &bm);
    EXPECT_EQ(bm.bmBitsPixel, 32);
    EXPECT_EQ(bm.bmBits, nullptr);
    HBITMAP empty = CreateCompatibleBitmap(screen, 0, 5);
    ASSERT_NE(empty, nullptr) << "a bitmap with no pixels is one monochrome pixel";
    GetObjectW(empty, sizeof bm, &bm);
    EXPECT_EQ(bm.bmWidth, 1);
    EXPECT_EQ(bm.bmHeight, 1);
    EXPECT_EQ(bm.bmBitsPixel, 1);
    DeleteObject(empty);
    EXPECT_EQ(CreateCompatibleBitmap(screen, 100000, 100000), nullptr);
    DeleteObject(fromMemory);
    DeleteObject(fromScreen);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
}

TEST(GdiFill, ClearsEverySurfaceToWhite) {
    for (int bitCount : {1, 8, 24, 32}) {
        // An 8-bit table whose white is not its last entry, which is blue.
        std::vector<RGBQUAD> table = {RGBQUAD{0, 0, 0, 0}, RGBQUAD{255, 255, 255, 0}};
        if (bitCount == 8) {
            table.resize(256, RGBQUAD{128, 128, 128, 0});
            table[255] = RGBQUAD{255, 0, 0, 0};
        }
        Canvas c(7, 5, bitCount, false, table);
        const RECT all{0, 0, 7, 5};
        EXPECT_EQ(FillRect(c.dc, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH))), 1);
        for (COLORREF p : c.Pixels()) ASSERT_EQ(p, kWhite) << bitCount << " bits";
        // BLACKNESS and WHITENESS clear and set every bit of a pixel: on a palette surface
        // the table's first and last entries, not the nearest black and white.
        PatBlt(c.dc, 0, 0, 7, 5, WHITENESS);
        for (COLORREF p : c.Pixels()) ASSERT_EQ(p, bitCount == 8 ? kBlue : kWhite) << bitCount << " bits";
        PatBlt(c.dc, 0, 0, 7, 5, BLACKNESS);
        for (COLORREF p : c.Pixels()) ASSERT_EQ(p, RGB(0, 0, 0)) << bitCount << " bits";
    }
    Canvas c(4, 4);
    c.Clear(kWhite);
    const RECT inner{1, 1, 3, 3};
    FillRect(c.dc, &inner, reinterpret_cast<HBRUSH>(COLOR_WINDOWTEXT + 1));
    EXPECT_EQ(c.Find(GetSysColor(COLOR_WINDOWTEXT)).size(), 4u) << "right and bottom edges stay out";
}

TEST(GdiBlit, RasterOperationsCombineSourcePatternAndDestination) {
    Canvas source(4, 4, 24, false);
    Canvas dest(4, 4, 32, true);
    source.Clear(kRed);
    SetPixel(source.dc, 3, 3, kBlue);
    dest.Clear(kWhite);

    ASSERT_TRUE(BitBlt(dest.dc, 1, 1, 3, 3, source.dc, 1, 1, SRCCOPY));
    EXPECT_EQ(GetPixel(dest.dc, 0, 0), kWhite);
    EXPECT_EQ(GetPixel(dest.dc, 1, 1), kRed);
    EXPECT_EQ(GetPixel(dest.dc, 3, 3), kBlue);

    PatBlt(dest.dc, 0, 0, 2, 4, DSTINVERT);
    EXPECT_EQ(GetPixel(dest.dc, 0, 0), RGB(0, 0, 0));
    EXPECT_EQ(GetPixel(dest.dc, 1, 1), RGB(0, 255, 255));

    HBRUSH green = CreateSolidBrush(RGB(0, 255, 0));
    HGDIOBJ old = SelectObject(dest.dc, green);
    PatBlt(dest.dc, 0, 0, 1, 1, PATCOPY);
    EXPECT_EQ(GetPixel(dest.dc, 0, 0), RGB(0, 255, 0));
    BitBlt(dest.dc, 3, 3, 1, 1, source.dc, 3, 3, SRCPAINT);  // blue | white
    EXPECT_EQ(GetPixel(dest.dc, 3, 3), kBlue);
    SelectObject(dest.dc, old);
    DeleteObject(green);

    // Overlapping copies within one surface move the picture intact.
    Canvas strip(6, 1);
    for (int x = 0; x < 6; ++x) SetPixel(strip.dc, x, 0, RGB(x, 0, 0));
    BitBlt(strip.dc, 1, 0, 5, 1, strip.dc, 0, 0, SRCCOPY);
    for (int x = 1; x < 6; ++x) EXPECT_EQ(GetPixel(strip.dc, x, 0), RGB(x - 1, 0, 0));
    BitBlt(strip.dc, 0, 0, 5, 1, strip.dc, 1, 0, SRCCOPY);
    for (int x = 0; x < 5; ++x) EXPECT_EQ(GetPixel(strip.dc, x, 0), RGB(x, 0, 0));

    // Copies that stick out of either surface are cut to what both hold.
    dest.Clear(kWhite);
    EXPECT_TRUE(BitBlt(dest.dc, -2, -2, 10, 10, source.dc, 0, 0, SRCCOPY));
    EXPECT_EQ(GetPixel(dest.dc, 0, 0), kRed);
    EXPECT_EQ(GetPixel(dest.dc, 1, 1), kBlue) << "source (3,3) lands at (1,1)";
    EXPECT_EQ(GetPixel(dest.dc, 2, 2), kWhite) << "nothing of the source is left for this pixel";
}

TEST(GdiBlit, APenOrBrushAsSourceDrawsNothingAndFails) {
    Canvas dest(4, 4);
    dest.Clear(kWhite);
    HPEN pen = CreatePen(PS_SOLID, 1, kRed);
    HBRUSH brush = CreateSolidBrush(kRed);
    for (HGDIOBJ notADC : {static_cast<HGDIOBJ>(pen), static_cast<HGDIOBJ>(brush)}) {
        EXPECT_FALSE(BitBlt(dest.dc, 0, 0, 4, 4, static_cast<HDC>(notADC), 0, 0, SRCCOPY));
        EXPECT_FALSE(TransparentImage(dest.dc, 0, 0, 4, 4, notADC, 0, 0, 4, 4, kMagenta));
    }
    EXPECT_FALSE(BitBlt(dest.dc, 0, 0, 4, 4, nullptr, 0, 0, SRCCOPY));
    for (COLORREF p : dest.Pixels()) ASSERT_EQ(p, kWhite);
    DeleteObject(pen);
    DeleteObject(brush);
}

TEST(GdiBlit, TransparentImageLeavesOutItsColour) {
    Canvas sprite(3, 3, 24, false);
    sprite.Clear(kMagenta);
    SetPixel(sprite.dc, 1, 1, kBlue);
    SetPixel(sprite.dc, 0, 2, RGB(254, 0, 255));  // near the key is not the key
    Canvas dest(6, 6);
    dest.Clear(kWhite);

    ASSERT_TRUE(TransparentImage(dest.dc, 1, 1, 3, 3, sprite.dc, 0, 0, 3, 3, kMagenta));
    EXPECT_EQ(dest.Find(kMagenta).size(), 0u);
    EXPECT_EQ(GetPixel(dest.dc, 2, 2), kBlue);
    EXPECT_EQ(GetPixel(dest.dc, 1, 3), RGB(254, 0, 255));
    EXPECT_EQ(dest.Find(kWhite).size(), 34u);

    // From a bitmap handle, stretched to twice the size.
    dest.Clear(kWhite);
    HBITMAP bitmap = sprite.bitmap;
    SelectObject(sprite.dc, sprite.old);
    ASSERT_TRUE(TransparentImage(dest.dc, 0, 0, 6, 6, bitmap, 0, 0, 3, 3, kMagenta));
    SelectObject(sprite.dc, bitmap);
    const std::vector<POINT> blue = dest.Find(kBlue);
    EXPECT_EQ(blue, (std::vector<POINT>{{2, 2}, {3, 2}, {2, 3}, {3, 3}}));
}

TEST(GdiBlit, ScrollDCMovesThePictureAndReportsTheUncoveredStrip) {
    Canvas c(20, 10);
    c.Clear(kWhite);
    for (int y = 0; y < 10; ++y) SetPixel(c.dc, 2, y, kRed);  // a red column at x = 2
    const RECT all{0, 0, 20, 10};
    RECT update{};

    ASSERT_TRUE(ScrollDC(c.dc, 5, 0, &all, &all, nullptr, &update));
    EXPECT_EQ(update, (RECT{0, 0, 5, 10}));
    // The uncovered strip still holds what was there: painting it is the caller's job.
    const auto red = c.Find(kRed);
    ASSERT_EQ(red.size(), 20u);
    for (POINT p : red) EXPECT_TRUE(p.x == 2 || p.x == 7) << p.x;

    const auto before = c.Pixels();
    ASSERT_TRUE(ScrollDC(c.dc, 0, 0, &all, &all, nullptr, &update));
    EXPECT_EQ(c.Pixels(), before);
    EXPECT_TRUE(IsRectEmpty(&update));

    ASSERT_TRUE(ScrollDC(c.dc, 0, -3, &all, &all, nullptr, &update));
    EXPECT_EQ(update, (RECT{0, 7, 20, 10}));
    ASSERT_TRUE(ScrollDC(c.dc, -4, 2, &all, &all, nullptr, &update));
    EXPECT_EQ(update, all) << "a diagonal scroll uncovers an L whose box is the whole clip";
    ASSERT_TRUE(ScrollDC(c.dc, 50, 0, &all, &all, nullptr, &update));
    EXPECT_EQ(update, all);

    // Only the clip changes; pixels come from the scroll rectangle alone.
    c.Clear(kWhite);
    SetPixel(c.dc, 0, 0, kBlue);
    SetPixel(c.dc, 10, 0, kRed);
    const RECT left{0, 0, 10, 10};
    ASSERT_TRUE(ScrollDC(c.dc, 5, 0, &left, &left, nullptr, &update));
    EXPECT_EQ(GetPixel(c.dc, 5, 0), kBlue);
    EXPECT_EQ(GetPixel(c.dc, 10, 0), kRed) << "outside the clip nothing changes";
#ifndef _WIN32
    // The host keeps no regions, so it refuses to fill one; the system fills it.
    EXPECT_FALSE(ScrollDC(c.dc, 1, 0, &all, &all, reinterpret_cast<HRGN>(1), &update));
#endif
}

TEST(GdiWindows, AWindowKeepsItsPictureBetweenDeviceContextsAndWhenResized) {
    kiv_test::TempDeviceRoot root;
    HWND window = kiv_test::MakePlainWindow(30, 20, WS_VISIBLE);
    ASSERT_NE(window, nullptr);

    HDC dc = GetDC(window);
    ASSERT_NE(dc, nullptr);
    EXPECT_EQ(GetObjectType(dc), OBJ_DC);
    EXPECT_EQ(WindowFromDC(dc), window);
    EXPECT_EQ(ReleaseDC(nullptr, dc), 1) << "the DC names its window, whatever the caller names";
    EXPECT_EQ(ReleaseDC(window, dc), 0) << "released once";
    if (kiv_test::UnderWine()) {
        DestroyWindow(window);
        GTEST_SKIP() << "Wine's display driver without a display keeps no pixels for windows";
    }
    dc = GetDC(window);
    EXPECT_EQ(GetPixel(dc, 0, 0), kWhite) << "a new window is white";
    EXPECT_EQ(GetPixel(dc, 29, 19), kWhite);
    EXPECT_EQ(GetPixel(dc, 30, 0), CLR_INVALID) << "the surface is the client area";
    SetPixel(dc, 29, 19, kRed);
    EXPECT_EQ(ReleaseDC(window, dc), 1);

    dc = GetDC(window);
    EXPECT_EQ(GetPixel(dc, 29, 19), kRed);
    HBITMAP compatible = CreateCompatibleBitmap(dc, 2, 2);
    BITMAP bm{};
    GetObjectW(compatible, sizeof bm, &bm);
    EXPECT_EQ(bm.bmBitsPixel, 32);
    DeleteObject(compatible);
    EXPECT_EQ(ReleaseDC(window, dc), 1);

    MoveWindow(window, 0, 0, 40, 20, TRUE);
    dc = GetDC(window);
    EXPECT_EQ(GetPixel(dc, 29, 19), kRed);
    EXPECT_EQ(GetPixel(dc, 39, 19), kWhite);
    ReleaseDC(window, dc);
    DestroyWindow(window);
    EXPECT_EQ(GetDC(window), nullptr);
}

}  // namespace
