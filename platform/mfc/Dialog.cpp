// CDialog: templates, creation, the modal loop and the dialog manager's keys.
#include "platform/mfc/Dialog.h"

#include <map>

namespace {

std::map<UINT, CDialogTemplate>& TemplatesById() {
    static std::map<UINT, CDialogTemplate> m;
    return m;
}
std::map<std::wstring, CDialogTemplate>& TemplatesByName() {
    static std::map<std::wstring, CDialogTemplate> m;
    return m;
}

// The key's message goes along, as the system's dialog manager sends it: a control may
// want a key only in some states (an open combo box list takes Enter and Escape).
LRESULT DlgCode(HWND w, MSG* msg) {
    return w ? ::SendMessageW(w, WM_GETDLGCODE, msg->wParam, reinterpret_cast<LPARAM>(msg)) : 0;
}

bool IsTabStop(HWND w) {
    const auto style = static_cast<DWORD>(::GetWindowLongW(w, GWL_STYLE));
    return (style & WS_TABSTOP) && (style & WS_VISIBLE) && !(style & WS_DISABLED);
}

}  // namespace

void AfxRegisterDialogTemplate(UINT id, const CDialogTemplate& t) { TemplatesById()[id] = t; }
void AfxRegisterDialogTemplate(LPCWSTR name, const CDialogTemplate& t) { TemplatesByName()[name ? name : L""] = t; }
const CDialogTemplate* AfxFindDialogTemplate(UINT id) {
    auto it = TemplatesById().find(id);
    return it == TemplatesById().end() ? nullptr : &it->second;
}
const CDialogTemplate* AfxFindDialogTemplate(LPCWSTR name) {
    auto it = TemplatesByName().find(name ? name : L"");
    return it == TemplatesByName().end() ? nullptr : &it->second;
}

IMPLEMENT_DYNAMIC(CDialog, CWnd)

BEGIN_MESSAGE_MAP(CDialog, CWnd)
    ON_MESSAGE(WM_INITDIALOG, HandleInitDialog)
    ON_COMMAND(IDOK, OnOK)
    ON_COMMAND(IDCANCEL, OnCancel)
    ON_WM_PAINT()
END_MESSAGE_MAP()

CDialog::CDialog(UINT templateId, CWnd* parent)
    : m_hWndParent(parent ? parent->m_hWnd : nullptr), m_templateId(templateId) {}
CDialog::CDialog(LPCWSTR templateName, CWnd* parent)
    : m_hWndParent(parent ? parent->m_hWnd : nullptr), m_templateName(templateName ? templateName : L"") {}

BOOL CDialog::Create(UINT templateId, CWnd* parent) {
    if (parent) m_hWndParent = parent->m_hWnd;
    return CreateFromTemplate(AfxFindDialogTemplate(templateId), CWnd::FromHandlePermanent(m_hWndParent));
}

BOOL CDialog::Create(LPCWSTR templateName, CWnd* parent) {
    if (parent) m_hWndParent = parent->m_hWnd;
    return CreateFromTemplate(AfxFindDialogTemplate(templateName), CWnd::FromHandlePermanent(m_hWndParent));
}

BOOL CDialog::CreateFromTemplate(const CDialogTemplate* t, CWnd*) {
    if (!t || m_hWnd) return FALSE;
    m_ended = false;
    // A dialog is owned by its parent window; CWnd::CreateEx wants a CWnd, so the window
    // is made here with the raw owner handle.
    RegisterClassW([] {
        static WNDCLASSW wc{};
        wc.lpfnWndProc = &AfxWndProc;
        wc.lpszClassName = kAfxWndClass;
        return &wc;
    }());
    kiv_win32::RegisterStandardControls();
    CWnd owner;
    CWnd* ownerWnd = nullptr;
    if (m_hWndParent && !CWnd::FromHandlePermanent(m_hWndParent)) {
        owner.Attach(m_hWndParent);
        ownerWnd = &owner;
    } else {
        ownerWnd = CWnd::FromHandlePermanent(m_hWndParent);
    }
    // A template styled WS_CHILD makes a dialog inside its parent (a property page);
    // every other dialog is a popup owned by it.
    const DWORD kind = (t->style & WS_CHILD) ? 0 : WS_POPUP;
    const BOOL made = CreateEx(0, kAfxWndClass, t->caption.c_str(), kind | (t->style & ~WS_VISIBLE), t->rect,
                               ownerWnd, 0);
    if (ownerWnd == &owner) owner.Detach();
    if (!made) return FALSE;
    m_font = kiv_win32::DefaultControlFont();
    HWND firstTab = nullptr;
    for (const CDialogItemTemplate& item : t->items) {
        HWND c = ::CreateWindowExW(0, item.className.c_str(), item.text.c_str(), WS_CHILD | WS_VISIBLE | item.style,
                                   item.rect.left, item.rect.top, item.rect.right - item.rect.left,
                                   item.rect.bottom - item.rect.top, m_hWnd,
                                   reinterpret_cast<HMENU>(static_cast<INT_PTR>(item.id)), nullptr, nullptr);
        if (!c) continue;
        ::SendMessageW(c, WM_SETFONT, reinterpret_cast<WPARAM>(m_font), FALSE);
        if (!firstTab && IsTabStop(c)) firstTab = c;
    }
    // WM_INITDIALOG answers whether the dialog manager should focus the first tab stop.
    if (SendMessage(WM_INITDIALOG, reinterpret_cast<WPARAM>(firstTab), 0) && firstTab) ::SetFocus(firstTab);
    if (m_hWnd && (t->style & WS_VISIBLE)) ShowWindow(SW_SHOW);
    return m_hWnd != nullptr;
}

INT_PTR CDialog::DoModal() {
    const CDialogTemplate* t =
        m_templateName.empty() ? AfxFindDialogTemplate(m_templateId) : AfxFindDialogTemplate(m_templateName.c_str());
    m_modal = true;
    const bool parentWasEnabled = m_hWndParent && ::IsWindowEnabled(m_hWndParent);
    if (parentWasEnabled) ::EnableWindow(m_hWndParent, FALSE);
    if (!CreateFromTemplate(t, nullptr)) {
        if (parentWasEnabled) ::EnableWindow(m_hWndParent, TRUE);
        m_modal = false;
        return -1;
    }
    ShowWindow(SW_SHOW);
    MSG msg{};
    while (!m_ended && m_hWnd) {
        const BOOL got = ::GetMessageW(&msg, nullptr, 0, 0);
        if (got == 0) {
            // WM_QUIT ends the dialog and goes on to the application's own loop.
            ::PostQuitMessage(static_cast<int>(msg.wParam));
            if (!m_ended) m_result = IDCANCEL;
            break;
        }
        if (got < 0) break;
        if (!AfxPreTranslateMessage(&msg)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
    }
    if (parentWasEnabled) ::EnableWindow(m_hWndParent, TRUE);
    if (m_hWnd) DestroyWindow();
    m_modal = false;
    return m_result;
}

void CDialog::EndDialog(int result) {
    m_result = result;
    m_ended = true;
    // A modeless dialog is only hidden; its owner destroys it.
    if (m_hWnd && !m_modal) ShowWindow(SW_HIDE);
}

BOOL CDialog::OnInitDialog() { return TRUE; }

LRESULT CDialog::HandleInitDialog(WPARAM, LPARAM) { return OnInitDialog(); }

void CDialog::OnPaint() {
    CPaintDC dc(this);
    RECT r{};
    GetClientRect(&r);
    dc.FillRect(&r, ::GetSysColorBrush(COLOR_BTNFACE));
}

LRESULT CDialog::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SETFONT: m_font = reinterpret_cast<HFONT>(wParam); return 0;
        case WM_GETFONT: return reinterpret_cast<LRESULT>(m_font);
        case DM_SETDEFID: m_defId = static_cast<UINT>(wParam); return TRUE;
        case DM_GETDEFID: return GetDefID();
        case WM_NEXTDLGCTL:
            // lParam non-zero: wParam is the control to focus; else the next (wParam 0)
            // or previous tab stop.
            if (lParam) ::SetFocus(reinterpret_cast<HWND>(wParam));
            else MoveFocus(wParam != 0);
            return 0;
        case WM_CLOSE: SendMessage(WM_COMMAND, IDCANCEL, 0); return 0;
        case WM_ACTIVATE: {
            // The control that had the focus when the dialog lost activation (to a message
            // box, say) gets it back when the dialog is active again. The default handling
            // focuses the dialog itself, so it goes first and the control after it.
            if (LOWORD(wParam) == WA_INACTIVE) {
                HWND focus = ::GetFocus();
                if (focus && ::IsChild(m_hWnd, focus)) m_lastFocus = focus;
                return CWnd::WindowProc(message, wParam, lParam);
            }
            const LRESULT r = CWnd::WindowProc(message, wParam, lParam);
            if (m_lastFocus && ::GetFocus() != m_lastFocus && ::IsChild(m_hWnd, m_lastFocus)) ::SetFocus(m_lastFocus);
            return r;
        }
        default: return CWnd::WindowProc(message, wParam, lParam);
    }
}

void CDialog::GotoDlgCtrl(CWnd* control) {
    if (control) ::SetFocus(control->m_hWnd);
}

void CDialog::MoveFocus(bool backwards) {
    std::vector<HWND> stops;
    for (HWND c = ::GetWindow(m_hWnd, GW_CHILD); c; c = ::GetWindow(c, GW_HWNDNEXT))
        if (IsTabStop(c)) stops.push_back(c);
    if (stops.empty()) return;
    HWND focus = ::GetFocus();
    auto it = std::find(stops.begin(), stops.end(), focus);
    size_t i = 0;
    if (it == stops.end()) i = backwards ? stops.size() - 1 : 0;
    else if (backwards) i = (static_cast<size_t>(it - stops.begin()) + stops.size() - 1) % stops.size();
    else i = (static_cast<size_t>(it - stops.begin()) + 1) % stops.size();
    ::SetFocus(stops[i]);
}

BOOL CDialog::PreTranslateMessage(MSG* msg) {
    if (!m_hWnd || msg->message != WM_KEYDOWN) return FALSE;
    if (msg->hwnd != m_hWnd && !::IsChild(m_hWnd, msg->hwnd)) return FALSE;
    const LRESULT code = DlgCode(msg->hwnd == m_hWnd ? nullptr : msg->hwnd, msg);
    if (code & DLGC_WANTALLKEYS) return FALSE;
    switch (msg->wParam) {
        case VK_TAB:
            if (code & DLGC_WANTTAB) return FALSE;
            MoveFocus(::GetKeyState(VK_SHIFT) < 0);
            return TRUE;
        case VK_RETURN: {
            // A focused push button is the one Enter presses; otherwise the default button.
            if (code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) {
                ::SendMessageW(msg->hwnd, BM_CLICK, 0, 0);
                return TRUE;
            }
            HWND def = ::GetDlgItem(m_hWnd, static_cast<int>(m_defId));
            if (def && !::IsWindowEnabled(def)) return TRUE;
            SendMessage(WM_COMMAND, MAKEWPARAM(m_defId, BN_CLICKED), reinterpret_cast<LPARAM>(def));
            return TRUE;
        }
        case VK_ESCAPE:
            SendMessage(WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
                        reinterpret_cast<LPARAM>(::GetDlgItem(m_hWnd, IDCANCEL)));
            return TRUE;
        default: return FALSE;
    }
}
