// The Drawer's passes and map surface, and the surfaces' primitives, read back pixel by
// pixel through GDI.
#include "utils/render/Drawer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "tests/support/TestSupport.h"
#include "utils/render/ImageBlits.h"

using kiv_render::Drawer;

namespace {

constexpr COLORREF kWhite = 0xFFFFFF, kRed = 0x0000FF, kBlue = 0xFF0000;

COLORREF at(Drawer::Bitmap& s, int x, int y) { return GetPixel(s.getDC(), x, y); }

// The pixels of a surface, to compare before and after.
std::vector<unsigned char> pixels(Drawer::Bitmap& s) {
    const unsigned char* bits = s.lock();
    return std::vector<unsigned char>(bits, bits + static_cast<std::size_t>(s.getWidth()) * 4 * s.getHeight());
}

LRESULT CALLBACK plainWindow(HWND w, UINT m, WPARAM wp, LPARAM lp) { return DefWindowProcW(w, m, wp, lp); }

// A headless window and a white picture of its size that the passes draw into. On Windows
// a window's own DC keeps pixels only where the window is shown on a screen, so the
// picture is a memory DC, as a double-buffered paint would hand the drawer.
class TestWindow {
public:
    TestWindow(int width, int height) {
        WNDCLASSW c{};
        c.lpfnWndProc = plainWindow;
        c.lpszClassName = L"drawer test";
        RegisterClassW(&c);
        window = CreateWindowExW(0, L"drawer test", L"", 0, 0, 0, width, height, nullptr, nullptr, nullptr, nullptr);
        HDC windowDc = GetDC(window);
        dc = CreateCompatibleDC(windowDc);
        picture_ = CreateCompatibleBitmap(windowDc, width, height);
        ReleaseDC(window, windowDc);
        previous_ = SelectObject(dc, picture_);
        PatBlt(dc, 0, 0, width, height, WHITENESS);
    }
    ~TestWindow() {
        SelectObject(dc, previous_);
        DeleteObject(picture_);
        DeleteDC(dc);
        DestroyWindow(window);
    }
    HWND window = nullptr;
    HDC dc = nullptr;

private:
    HBITMAP picture_ = nullptr;
    HGDIOBJ previous_ = nullptr;
};

}  // namespace

TEST(DrawerSurface, ClearsLinesAndDashesPixelByPixel) {
    auto s = Drawer::Bitmap::create(40, 12, 32);
    ASSERT_NE(s, nullptr);
    EXPECT_FALSE(s->isHdcOnly());
    s->clear(kWhite);
    const std::vector<unsigned char> white = pixels(*s);
    for (std::size_t i = 0; i < white.size(); i += 4) {
        ASSERT_EQ(white[i] & white[i + 1] & white[i + 2], 0xFF) << "pixel " << i / 4;
    }

    // A polyline leaves its last pixel out.
    s->setDrawColor(kRed);
    const POINT corner[3] = {{1, 1}, {5, 1}, {5, 4}};
    s->drawPolyline(corner, 3);
    for (int x = 1; x <= 5; ++x) EXPECT_EQ(at(*s, x, 1), kRed) << x;
    EXPECT_EQ(at(*s, 5, 3), kRed);
    EXPECT_EQ(at(*s, 5, 4), kWhite);
    EXPECT_EQ(at(*s, 0, 1), kWhite);

    // Six on, three off, from the start of the line.
    s->setLineStyle(Drawer::eDash, 1);
    s->drawLine(0, 8, 36, 8);
    for (int x = 0; x < 36; ++x) EXPECT_EQ(at(*s, x, 8), x % 9 < 6 ? kRed : kWhite) << x;
    s->setLineStyle(Drawer::eNone, 1);
    s->drawLine(0, 10, 36, 10);
    EXPECT_EQ(at(*s, 3, 10), kWhite);
}

TEST(DrawerSurface, PenIsMadeOnlyWhenColourStyleOrWidthChanges) {
    auto s = Drawer::Bitmap::create(4, 4, 32);
    s->setPenStyle(kRed, PS_SOLID, 2);
    const HPEN first = s->getPenHandle();
    ASSERT_NE(first, nullptr);
    s->setPenStyle(kRed, PS_SOLID, 2);
    EXPECT_EQ(s->getPenHandle(), first);
    s->setPenStyle(kBlue, PS_SOLID, 2);
    EXPECT_NE(s->getPenHandle(), first);
    EXPECT_EQ(s->getPen().lopnColor, kBlue);
    EXPECT_EQ(GetObjectType(s->getPenHandle()), OBJ_PEN);
}

TEST(DrawerSurface, ArrowBarbsFallBackAlongTheShaft) {
    auto s = Drawer::Bitmap::create(60, 60, 32);
    s->clear(kWhite);
    s->setDrawColor(kRed);
    s->drawArrowPoints(10, 30, 40, 30, 10);  // pointing right
    // Barbs end at (40 - 8, 30 -+ 5): behind the tip, either side of the shaft.
    EXPECT_EQ(at(*s, 33, 26), kRed);
    EXPECT_EQ(at(*s, 33, 34), kRed);
    for (int y = 0; y < 60; ++y) {
        for (int x = 41; x < 60; ++x) ASSERT_EQ(at(*s, x, y), kWhite) << x << "," << y;
    }
    s->clear(kWhite);
    s->drawArrowPoints(30, 50, 30, 20, 10);  // pointing up on the screen
    // Barbs end at (30 + 4, 28) and (30 - 5, 28): the sine of 30 degrees is a hair under
    // a half, so ten times it truncates to 4.
    EXPECT_EQ(at(*s, 34, 28), kRed);
    EXPECT_EQ(at(*s, 26, 27), kRed);
    for (int x = 0; x < 60; ++x) EXPECT_EQ(at(*s, x, 15), kWhite) << x;

    s->clear(kWhite);
    s->drawArrowPoints(7, 7, 7, 7, 10);  // no direction: the point alone
    EXPECT_EQ(at(*s, 7, 7), kRed);
    EXPECT_EQ(at(*s, 7, 8), kWhite);
}

TEST(DrawerMapSurface, ScrollLeavesAWhiteStripAndMovesThePicture) {
    TestWindow window(30, 20);
    Drawer drawer;
    const RECT plot{0, 0, 30, 20};
    ASSERT_TRUE(drawer.Create(window.window, &plot));
    Drawer::Bitmap& map = *drawer.getMapSurface();
    map.setDrawColor(kBlue);
    for (int x = 0; x < 30; x += 3) map.drawPoint(x, 7);
    map.drawPoint(29, 19);
    const std::vector<unsigned char> before = pixels(map);

    drawer.ScrollScene(0, 0);
    EXPECT_EQ(pixels(map), before);

    drawer.ScrollScene(5, 0);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 5; ++x) ASSERT_EQ(at(map, x, y), kWhite) << x << "," << y;
    }
    for (int x = 5; x < 30; ++x) EXPECT_EQ(at(map, x, 7), (x - 5) % 3 == 0 ? kBlue : kWhite) << x;

    drawer.ScrollScene(0, -4);  // up: the strip is at the bottom
    for (int x = 0; x < 30; ++x) EXPECT_EQ(at(map, x, 19), kWhite);
    EXPECT_EQ(at(map, 8, 3), kBlue);
}

TEST(DrawerMapSurface, CreateAndResizeTraceTheNewWhiteSurface) {
    TestWindow window(16, 8);
    Drawer drawer;
    const RECT plot{0, 0, 16, 8};
    kiv_test::LogCapture log;
    ASSERT_TRUE(drawer.Create(window.window, &plot));
    ASSERT_EQ(log.count(), 1u);
    EXPECT_EQ(log.entries()[0].text.rfind(L"init: generating new mapSurface ", 0), 0u);
    EXPECT_EQ(log.entries()[0].text.size(), std::wstring(L"init: generating new mapSurface 01234567\n").size());

    const RECT larger{0, 0, 24, 10};
    ASSERT_TRUE(drawer.ChangePlotRect(&larger));
    ASSERT_EQ(log.count(), 2u);
    EXPECT_EQ(log.entries()[1].text.rfind(L"generating new mapSurface on resize ", 0), 0u);
    EXPECT_EQ(drawer.getMapSurface()->getWidth(), 24);
    EXPECT_EQ(drawer.getMapSurface()->getHeight(), 10);
    EXPECT_EQ(at(*drawer.getMapSurface(), 23, 9), kWhite);
    EXPECT_FALSE(drawer.ChangePlotRect(nullptr));
    EXPECT_FALSE(drawer.Create(nullptr, &plot));
    EXPECT_FALSE(drawer.Create(window.window, nullptr));
}

TEST(DrawerMapSurface, DumpHandsOverThePictureAndLeavesAWhiteSurface) {
    TestWindow window(16, 8);
    Drawer drawer;
    const RECT plot{0, 0, 16, 8};
    ASSERT_TRUE(drawer.Create(window.window, &plot));
    drawer.getMapSurface()->setDrawColor(kRed);
    drawer.getMapSurface()->drawPoint(3, 2);
    Drawer::Bitmap* old = drawer.getMapSurface();

    std::shared_ptr<Drawer::Bitmap> picture = drawer.getMapSurfaceDump();
    ASSERT_EQ(picture.get(), old);
    EXPECT_EQ(at(*picture, 3, 2), kRed);
    ASSERT_NE(drawer.getMapSurface(), old);
    EXPECT_EQ(drawer.getMapSurface()->getWidth(), 16);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 16; ++x) ASSERT_EQ(at(*drawer.getMapSurface(), x, y), kWhite);
    }
}

TEST(DrawerPasses, OneLockForBothKindsOfPass) {
    TestWindow window(20, 12);
    Drawer drawer;
    const RECT plot{4, 2, 14, 10};  // the map is shown 4 across and 2 down
    ASSERT_TRUE(drawer.Create(window.window, &plot));
    drawer.getMapSurface()->setDrawColor(kRed);
    drawer.getMapSurface()->drawPoint(0, 0);

    EXPECT_FALSE(drawer.EndRendering());  // no pass: nothing copied
    EXPECT_EQ(GetPixel(window.dc, 4, 2), kWhite);

    kiv_test::LogCapture log;
    ASSERT_TRUE(drawer.StartRendering(window.dc));
    EXPECT_EQ(drawer.GetDC(), window.dc);
    EXPECT_FALSE(drawer.StartRendering(window.dc));
    ASSERT_EQ(log.count(), 1u);
    EXPECT_EQ(log.entries()[0].level, 2);
    EXPECT_EQ(log.entries()[0].text, L"*** warning at Drawer, line 150 - Tried to use attach to an active HDC");
    EXPECT_FALSE(drawer.StartHudRendering(window.dc));  // refused without a word
    EXPECT_EQ(log.count(), 1u);
    EXPECT_TRUE(drawer.IsRenderLocked());

    // Ending the map pass as a heads-up one drops the lock but copies nothing.
    EXPECT_TRUE(drawer.EndHudRendering());
    EXPECT_FALSE(drawer.IsRenderLocked());
    EXPECT_EQ(drawer.GetDC(), nullptr);
    EXPECT_EQ(GetPixel(window.dc, 4, 2), kWhite);

    ASSERT_TRUE(drawer.StartRendering(window.dc));
    EXPECT_TRUE(drawer.EndRendering());
    EXPECT_EQ(GetPixel(window.dc, 4, 2), kRed);
    EXPECT_EQ(GetPixel(window.dc, 3, 2), kWhite);
    EXPECT_EQ(GetPixel(window.dc, 5, 2), kWhite);

    // A heads-up pass draws on the window through a surface bound to it.
    ASSERT_TRUE(drawer.StartHudRendering(window.dc));
    ASSERT_NE(drawer.getHudSurface(), nullptr);
    EXPECT_TRUE(drawer.getHudSurface()->isHdcOnly());
    EXPECT_EQ(drawer.getHudSurface()->getWidth(), 10);
    drawer.getHudSurface()->setDrawColor(kBlue);
    drawer.getHudSurface()->drawPoint(18, 11);
    EXPECT_EQ(GetPixel(window.dc, 18, 11), kBlue);
    EXPECT_TRUE(drawer.EndHudRendering());
    EXPECT_EQ(drawer.getHudSurface(), nullptr);
    EXPECT_FALSE(drawer.EndHudRendering());

    // Ending a heads-up pass as a map pass copies the map and keeps the heads-up surface.
    PatBlt(window.dc, 0, 0, 20, 12, WHITENESS);
    ASSERT_TRUE(drawer.StartHudRendering(window.dc));
    EXPECT_TRUE(drawer.EndRendering());
    EXPECT_FALSE(drawer.IsRenderLocked());
    EXPECT_EQ(GetPixel(window.dc, 4, 2), kRed);
    EXPECT_NE(drawer.getHudSurface(), nullptr);
}

TEST(ImageBlits, TransparentColourIsLeftOutAndOnlyDcsAndBitmapsAreSources) {
    auto source = Drawer::Bitmap::create(4, 1, 32);
    source->clear(0xFF00FF);
    source->setDrawColor(kRed);
    source->drawPoint(1, 0);
    source->drawPoint(3, 0);
    auto target = Drawer::Bitmap::create(4, 1, 32);
    target->clear(kWhite);

    EXPECT_NE(DrawTransparentImage(target->getDC(), 0, 0, 4, 1, source->getDC(), 0, 0, 4, 1, 0xFF00FF), 0);
    EXPECT_EQ(at(*target, 0, 0), kWhite);
    EXPECT_EQ(at(*target, 1, 0), kRed);
    EXPECT_EQ(at(*target, 2, 0), kWhite);

    // From a bitmap that no device context holds: it is selected for the copy and let go.
    BITMAPINFO info{};
    info.bmiHeader = {40, 4, 1, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    ASSERT_NE(bitmap, nullptr);
    auto* row = static_cast<std::uint32_t*>(bits);
    row[0] = row[1] = row[3] = 0xFF00FF;  // magenta, stored as 0x00RRGGBB
    row[2] = 0x0000FF;                    // blue
    target->clear(kWhite);
    EXPECT_NE(DrawTransparentImage(target->getDC(), 0, 0, 4, 1, bitmap, 0, 0, 4, 1, 0xFF00FF), 0);
    EXPECT_EQ(at(*target, 1, 0), kWhite);
    EXPECT_EQ(at(*target, 2, 0), kBlue);
    EXPECT_NE(DrawOpaqueImage(target->getDC(), 0, 0, 4, 1, bitmap, 0, 0), 0);
    EXPECT_EQ(at(*target, 1, 0), 0xFF00FFu);
    EXPECT_TRUE(DeleteObject(bitmap));  // not left selected anywhere

    HPEN pen = CreatePen(PS_SOLID, 1, kRed);
    HBRUSH brush = CreateSolidBrush(kRed);
    target->clear(kWhite);
    EXPECT_EQ(DrawOpaqueImage(target->getDC(), 0, 0, 4, 1, pen, 0, 0), 0);
    EXPECT_EQ(DrawTransparentImage(target->getDC(), 0, 0, 4, 1, brush, 0, 0, 4, 1, 0), 0);
    EXPECT_EQ(DrawOpaqueImage(target->getDC(), 0, 0, 4, 1, nullptr, 0, 0), 0);
    for (int x = 0; x < 4; ++x) EXPECT_EQ(at(*target, x, 0), kWhite);
    DeleteObject(pen);
    DeleteObject(brush);
}
