// CWnd, the MFC window: a C++ object attached to an HWND, with message maps that chain
// to the base class's map, run-time class tests and the pre-translation walk that the
// message loops of dialogs use.
#pragma once

#include "platform/mfc/Afx.h"
#include "platform/kivutils/KivString.h"
#include "platform/mfc/Dc.h"
#include "platform/win32/Controls.h"
#include "platform/win32/Keyboard.h"

class CWnd;

// ---- run-time classes ------------------------------------------------------------------------

struct CRuntimeClass {
    const char* m_lpszClassName;
    const CRuntimeClass* m_pBaseClass;
    BOOL IsDerivedFrom(const CRuntimeClass* base) const;
};

#define RUNTIME_CLASS(theClass) (theClass::GetThisClass())
#define DECLARE_DYNAMIC(theClass)                  \
public:                                            \
    static const CRuntimeClass* GetThisClass();    \
    const CRuntimeClass* GetRuntimeClass() const override;
#define IMPLEMENT_DYNAMIC(theClass, baseClass)                                                  \
    const CRuntimeClass* theClass::GetThisClass() {                                             \
        static const CRuntimeClass rc{#theClass, RUNTIME_CLASS(baseClass)};                    \
        return &rc;                                                                             \
    }                                                                                           \
    const CRuntimeClass* theClass::GetRuntimeClass() const { return GetThisClass(); }

// ---- message maps --------------------------------------------------------------------------

using AFX_PMSG = void (CWnd::*)();

// How an entry's handler is called.
enum AfxSig : int {
    AfxSig_end = 0,
    AfxSig_vv,    // void (), also commands
    AfxSig_lwl,   // LRESULT (WPARAM, LPARAM)
    AfxSig_vwWb,  // void (UINT, CWnd*, BOOL): WM_ACTIVATE
    AfxSig_vws,   // void (UINT, LPCWSTR): WM_SETTINGCHANGE
};

struct AFX_MSGMAP_ENTRY {
    UINT nMessage;
    UINT nCode;  // the notification code of WM_COMMAND entries
    UINT nID;
    UINT nLastID;
    int nSig;
    AFX_PMSG pfn;
};

struct AFX_MSGMAP {
    const AFX_MSGMAP* (*pfnGetBaseMap)();
    const AFX_MSGMAP_ENTRY* lpEntries;
};

namespace kiv_mfc {
// Member-function pointers of any handler signature travel in the map as AFX_PMSG;
// the entry's signature says how to call them back.
template <class To, class From>
To HandlerCast(From f) {
    static_assert(sizeof(To) == sizeof(From));
    To t;
    __builtin_memcpy(&t, &f, sizeof t);
    return t;
}
}  // namespace kiv_mfc

#define DECLARE_MESSAGE_MAP()                         \
protected:                                            \
    static const AFX_MSGMAP* GetThisMessageMap();     \
    const AFX_MSGMAP* GetMessageMap() const override; \
                                                      \
public:

#define BEGIN_MESSAGE_MAP(theClass, baseClass)                                        \
    const AFX_MSGMAP* theClass::GetMessageMap() const { return GetThisMessageMap(); } \
    const AFX_MSGMAP* theClass::GetThisMessageMap() {                                 \
        using ThisClass = theClass;                                                   \
        using TheBaseClass = baseClass;                                               \
        static const AFX_MSGMAP_ENTRY entries[] = {
#define END_MESSAGE_MAP()                                                   \
    {0, 0, 0, 0, AfxSig_end, nullptr}                                       \
    }                                                                       \
    ;                                                                       \
    static const AFX_MSGMAP map{&TheBaseClass::GetThisMessageMap, entries}; \
    return &map;                                                            \
    }

#define ON_MESSAGE(message, fn)                                                    \
    {message, 0, 0, 0, AfxSig_lwl,                                                 \
     kiv_mfc::HandlerCast<AFX_PMSG>(static_cast<LRESULT (CWnd::*)(WPARAM, LPARAM)>( \
         static_cast<LRESULT (ThisClass::*)(WPARAM, LPARAM)>(&ThisClass::fn)))},
#define ON_COMMAND(id, fn) \
    {WM_COMMAND, 0, static_cast<UINT>(id), static_cast<UINT>(id), AfxSig_vv, static_cast<AFX_PMSG>(&ThisClass::fn)},
#define ON_CONTROL(code, id, fn)                                                                           \
    {WM_COMMAND, static_cast<UINT>(code), static_cast<UINT>(id), static_cast<UINT>(id), AfxSig_vv, \
     static_cast<AFX_PMSG>(&ThisClass::fn)},
#define ON_BN_CLICKED(id, fn) ON_CONTROL(BN_CLICKED, id, fn)
#define ON_EN_CHANGE(id, fn) ON_CONTROL(EN_CHANGE, id, fn)
#define ON_LBN_SELCHANGE(id, fn) ON_CONTROL(LBN_SELCHANGE, id, fn)
#define ON_WM_PAINT() {WM_PAINT, 0, 0, 0, AfxSig_vv, static_cast<AFX_PMSG>(&ThisClass::OnPaint)},
#define ON_WM_DESTROY() {WM_DESTROY, 0, 0, 0, AfxSig_vv, static_cast<AFX_PMSG>(&ThisClass::OnDestroy)},
#define ON_WM_ACTIVATE()                                                                 \
    {WM_ACTIVATE, 0, 0, 0, AfxSig_vwWb,                                                  \
     kiv_mfc::HandlerCast<AFX_PMSG>(static_cast<void (CWnd::*)(UINT, CWnd*, BOOL)>(      \
         static_cast<void (ThisClass::*)(UINT, CWnd*, BOOL)>(&ThisClass::OnActivate)))},
#define ON_WM_SETTINGCHANGE()                                                           \
    {WM_SETTINGCHANGE, 0, 0, 0, AfxSig_vws,                                             \
     kiv_mfc::HandlerCast<AFX_PMSG>(static_cast<void (CWnd::*)(UINT, LPCWSTR)>(         \
         static_cast<void (ThisClass::*)(UINT, LPCWSTR)>(&ThisClass::OnSettingChange)))},

// ---- the window --------------------------------------------------------------------------------

class CWnd : public CObject {
public:
    CWnd() = default;
    ~CWnd() override;
    CWnd(const CWnd&) = delete;
    CWnd& operator=(const CWnd&) = delete;

    static const CRuntimeClass* GetThisClass();
    virtual const CRuntimeClass* GetRuntimeClass() const { return GetThisClass(); }
    BOOL IsKindOf(const CRuntimeClass* c) const { return GetRuntimeClass()->IsDerivedFrom(c); }

    // The CWnd attached to the window, or null (no temporary objects on this host).
    static CWnd* FromHandle(HWND window) { return FromHandlePermanent(window); }
    static CWnd* FromHandlePermanent(HWND window);
    BOOL Attach(HWND window);
    HWND Detach();
    // Attaches the dialog's control with this identifier, its own procedure kept.
    BOOL AttachDlgItem(UINT id, CWnd* parent);
    // Routes the window's messages through this object's maps, the old procedure
    // answering what they leave.
    BOOL SubclassWindow(HWND window);
    BOOL SubclassDlgItem(UINT id, CWnd* parent);
    HWND UnsubclassWindow();
    HWND GetSafeHwnd() const { return m_hWnd; }
    operator HWND() const { return m_hWnd; }

    BOOL CreateEx(DWORD exStyle, LPCWSTR className, LPCWSTR text, DWORD style, const RECT& rect, CWnd* parent,
                  UINT id);
    virtual BOOL DestroyWindow();

    virtual BOOL PreTranslateMessage(MSG* msg);
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    virtual BOOL OnCommand(WPARAM wParam, LPARAM lParam);
    virtual void PostNcDestroy() {}
    LRESULT Default();

    CWnd* GetDlgItem(int id) const;
    void GetDlgItem(int id, HWND* out) const { *out = ::GetDlgItem(m_hWnd, id); }
    CWnd* GetParent() const;
    CWnd* GetFocus() const;
    CWnd* SetFocus();
    int GetDlgCtrlID() const { return ::GetDlgCtrlID(m_hWnd); }
    void SetWindowText(LPCWSTR text) { ::SetWindowTextW(m_hWnd, text); }
#ifndef _WIN32
    // <windows.h> makes SetWindowText this very name, so only the host spells it out.
    void SetWindowTextW(LPCWSTR text) { ::SetWindowTextW(m_hWnd, text); }
#endif
    void GetWindowText(CKivStringT& text) const;
    int GetWindowText(LPWSTR text, int max) const { return ::GetWindowTextW(m_hWnd, text, max); }
    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return ::SendMessageW(m_hWnd, message, wParam, lParam);
    }
    BOOL PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return ::PostMessageW(m_hWnd, message, wParam, lParam);
    }
    BOOL EnableWindow(BOOL enable = TRUE) { return ::EnableWindow(m_hWnd, enable); }
    BOOL IsWindowEnabled() const { return ::IsWindowEnabled(m_hWnd); }
    BOOL ShowWindow(int command) { return ::ShowWindow(m_hWnd, command); }
    BOOL IsWindowVisible() const { return ::IsWindowVisible(m_hWnd); }
    void GetClientRect(LPRECT rect) const { ::GetClientRect(m_hWnd, rect); }
    void GetWindowRect(LPRECT rect) const { ::GetWindowRect(m_hWnd, rect); }
    void MoveWindow(int x, int y, int w, int h, BOOL repaint = TRUE) { ::MoveWindow(m_hWnd, x, y, w, h, repaint); }
    void SetFont(HFONT font, BOOL redraw = TRUE) { SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(font), redraw); }
    HFONT GetFont() const { return reinterpret_cast<HFONT>(SendMessage(WM_GETFONT)); }
    // Marks the window for painting; UpdateWindow sends WM_PAINT when it is marked.
    void Invalidate(BOOL erase = TRUE);
    void UpdateWindow();
    // Paints the window and its children into its surface (see RedrawWindowTree).
    void RedrawWindow() { kiv_win32::RedrawWindowTree(m_hWnd); }

    HWND m_hWnd = nullptr;

protected:
    static const AFX_MSGMAP* GetThisMessageMap();
    virtual const AFX_MSGMAP* GetMessageMap() const;
    // Looks the message up in this class's map and its bases'; TRUE when a handler ran.
    BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result);
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    BOOL OnCmdMsg(UINT id, UINT code);

    void OnPaint();
    void OnDestroy() { Default(); }
    void OnActivate(UINT, CWnd*, BOOL) { Default(); }
    void OnSettingChange(UINT, LPCWSTR) { Default(); }

    WNDPROC m_pfnSuper = nullptr;
    bool m_dirty = false;

    friend LRESULT CALLBACK AfxWndProc(HWND, UINT, WPARAM, LPARAM);

private:
    const MSG* m_current = nullptr;  // the message being handled, for Default()
};

LRESULT CALLBACK AfxWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// The window class of CWnd::CreateEx with a null class name and of dialogs.
extern const wchar_t* const kAfxWndClass;

// The application's main window. The host has no application object whose m_pMainWnd
// would hold it, so the application (or a test) names it with AfxSetMainWnd.
CWnd* AfxGetMainWnd();
void AfxSetMainWnd(CWnd* window);

// The message being handled on this thread (MFC's GetCurrentMessage).
const MSG* AfxGetCurrentMessage();
// The pre-translation walk: each CWnd from the message's window up to its top-level
// window may take the message.
BOOL AfxPreTranslateMessage(MSG* msg);
// Handles every message waiting in this thread's queue as a message loop would; FALSE
// once WM_QUIT was taken (it is posted again for the outer loop).
BOOL AfxPumpPendingMessages();

// ---- GDI object wrappers -----------------------------------------------------------------

class CGdiObject : public CObject {
public:
    ~CGdiObject() override { DeleteObject(); }
    BOOL Attach(HGDIOBJ object);
    HGDIOBJ Detach();
    BOOL DeleteObject();
    HGDIOBJ GetSafeHandle() const { return m_hObject; }
    HGDIOBJ m_hObject = nullptr;
};

class CFont : public CGdiObject {
public:
    BOOL CreateFontIndirect(const LOGFONTW* font) { return Attach(::CreateFontIndirectW(font)); }
    // Height in pixels (the em size), weight FW_NORMAL or FW_BOLD, the face name.
    BOOL CreatePixelFont(int height, LONG weight, LPCWSTR face);
    operator HFONT() const { return static_cast<HFONT>(m_hObject); }
    int GetLogFont(LOGFONTW* font) const { return ::GetObjectW(m_hObject, sizeof *font, font); }
};

class CBrush : public CGdiObject {
public:
    CBrush() = default;
    explicit CBrush(COLORREF colour) { CreateSolidBrush(colour); }
    BOOL CreateSolidBrush(COLORREF colour) { return Attach(::CreateSolidBrush(colour)); }
    operator HBRUSH() const { return static_cast<HBRUSH>(m_hObject); }
};

// The device context of a window's paint, released at the end of the scope.
class CPaintDC : public CDC {
public:
    explicit CPaintDC(CWnd* window);
    ~CPaintDC() override;

    PAINTSTRUCT m_ps{};

private:
    HWND window_;
};

// The device context of a window, released at the end of the scope.
class CClientDC : public CDC {
public:
    explicit CClientDC(CWnd* window);
    ~CClientDC() override;

private:
    HWND window_;
};
