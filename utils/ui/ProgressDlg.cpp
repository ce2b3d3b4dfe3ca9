// The progress dialog and its bar. The dialog owns the worker thread of RunModal and
// waits for it before it returns, so the job never outlives the dialog it posts to.
#include "utils/ui/ProgressDlg.h"

#include <algorithm>

#include "platform/kivutils/Xlate.h"
#include "utils/ui/DlgSupport.h"

namespace {

constexpr const wchar_t* kProgressTemplate = L"#KivProgress";

struct Bar {
    int low = 0, high = 100, pos = 0;
};

LRESULT CALLBACK BarProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) SetWindowLongPtrW(w, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(new Bar));
    auto* bar = reinterpret_cast<Bar*>(GetWindowLongPtrW(w, GWLP_USERDATA));
    if (!bar) return DefWindowProcW(w, message, wParam, lParam);
    switch (message) {
        case WM_NCDESTROY:
            SetWindowLongPtrW(w, GWLP_USERDATA, 0);
            delete bar;
            return DefWindowProcW(w, message, wParam, lParam);
        case PBM_SETRANGE32:
            bar->low = static_cast<int>(wParam);
            bar->high = std::max(bar->low + 1, static_cast<int>(lParam));
            bar->pos = std::clamp(bar->pos, bar->low, bar->high);
            break;
        case PBM_SETPOS: {
            const int old = bar->pos;
            bar->pos = std::clamp(static_cast<int>(wParam), bar->low, bar->high);
            if (old == bar->pos) return old;
            break;
        }
        case PBM_GETPOS: return bar->pos;
        case WM_PAINT: ValidateRect(w, nullptr); break;  // painted whole below
        default: return DefWindowProcW(w, message, wParam, lParam);
    }
    HDC dc = GetDC(w);
    RECT r{};
    GetClientRect(w, &r);
    kiv_ui::FillColour(dc, r, RGB(255, 255, 255));
    const int filled = static_cast<int>(static_cast<long long>(r.right - 2) * (bar->pos - bar->low) / (bar->high - bar->low));
    kiv_ui::FillColour(dc, RECT{1, 1, 1 + filled, r.bottom - 1}, RGB(40, 140, 60));
    kiv_ui::DrawFrame(dc, r, RGB(110, 124, 140));
    CKivStringT percent;
    percent.Format(L"%d %%", static_cast<int>(100LL * (bar->pos - bar->low) / (bar->high - bar->low)));
    HGDIOBJ old = SelectObject(dc, kiv_ui::BoldFont());
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, RGB(16, 32, 64));
    DrawTextW(dc, percent, -1, &r, DT_SINGLELINE | DT_CENTER | DT_VCENTER);
    SelectObject(dc, old);
    ReleaseDC(w, dc);
    return 0;
}

}  // namespace

BEGIN_MESSAGE_MAP(CKivProgressDlg, CDlgBase)
    ON_MESSAGE(WM_KIV_PROGRESS, OnProgress)
    ON_MESSAGE(WM_KIV_PROGRESS_DONE, OnDone)
END_MESSAGE_MAP()

CKivProgressDlg::CKivProgressDlg(LPCWSTR caption, LPCWSTR text, int range, CWnd* parent)
    : CDlgBase(kProgressTemplate, parent), m_caption(caption ? caption : L""), m_text(text ? text : L""),
      m_range(std::max(1, range)) {
    ShowCancelButton();
    HideMenuButton();
    m_cancelEvent = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

CKivProgressDlg::~CKivProgressDlg() {
    if (m_cancelEvent) ::CloseHandle(m_cancelEvent);
}

void CKivProgressDlg::RegisterTemplate() const {
    WNDCLASSW wc{};
    wc.lpfnWndProc = &BarProc;
    wc.lpszClassName = kProgressBarClass;
    ::RegisterClassW(&wc);
    CDialogTemplate t;
    t.caption = m_caption.GetString();
    t.rect = RECT{0, 0, 240, 130};
    t.items.push_back({L"STATIC", m_text.GetString(), IDC_PROGRESS_TEXT, SS_LEFT, RECT{10, 38, 230, 74}});
    t.items.push_back({kProgressBarClass, L"", IDC_PROGRESS_BAR, 0, RECT{10, 80, 230, 104}});
    AfxRegisterDialogTemplate(kProgressTemplate, t);
}

BOOL CKivProgressDlg::Create(CWnd* parent) {
    RegisterTemplate();
    return CDlgBase::Create(kProgressTemplate, parent);
}

BOOL CKivProgressDlg::OnInitDialog() {
    CDlgBase::OnInitDialog();
    ::SendMessageW(::GetDlgItem(m_hWnd, IDC_PROGRESS_BAR), PBM_SETRANGE32, 0, m_range);
    if (m_job) {
        // The window's handle is taken now: the dialog's members change on this thread
        // while the job runs, the handle does not.
        m_jobWindow = m_hWnd;
        m_worker = ::CreateThread(nullptr, 0, [](LPVOID p) -> DWORD {
            auto* d = static_cast<CKivProgressDlg*>(p);
            (*d->m_job)(*d);
            // The dialog closes once the job has returned, whether or not it said so.
            PostDone(d->m_jobWindow);
            return 0;
        }, this, 0, nullptr);
        if (!m_worker) PostDone(m_hWnd);
    }
    return FALSE;
}

INT_PTR CKivProgressDlg::RunModal(const std::function<void(CKivProgressDlg&)>& job) {
    RegisterTemplate();
    m_job = &job;
    const INT_PTR r = CDlgBase::DoModal();
    if (m_worker) {
        ::WaitForSingleObject(m_worker, INFINITE);
        ::CloseHandle(m_worker);
        m_worker = nullptr;
    }
    m_job = nullptr;
    return r;
}

BOOL CKivProgressDlg::PostProgress(HWND dialog, int position) {
    return ::PostMessageW(dialog, WM_KIV_PROGRESS, static_cast<WPARAM>(std::max(0, position)), 0);
}

BOOL CKivProgressDlg::PostDone(HWND dialog) { return ::PostMessageW(dialog, WM_KIV_PROGRESS_DONE, 0, 0); }

int CKivProgressDlg::GetPos() const {
    return m_hWnd ? static_cast<int>(::SendMessageW(::GetDlgItem(m_hWnd, IDC_PROGRESS_BAR), PBM_GETPOS, 0, 0)) : 0;
}

void CKivProgressDlg::RequestCancel() {
    if (m_cancelled.exchange(true)) return;
    ::SetEvent(m_cancelEvent);
    SetDlgItemText(IDC_PROGRESS_TEXT, Xlate(L"Cancelling..."));
}

int CKivProgressDlg::EscapeKey() {
    RequestCancel();
    return 1;
}

LRESULT CKivProgressDlg::OnProgress(WPARAM wParam, LPARAM) {
    ::SendMessageW(::GetDlgItem(m_hWnd, IDC_PROGRESS_BAR), PBM_SETPOS, wParam, 0);
    return 0;
}

LRESULT CKivProgressDlg::OnDone(WPARAM, LPARAM) {
    if (m_finished) return 0;
    m_finished = true;
    m_result = IsCancelled() ? IDCANCEL : IDOK;
    EndDialog(m_result);
    return 0;
}
