// Property sheets and the paged toolbar driven through keys, taps and commands.
#include "utils/ui/PropertySheet.h"

#include <gtest/gtest.h>

#include "utils/ui/DlgSupport.h"
#include "utils/ui/PagedToolbar.h"

namespace {

constexpr int kCheck = 300;
constexpr int kEdit = 301;

void RegisterPages() {
    CDialogTemplate a;
    a.style = WS_CHILD;
    a.items.push_back({L"BUTTON", L"Beep on store", kCheck, WS_TABSTOP | BS_AUTOCHECKBOX, RECT{8, 8, 200, 28}});
    AfxRegisterDialogTemplate(L"SHEET_PAGE_A", a);
    CDialogTemplate b;
    b.style = WS_CHILD;
    b.items.push_back({L"EDIT", L"1.500", kEdit, WS_TABSTOP, RECT{8, 8, 200, 30}});
    AfxRegisterDialogTemplate(L"SHEET_PAGE_B", b);
}

class CCountingPage : public CKivPropertyPage {
public:
    using CKivPropertyPage::CKivPropertyPage;
    BOOL OnSetActive() override { ++activated; return TRUE; }
    BOOL OnKillActive() override { return allowLeave; }
    BOOL OnApply() override { ++applied; return TRUE; }
    int FunctionKeyF2() override { ++f2; return 1; }
    int activated = 0, applied = 0, f2 = 0;
    BOOL allowLeave = TRUE;
};

void Key(BYTE vk) {
    keybd_event(vk, 0, 0, 0);
    keybd_event(vk, 0, KEYEVENTF_KEYUP, 0);
    AfxPumpPendingMessages();
}

void Tap(HWND w, RECT r) {
    const LPARAM at = MAKELPARAM((r.left + r.right) / 2, (r.top + r.bottom) / 2);
    SendMessageW(w, WM_LBUTTONDOWN, 0, at);
    SendMessageW(w, WM_LBUTTONUP, 0, at);
}

class PropertySheetTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterPages();
        MSG m{};
        while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {}
    }
    CCountingPage general{L"SHEET_PAGE_A", L"General"};
    CCountingPage heights{L"SHEET_PAGE_B", L"Heights"};
    CKivPropertySheet sheet{L"Survey style"};
};

TEST_F(PropertySheetTest, ArrowsSwitchPagesExceptInAFieldThatUsesThem) {
    sheet.AddPage(&general);
    sheet.AddPage(&heights);
    ASSERT_TRUE(sheet.Create());
    sheet.ShowWindow(SW_SHOW);
    EXPECT_EQ(sheet.GetActiveIndex(), 0);
    EXPECT_TRUE(general.IsWindowVisible());
    EXPECT_EQ(GetFocus(), GetDlgItem(general.m_hWnd, kCheck));
    // The sheet keeps the dialog's title bar; pages are inside it and never on the stack.
    EXPECT_EQ(sheet.GetTitlebar().GetItemCommand(L"Y"), IDOK);
    EXPECT_EQ(GetParent(general.m_hWnd), sheet.m_hWnd);
    EXPECT_EQ(kiv_ui::GetTopMostDialog(), sheet.m_hWnd);

    Key(VK_LEFT);  // already on the first page
    EXPECT_EQ(sheet.GetActiveIndex(), 0);
    Key(VK_RIGHT);
    EXPECT_EQ(sheet.GetActiveIndex(), 1);
    EXPECT_FALSE(general.IsWindowVisible());
    EXPECT_TRUE(heights.IsWindowVisible());
    EXPECT_EQ(GetFocus(), GetDlgItem(heights.m_hWnd, kEdit));
    // In the edit field Left moves the caret and stays on the page.
    Key(VK_LEFT);
    EXPECT_EQ(sheet.GetActiveIndex(), 1);
    // The page's own handler sees its key before the sheet.
    Key(VK_F2);
    EXPECT_EQ(heights.f2, 1);
    EXPECT_EQ(general.f2, 0);
}

TEST_F(PropertySheetTest, TabsSwitchPagesAndAPageCanRefuseToBeLeft) {
    sheet.AddPage(&general);
    sheet.AddPage(&heights);
    ASSERT_TRUE(sheet.Create());
    Tap(sheet.GetTabsWindow(), sheet.GetTabRect(1));
    EXPECT_EQ(sheet.GetActiveIndex(), 1);
    EXPECT_EQ(heights.activated, 1);
    heights.allowLeave = FALSE;
    Tap(sheet.GetTabsWindow(), sheet.GetTabRect(0));
    EXPECT_EQ(sheet.GetActiveIndex(), 1);
    EXPECT_FALSE(sheet.SetActivePage(0));
    EXPECT_FALSE(sheet.SetActivePage(5));
}

TEST_F(PropertySheetTest, EnterOnAPageAppliesEveryPageAndClosesTheSheet) {
    sheet.AddPage(&general);
    sheet.AddPage(&heights);
    ASSERT_TRUE(sheet.Create());
    sheet.ShowWindow(SW_SHOW);
    sheet.SetActivePage(1);
    Key(VK_RETURN);
    EXPECT_EQ(general.applied, 1);
    EXPECT_EQ(heights.applied, 1);
    EXPECT_FALSE(sheet.IsWindowVisible());
}

// ---- paged toolbar --------------------------------------------------------------------

class CToolbarHost : public CDlgBase {
public:
    CToolbarHost() : CDlgBase(L"TOOLBAR_HOST", nullptr) {}
    BOOL PreTranslateMessage(MSG* msg) override {
        if (toolbar.TranslateKey(msg)) return TRUE;
        return CDlgBase::PreTranslateMessage(msg);
    }
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override {
        if (LOWORD(wParam) >= 500) commands.push_back(LOWORD(wParam));
        return CDlgBase::OnCommand(wParam, lParam);
    }
    CKivPagedToolbar toolbar;
    std::vector<UINT> commands;
};

TEST(PagedToolbar, PageKeyAndPageButtonTurnPagesAndFunctionKeysPressTheShownPage) {
    CDialogTemplate t;
    t.items.push_back({L"EDIT", L"", 100, WS_TABSTOP, RECT{8, 40, 200, 62}});
    AfxRegisterDialogTemplate(L"TOOLBAR_HOST", t);
    CToolbarHost d;
    ASSERT_TRUE(d.Create(L"TOOLBAR_HOST"));
    d.ShowWindow(SW_SHOW);
    ASSERT_TRUE(d.toolbar.Create(&d, 400, 3));
    for (UINT id = 500; id < 507; ++id) d.toolbar.AddButton(L"Cmd", id);
    EXPECT_EQ(d.toolbar.GetPageCount(), 3);
    SetFocus(GetDlgItem(d.m_hWnd, 100));

    Key(VK_F2);
    Key(VK_F9);  // to page 2
    Key(VK_F1);
    Key(VK_F9);  // to page 3, which holds one button
    EXPECT_EQ(d.toolbar.GetPage(), 2);
    Key(VK_F3);  // an empty slot does nothing
    Key(VK_F1);
    Key(VK_F9);  // back to the first page
    EXPECT_EQ(d.toolbar.GetPage(), 0);
    EXPECT_EQ(d.commands, (std::vector<UINT>{501, 503, 506}));

    Tap(d.toolbar.m_hWnd, d.toolbar.GetSlotRect(3));  // the page button
    EXPECT_EQ(d.toolbar.GetPage(), 1);
    d.toolbar.EnableButton(504, FALSE);
    Tap(d.toolbar.m_hWnd, d.toolbar.GetSlotRect(1));
    Tap(d.toolbar.m_hWnd, d.toolbar.GetSlotRect(2));
    AfxPumpPendingMessages();
    EXPECT_EQ(d.commands.back(), 505u);
    EXPECT_EQ(d.commands.size(), 4u);
}

}  // namespace
