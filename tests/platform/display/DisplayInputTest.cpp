// The live display's side that needs no desktop: the pictures it presents, composed from
// the windows' own surfaces, and desktop input turned into the controller's messages.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/display/InputFeed.h"
#include "platform/display/WindowPicture.h"
#include "platform/mfc/Wnd.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

using kiv_display::TWindowPicture;

namespace {

int paints = 0;
std::vector<MSG> mouse;

// Paints its whole client area in the colour kept as its user data; records mouse input.
LRESULT CALLBACK Solid(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    if (m == WM_PAINT) {
        ++paints;
        HDC dc = GetDC(w);
        RECT r{};
        GetClientRect(w, &r);
        HBRUSH b = CreateSolidBrush(static_cast<COLORREF>(GetWindowLongPtrW(w, GWLP_USERDATA)));
        FillRect(dc, &r, b);
        DeleteObject(b);
        ReleaseDC(w, dc);
        return 0;
    }
    if (m >= WM_MOUSEMOVE && m <= WM_LBUTTONUP) mouse.push_back(MSG{w, m, wp, lp, 0, {}});
    return DefWindowProcW(w, m, wp, lp);
}

HWND SolidWindow(HWND parent, RECT r, COLORREF colour, bool visible = true) {
    WNDCLASSW wc{};
    wc.lpfnWndProc = Solid;
    wc.lpszClassName = L"solid";
    RegisterClassW(&wc);
    const DWORD style = (parent ? WS_CHILD : WS_POPUP) | (visible ? WS_VISIBLE : 0);
    HWND w = CreateWindowExW(0, L"solid", L"", style, r.left, r.top, r.right - r.left, r.bottom - r.top, parent,
                             nullptr, nullptr, nullptr);
    SetWindowLongPtrW(w, GWLP_USERDATA, static_cast<LONG_PTR>(colour));
    return w;
}

COLORREF At(const TWindowPicture& p, int x, int y) {
    const std::uint32_t v = p.pixels[static_cast<size_t>(y) * static_cast<size_t>(p.width) + static_cast<size_t>(x)];
    return RGB((v >> 16) & 0xFF, (v >> 8) & 0xFF, v & 0xFF);
}

void Pump() {
    MSG msg{};
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}

std::wstring TextOf(HWND w) {
    wchar_t text[64] = {};
    GetWindowTextW(w, text, 64);
    return text;
}

constexpr COLORREF kRed = RGB(200, 0, 0), kGreen = RGB(0, 160, 0), kBlue = RGB(0, 0, 220), kGrey = RGB(90, 90, 90);

}  // namespace

TEST(WindowPicture, StacksVisibleChildrenClippedToTheirParentsWithoutAskingAnyoneToPaint) {
    kiv_test::TempDeviceRoot root;
    HWND top = SolidWindow(nullptr, RECT{5, 5, 105, 85}, kRed);
    HWND child = SolidWindow(top, RECT{10, 10, 50, 40}, kGreen);
    HWND grandchild = SolidWindow(child, RECT{20, 10, 80, 80}, kBlue);  // runs past its parent
    SolidWindow(top, RECT{60, 10, 90, 30}, kGrey, false);                 // hidden
    kiv_display::PaintWindowTree(top);
    EXPECT_EQ(paints, 3) << "the hidden window is not painted";
    paints = 0;
    TWindowPicture p;
    ASSERT_TRUE(kiv_display::ComposeWindowPicture(top, p));
    EXPECT_EQ(paints, 0);
    ASSERT_EQ(p.width, 100);
    ASSERT_EQ(p.height, 80);
    EXPECT_EQ(At(p, 0, 0), kRed);
    EXPECT_EQ(At(p, 10, 10), kGreen);
    EXPECT_EQ(At(p, 29, 19), kGreen);
    EXPECT_EQ(At(p, 30, 20), kBlue);
    EXPECT_EQ(At(p, 49, 39), kBlue);
    EXPECT_EQ(At(p, 50, 39), kRed) << "a child shows only within its parent";
    EXPECT_EQ(At(p, 49, 40), kRed);
    EXPECT_EQ(At(p, 70, 20), kRed) << "a hidden child is not shown";

    // A child that repaints itself shows in the next picture; its parent is not asked.
    SetWindowLongPtrW(grandchild, GWLP_USERDATA, static_cast<LONG_PTR>(kGrey));
    SendMessageW(grandchild, WM_PAINT, 0, 0);
    paints = 0;
    ASSERT_TRUE(kiv_display::ComposeWindowPicture(top, p));
    EXPECT_EQ(paints, 0);
    EXPECT_EQ(At(p, 30, 20), kGrey);
    EXPECT_EQ(At(p, 29, 19), kGreen);
    DestroyWindow(top);
    EXPECT_FALSE(kiv_display::ComposeWindowPicture(top, p));
}

TEST(WindowPicture, MatchesTheSavedPictureOfAWindowWithStandardControls) {
    kiv_test::TempDeviceRoot root;
    kiv_win32::RegisterStandardControls();
    HWND top = SolidWindow(nullptr, RECT{0, 0, 160, 90}, RGB(236, 236, 236));
    HWND edit = CreateWindowExW(0, L"EDIT", L"PT100", WS_CHILD | WS_VISIBLE, 8, 8, 140, 24, top, nullptr, nullptr, nullptr);
    CreateWindowExW(0, L"BUTTON", L"Store", WS_CHILD | WS_VISIBLE, 8, 50, 80, 26, top, nullptr, nullptr, nullptr);
    kiv_display::PaintWindowTree(top);
    SetWindowTextW(edit, L"Kiwi42");  // the edit repaints only itself
    TWindowPicture live;
    ASSERT_TRUE(kiv_display::ComposeWindowPicture(top, live));
    // The headless way: everything painted afresh and the children copied into the parent.
    kiv_win32::RedrawWindowTree(top);
    TWindowPicture saved;
    ASSERT_TRUE(kiv_display::ComposeWindowPicture(top, saved));
    HDC dc = GetDC(top);
    for (int y = 0; y < 90; ++y)
        for (int x = 0; x < 160; ++x) ASSERT_EQ(At(live, x, y), GetPixel(dc, x, y)) << x << "," << y;
    ReleaseDC(top, dc);
    EXPECT_EQ(live.pixels, saved.pixels);
    DestroyWindow(top);
}

TEST(InputFeed, CharactersArriveInTheCaseTypedAndThroughTheKeysWhereTheKeysTypeThem) {
    kiv_test::TempDeviceRoot root;
    kiv_win32::RegisterStandardControls();
    HWND top = SolidWindow(nullptr, RECT{0, 0, 100, 40}, kGrey);
    HWND edit = CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE, 0, 0, 100, 20, top, nullptr, nullptr, nullptr);
    SetFocus(edit);
    auto type = [](std::u32string_view text) {
        for (char32_t ch : text) {
            kiv_display::FeedCharacter(ch);
            Pump();
        }
    };
    type(U"aB3 x.\u00E9");
    EXPECT_EQ(TextOf(edit), L"aB3 x.\u00E9");
    EXPECT_GE(GetKeyState(VK_SHIFT), 0) << "typing leaves Shift alone";

    // With Shift held on the desktop, capitals go through their keys, the key state
    // (read as the key message is translated) still says Shift, and small letters come
    // as characters.
    kiv_display::FeedKey(VK_SHIFT, true);
    type(U"QqZ!");
    EXPECT_EQ(TextOf(edit), L"aB3 x.\u00E9QqZ!");
    EXPECT_LT(GetKeyState(VK_SHIFT), 0);
    kiv_display::FeedKey(VK_SHIFT, false);

    // Controller keys go to the focused window as key messages.
    kiv_display::FeedKey(VK_BACK, true);
    kiv_display::FeedKey(VK_BACK, false);
    Pump();
    EXPECT_EQ(TextOf(edit), L"aB3 x.\u00E9QqZ");
    DestroyWindow(top);
}

TEST(InputFeed, APressGoesToTheWindowUnderItWhichKeepsTheMouseUntilRelease) {
    kiv_test::TempDeviceRoot root;
    HWND top = SolidWindow(nullptr, RECT{30, 40, 130, 120}, kRed);
    HWND child = SolidWindow(top, RECT{10, 10, 60, 50}, kGreen);
    HWND inner = SolidWindow(child, RECT{5, 5, 20, 20}, kBlue);
    POINT local{};
    EXPECT_EQ(kiv_display::WindowAt(top, POINT{16, 17}, local), inner);
    EXPECT_EQ(local.x, 1);
    EXPECT_EQ(local.y, 2);
    EXPECT_EQ(kiv_display::WindowAt(top, POINT{70, 70}, local), top);

    mouse.clear();
    kiv_display::CMouseFeed feed;
    feed.Press(top, POINT{12, 14});
    feed.Move(top, POINT{80, 70});
    feed.Release(top, POINT{5, 3});
    Pump();
    ASSERT_EQ(mouse.size(), 3u);
    EXPECT_EQ(mouse[0].hwnd, child);
    EXPECT_EQ(mouse[0].message, WM_LBUTTONDOWN);
    EXPECT_EQ(mouse[0].lParam, MAKELPARAM(2, 4));
    EXPECT_EQ(mouse[1].hwnd, child);
    EXPECT_EQ(mouse[1].message, WM_MOUSEMOVE);
    EXPECT_EQ(mouse[1].lParam, MAKELPARAM(70, 60));
    EXPECT_EQ(mouse[2].hwnd, child);
    EXPECT_EQ(mouse[2].message, WM_LBUTTONUP);
    EXPECT_EQ(mouse[2].lParam, MAKELPARAM(static_cast<short>(-5), static_cast<short>(-7)));

    // A window disabled, or inside a disabled top-level window, takes no press.
    mouse.clear();
    EnableWindow(child, FALSE);
    feed.Press(top, POINT{12, 14});
    EnableWindow(child, TRUE);
    EnableWindow(top, FALSE);
    feed.Press(top, POINT{70, 70});
    feed.Release(top, POINT{70, 70});
    Pump();
    EXPECT_TRUE(mouse.empty());
}
