// The calculator dialogs over the engine: keys from buttons and the keyboard, the
// switch between the two dialogs through the owner, and the result written on OK.
#include "utils/ui/CalcDialog.h"

#include <gtest/gtest.h>

namespace {

class COwnerDlg : public CDlgBase {
public:
    COwnerDlg() : CDlgBase(L"CALC_OWNER", nullptr) {}
};

void RegisterOwner() {
    CDialogTemplate t;
    t.caption = L"Owner";
    t.items.push_back({L"EDIT", L"12.5", 100, WS_TABSTOP, RECT{8, 40, 200, 62}});
    AfxRegisterDialogTemplate(L"CALC_OWNER", t);
}

std::wstring Text(HWND w) {
    wchar_t b[64] = {};
    GetWindowTextW(w, b, 64);
    return b;
}

TEST(CalcDialog, OpensSeededFromTheFieldAndWritesTheResultOnOk) {
    RegisterOwner();
    SetLastCalcValue(L"");
    COwnerDlg owner;
    ASSERT_TRUE(owner.Create(L"CALC_OWNER"));
    HWND field = GetDlgItem(owner.m_hWnd, 100);
    SetFocus(field);
    owner.CalcKey();
    CCalcDlg* calc = kiv_ui::GetOpenCalculator();
    ASSERT_NE(calc, nullptr);
    EXPECT_EQ(calc->GetKind(), CCalcDlg::eStandard);
    EXPECT_EQ(Text(GetDlgItem(calc->m_hWnd, IDC_CALC_DISPLAY)), L"12.5");

    // "×4=" from the dialog's buttons and the keyboard's Enter.
    SendMessageW(GetDlgItem(calc->m_hWnd, kCalcButtonBase + eCalcKeyMultiply), BM_CLICK, 0, 0);
    SendMessageW(GetDlgItem(calc->m_hWnd, kCalcButtonBase + eCalcKey4), BM_CLICK, 0, 0);
    MSG enter{calc->m_hWnd, WM_KEYDOWN, VK_RETURN, 0, 0, {}};
    EXPECT_TRUE(calc->PreTranslateMessage(&enter));
    EXPECT_EQ(Text(GetDlgItem(calc->m_hWnd, IDC_CALC_DISPLAY)), L"50");
    MSG typed{calc->m_hWnd, WM_CHAR, L'+', 0, 0, {}};
    EXPECT_TRUE(calc->PreTranslateMessage(&typed));

    calc->SendMessage(WM_COMMAND, MAKEWPARAM(IDOK, 0), 0);
    EXPECT_EQ(kiv_ui::GetOpenCalculator(), nullptr);
    EXPECT_EQ(Text(field), L"50");
    EXPECT_EQ(GetLastCalcValue(), CKivStringT(L"50"));
}

TEST(CalcDialog, SwitchReopensTheOtherDialogWithTheValueThroughTheOwner) {
    RegisterOwner();
    COwnerDlg owner;
    ASSERT_TRUE(owner.Create(L"CALC_OWNER"));
    HWND field = GetDlgItem(owner.m_hWnd, 100);
    ASSERT_TRUE(LoadCalculator(owner.m_hWnd, field, true));
    CCalcDlg* calc = kiv_ui::GetOpenCalculator();
    ASSERT_NE(calc, nullptr);
    const auto first = calc->GetKind();
    calc->Press(eCalcKeyClear);
    calc->Press(eCalcKey7);
    SendMessageW(GetDlgItem(calc->m_hWnd, IDC_CALC_SWITCH), BM_CLICK, 0, 0);
    EXPECT_EQ(kiv_ui::GetOpenCalculator(), nullptr) << "the old dialog closes first";
    AfxPumpPendingMessages();  // the owner's OnKeyInputClose reopens
    calc = kiv_ui::GetOpenCalculator();
    ASSERT_NE(calc, nullptr);
    EXPECT_NE(calc->GetKind(), first);
    EXPECT_EQ(calc->GetCalculator().GetDisplay(), CKivStringT(L"7"));
    // Escape closes without touching the field.
    MSG escape{calc->m_hWnd, WM_KEYDOWN, VK_ESCAPE, 0, 0, {}};
    EXPECT_TRUE(calc->PreTranslateMessage(&escape));
    EXPECT_EQ(kiv_ui::GetOpenCalculator(), nullptr);
    EXPECT_EQ(Text(field), L"12.5");
    EXPECT_FALSE(LoadCalculator(nullptr, field, true));
}

}  // namespace
