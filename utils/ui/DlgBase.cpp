// CDlgBase: title-bar building, key dispatch, the keyboard and calculator hooks, the
// opening and closing notifications, and the control helpers.
#include "utils/ui/DlgBase.h"

#include "platform/kivutils/KivLog.h"
#include "platform/kivutils/Xlate.h"
#include "utils/ui/CalcDialog.h"
#include "utils/ui/DlgSupport.h"
#include "utils/ui/KeyInput.h"
#include "utils/ui/KivButton.h"
#include "utils/ui/MessagePopup.h"
#include "utils/ui/UiBitmaps.h"

// ---- background -----------------------------------------------------------------------------

void CDlgBackground::SetColour(COLORREF) {
    // Deliberately ignores the requested colour: every dialog is button-face coloured.
    colour_ = GetSysColor(COLOR_BTNFACE);
    if (brush_) DeleteObject(brush_);
    brush_ = CreateSolidBrush(colour_);
}

CDlgBackground::~CDlgBackground() {
    if (brush_) DeleteObject(brush_);
}

// ---- construction ---------------------------------------------------------------------------

IMPLEMENT_DYNAMIC(CDlgBase, CDialog)

BEGIN_MESSAGE_MAP(CDlgBase, CDialog)
    ON_WM_PAINT()
    ON_WM_ACTIVATE()
    ON_WM_DESTROY()
    ON_COMMAND(ID_TBAR_MENU, OnDisplayMenu)
    ON_WM_SETTINGCHANGE()
    ON_MESSAGE(WM_KIV_KEYINPUT_CLOSE, OnKeyInputClose)
    ON_MESSAGE(WM_KIV_SHOW_KEYINPUT, OnShowKeyInput)
    ON_MESSAGE(WM_INITDIALOG, HandleInitDialog)
END_MESSAGE_MAP()

CDlgBase::CDlgBase() { BuildBase(nullptr); }
CDlgBase::CDlgBase(LPCWSTR templateName, CWnd* parent) : CDialog(templateName, parent) { BuildBase(parent); }
CDlgBase::CDlgBase(UINT templateId, CWnd* parent) : CDialog(templateId, parent) { BuildBase(parent); }
CDlgBase::~CDlgBase() {
    if (m_hWnd && ::IsWindow(m_hWnd)) ::DestroyWindow(m_hWnd);
}

void CDlgBase::BuildBase(CWnd* parent) {
    m_bShowOk = FALSE;
    m_bShowCancel = FALSE;
    m_bShowClose = TRUE;
    m_bShowTitle = TRUE;
    m_bShowMenu = TRUE;
    m_bShowFinish = FALSE;
    m_bChildOfDialog = parent && parent->IsKindOf(RUNTIME_CLASS(CDialog));
    m_background.SetColour(RGB(190, 218, 222));
}

void CDlgBase::ShowOkButton() {
    m_bShowOk = TRUE;
    m_bShowFinish = FALSE;
}
void CDlgBase::ShowFinishButton() {
    m_bShowFinish = TRUE;
    m_bShowOk = FALSE;
}
void CDlgBase::ShowCancelButton() {
    m_bShowCancel = TRUE;
    m_bShowClose = FALSE;
}

void CDlgBase::AddSettingsButton(LPCWSTR name, UINT id) { AddBitmapButton(name, id, IDB_TBAR_SETTINGS, FALSE); }
void CDlgBase::AddEDMButton(LPCWSTR name, UINT id) { AddBitmapButton(name, id, IDB_TBAR_EDM, FALSE); }
void CDlgBase::AddCheckButton(LPCWSTR name, UINT id) { AddBitmapButton(name, id, IDB_TBAR_CHECK, FALSE); }

void CDlgBase::AddBitmapButton(LPCWSTR name, UINT id, UINT bitmap, BOOL flag) {
    m_titlebar.AddBitmapButton(name, id, kiv_ui::LoadUiBitmap(bitmap), flag);
}

void CDlgBase::AddBitmapButton(UINT id, UINT bitmap, BOOL flag) {
    CKivStringT name;
    name.Format(L"#%u", id);
    AddBitmapButton(name, id, bitmap, flag);
}

void CDlgBase::AddMenuButton(UINT id, UINT bitmap, UINT pressedBitmap) { AddMenuButton(L"A", id, bitmap, pressedBitmap); }

void CDlgBase::AddMenuButton(LPCWSTR name, UINT id, UINT bitmap, UINT pressedBitmap) {
    m_titlebar.AddMenuButton(name, id, kiv_ui::LoadUiBitmap(bitmap), kiv_ui::LoadUiBitmap(pressedBitmap));
}

BOOL CDlgBase::ChangeButtonBitmap(LPCWSTR name, UINT bitmap) {
    return m_titlebar.ChangeBitmap(name, kiv_ui::LoadUiBitmap(bitmap));
}

void CDlgBase::SetWindowTextW(LPCWSTR text) {
    CWnd::SetWindowTextW(text);
    if (m_bShowTitle) m_titlebar.ChangeTitle(text);
}

// ---- initialisation ---------------------------------------------------------------------------

LRESULT CDlgBase::HandleInitDialog(WPARAM wParam, LPARAM lParam) {
    const LRESULT r = CDialog::HandleInitDialog(wParam, lParam);
    CKivButton::SubclassAllBtnsInDlg(this);
    return r;
}

BOOL CDlgBase::OnInitDialog() {
    ::PostMessageW(HWND_BROADCAST, WM_CANCELMODE, 0, 0);
    CDialog::OnInitDialog();
    kiv_ui::PushTopMostDialog(m_hWnd);
    kiv_ui::TranslateDialogTexts(m_hWnd);  // without a language file every text is its own translation

    m_bKeyPress = 0;
    m_bShift = 0;

    if (m_hWndParent && !m_bChildOfDialog) ::SendMessageW(m_hWndParent, WM_KIV_DIALOG_OPENED, 0, 0);

    const bool rightButton = m_bShowCancel || m_bShowClose;
    if (m_bShowOk) AddBitmapButton(rightButton ? L"Y" : L"Z", IDOK, IDB_TBAR_OK, FALSE);
    if (m_bShowFinish) AddBitmapButton(rightButton ? L"Y" : L"Z", IDOK, IDB_TBAR_OK, FALSE);
    if (m_bShowCancel) AddBitmapButton(L"Z", IDCANCEL, IDB_TBAR_CANCEL, FALSE);
    if (m_bShowClose) AddBitmapButton(L"Z", IDCANCEL, IDB_TBAR_CLOSE, FALSE);
    if (m_bShowMenu) {
        AddBitmapButton(L"A", ID_TBAR_MENU, IDB_TBAR_MENU, FALSE);
        if (GetCountry() != 81) AddMenuItem(Xlate(L"Help"), ID_TBAR_HELP);
    }
    if (m_bShowTitle) m_titlebar.AddTitle(L"B");
    if (GetShowAlphaKeyMode()) {
        HWND keyboard = ::FindWindowW(kSoftKeyboardClass, nullptr);
        const bool on = keyboard && ::SendMessageW(keyboard, WM_COMMAND, kSoftKeyboardQueryAlpha, 0) != 0;
        m_titlebar.AddBitmap(L"R", kiv_ui::LoadUiBitmap(on ? L"IDB_ALPHAKEY" : L"IDB_TITLEBAR_EMPTY"));
    }

    HFONT font = ::GetBoldFont() ? kiv_ui::BoldFont() : kiv_ui::StandardFont();
    m_titlebar.InitDialog(m_hWnd, font, 0);
    SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    kiv_ui::ApplyFontToDescendants(m_hWnd, font);
    return 0;  // the base leaves the focus to the derived dialog
}

// ---- keys -------------------------------------------------------------------------------------

BOOL CDlgBase::PreTranslateMessage(MSG* msg) {
    if (msg->message == WM_KEYUP) {
        switch (msg->wParam) {
            case VK_SHIFT: m_bShift = 0; break;
            case VK_LEFT: if (ArrowLeftKey_Keyup()) return TRUE; break;
            case VK_UP: if (ArrowUpKey_Keyup()) return TRUE; break;
            case VK_RIGHT: if (ArrowRightKey_Keyup()) return TRUE; break;
            case VK_DOWN: if (ArrowDownKey_Keyup()) return TRUE; break;
            default: break;
        }
    } else if (msg->message == WM_KEYDOWN) {
        int handled = 0;
        switch (msg->wParam) {
            case VK_F1: handled = FunctionKeyF1(); break;
            case VK_F2: handled = FunctionKeyF2(); break;
            case VK_F3: handled = FunctionKeyF3(); break;
            case VK_F4: handled = FunctionKeyF4(); break;
            case VK_F5: handled = FunctionKeyF5(); break;
            case VK_F6: handled = FunctionKeyF6(); break;
            case VK_F7: handled = FunctionKeyF7(); break;
            case VK_F8: handled = FunctionKeyF8(); break;
            case VK_F9: handled = FunctionKeyF9(); break;
            case VK_RETURN: handled = EnterKey(); break;
            case VK_ESCAPE: handled = EscapeKey(); break;
            case VK_LEFT: handled = ArrowLeftKey(); break;
            case VK_UP: handled = ArrowUpKey(); break;
            case VK_RIGHT: handled = ArrowRightKey(); break;
            case VK_DOWN: handled = ArrowDownKey(); break;
            case VK_F24:
                // The alpha key only refreshes the indicator and always reaches the control.
                if (GetShowAlphaKeyMode()) UpdateAlphaKeyIndicator();
                break;
            default: break;
        }
        if (handled) return TRUE;
        m_bKeyPress = 0;
    }
    const BOOL result = CDialog::PreTranslateMessage(msg);
    if (msg->message == WM_LBUTTONUP)
        PostMessage(WM_KIV_SHOW_KEYINPUT, WM_LBUTTONUP, reinterpret_cast<LPARAM>(msg->hwnd));
    return result;
}

void CDlgBase::UpdateAlphaKeyIndicator() {
    HWND keyboard = ::FindWindowW(kSoftKeyboardClass, nullptr);
    const bool on = keyboard && ::SendMessageW(keyboard, WM_COMMAND, kSoftKeyboardQueryAlpha, 0) != 0;
    HBITMAP bitmap = kiv_ui::LoadUiBitmap(on ? L"IDB_ALPHAKEY" : L"IDB_TITLEBAR_EMPTY");
    if (!m_titlebar.ChangeBitmap(L"R", bitmap)) m_titlebar.AddBitmap(L"R", kiv_ui::LoadUiBitmap(on ? L"IDB_ALPHAKEY" : L"IDB_TITLEBAR_EMPTY"));
}

int CDlgBase::CalcKey() {
    LoadCalculator(m_hWnd, ::GetFocus(), true);
    m_bKeyPress = 0;
    m_bShift = 0;
    return 0;
}

LRESULT CDlgBase::OnShowKeyInput(WPARAM wParam, LPARAM lParam) {
    MSG m = AfxGetCurrentMessage() ? *AfxGetCurrentMessage() : MSG{};
    m.hwnd = reinterpret_cast<HWND>(lParam);
    m.message = static_cast<UINT>(wParam);
    showKeyboardIfNeeded(m_hWnd, &m);
    return 0;
}

LRESULT CDlgBase::OnKeyInputClose(WPARAM wParam, LPARAM lParam) {
    const auto* text = reinterpret_cast<LPCWSTR>(lParam);
    HWND target = reinterpret_cast<HWND>(wParam);
    LoadCalculator(m_hWnd, target, text, true);
    return 0;
}

BOOL CDlgBase::OnCommand(WPARAM wParam, LPARAM lParam) {
    if (HIWORD(wParam) == EN_SETFOCUS) ::PostMessageW(reinterpret_cast<HWND>(lParam), EM_SETSEL, 0, -1);
    return CDialog::OnCommand(wParam, lParam);
}

// ---- messages -----------------------------------------------------------------------------------

void CDlgBase::OnPaint() {
    CPaintDC dc(this);
    RECT r{};
    GetClientRect(&r);
    dc.FillRect(&r, m_background.GetBrush());
    m_titlebar.Paint(dc, m_titlebar.IsActive() ? 0 : 1);
}

void CDlgBase::OnActivate(UINT state, CWnd* other, BOOL minimized) {
    CDialog::OnActivate(state, other, minimized);
    m_titlebar.Activate(state);
    if (GetShowAlphaKeyMode()) UpdateAlphaKeyIndicator();
}

void CDlgBase::OnDestroy() {
    if (!m_bChildOfDialog) {
        CWnd* main = AfxGetMainWnd();
        HWND to = main ? main->m_hWnd : m_hWndParent;
        if (to && ::IsWindow(to)) ::PostMessageW(to, WM_KIV_DIALOG_CLOSED, 0, 0);
    }
    kiv_ui::RemoveTopMostDialog(m_hWnd);
    m_titlebar.CloseMenu();
    CDialog::OnDestroy();
}

void CDlgBase::OnDisplayMenu() { m_titlebar.DisplayMenu(L"A"); }

// What the device did on a setting change is not known; the bar is laid out again, as
// a change of the screen's size needs.
void CDlgBase::OnSettingChange(UINT, LPCWSTR) { m_titlebar.FinalizeChanges(); }

void CDlgBase::PostNcDestroy() { CDialog::PostNcDestroy(); }

// ---- control helpers ----------------------------------------------------------------------------

HWND CDlgBase::Item(int id, int line) {
    HWND item = m_hWnd ? ::GetDlgItem(m_hWnd, id) : nullptr;
    if (!item) {
        CKivStringT text;
        text.Format(L"Control %d not found in dialog", id);
        kiv_err_log("DlgBase", line, text);
    }
    return item;
}

BOOL CDlgBase::SetDlgItemText(int id, LPCWSTR text) {
    HWND w = Item(id, __LINE__);
    return w ? ::SetWindowTextW(w, text) : FALSE;
}

BOOL CDlgBase::GetDlgItemText(int id, CKivStringT& text) {
    HWND w = Item(id, __LINE__);
    if (!w) return FALSE;
    CWnd tmp;
    tmp.m_hWnd = w;
    tmp.GetWindowText(text);
    tmp.m_hWnd = nullptr;
    return TRUE;
}

int CDlgBase::GetDlgItemText(int id, LPWSTR buffer, int length) {
    HWND w = Item(id, __LINE__);
    if (!w) {
        if (buffer && length > 0) buffer[0] = L'\0';
        return 0;
    }
    return ::GetWindowTextW(w, buffer, length);
}

CKivStringT CDlgBase::GetDlgItemText(int id) {
    CKivStringT text;
    GetDlgItemText(id, text);
    return text;
}

BOOL CDlgBase::EnableDlgItem(int id, BOOL enable) {
    HWND w = Item(id, __LINE__);
    return w ? ::EnableWindow(w, enable) : FALSE;
}
BOOL CDlgBase::IsDlgItemEnabled(int id) {
    HWND w = Item(id, __LINE__);
    return w ? ::IsWindowEnabled(w) : FALSE;
}
BOOL CDlgBase::ShowDlgItem(int id, BOOL show) {
    HWND w = Item(id, __LINE__);
    return w ? ::ShowWindow(w, show ? SW_SHOW : SW_HIDE) : FALSE;
}
BOOL CDlgBase::IsDlgItemVisible(int id) {
    HWND w = Item(id, __LINE__);
    return w ? ::IsWindowVisible(w) : FALSE;
}
void CDlgBase::CheckDlgButton(int id, UINT check) {
    if (HWND w = Item(id, __LINE__)) ::SendMessageW(w, BM_SETCHECK, check, 0);
}
UINT CDlgBase::GetDlgButtonCheckedState(int id) {
    HWND w = Item(id, __LINE__);
    return w ? static_cast<UINT>(::SendMessageW(w, BM_GETCHECK, 0, 0)) : 0;
}
BOOL CDlgBase::SetDlgEditReadOnly(int id, BOOL readOnly) {
    HWND w = Item(id, __LINE__);
    return w ? static_cast<BOOL>(::SendMessageW(w, EM_SETREADONLY, readOnly, 0)) : FALSE;
}
void CDlgBase::SetDlgEditLimitText(int id, int limit) {
    if (HWND w = Item(id, __LINE__)) ::SendMessageW(w, EM_LIMITTEXT, static_cast<WPARAM>(limit), 0);
}
BOOL CDlgBase::SetDlgItemFocus(int id) {
    HWND w = Item(id, __LINE__);
    if (!w) return FALSE;
    ::SetFocus(w);
    return TRUE;
}
BOOL CDlgBase::PostSetDlgItemFocus(int id) {
    HWND w = Item(id, __LINE__);
    return w ? PostMessage(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(w), 1) : FALSE;
}

bool CDlgBase::EnableControls(const int* ids, int count) {
    bool all = true;
    for (int i = 0; ids && i < count; ++i)
        if (HWND w = Item(ids[i], __LINE__)) ::EnableWindow(w, TRUE);
        else all = false;
    return all;
}
bool CDlgBase::DisableControls(const int* ids, int count) {
    bool all = true;
    for (int i = 0; ids && i < count; ++i)
        if (HWND w = Item(ids[i], __LINE__)) ::EnableWindow(w, FALSE);
        else all = false;
    return all;
}
bool CDlgBase::HideControls(const int* ids, int count) {
    bool all = true;
    for (int i = 0; ids && i < count; ++i)
        if (HWND w = Item(ids[i], __LINE__)) ::ShowWindow(w, SW_HIDE);
        else all = false;
    return all;
}
bool CDlgBase::ShowControls(const int* ids, int count) {
    bool all = true;
    for (int i = 0; ids && i < count; ++i)
        if (HWND w = Item(ids[i], __LINE__)) ::ShowWindow(w, SW_SHOW);
        else all = false;
    return all;
}

HFONT CDlgBase::GetFont() const {
    HFONT f = CWnd::GetFont();
    return f ? f : (::GetBoldFont() ? kiv_ui::BoldFont() : kiv_ui::StandardFont());
}

int CDlgBase::MessageBoxW(LPCWSTR text, LPCWSTR caption, UINT type, ESounds sound) {
    // Translated once, on first use, and kept for the life of the process.
    static const CKivStringT warning = Xlate(L"Warning!");
    Sound(sound);
    return kiv_ui::MessagePopup(m_hWnd, text, caption && *caption ? caption : warning.GetString(), type);
}

// ---- CDlgCtrlItem -------------------------------------------------------------------------------

void CDlgCtrlItem::Create(CTextInfoManager* manager, LPCWSTR text) {
    m_manager = manager;
    m_text = text ? text : L"";
}

CKivStringT CDlgCtrlItem::GetXlatedText() const { return CKivStringT(Xlate(m_text)); }

BOOL CDlgCtrlItem::UpdateText(CWnd* dialog) const { return UpdateText(dialog, GetXlatedText()); }

BOOL CDlgCtrlItem::UpdateText(CWnd* dialog, LPCWSTR text) const {
    if (!IsBound() || !dialog || !dialog->m_hWnd) return FALSE;
    HWND w = ::GetDlgItem(dialog->m_hWnd, static_cast<int>(m_id));
    return w ? ::SetWindowTextW(w, text) : FALSE;
}
