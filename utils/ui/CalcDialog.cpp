// The calculator dialogs: their templates (a grid of key buttons under the display),
// key handling from buttons and from the keyboard, and the switch between them.
#include "utils/ui/CalcDialog.h"

#include <vector>

#include "platform/kivutils/Xlate.h"
#include "utils/ui/DlgSupport.h"

namespace {

CCalcDlg* g_open = nullptr;                   // user-interface thread only
CCalcDlg::EKind g_lastKind = CCalcDlg::eStandard;
CKivStringT g_handover;                        // the value passed on when switching

struct KeyButton {
    const wchar_t* text;
    int key;  // an ECalcKey, or -1 for the switch button
};

constexpr int kColumns = 5;
constexpr int kButtonWidth = 44;
constexpr int kButtonHeight = 28;
constexpr int kPitchX = 46;
constexpr int kPitchY = 31;
constexpr int kGridTop = 82;

const std::vector<KeyButton>& Layout(CCalcDlg::EKind kind) {
    static const std::vector<KeyButton> standard = {
        {L"C", eCalcKeyClear}, {L"CE", eCalcKeyClearEntry}, {L"\u2190", eCalcKeyBackspace}, {L"\u00F7", eCalcKeyDivide}, {L"Sci", -1},
        {L"7", eCalcKey7}, {L"8", eCalcKey8}, {L"9", eCalcKey9}, {L"\u00D7", eCalcKeyMultiply}, {L"\u221A", eCalcKeySqrt},
        {L"4", eCalcKey4}, {L"5", eCalcKey5}, {L"6", eCalcKey6}, {L"\u2212", eCalcKeySubtract}, {L"x\u00B2", eCalcKeySquare},
        {L"1", eCalcKey1}, {L"2", eCalcKey2}, {L"3", eCalcKey3}, {L"+", eCalcKeyAdd}, {L"%", eCalcKeyPercent},
        {L"0", eCalcKey0}, {L".", eCalcKeyPoint}, {L"\u00B1", eCalcKeySign}, {L"=", eCalcKeyEquals}, {L"1/x", eCalcKeyReciprocal},
    };
    static const std::vector<KeyButton> scientific = {
        {L"C", eCalcKeyClear}, {L"CE", eCalcKeyClearEntry}, {L"\u2190", eCalcKeyBackspace}, {L"\u00F7", eCalcKeyDivide}, {L"Std", -1},
        {L"sin", eCalcKeySin}, {L"cos", eCalcKeyCos}, {L"tan", eCalcKeyTan}, {L"y\u02E3", eCalcKeyPower}, {L"\u02E3\u221Ay", eCalcKeyRoot},
        {L"asin", eCalcKeyAsin}, {L"acos", eCalcKeyAcos}, {L"atan", eCalcKeyAtan}, {L"log", eCalcKeyLog}, {L"ln", eCalcKeyLn},
        {L"7", eCalcKey7}, {L"8", eCalcKey8}, {L"9", eCalcKey9}, {L"\u00D7", eCalcKeyMultiply}, {L"(", eCalcKeyOpenParen},
        {L"4", eCalcKey4}, {L"5", eCalcKey5}, {L"6", eCalcKey6}, {L"\u2212", eCalcKeySubtract}, {L")", eCalcKeyCloseParen},
        {L"1", eCalcKey1}, {L"2", eCalcKey2}, {L"3", eCalcKey3}, {L"+", eCalcKeyAdd}, {L"\u03C0", eCalcKeyPi},
        {L"0", eCalcKey0}, {L".", eCalcKeyPoint}, {L"\u00B1", eCalcKeySign}, {L"=", eCalcKeyEquals}, {L"\u00B0'\"", eCalcKeyDms},
    };
    return kind == CCalcDlg::eStandard ? standard : scientific;
}

void RegisterTemplates() {
    for (auto kind : {CCalcDlg::eStandard, CCalcDlg::eScientific}) {
        CDialogTemplate t;
        t.caption = kind == CCalcDlg::eStandard ? L"Calculator" : L"Scientific Calculator";
        const auto& keys = Layout(kind);
        const int rows = static_cast<int>(keys.size()) / kColumns;
        t.rect = RECT{0, 0, 240, kGridTop + rows * kPitchY + 6};
        t.items.push_back({L"STATIC", L"", IDC_CALC_MODE, SS_LEFT, RECT{8, 31, 120, 47}});
        t.items.push_back({L"EDIT", L"0", IDC_CALC_DISPLAY, ES_READONLY | ES_RIGHT, RECT{6, 48, 234, 76}});
        for (size_t i = 0; i < keys.size(); ++i) {
            const int row = static_cast<int>(i) / kColumns, col = static_cast<int>(i) % kColumns;
            const int x = 6 + col * kPitchX, y = kGridTop + row * kPitchY;
            const int id = keys[i].key < 0 ? IDC_CALC_SWITCH : kCalcButtonBase + keys[i].key;
            t.items.push_back({L"BUTTON", keys[i].text, id, BS_PUSHBUTTON, RECT{x, y, x + kButtonWidth, y + kButtonHeight}});
        }
        AfxRegisterDialogTemplate(CCalcDlg::TemplateName(kind), t);
    }
}

BOOL Open(HWND dialog, HWND target, LPCWSTR seed, CCalcDlg::EKind kind, bool writeResult) {
    if (!::IsWindow(dialog)) return FALSE;
    if (g_open) g_open->DestroyWindow();
    RegisterTemplates();
    auto* calc = new CCalcDlg(kind, CWnd::FromHandlePermanent(dialog), target, writeResult);
    if (!calc->Create(CCalcDlg::TemplateName(kind), nullptr)) {
        delete calc;
        return FALSE;
    }
    if (seed && *seed) {
        calc->GetCalculator().PressKey(eCalcKeyClear);
        calc->GetCalculator().SetValueText(seed);
    }
    calc->Press(static_cast<ECalcKey>(-1));  // shows the display
    calc->ShowWindow(SW_SHOW);
    g_lastKind = kind;
    return TRUE;
}

CKivStringT TextOf(HWND w) {
    CKivStringT text;
    if (!::IsWindow(w)) return text;
    const int n = ::GetWindowTextLengthW(w);
    std::wstring buffer(static_cast<size_t>(n) + 1, L'\0');
    ::GetWindowTextW(w, buffer.data(), n + 1);
    text = buffer.c_str();
    return text;
}

}  // namespace

BOOL LoadCalculator(HWND dialog, HWND target, bool writeResult) {
    const CKivStringT seed = TextOf(target);
    CCalculator probe;
    return Open(dialog, target, probe.SetValueText(seed) ? seed.GetString() : nullptr, g_lastKind, writeResult);
}

BOOL LoadCalculator(HWND dialog, HWND target, LPCWSTR text, bool writeResult) {
    const CKivStringT seed = text ? text : L"";
    const auto other = g_lastKind == CCalcDlg::eStandard ? CCalcDlg::eScientific : CCalcDlg::eStandard;
    return Open(dialog, target, seed.IsEmpty() ? nullptr : seed.GetString(), other, writeResult);
}

namespace kiv_ui {
CCalcDlg* GetOpenCalculator() { return g_open; }
}  // namespace kiv_ui

LPCWSTR CCalcDlg::TemplateName(EKind kind) { return kind == eStandard ? L"IDD_CALCULATOR" : L"IDD_SCI_CALCULATOR"; }

CCalcDlg::CCalcDlg(EKind kind, CWnd* owner, HWND target, bool writeResult)
    : CDlgBase(TemplateName(kind), owner), kind_(kind), target_(target), writeResult_(writeResult) {
    m_hWndParent = owner ? owner->m_hWnd : nullptr;
    ShowOkButton();
    ShowCancelButton();
    HideMenuButton();
    g_open = this;
}

CCalcDlg::~CCalcDlg() {
    if (g_open == this) g_open = nullptr;
}

BOOL CCalcDlg::OnInitDialog() {
    CDlgBase::OnInitDialog();
    HFONT big = kiv_ui::BoldFont();
    ::SendMessageW(::GetDlgItem(m_hWnd, IDC_CALC_DISPLAY), WM_SETFONT, reinterpret_cast<WPARAM>(big), FALSE);
    return FALSE;
}

void CCalcDlg::Press(ECalcKey key) {
    if (key >= 0) calc_.PressKey(key);
    ShowDisplay();
}

void CCalcDlg::ShowDisplay() {
    if (!m_hWnd) return;
    HWND display = ::GetDlgItem(m_hWnd, IDC_CALC_DISPLAY);
    const CKivStringT text = calc_.GetDisplay();
    ::SetWindowTextW(display, text);
    // The value reads from the right, as on a pocket calculator: the caret goes last.
    ::SendMessageW(display, EM_SETSEL, static_cast<WPARAM>(-1), 0);
    static const wchar_t* const modes[] = {L"DEG", L"GRAD", L"RAD"};
    CKivStringT mode = modes[calc_.GetAngleMode()];
    if (calc_.HasMemory()) mode += L" M";
    ::SetWindowTextW(::GetDlgItem(m_hWnd, IDC_CALC_MODE), mode);
}

BOOL CCalcDlg::PreTranslateMessage(MSG* msg) {
    if (msg->message == WM_CHAR) {
        ECalcKey key{};
        if (CalcKeyFromChar(static_cast<wchar_t>(msg->wParam), key) && key != eCalcKeyEquals) {
            Press(key);
            return TRUE;
        }
        if (msg->wParam == L'=') {
            Press(eCalcKeyEquals);
            return TRUE;
        }
    }
    if (msg->message == WM_KEYDOWN && msg->wParam == VK_BACK) {
        Press(eCalcKeyBackspace);
        return TRUE;
    }
    return CDlgBase::PreTranslateMessage(msg);
}

BOOL CCalcDlg::OnCommand(WPARAM wParam, LPARAM lParam) {
    const int id = LOWORD(wParam);
    if (HIWORD(wParam) == BN_CLICKED && id == IDC_CALC_SWITCH) {
        // The owner reopens the other calculator with the shown value (OnKeyInputClose).
        g_handover = calc_.IsError() ? CKivStringT() : calc_.GetValueText();
        HWND owner = m_hWndParent;
        HWND target = target_;
        Close();
        ::PostMessageW(owner, WM_KIV_KEYINPUT_CLOSE, reinterpret_cast<WPARAM>(target),
                       reinterpret_cast<LPARAM>(g_handover.GetString()));
        return TRUE;
    }
    if (HIWORD(wParam) == BN_CLICKED && id >= kCalcButtonBase && id < kCalcButtonBase + 100) {
        Press(static_cast<ECalcKey>(id - kCalcButtonBase));
        return TRUE;
    }
    return CDlgBase::OnCommand(wParam, lParam);
}

int CCalcDlg::EnterKey() {
    Press(eCalcKeyEquals);
    return 1;
}

int CCalcDlg::EscapeKey() {
    OnCancel();
    return 1;
}

void CCalcDlg::OnOK() {
    if (!calc_.IsError()) {
        SetLastCalcValue(calc_.GetValueText());
        if (writeResult_ && ::IsWindow(target_)) ::SetWindowTextW(target_, calc_.GetDisplay());
    }
    Close();
}

void CCalcDlg::OnCancel() { Close(); }

void CCalcDlg::Close() {
    if (g_open == this) g_open = nullptr;
    DestroyWindow();
}

void CCalcDlg::PostNcDestroy() { delete this; }
