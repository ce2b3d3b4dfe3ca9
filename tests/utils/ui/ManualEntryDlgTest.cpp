// Manual entry of readings: values typed in the display units, converted to metres, and
// bad entries refused with a message that says what to type.
#include "utils/ui/ManualEntryDlg.h"

#include <gtest/gtest.h>

#include "tests/support/TestSupport.h"

namespace {

std::wstring Text(const CKivStringT& s) { return s.GetString(); }

void Key(BYTE vk) {
    keybd_event(vk, 0, 0, 0);
    AfxPumpPendingMessages();
    keybd_event(vk, 0, KEYEVENTF_KEYUP, 0);
    AfxPumpPendingMessages();
}

// Types as the keypad does: digits through their keys, the rest as characters.
void Type(const wchar_t* text) {
    for (const wchar_t* c = text; *c; ++c) {
        if (*c >= L'0' && *c <= L'9') Key(static_cast<BYTE>(*c));
        else {
            PostMessageW(GetFocus(), WM_CHAR, *c, 1);
            AfxPumpPendingMessages();
        }
    }
}

TEST(ManualEntry, LevelReadingTypedInUsFeetIsKeptInMetres) {
    CKivLevelReadingDlg d(kiv_df::eUSFeet);
    ASSERT_TRUE(d.Create());
    d.ShowWindow(SW_SHOW);
    EXPECT_EQ(Text(d.GetDlgItemText(IDC_ENTRY_UNIT_FIRST)), L"USft");
    Type(L"4.25");
    Key(VK_RETURN);  // to the sight distance
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDC_ENTRY_FIRST + 1);
    Type(L"120");
    Key(VK_RETURN);
    EXPECT_FALSE(d.IsWindowVisible());
    // US survey foot: 1200/3937 m.
    EXPECT_NEAR(d.GetStaffReading(), 4.25 * 1200.0 / 3937.0, 1e-9);
    EXPECT_NEAR(d.GetSightDistance(), 120.0 * 1200.0 / 3937.0, 1e-9);
    EXPECT_TRUE(d.GetRefusal().IsEmpty());
}

TEST(ManualEntry, BadEntriesAreRefusedWithAMessageNamingFieldAndUnit) {
    CKivLevelReadingDlg d(kiv_df::eUSFeet);
    ASSERT_TRUE(d.Create());
    d.ShowWindow(SW_SHOW);
    HWND staff = GetDlgItem(d.m_hWnd, IDC_ENTRY_FIRST);
    SetWindowTextW(staff, L"4,2x5");
    d.SendMessage(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);  // the title bar's OK
    EXPECT_TRUE(d.IsWindowVisible());
    EXPECT_EQ(Text(d.GetRefusal()), std::wstring(L"Staff reading: \"4,2x5\" is not a number. Type a value in USft, e.g. 8.202 USft."));
    EXPECT_EQ(d.GetDlgItemText(IDC_ENTRY_MESSAGE), d.GetRefusal());
    EXPECT_EQ(GetFocus(), staff);

    // A staff of 40 feet is no staff: the range is told in the user's unit.
    SetWindowTextW(staff, L"40");
    d.SendMessage(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    EXPECT_EQ(Text(d.GetRefusal()), std::wstring(L"Staff reading: 40.000 USft is outside 0.000 USft to 32.808 USft."));
    SetWindowTextW(staff, L"");
    d.SendMessage(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    EXPECT_EQ(Text(d.GetRefusal()), std::wstring(L"Staff reading: a value is needed. Type it in USft."));

    // A typed metre suffix is honoured; the sight distance may stay empty.
    SetWindowTextW(staff, L"1.5m");
    d.SendMessage(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    EXPECT_FALSE(d.IsWindowVisible());
    EXPECT_DOUBLE_EQ(d.GetStaffReading(), 1.5);
    EXPECT_EQ(d.GetSightDistance(), 0.0);
}

TEST(ManualEntry, DistanceReadingInMetresRefusesZero) {
    CKivDistanceReadingDlg d(kiv_df::eMeters);
    ASSERT_TRUE(d.Create());
    SetWindowTextW(GetDlgItem(d.m_hWnd, IDC_ENTRY_FIRST), L"0");
    EXPECT_FALSE(d.CheckEntries());
    EXPECT_EQ(Text(d.GetRefusal()), std::wstring(L"Slope distance: 0.000 m is outside 0.001 m to 10000.000 m."));
    SetWindowTextW(GetDlgItem(d.m_hWnd, IDC_ENTRY_FIRST), L"152.347");
    SetWindowTextW(GetDlgItem(d.m_hWnd, IDC_ENTRY_FIRST + 1), L"1.8");
    EXPECT_TRUE(d.CheckEntries());
    EXPECT_DOUBLE_EQ(d.GetSlopeDistance(), 152.347);
    EXPECT_DOUBLE_EQ(d.GetTargetHeight(), 1.8);
}

}  // namespace
