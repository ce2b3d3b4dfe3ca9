// The check list, the copyable list with the clipboard, and the owner-drawn buttons,
// driven by keys, taps and messages.
#include <gtest/gtest.h>

#include <thread>

#include "tests/support/TestSupport.h"
#include "utils/settings/ColumnSettings.h"
#include "utils/ui/ArrowButton.h"
#include "utils/ui/BitmapButton.h"
#include "utils/ui/CheckListBox.h"
#include "utils/ui/ColourButton.h"
#include "utils/ui/CopyListCtrl.h"
#include "utils/ui/DlgBase.h"
#include "utils/ui/UiBitmaps.h"

namespace {

constexpr int kList = 200;
constexpr int kArrow = 201;
constexpr int kColour = 202;
constexpr int kBitmap = 203;

class CHostDlg : public CDlgBase {
public:
    CHostDlg() : CDlgBase(L"LISTS_HOST", nullptr) {}
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override {
        notifications.push_back(HIWORD(wParam));
        return CDlgBase::OnCommand(wParam, lParam);
    }
    int ArrowDownKey() override { ++downs; return 0; }
    std::vector<WORD> notifications;
    int downs = 0;
};

void Key(BYTE vk, bool shift = false, bool control = false) {
    if (shift) keybd_event(VK_SHIFT, 0, 0, 0);
    if (control) keybd_event(VK_CONTROL, 0, 0, 0);
    keybd_event(vk, 0, 0, 0);
    AfxPumpPendingMessages();  // while Shift and Ctrl are still down
    keybd_event(vk, 0, KEYEVENTF_KEYUP, 0);
    if (control) keybd_event(VK_CONTROL, 0, KEYEVENTF_KEYUP, 0);
    if (shift) keybd_event(VK_SHIFT, 0, KEYEVENTF_KEYUP, 0);
    AfxPumpPendingMessages();
}

class ListsTest : public ::testing::Test {
protected:
    void SetUp() override {
        CKivCheckListBox::RegisterClass();
        CKivCopyListCtrl::RegisterClass();
        CDialogTemplate t;
        t.items.push_back({className, L"", kList, WS_TABSTOP, RECT{8, 36, 232, 200}});
        t.items.push_back({L"BUTTON", L"", kArrow, WS_TABSTOP | BS_OWNERDRAW, RECT{8, 210, 40, 240}});
        t.items.push_back({L"BUTTON", L"Layer", kColour, WS_TABSTOP | BS_OWNERDRAW, RECT{48, 210, 140, 240}});
        t.items.push_back({L"BUTTON", L"Settings", kBitmap, WS_TABSTOP | BS_OWNERDRAW, RECT{148, 210, 232, 240}});
        AfxRegisterDialogTemplate(L"LISTS_HOST", t);
        ASSERT_TRUE(host.Create(L"LISTS_HOST"));
        host.ShowWindow(SW_SHOW);
    }
    // The dialog goes before a derived fixture's device root forgets every window.
    void TearDown() override { host.DestroyWindow(); }
    const wchar_t* className = kCheckListClass;
    CHostDlg host;
};

// A system that keeps update regions asks a shown window to paint until it says the
// paint is done; a window that only drew would keep every message loop busy for ever.
TEST_F(ListsTest, PaintedWindowsAreNotAskedToPaintAgain) {
    CKivCheckListBox list;
    ASSERT_TRUE(list.AttachItem(kList, &host));
    list.AddString(L"Roads");
    MSG msg{};
    for (int i = 0; i < 1000 && PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE); ++i) DispatchMessageW(&msg);
    EXPECT_FALSE(PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE)) << "message " << msg.message << " keeps coming";
}

TEST_F(ListsTest, CheckListTogglesBySpaceAndTapAndKeepsTheThirdStateTheProgramsOwn) {
    CKivCheckListBox list;
    ASSERT_TRUE(list.AttachItem(kList, &host));
    for (const wchar_t* layer : {L"Roads", L"Fences", L"Trees"}) list.AddString(layer);
    EXPECT_EQ(list.SetCheck(2, BST_INDETERMINATE), 0);
    EXPECT_EQ(list.SetCheck(3, BST_CHECKED), LB_ERR);
    EXPECT_EQ(list.SetCheck(0, 3), LB_ERR);
    ::SetFocus(list.m_hWnd);

    Key(VK_SPACE);  // Roads
    Key(VK_DOWN);
    Key(VK_DOWN);
    Key(VK_SPACE);  // Trees: indeterminate becomes checked
    EXPECT_EQ(list.GetCurSel(), 2);
    EXPECT_EQ(list.GetCheck(0), BST_CHECKED);
    EXPECT_EQ(list.GetCheck(1), static_cast<int>(BST_UNCHECKED));
    EXPECT_EQ(list.GetCheck(2), BST_CHECKED);
    Key(VK_SPACE);
    EXPECT_EQ(list.GetCheck(2), static_cast<int>(BST_UNCHECKED));
    Key(VK_DOWN);  // past the end: stays, and the list keeps the arrow from the dialog's handler
    EXPECT_EQ(list.GetCurSel(), 2);

    // A tap on the second row's box toggles it; a tap on its text only selects it.
    list.SendMessage(WM_LBUTTONDOWN, 0, MAKELPARAM(8, 1 + 22 + 10));
    EXPECT_EQ(list.GetCheck(1), BST_CHECKED);
    list.SendMessage(WM_LBUTTONDOWN, 0, MAKELPARAM(120, 1 + 10));
    EXPECT_EQ(list.GetCurSel(), 0);
    EXPECT_EQ(list.GetCheck(0), BST_CHECKED);
    EXPECT_EQ(list.GetText(1), CKivStringT(L"Fences"));
    const auto changes = std::count(host.notifications.begin(), host.notifications.end(), CLBN_CHKCHANGE);
    EXPECT_EQ(changes, 4);
    list.Detach();
}

class CopyListTest : public ListsTest {
protected:
    CopyListTest() { className = kCopyListClass; }
    kiv_test::TempDeviceRoot root;  // the column settings' file; made before the dialog
};

TEST_F(CopyListTest, SelectedRowsGoToTheClipboardInTheSettingsColumnOrderAndReadBack) {
    CKivCopyListCtrl list;
    ASSERT_TRUE(list.AttachItem(kList, &host));
    list.AddColumn(L"name", L"Point", 60);
    list.AddColumn(L"north", L"North", 70);
    list.AddColumn(L"east", L"East", 70);
    list.AddColumn(L"code", L"Code", 50);
    list.AddRow({L"PT1", L"1000.000", L"5000.000", L"FENCE"});
    list.AddRow({L"PT2", L"1010.250", L"5003.125", L"TREE"});
    list.AddRow({L"PT3", L"1020.500", L"5006.250"});  // no code
    {
        // East before North, the code hidden; "name" is not listed and follows, shown.
        CColumnSettings settings(L"PointList");
        settings.addColumn(L"east", true);
        settings.addColumn(L"north", true);
        settings.addColumn(L"code", false);
        settings.addColumn(L"gone", true);
        EXPECT_EQ(list.ApplyColumnSettings(settings), 3);
    }
    ::SetFocus(list.m_hWnd);
    Key(VK_DOWN);
    Key(VK_DOWN, true);  // PT2 and PT3
    EXPECT_EQ(list.GetSelCount(), 2);
    Key('C', false, true);
    EXPECT_EQ(kiv_ui::GetClipboardText(host.m_hWnd),
              CKivStringT(L"East\tNorth\tPoint\r\n5003.125\t1010.250\tPT2\r\n5006.250\t1020.500\tPT3\r\n"));
    EXPECT_EQ(GetClipboardOwner(), list.m_hWnd);

    // Space deselects the current row; with nothing selected the current row is copied.
    Key(VK_SPACE);
    list.SetSel(1, false);
    EXPECT_EQ(list.Copy(), 1);
    EXPECT_EQ(kiv_ui::GetClipboardText(nullptr), CKivStringT(L"East\tNorth\tPoint\r\n5006.250\t1020.500\tPT3\r\n"));

    // While another thread holds the clipboard open for a window of its own, copying fails
    // and leaves it alone, and reading finds nothing.
    HANDLE opened = CreateEventW(nullptr, TRUE, FALSE, nullptr), release = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HWND holderWindow = kiv_test::MakePlainWindow(10, 10);
    std::thread holder([&] {
        OpenClipboard(holderWindow);
        SetEvent(opened);
        WaitForSingleObject(release, 10000);  // bounded: a failed check must not hang the suite
        CloseClipboard();
    });
    EXPECT_EQ(WaitForSingleObject(opened, 10000), WAIT_OBJECT_0);
    EXPECT_EQ(list.Copy(), LB_ERR);
    EXPECT_EQ(kiv_ui::GetClipboardText(nullptr), CKivStringT());
    SetEvent(release);
    holder.join();
    EXPECT_EQ(kiv_ui::GetClipboardText(nullptr), CKivStringT(L"East\tNorth\tPoint\r\n5006.250\t1020.500\tPT3\r\n"));
    CloseHandle(opened);
    CloseHandle(release);
    DestroyWindow(holderWindow);
    list.Detach();
}

TEST_F(ListsTest, ArrowButtonGivesTheDialogItsArrowAndColourButtonStepsItsPalette) {
    CKivArrowButton arrow(CKivArrowButton::eDown);
    CKivColourButton colour;
    CKivBitmapButton bitmap;
    ASSERT_TRUE(arrow.Attach(kArrow, &host));
    ASSERT_TRUE(colour.Attach(kColour, &host));
    ASSERT_TRUE(bitmap.Attach(kBitmap, &host));
    ASSERT_TRUE(bitmap.LoadBitmaps(IDB_TBAR_SETTINGS));
    EXPECT_FALSE(bitmap.LoadBitmaps(1));

    ::SetFocus(GetDlgItem(host.m_hWnd, kList));
    arrow.SendMessage(BM_CLICK);
    AfxPumpPendingMessages();
    EXPECT_EQ(host.downs, 1);
    EXPECT_EQ(GetFocus(), GetDlgItem(host.m_hWnd, kList));

    colour.SetPalette({RGB(255, 0, 0), RGB(0, 255, 0), RGB(0, 0, 255)});
    ::SetFocus(colour.m_hWnd);
    Key(VK_LEFT);  // wraps to the last colour
    EXPECT_EQ(colour.GetColour(), RGB(0, 0, 255));
    Key(VK_RIGHT);
    Key(VK_RIGHT);
    EXPECT_EQ(colour.GetColour(), RGB(0, 255, 0));
    // The faces are drawn: the swatch shows the colour, the bitmap button its bitmap.
    HDC dc = GetDC(colour.m_hWnd);
    EXPECT_EQ(GetPixel(dc, 10, 12), RGB(0, 255, 0));
    ReleaseDC(colour.m_hWnd, dc);
    // Enter on a focused owner-drawn button presses it.
    host.notifications.clear();
    ::SetFocus(bitmap.m_hWnd);
    Key(VK_RETURN);
    EXPECT_EQ(std::count(host.notifications.begin(), host.notifications.end(), BN_CLICKED), 1);
}

}  // namespace
