// Menus from menu-string tables, shown from the title bar and driven by keys.
#include "utils/ui/MenuTable.h"

#include <gtest/gtest.h>

#include "utils/ui/DlgBase.h"

namespace {

constexpr UINT ID_STORE = 41001, ID_UNITS_M = 41002, ID_UNITS_FT = 41003, ID_ABOUT = 41004;

const TMenuString kMenu[] = {
    {eMenuCommand, L"Store", ID_STORE},
    {eMenuSeparator, nullptr, 0},
    {eMenuPopup, L"Units", 0},
    {eMenuCommand, L"Metres", ID_UNITS_M},
    {eMenuCommand, L"US feet", ID_UNITS_FT},
    {eMenuPopupEnd, nullptr, 0},
    {eMenuCommand, L"About", ID_ABOUT},
};

class CMenuDlg : public CDlgBase {
public:
    CMenuDlg() : CDlgBase(L"MENU_HOST", nullptr) {}
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override {
        if (LOWORD(wParam) > 41000) chosen.push_back(LOWORD(wParam));
        return CDlgBase::OnCommand(wParam, lParam);
    }
    std::vector<UINT> chosen;
};

void Key(BYTE vk) {
    keybd_event(vk, 0, 0, 0);
    keybd_event(vk, 0, KEYEVENTF_KEYUP, 0);
    AfxPumpPendingMessages();
}

TEST(MenuTable, BuildsSubMenusAndRefusesUnbalancedTables) {
    CTitlebarMenu menu;
    ASSERT_TRUE(kiv_ui::BuildMenuFromTable(kMenu, 7, menu));
    ASSERT_EQ(menu.items.size(), 4u);
    EXPECT_TRUE(menu.items[1].separator);
    ASSERT_EQ(menu.items[2].popup.size(), 2u);
    EXPECT_EQ(menu.items[2].popup[1].id, ID_UNITS_FT);

    int bad = -1;
    const TMenuString unclosed[] = {{eMenuPopup, L"Units", 0}, {eMenuCommand, L"Metres", ID_UNITS_M}};
    EXPECT_FALSE(kiv_ui::BuildMenuFromTable(unclosed, 2, menu, &bad));
    EXPECT_TRUE(menu.items.empty());
    const TMenuString stray[] = {{eMenuCommand, L"Store", ID_STORE}, {eMenuPopupEnd, nullptr, 0}};
    EXPECT_FALSE(kiv_ui::BuildMenuFromTable(stray, 2, menu, &bad));
    EXPECT_EQ(bad, 1);
    const TMenuString empty[] = {{eMenuPopup, L"Units", 0}, {eMenuPopupEnd, nullptr, 0}};
    EXPECT_FALSE(kiv_ui::BuildMenuFromTable(empty, 2, menu, &bad));
    const TMenuString noId[] = {{eMenuCommand, L"Store", 0}};
    EXPECT_FALSE(kiv_ui::BuildMenuFromTable(noId, 1, menu, &bad));
    EXPECT_EQ(bad, 0);
}

TEST(MenuTable, KeysWalkIntoASubMenuBackOutAndChooseFromIt) {
    CDialogTemplate t;
    t.items.push_back({L"EDIT", L"", 100, WS_TABSTOP, RECT{8, 40, 200, 62}});
    AfxRegisterDialogTemplate(L"MENU_HOST", t);
    CMenuDlg d;
    ASSERT_TRUE(d.Create(L"MENU_HOST"));
    d.ShowWindow(SW_SHOW);
    ASSERT_TRUE(kiv_ui::LoadMenuTable(d, kMenu));
    HWND edit = GetDlgItem(d.m_hWnd, 100);
    SetFocus(edit);
    CTitlebar& bar = d.GetTitlebar();

    d.SendMessage(WM_COMMAND, ID_TBAR_MENU, 0);  // the menu button
    ASSERT_NE(bar.GetMenuWindow(), nullptr);
    Key(VK_DOWN);  // over the separator to Units
    EXPECT_EQ(bar.GetCurrentMenuItem(), 2);
    Key(VK_RIGHT);
    EXPECT_EQ(bar.GetMenuDepth(), 1);
    EXPECT_EQ(bar.GetShownMenuItems().front()->id, ID_UNITS_M);
    Key(VK_LEFT);  // back, on Units again
    EXPECT_EQ(bar.GetMenuDepth(), 0);
    EXPECT_EQ(bar.GetCurrentMenuItem(), 2);
    Key(VK_RETURN);
    Key(VK_DOWN);
    Key(VK_RETURN);  // US feet
    EXPECT_EQ(bar.GetMenuWindow(), nullptr);
    EXPECT_EQ(d.chosen, std::vector<UINT>{ID_UNITS_FT});
    EXPECT_EQ(GetFocus(), edit);

    // Escape in the sub-menu goes up a level, Escape again closes without a command.
    d.SendMessage(WM_COMMAND, ID_TBAR_MENU, 0);
    Key(VK_UP);  // wraps to About
    Key(VK_UP);
    Key(VK_RETURN);
    EXPECT_EQ(bar.GetMenuDepth(), 1);
    Key(VK_ESCAPE);
    EXPECT_NE(bar.GetMenuWindow(), nullptr);
    Key(VK_ESCAPE);
    EXPECT_EQ(bar.GetMenuWindow(), nullptr);
    EXPECT_EQ(d.chosen.size(), 1u);
}

}  // namespace
