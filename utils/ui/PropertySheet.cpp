// The property sheet and its pages: making the pages inside the sheet, the tabs, and
// switching between pages by key and by tap.
#include "utils/ui/PropertySheet.h"

#include "platform/kivutils/Xlate.h"
#include "utils/ui/DlgSupport.h"

namespace {
constexpr const wchar_t* kTabsClass = L"KivSheetTabs";
constexpr const wchar_t* kSheetTemplate = L"#KivPropertySheet";
}  // namespace

// ---- the page -----------------------------------------------------------------------------

IMPLEMENT_DYNAMIC(CKivPropertyPage, CDlgBase)

BEGIN_MESSAGE_MAP(CKivPropertyPage, CDlgBase)
    ON_WM_PAINT()
END_MESSAGE_MAP()

CKivPropertyPage::CKivPropertyPage(LPCWSTR templateName, LPCWSTR title)
    : CDlgBase(templateName, nullptr), m_title(title ? title : L""), m_templateName(templateName) {
    SetChildOfDialog(true);
    // The sheet's title bar serves its pages.
    HideTitle();
    HideMenuButton();
    HideCloseButton();
}

BOOL CKivPropertyPage::OnInitDialog() {
    CDlgBase::OnInitDialog();
    ::ShowWindow(GetTitlebar().GetSafeHwnd(), SW_HIDE);
    // The sheet stands on the top-most stack for its pages.
    kiv_ui::RemoveTopMostDialog(m_hWnd);
    return FALSE;
}

// A page is background only; the title bar is the sheet's.
void CKivPropertyPage::OnPaint() {
    CPaintDC dc(this);
    RECT r{};
    GetClientRect(&r);
    ::FillRect(dc, &r, ::GetSysColorBrush(COLOR_BTNFACE));
}

void CKivPropertyPage::OnOK() {
    if (m_sheet) m_sheet->SendMessage(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
}

void CKivPropertyPage::OnCancel() {
    if (m_sheet) m_sheet->SendMessage(WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
}

// ---- the sheet ----------------------------------------------------------------------------

IMPLEMENT_DYNAMIC(CKivPropertySheet, CDlgBase)

CKivPropertySheet::CKivPropertySheet(LPCWSTR caption, CWnd* parent)
    : CDlgBase(kSheetTemplate, parent), m_caption(caption ? caption : L"") {
    ShowOkButton();
    ShowCancelButton();
}

CKivPropertySheet::~CKivPropertySheet() {
    // The tab strip outlives this part of the object when the base class destroys the
    // window; it must not reach back into a sheet that is no longer one.
    if (m_tabs && ::IsWindow(m_tabs)) ::SetWindowLongPtrW(m_tabs, GWLP_USERDATA, 0);
    for (CKivPropertyPage* p : m_pages)
        if (p->m_hWnd && ::IsWindow(p->m_hWnd)) p->DestroyWindow();
}

void CKivPropertySheet::AddPage(CKivPropertyPage* page) {
    if (!page) return;
    page->m_sheet = this;
    m_pages.push_back(page);
}

CKivPropertyPage* CKivPropertySheet::GetPage(int index) const {
    return index >= 0 && index < GetPageCount() ? m_pages[static_cast<size_t>(index)] : nullptr;
}

void CKivPropertySheet::RegisterTemplate() const {
    CDialogTemplate t;
    t.caption = m_caption.GetString();
    t.rect = RECT{0, 0, 240, 320};
    AfxRegisterDialogTemplate(kSheetTemplate, t);
}

BOOL CKivPropertySheet::Create(CWnd* parent) {
    RegisterTemplate();
    return CDlgBase::Create(kSheetTemplate, parent);
}

INT_PTR CKivPropertySheet::DoModal() {
    RegisterTemplate();
    return CDlgBase::DoModal();
}

BOOL CKivPropertySheet::OnInitDialog() {
    CDlgBase::OnInitDialog();
    RECT client{};
    GetClientRect(&client);
    WNDCLASSW wc{};
    wc.lpfnWndProc = &TabsProc;
    wc.lpszClassName = kTabsClass;
    ::RegisterClassW(&wc);
    m_tabs = ::CreateWindowExW(0, kTabsClass, L"", WS_CHILD | WS_VISIBLE, 0, kTitlebarHeight, client.right, kSheetTabHeight,
                               m_hWnd, nullptr, nullptr, nullptr);
    ::SetWindowLongPtrW(m_tabs, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    const int top = kTitlebarHeight + kSheetTabHeight;
    for (CKivPropertyPage* p : m_pages) {
        p->m_hWndParent = m_hWnd;
        if (!p->Create(p->m_templateName, this)) continue;
        p->MoveWindow(0, top, client.right, client.bottom - top);
        p->ShowWindow(SW_HIDE);
    }
    m_active = -1;
    SetActivePage(0);
    return FALSE;
}

BOOL CKivPropertySheet::SetActivePage(int index) {
    CKivPropertyPage* next = GetPage(index);
    if (!next || !next->m_hWnd) return FALSE;
    if (index == m_active) return TRUE;
    if (CKivPropertyPage* current = GetActivePage()) {
        if (!current->OnKillActive()) return FALSE;
        current->ShowWindow(SW_HIDE);
    }
    m_active = index;
    next->ShowWindow(SW_SHOW);
    next->OnSetActive();
    // The first tab stop of the page takes the focus, as when a dialog opens.
    HWND first = nullptr;
    for (HWND c = ::GetWindow(next->m_hWnd, GW_CHILD); c && !first; c = ::GetWindow(c, GW_HWNDNEXT))
        if ((::GetWindowLongW(c, GWL_STYLE) & (WS_TABSTOP | WS_VISIBLE)) == (WS_TABSTOP | WS_VISIBLE) && ::IsWindowEnabled(c)) first = c;
    ::SetFocus(first ? first : next->m_hWnd);
    PaintTabs();
    return TRUE;
}

bool CKivPropertySheet::FocusTakesArrows() const {
    HWND focus = ::GetFocus();
    return focus && focus != m_hWnd && (::SendMessageW(focus, WM_GETDLGCODE, 0, 0) & (DLGC_WANTARROWS | DLGC_WANTALLKEYS));
}

int CKivPropertySheet::ArrowLeftKey() {
    if (FocusTakesArrows() || m_active <= 0) return 0;
    SetActivePage(m_active - 1);
    return 1;
}

int CKivPropertySheet::ArrowRightKey() {
    if (FocusTakesArrows() || m_active + 1 >= GetPageCount()) return 0;
    SetActivePage(m_active + 1);
    return 1;
}

void CKivPropertySheet::OnOK() {
    if (CKivPropertyPage* current = GetActivePage(); current && !current->OnKillActive()) return;
    for (int i = 0; i < GetPageCount(); ++i)
        if (m_pages[static_cast<size_t>(i)]->m_hWnd && !m_pages[static_cast<size_t>(i)]->OnApply()) {
            SetActivePage(i);
            return;
        }
    CDlgBase::OnOK();
}

RECT CKivPropertySheet::GetTabRect(int index) const {
    RECT bar{};
    if (m_tabs) ::GetClientRect(m_tabs, &bar);
    const int n = GetPageCount();
    if (index < 0 || index >= n || bar.right <= 0) return RECT{};
    const int width = static_cast<int>(bar.right) / n;
    return RECT{index * width, 0, index + 1 == n ? bar.right : (index + 1) * width, kSheetTabHeight};
}

void CKivPropertySheet::PaintTabs() {
    if (!m_tabs) return;
    HDC dc = ::GetDC(m_tabs);
    RECT bar{};
    ::GetClientRect(m_tabs, &bar);
    kiv_ui::FillColour(dc, bar, RGB(200, 210, 222));
    HGDIOBJ oldFont = ::SelectObject(dc, GetFont());
    ::SetBkMode(dc, TRANSPARENT);
    for (int i = 0; i < GetPageCount(); ++i) {
        RECT t = GetTabRect(i);
        const bool active = i == m_active;
        RECT face{t.left + 1, t.top + (active ? 1 : 3), t.right - 1, t.bottom};
        kiv_ui::FillColour(dc, face, active ? ::GetSysColor(COLOR_BTNFACE) : RGB(226, 232, 240));
        kiv_ui::DrawFrame(dc, RECT{face.left, face.top, face.right, face.bottom + (active ? 1 : 0)}, RGB(110, 124, 140));
        if (active) kiv_ui::FillColour(dc, RECT{face.left + 1, face.bottom - 1, face.right - 1, face.bottom}, ::GetSysColor(COLOR_BTNFACE));
        ::SetTextColor(dc, active ? RGB(16, 32, 64) : RGB(70, 80, 96));
        const CKivStringT title = Xlate(m_pages[static_cast<size_t>(i)]->GetTitle());
        ::DrawTextW(dc, title, -1, &face, DT_SINGLELINE | DT_CENTER | DT_VCENTER | DT_NOPREFIX);
    }
    kiv_ui::FillColour(dc, RECT{bar.left, bar.bottom - 1, bar.right, bar.bottom}, RGB(110, 124, 140));
    if (m_active >= 0) {
        const RECT t = GetTabRect(m_active);
        kiv_ui::FillColour(dc, RECT{t.left + 2, bar.bottom - 1, t.right - 2, bar.bottom}, ::GetSysColor(COLOR_BTNFACE));
    }
    ::SelectObject(dc, oldFont);
    ::ReleaseDC(m_tabs, dc);
}

LRESULT CALLBACK CKivPropertySheet::TabsProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* sheet = reinterpret_cast<CKivPropertySheet*>(::GetWindowLongPtrW(w, GWLP_USERDATA));
    if (!sheet) return ::DefWindowProcW(w, message, wParam, lParam);
    switch (message) {
        case WM_PAINT: sheet->PaintTabs(); ::ValidateRect(w, nullptr); return 0;
        case WM_LBUTTONUP: {
            const POINT p{static_cast<short>(LOWORD(static_cast<DWORD_PTR>(lParam))), static_cast<short>(HIWORD(static_cast<DWORD_PTR>(lParam)))};
            for (int i = 0; i < sheet->GetPageCount(); ++i) {
                const RECT t = sheet->GetTabRect(i);
                if (p.x >= t.left && p.x < t.right && p.y >= t.top && p.y < t.bottom) {
                    sheet->SetActivePage(i);
                    break;
                }
            }
            return 0;
        }
        case WM_NCDESTROY:
            sheet->m_tabs = nullptr;
            return ::DefWindowProcW(w, message, wParam, lParam);
        default: return ::DefWindowProcW(w, message, wParam, lParam);
    }
}
