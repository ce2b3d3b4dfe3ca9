// The title bar on its own, over a plain window standing in for the dialog: the menu's
// editing, its window driven by keys and taps, taps on the bar's buttons, the layout
// from both ends, ownership of the bitmaps handed over, and the colours it paints.
#include "utils/ui/Titlebar.h"

#include <gtest/gtest.h>

#include "tests/support/TestSupport.h"
#include "utils/ui/UiBitmaps.h"

namespace {

constexpr UINT kOpen = 501, kSave = 502, kGrey = 503, kInner = 504, kBarCmd = 505;

LRESULT CALLBACK PlainProc(HWND w, UINT m, WPARAM wp, LPARAM lp) { return DefWindowProcW(w, m, wp, lp); }

HWND MakeDialogWindow() {
    WNDCLASSW wc{};
    wc.lpfnWndProc = &PlainProc;
    wc.lpszClassName = L"TitlebarTestDialog";
    RegisterClassW(&wc);
    return CreateWindowExW(0, L"TitlebarTestDialog", L"Job setup", WS_POPUP | WS_VISIBLE, 0, 0, 240, 200, nullptr,
                           nullptr, nullptr, nullptr);
}

// The command of the first WM_COMMAND posted to the window, or 0 when none was. Other
// messages are dispatched: a WM_PAINT only taken would come back until it is answered.
UINT TakeCommand(HWND w) {
    MSG msg{};
    UINT id = 0;
    while (PeekMessageW(&msg, w, 0, 0, PM_REMOVE)) {
        if (msg.message != WM_COMMAND) DispatchMessageW(&msg);
        else if (id == 0) id = LOWORD(msg.wParam);
    }
    return id;
}

void DrainAll() {
    MSG msg{};
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&msg);
}

TTitlebarMenuItem Entry(LPCWSTR text, UINT id) {
    TTitlebarMenuItem m;
    m.text = text;
    m.id = id;
    return m;
}

HBITMAP SquareBitmap() { return kiv_ui::LoadUiBitmap(IDB_TBAR_OK); }

LPARAM At(int x, int y) { return MAKELPARAM(x, y); }

class TitlebarMenuTest : public ::testing::Test {
protected:
    void SetUp() override {
        DrainAll();
        kiv_win32::RegisterStandardControls();
        dialog = MakeDialogWindow();
        ASSERT_TRUE(dialog);
        edit = CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE | WS_TABSTOP, 10, 40, 200, 22, dialog, nullptr,
                               nullptr, nullptr);
        ASSERT_TRUE(edit);
    }
    void TearDown() override {
        DestroyWindow(dialog);
        DrainAll();
    }
    // A bar with a menu button and a menu: a separator first, a greyed entry, a popup.
    void BuildMenu(CTitlebar& bar) {
        bar.AddMenuButton(L"A", 0, SquareBitmap(), nullptr);
        bar.AddTitle(L"B");
        bar.AddSeparator();
        bar.AddMenuItem(L"Open", kOpen);
        bar.AddMenuItem(L"Greyed", kGrey);
        CTitlebarMenu popup;
        popup.items.push_back(Entry(L"Inner", kInner));
        bar.AddPopupMenuItem(L"More", popup);
        bar.AddMenuItem(L"Save", kSave);
        ASSERT_TRUE(bar.EnableTbarMenuItem(kGrey, FALSE));
        ASSERT_TRUE(bar.InitDialog(dialog, nullptr, 0));
    }
    void Press(const CTitlebar& bar, WPARAM key) { SendMessageW(bar.GetMenuWindow(), WM_KEYDOWN, key, 0); }

    HWND dialog = nullptr;
    HWND edit = nullptr;
};

TEST_F(TitlebarMenuTest, MenuEditsInsertAppendAndRefuse) {
    CTitlebar bar;
    bar.AddMenuItem(L"b", 2);
    bar.AddMenuItem(L"a", 1, 0);
    bar.AddMenuItem(L"d", 4, 99);  // past the end appends
    bar.AddSeparator(2);
    bar.AddMenuItem(L"c", 3, -1);
    const auto& m = bar.GetMenuItems();
    ASSERT_EQ(m.size(), 5u);
    EXPECT_EQ(m[0].id, 1u);
    EXPECT_EQ(m[1].id, 2u);
    EXPECT_TRUE(m[2].separator);
    EXPECT_EQ(m[3].id, 4u);
    EXPECT_EQ(m[4].id, 3u);

    EXPECT_FALSE(bar.RemoveMenuItem(-1));
    EXPECT_FALSE(bar.RemoveMenuItem(5));
    EXPECT_TRUE(bar.RemoveMenuItem(2));
    EXPECT_EQ(bar.GetMenuItems().size(), 4u);
    EXPECT_EQ(bar.GetMenuItems()[2].id, 4u);

    // A separator or a popup's own entry carries command 0; neither is a command to check.
    CTitlebarMenu popup;
    popup.items.push_back(Entry(L"inner", 7));
    bar.AddPopupMenuItem(L"popup", popup, 0);
    bar.AddSeparator();
    EXPECT_FALSE(bar.CheckTbarMenuItem(0, TRUE));
    EXPECT_FALSE(bar.EnableTbarMenuItem(99, FALSE));
    EXPECT_TRUE(bar.CheckTbarMenuItem(7, TRUE)) << "entries inside a popup are reached";
    EXPECT_TRUE(bar.GetMenuItems()[0].popup[0].checked);
    EXPECT_TRUE(bar.CheckTbarMenuItem(7, FALSE));
    EXPECT_FALSE(bar.GetMenuItems()[0].popup[0].checked);
    EXPECT_FALSE(bar.GetMenuItems()[0].checked);

    bar.RemoveAllMenuItems();
    EXPECT_TRUE(bar.GetMenuItems().empty());
}

TEST_F(TitlebarMenuTest, MenuOpensOnlyUnderAButtonOfABarWithADialogAndEntries) {
    CTitlebar bar;
    bar.AddMenuButton(L"A", 0, SquareBitmap(), nullptr);
    bar.AddMenuItem(L"Open", kOpen);
    EXPECT_FALSE(bar.DisplayMenu(L"A")) << "no dialog yet";
    ASSERT_TRUE(bar.InitDialog(dialog, nullptr, 0));
    EXPECT_FALSE(bar.DisplayMenu(L"Q")) << "no such button";
    EXPECT_FALSE(bar.DisplayMenu(nullptr));
    bar.RemoveAllMenuItems();
    EXPECT_FALSE(bar.DisplayMenu(L"A")) << "nothing to list";
    EXPECT_EQ(bar.GetMenuWindow(), nullptr);
}

TEST_F(TitlebarMenuTest, KeysWalkTheMenuPastSeparatorsAndEnterSendsTheCommand) {
    CTitlebar bar;
    BuildMenu(bar);
    SetFocus(edit);
    ASSERT_TRUE(bar.DisplayMenu(L"A"));
    HWND menu = bar.GetMenuWindow();
    ASSERT_TRUE(IsWindow(menu));
    EXPECT_EQ(GetFocus(), menu);
    EXPECT_EQ(SendMessageW(menu, WM_GETDLGCODE, 0, 0), DLGC_WANTALLKEYS);

    // The leading separator is skipped: Enter takes "Open".
    Press(bar, VK_RETURN);
    EXPECT_EQ(TakeCommand(dialog), kOpen);
    EXPECT_EQ(bar.GetMenuWindow(), nullptr);
    EXPECT_FALSE(IsWindow(menu));
    EXPECT_EQ(GetFocus(), edit) << "the focus goes back where it was";

    // Up from the first entry wraps to the last; Down wraps past the separator.
    ASSERT_TRUE(bar.DisplayMenu(L"A"));
    Press(bar, VK_UP);
    Press(bar, VK_RETURN);
    EXPECT_EQ(TakeCommand(dialog), kSave);

    ASSERT_TRUE(bar.DisplayMenu(L"A"));
    Press(bar, VK_UP);
    Press(bar, VK_DOWN);
    Press(bar, VK_RETURN);
    EXPECT_EQ(TakeCommand(dialog), kOpen) << "Down from the last entry wraps over the separator";
}

TEST_F(TitlebarMenuTest, GreyedEntriesStayOpenPopupsOpenInPlaceEscapeCloses) {
    CTitlebar bar;
    BuildMenu(bar);
    SetFocus(edit);
    ASSERT_TRUE(bar.DisplayMenu(L"A"));
    Press(bar, VK_DOWN);  // Greyed
    Press(bar, VK_RETURN);
    EXPECT_EQ(TakeCommand(dialog), 0u);
    ASSERT_NE(bar.GetMenuWindow(), nullptr) << "a greyed entry does nothing";

    Press(bar, VK_DOWN);  // More
    Press(bar, VK_RETURN);
    ASSERT_NE(bar.GetMenuWindow(), nullptr) << "a popup opens in the same window";
    RECT r{};
    GetWindowRect(bar.GetMenuWindow(), &r);
    EXPECT_LT(r.bottom - r.top, 5 * 22) << "the window shrinks to the popup's one entry";
    Press(bar, VK_RETURN);
    EXPECT_EQ(TakeCommand(dialog), kInner);

    ASSERT_TRUE(bar.DisplayMenu(L"A"));
    Press(bar, VK_ESCAPE);
    EXPECT_EQ(bar.GetMenuWindow(), nullptr);
    EXPECT_EQ(TakeCommand(dialog), 0u);
    EXPECT_EQ(GetFocus(), edit);
}

TEST_F(TitlebarMenuTest, TapsChooseTheRowUnderThem) {
    CTitlebar bar;
    BuildMenu(bar);
    ASSERT_TRUE(bar.DisplayMenu(L"A"));
    // Rows are 22 pixels below a 2-pixel frame: row 0 the separator, row 4 "Save".
    SendMessageW(bar.GetMenuWindow(), WM_LBUTTONUP, 0, At(20, 2 + 0 * 22 + 5));
    EXPECT_NE(bar.GetMenuWindow(), nullptr) << "a tap on a separator does nothing";
    SendMessageW(bar.GetMenuWindow(), WM_LBUTTONUP, 0, At(20, 2 + 9 * 22));
    EXPECT_NE(bar.GetMenuWindow(), nullptr) << "a tap below the rows does nothing";
    SendMessageW(bar.GetMenuWindow(), WM_LBUTTONUP, 0, At(20, 2 + 4 * 22 + 5));
    EXPECT_EQ(TakeCommand(dialog), kSave);
    EXPECT_EQ(bar.GetMenuWindow(), nullptr);
}

TEST_F(TitlebarMenuTest, FocusLeavingTheMenuClosesIt) {
    CTitlebar bar;
    BuildMenu(bar);
    ASSERT_TRUE(bar.DisplayMenu(L"A"));
    HWND menu = bar.GetMenuWindow();
    SetFocus(edit);
    DrainAll();
    EXPECT_EQ(bar.GetMenuWindow(), nullptr);
    EXPECT_FALSE(IsWindow(menu));

    // Reopening replaces the open window rather than stacking a second one.
    ASSERT_TRUE(bar.DisplayMenu(L"A"));
    HWND first = bar.GetMenuWindow();
    ASSERT_TRUE(bar.DisplayMenu(L"A"));
    EXPECT_FALSE(IsWindow(first));
    EXPECT_TRUE(IsWindow(bar.GetMenuWindow()));
}

TEST_F(TitlebarMenuTest, TapOnAButtonSendsItsCommandOnlyWhenReleasedOnIt) {
    CTitlebar bar;
    bar.AddTitle(L"B");
    bar.AddButton(L"Y", L"Apply", kBarCmd);
    bar.AddBitmapButton(L"Z", IDCANCEL, SquareBitmap(), FALSE);
    ASSERT_TRUE(bar.InitDialog(dialog, nullptr, 0));
    HWND w = bar.GetSafeHwnd();
    const RECT y = bar.GetItemRect(L"Y"), z = bar.GetItemRect(L"Z"), b = bar.GetItemRect(L"B");

    SendMessageW(w, WM_LBUTTONDOWN, 0, At(y.left + 3, y.top + 3));
    SendMessageW(w, WM_LBUTTONUP, 0, At(y.left + 3, y.top + 3));
    EXPECT_EQ(TakeCommand(dialog), kBarCmd);

    SendMessageW(w, WM_LBUTTONDOWN, 0, At(y.left + 3, y.top + 3));
    SendMessageW(w, WM_LBUTTONUP, 0, At(z.left + 3, z.top + 3));
    EXPECT_EQ(TakeCommand(dialog), 0u) << "pressed on one button, released on another";

    SendMessageW(w, WM_LBUTTONDOWN, 0, At(b.left + 3, b.top + 3));
    SendMessageW(w, WM_LBUTTONUP, 0, At(b.left + 3, b.top + 3));
    EXPECT_EQ(TakeCommand(dialog), 0u) << "the title is not a button";

    SendMessageW(w, WM_LBUTTONDOWN, 0, At(z.left + 3, z.top + 3));
    SendMessageW(w, WM_LBUTTONUP, 0, At(z.left + 3, z.top + 3));
    EXPECT_EQ(TakeCommand(dialog), static_cast<UINT>(IDCANCEL));
}

TEST_F(TitlebarMenuTest, LayoutFillsFromBothEndsAndTheTitleTakesTheRest) {
    CTitlebar bar;
    bar.AddBitmap(L"R", kiv_ui::LoadUiBitmap(L"IDB_ALPHAKEY"));
    bar.AddBitmapButton(L"Z", IDCANCEL, SquareBitmap(), FALSE);
    bar.AddButton(L"C", L"Measure", 900);
    bar.AddTitle(L"B");
    bar.AddBitmapButton(L"Y", IDOK, SquareBitmap(), FALSE);
    bar.AddMenuButton(L"A", 0, SquareBitmap(), SquareBitmap());
    ASSERT_TRUE(bar.InitDialog(dialog, nullptr, 0));
    EXPECT_EQ(bar.GetLayoutOrder(), CKivStringT(L"ABRCYZ"));
    EXPECT_EQ(bar.GetItemText(L"B"), CKivStringT(L"Job setup")) << "the title is the dialog's text";

    RECT client{};
    GetClientRect(bar.GetSafeHwnd(), &client);
    const RECT a = bar.GetItemRect(L"A"), b = bar.GetItemRect(L"B"), r = bar.GetItemRect(L"R"),
               c = bar.GetItemRect(L"C"), y = bar.GetItemRect(L"Y"), z = bar.GetItemRect(L"Z");
    EXPECT_EQ(a.left, 2);
    EXPECT_EQ(z.right, client.right - 2);
    EXPECT_LE(y.right, z.left);
    EXPECT_LE(c.right, y.left);
    EXPECT_LE(r.right, c.left);
    EXPECT_GT(b.left, a.right - 1);
    EXPECT_LE(b.right, r.left);
    for (const RECT& i : {a, b, r, c, y, z}) {
        EXPECT_GE(i.top, 0);
        EXPECT_LE(i.bottom, kTitlebarHeight);
    }

    // A longer text widens its button and pushes the ones left of it further left.
    const LONG before = c.right - c.left;
    EXPECT_TRUE(bar.ChangeButtonText(L"C", L"Measure again now"));
    EXPECT_GT(bar.GetItemRect(L"C").right - bar.GetItemRect(L"C").left, before);
    EXPECT_LT(bar.GetItemRect(L"R").left, r.left);
    EXPECT_FALSE(bar.ChangeButtonText(L"Q", L"x"));

    // Adding a name again replaces the item in place.
    bar.AddButton(L"C", L"M", 901);
    EXPECT_EQ(bar.GetItemCommand(L"C"), 901);
    EXPECT_EQ(bar.GetItemCommand(L"Q"), -1);
    EXPECT_EQ(bar.GetItemText(L"Q"), CKivStringT());
    EXPECT_EQ(bar.GetLayoutOrder().GetLength(), 6);
}

TEST_F(TitlebarMenuTest, BitmapsHandedOverBelongToTheBar) {
    CTitlebar bar;
    bar.AddBitmap(L"R", kiv_ui::LoadUiBitmap(L"IDB_TITLEBAR_EMPTY"));
    BITMAP bm{};
    HBITMAP stray = SquareBitmap();
    EXPECT_FALSE(bar.ChangeBitmap(L"Q", stray));
    EXPECT_EQ(GetObjectW(stray, sizeof bm, &bm), 0) << "a refused bitmap is freed, not leaked";
    HBITMAP next = kiv_ui::LoadUiBitmap(L"IDB_ALPHAKEY");
    EXPECT_TRUE(bar.ChangeBitmap(L"R", next));
    EXPECT_NE(GetObjectW(next, sizeof bm, &bm), 0);
    EXPECT_FALSE(bar.ChangeTitle(L"no title item"));
    bar.AddTitle(L"B");
    EXPECT_TRUE(bar.ChangeTitle(L"Stakeout"));
    EXPECT_EQ(bar.GetItemText(L"B"), CKivStringT(L"Stakeout"));
}

TEST_F(TitlebarMenuTest, PaintsItsColourActiveAndAGreyInactive) {
    CTitlebar bar;
    bar.AddTitle(L"B");
    bar.AddButton(L"Z", L"Done", IDOK);
    ASSERT_TRUE(bar.InitDialog(dialog, nullptr, 0));
    HDC screen = GetDC(nullptr);
    HDC dc = CreateCompatibleDC(screen);
    HBITMAP target = CreateCompatibleBitmap(screen, 240, kTitlebarHeight);
    HGDIOBJ old = SelectObject(dc, target);

    bar.Paint(dc, 0);
    const RECT z = bar.GetItemRect(L"Z");
    EXPECT_EQ(GetPixel(dc, 1, kTitlebarHeight / 2), kTitlebarColour);
    EXPECT_NE(GetPixel(dc, z.left + 1, z.top + 1), kTitlebarColour) << "a text button has its own face";
    bar.Paint(dc, 1);
    EXPECT_NE(GetPixel(dc, 1, kTitlebarHeight / 2), kTitlebarColour);
    bar.Activate(0);
    EXPECT_FALSE(bar.IsActive());
    bar.Activate(1);
    EXPECT_TRUE(bar.IsActive());

    SelectObject(dc, old);
    DeleteObject(target);
    DeleteDC(dc);
    ReleaseDC(nullptr, screen);
}

}  // namespace
