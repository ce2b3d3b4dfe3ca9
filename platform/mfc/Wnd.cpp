// CWnd: the handle map, the window procedure that routes messages through message maps,
// subclassing, painting and the message pump that dialogs share.
#include "platform/mfc/Wnd.h"

#include <unordered_map>

#include "platform/win32/GdiText.h"
#include "platform/win32/WindowHooks.h"

const wchar_t* const kAfxWndClass = L"AfxWnd";

namespace {

// The user-interface thread's windows; each window belongs to the thread that made it.
thread_local std::unordered_map<HWND, CWnd*> t_handles;
thread_local CWnd* t_creating = nullptr;
thread_local const MSG* t_current = nullptr;

void RegisterAfxClass() {
    WNDCLASSW wc{};
    wc.lpfnWndProc = &AfxWndProc;
    wc.lpszClassName = kAfxWndClass;
    RegisterClassW(&wc);  // refused after the first time, which is fine
}

}  // namespace

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass* base) const {
    for (const CRuntimeClass* c = this; c; c = c->m_pBaseClass)
        if (c == base) return TRUE;
    return FALSE;
}

const CRuntimeClass* CWnd::GetThisClass() {
    static const CRuntimeClass rc{"CWnd", nullptr};
    return &rc;
}

const AFX_MSGMAP* CWnd::GetThisMessageMap() {
    static const AFX_MSGMAP_ENTRY entries[] = {{0, 0, 0, 0, AfxSig_end, nullptr}};
    static const AFX_MSGMAP map{nullptr, entries};
    return &map;
}
const AFX_MSGMAP* CWnd::GetMessageMap() const { return GetThisMessageMap(); }

CWnd::~CWnd() {
    if (m_hWnd) {
        // A window outliving its object would call into freed memory: it goes first.
        HWND w = m_hWnd;
        if (m_pfnSuper) UnsubclassWindow();
        else Detach();
        if (::IsWindow(w)) ::DestroyWindow(w);
    }
}

CWnd* CWnd::FromHandlePermanent(HWND window) {
    auto it = t_handles.find(window);
    return it == t_handles.end() ? nullptr : it->second;
}

BOOL CWnd::Attach(HWND window) {
    if (!window || m_hWnd || FromHandlePermanent(window)) return FALSE;
    m_hWnd = window;
    t_handles[window] = this;
    return TRUE;
}

HWND CWnd::Detach() {
    HWND w = m_hWnd;
    if (w) t_handles.erase(w);
    m_hWnd = nullptr;
    return w;
}

BOOL CWnd::SubclassWindow(HWND window) {
    if (!Attach(window)) return FALSE;
    m_pfnSuper = reinterpret_cast<WNDPROC>(::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&AfxWndProc)));
    return TRUE;
}

BOOL CWnd::AttachDlgItem(UINT id, CWnd* parent) {
    HWND item = parent ? ::GetDlgItem(parent->m_hWnd, static_cast<int>(id)) : nullptr;
    return item ? Attach(item) : FALSE;
}

BOOL CWnd::SubclassDlgItem(UINT id, CWnd* parent) {
    HWND item = parent ? ::GetDlgItem(parent->m_hWnd, static_cast<int>(id)) : nullptr;
    return item ? SubclassWindow(item) : FALSE;
}

HWND CWnd::UnsubclassWindow() {
    if (m_pfnSuper && ::IsWindow(m_hWnd))
        ::SetWindowLongPtrW(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_pfnSuper));
    m_pfnSuper = nullptr;
    return Detach();
}

BOOL CWnd::CreateEx(DWORD exStyle, LPCWSTR className, LPCWSTR text, DWORD style, const RECT& rect, CWnd* parent,
                    UINT id) {
    RegisterAfxClass();
    kiv_win32::RegisterStandardControls();
    const bool ours = !className || std::wstring_view(className) == kAfxWndClass;
    if (ours) t_creating = this;
    HWND w = ::CreateWindowExW(exStyle, ours ? kAfxWndClass : className, text, style, rect.left, rect.top,
                               rect.right - rect.left, rect.bottom - rect.top, parent ? parent->m_hWnd : nullptr,
                               reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), nullptr, nullptr);
    t_creating = nullptr;
    if (!w) return FALSE;
    if (!ours) SubclassWindow(w);
    return TRUE;
}

BOOL CWnd::DestroyWindow() { return m_hWnd ? ::DestroyWindow(m_hWnd) : FALSE; }

BOOL CWnd::PreTranslateMessage(MSG*) { return FALSE; }

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    if (!OnWndMsg(message, wParam, lParam, &result)) result = DefWindowProc(message, wParam, lParam);
    return result;
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (m_pfnSuper) return ::CallWindowProcW(m_pfnSuper, m_hWnd, message, wParam, lParam);
    return ::DefWindowProcW(m_hWnd, message, wParam, lParam);
}

LRESULT CWnd::Default() {
    const MSG* m = m_current;
    return m ? DefWindowProc(m->message, m->wParam, m->lParam) : 0;
}

BOOL CWnd::OnCmdMsg(UINT id, UINT code) {
    for (const AFX_MSGMAP* map = GetMessageMap(); map; map = map->pfnGetBaseMap ? map->pfnGetBaseMap() : nullptr)
        for (const AFX_MSGMAP_ENTRY* e = map->lpEntries; e->nSig != AfxSig_end; ++e)
            if (e->nMessage == WM_COMMAND && e->nCode == code && id >= e->nID && id <= e->nLastID) {
                (this->*(e->pfn))();
                return TRUE;
            }
    return FALSE;
}

BOOL CWnd::OnCommand(WPARAM wParam, LPARAM) { return OnCmdMsg(LOWORD(wParam), HIWORD(wParam)); }

BOOL CWnd::OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    if (message == WM_COMMAND) {
        if (!OnCommand(wParam, lParam)) return FALSE;
        *result = 1;
        return TRUE;
    }
    for (const AFX_MSGMAP* map = GetMessageMap(); map; map = map->pfnGetBaseMap ? map->pfnGetBaseMap() : nullptr) {
        for (const AFX_MSGMAP_ENTRY* e = map->lpEntries; e->nSig != AfxSig_end; ++e) {
            if (e->nMessage != message) continue;
            switch (e->nSig) {
                case AfxSig_vv: (this->*(e->pfn))(); *result = 0; break;
                case AfxSig_lwl: {
                    auto f = kiv_mfc::HandlerCast<LRESULT (CWnd::*)(WPARAM, LPARAM)>(e->pfn);
                    *result = (this->*f)(wParam, lParam);
                    break;
                }
                case AfxSig_vwWb: {
                    auto f = kiv_mfc::HandlerCast<void (CWnd::*)(UINT, CWnd*, BOOL)>(e->pfn);
                    (this->*f)(LOWORD(wParam), FromHandlePermanent(reinterpret_cast<HWND>(lParam)), HIWORD(wParam));
                    *result = 0;
                    break;
                }
                case AfxSig_vws: {
                    auto f = kiv_mfc::HandlerCast<void (CWnd::*)(UINT, LPCWSTR)>(e->pfn);
                    (this->*f)(static_cast<UINT>(wParam), reinterpret_cast<LPCWSTR>(lParam));
                    *result = 0;
                    break;
                }
                default: continue;
            }
            return TRUE;
        }
    }
    return FALSE;
}

LRESULT CALLBACK AfxWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    CWnd* wnd = CWnd::FromHandlePermanent(window);
    if (!wnd && t_creating) {
        wnd = t_creating;
        t_creating = nullptr;
        wnd->Attach(window);
    }
    if (!wnd) return ::DefWindowProcW(window, message, wParam, lParam);
    MSG m{window, message, wParam, lParam, 0, {}};
    const MSG* outerThread = t_current;
    const MSG* outerWnd = wnd->m_current;
    t_current = &m;
    wnd->m_current = &m;
    LRESULT r = wnd->WindowProc(message, wParam, lParam);
    t_current = outerThread;
    if (message == WM_NCDESTROY) {
        if (wnd->m_pfnSuper) wnd->UnsubclassWindow();
        else wnd->Detach();
        wnd->m_current = nullptr;
        wnd->PostNcDestroy();  // may delete the object
        return r;
    }
    // The window may have been destroyed while it handled the message, and an object
    // that owns itself deleted with it: only a window still attached is touched again.
    if (CWnd::FromHandlePermanent(window) == wnd) wnd->m_current = outerWnd;
    return r;
}

const MSG* AfxGetCurrentMessage() { return t_current; }

namespace {
thread_local CWnd* t_mainWnd = nullptr;
}
CWnd* AfxGetMainWnd() { return t_mainWnd && ::IsWindow(t_mainWnd->m_hWnd) ? t_mainWnd : nullptr; }
void AfxSetMainWnd(CWnd* window) { t_mainWnd = window; }

CWnd* CWnd::GetDlgItem(int id) const { return FromHandlePermanent(::GetDlgItem(m_hWnd, id)); }
CWnd* CWnd::GetParent() const { return FromHandlePermanent(::GetParent(m_hWnd)); }
CWnd* CWnd::GetFocus() const { return FromHandlePermanent(::GetFocus()); }
CWnd* CWnd::SetFocus() { return FromHandlePermanent(::SetFocus(m_hWnd)); }

void CWnd::GetWindowText(CKivStringT& text) const {
    const int n = ::GetWindowTextLengthW(m_hWnd);
    std::wstring buffer(static_cast<size_t>(n) + 1, L'\0');
    ::GetWindowTextW(m_hWnd, buffer.data(), n + 1);
    text = buffer.c_str();
}

void CWnd::Invalidate(BOOL) {
    m_dirty = true;
    kiv_win32::detail::NotifyWindowChange(m_hWnd, kiv_win32::WindowChange::Invalidated);
}

void CWnd::UpdateWindow() {
    if (!m_dirty || !m_hWnd) return;
    m_dirty = false;
    SendMessage(WM_PAINT);
}

void CWnd::OnPaint() { CPaintDC dc(this); }

BOOL AfxPreTranslateMessage(MSG* msg) {
    for (HWND w = msg->hwnd; w; w = ::GetParent(w)) {
        if (CWnd* wnd = CWnd::FromHandlePermanent(w); wnd && wnd->PreTranslateMessage(msg)) return TRUE;
        if (!(::GetWindowLongW(w, GWL_STYLE) & WS_CHILD)) break;  // stop at the top-level window
    }
    return FALSE;
}

BOOL AfxPumpPendingMessages() {
    MSG msg{};
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) {
            ::PostQuitMessage(static_cast<int>(msg.wParam));
            return FALSE;
        }
        if (!AfxPreTranslateMessage(&msg)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
    }
    return TRUE;
}

// ---- GDI objects --------------------------------------------------------------------------

BOOL CGdiObject::Attach(HGDIOBJ object) {
    if (!object || m_hObject) return FALSE;
    m_hObject = object;
    return TRUE;
}

HGDIOBJ CGdiObject::Detach() {
    HGDIOBJ o = m_hObject;
    m_hObject = nullptr;
    return o;
}

BOOL CGdiObject::DeleteObject() {
    if (!m_hObject) return FALSE;
    return ::DeleteObject(Detach());
}

BOOL CFont::CreatePixelFont(int height, LONG weight, LPCWSTR face) {
    LOGFONTW lf = kiv_win32::DefaultFont(false);
    lf.lfHeight = -height;
    lf.lfWeight = weight;
    if (face) {
        std::wstring_view f(face);
        const size_t n = std::min<size_t>(f.size(), LF_FACESIZE - 1);
        f.copy(lf.lfFaceName, n);
        lf.lfFaceName[n] = L'\0';
    }
    return CreateFontIndirect(&lf);
}

// BeginPaint and EndPaint, not GetDC: where the system keeps update regions, EndPaint is
// what validates the window, and without it WM_PAINT would come again for ever.
CPaintDC::CPaintDC(CWnd* window) : window_(window ? window->m_hWnd : nullptr) { Attach(::BeginPaint(window_, &m_ps)); }
CPaintDC::~CPaintDC() {
    Detach();
    ::EndPaint(window_, &m_ps);
}
CClientDC::CClientDC(CWnd* window) : window_(window ? window->m_hWnd : nullptr) { Attach(::GetDC(window_)); }
CClientDC::~CClientDC() { ::ReleaseDC(window_, Detach()); }
