// Windows and messages of the Win32 subset: window classes; windows with parent,
// identifier, text, style, enabled and visible state, position; one message queue per
// thread with posted and sent messages; input focus.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Win32Types.h"

// ---- messages ---------------------------------------------------------------------------
constexpr UINT WM_NULL = 0x0000;
constexpr UINT WM_CREATE = 0x0001;
constexpr UINT WM_DESTROY = 0x0002;
constexpr UINT WM_MOVE = 0x0003;
constexpr UINT WM_SIZE = 0x0005;
constexpr UINT WM_ACTIVATE = 0x0006;
constexpr UINT WM_SETFOCUS = 0x0007;
constexpr UINT WM_KILLFOCUS = 0x0008;
constexpr UINT WM_ENABLE = 0x000A;
constexpr UINT WM_SETTEXT = 0x000C;
constexpr UINT WM_GETTEXT = 0x000D;
constexpr UINT WM_GETTEXTLENGTH = 0x000E;
constexpr UINT WM_PAINT = 0x000F;
constexpr UINT WM_CLOSE = 0x0010;
constexpr UINT WM_QUIT = 0x0012;
constexpr UINT WM_ERASEBKGND = 0x0014;
constexpr UINT WM_SHOWWINDOW = 0x0018;
constexpr UINT WM_SETTINGCHANGE = 0x001A;
constexpr UINT WM_CANCELMODE = 0x001F;
constexpr UINT WM_NEXTDLGCTL = 0x0028;
constexpr UINT WM_NOTIFY = 0x004E;
constexpr UINT WM_NCCREATE = 0x0081;
constexpr UINT WM_NCDESTROY = 0x0082;
constexpr UINT WM_KEYFIRST = 0x0100;
constexpr UINT WM_KEYDOWN = 0x0100;
constexpr UINT WM_KEYUP = 0x0101;
constexpr UINT WM_CHAR = 0x0102;
constexpr UINT WM_SYSKEYDOWN = 0x0104;
constexpr UINT WM_SYSKEYUP = 0x0105;
constexpr UINT WM_KEYLAST = 0x0108;
constexpr UINT WM_INITDIALOG = 0x0110;
constexpr UINT WM_COMMAND = 0x0111;
constexpr UINT WM_SYSCOMMAND = 0x0112;
constexpr UINT WM_TIMER = 0x0113;
constexpr UINT WM_MOUSEMOVE = 0x0200;
constexpr UINT WM_LBUTTONDOWN = 0x0201;
constexpr UINT WM_LBUTTONUP = 0x0202;
constexpr WPARAM MK_LBUTTON = 0x0001;  // in a mouse message's wParam: the button is down
constexpr UINT WM_USER = 0x0400;
constexpr UINT WM_APP = 0x8000;

constexpr WPARAM SIZE_RESTORED = 0;

// WM_ACTIVATE: the low word of wParam says how the window changes; lParam is the window
// on the other side of the change.
constexpr WORD WA_INACTIVE = 0;
constexpr WORD WA_ACTIVE = 1;
constexpr WORD WA_CLICKACTIVE = 2;

// ---- styles and commands -------------------------------------------------------------------
constexpr DWORD WS_OVERLAPPED = 0x00000000;
constexpr DWORD WS_POPUP = 0x80000000;
constexpr DWORD WS_CHILD = 0x40000000;
constexpr DWORD WS_VISIBLE = 0x10000000;
constexpr DWORD WS_DISABLED = 0x08000000;
constexpr DWORD WS_CLIPSIBLINGS = 0x04000000;
constexpr DWORD WS_CLIPCHILDREN = 0x02000000;
constexpr DWORD WS_CAPTION = 0x00C00000;
constexpr DWORD WS_BORDER = 0x00800000;
constexpr DWORD WS_DLGFRAME = 0x00400000;
constexpr DWORD WS_VSCROLL = 0x00200000;
constexpr DWORD WS_HSCROLL = 0x00100000;
constexpr DWORD WS_SYSMENU = 0x00080000;
constexpr DWORD WS_GROUP = 0x00020000;
constexpr DWORD WS_TABSTOP = 0x00010000;
constexpr DWORD WS_EX_TOPMOST = 0x00000008;

constexpr int SW_HIDE = 0;
constexpr int SW_SHOWNORMAL = 1;
constexpr int SW_SHOWNOACTIVATE = 4;
constexpr int SW_SHOW = 5;
constexpr int SW_MINIMIZE = 6;
constexpr int SW_SHOWNA = 8;
constexpr int SW_RESTORE = 9;

constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000);

constexpr int GWL_WNDPROC = -4;
constexpr int GWL_HINSTANCE = -6;
constexpr int GWL_HWNDPARENT = -8;
constexpr int GWL_ID = -12;
constexpr int GWL_STYLE = -16;
constexpr int GWL_EXSTYLE = -20;
constexpr int GWL_USERDATA = -21;

constexpr UINT PM_NOREMOVE = 0x0000;
constexpr UINT PM_REMOVE = 0x0001;

#define HWND_BROADCAST (reinterpret_cast<HWND>(static_cast<LONG_PTR>(0xFFFF)))

constexpr DWORD ERROR_INVALID_INDEX = 1413;
constexpr DWORD ERROR_CONTROL_ID_NOT_FOUND = 1421;
constexpr DWORD ERROR_TLW_WITH_WSCHILD = 1406;
constexpr DWORD ERROR_INVALID_THREAD_ID = 1444;

// ---- structures ---------------------------------------------------------------------------------
using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

struct WNDCLASSW {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName;
};

struct CREATESTRUCTW {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCWSTR lpszName;
    LPCWSTR lpszClass;
    DWORD dwExStyle;
};

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
using LPMSG = MSG*;

// ---- classes and windows -----------------------------------------------------------------------

// Class names are compared without regard to case; a second registration of a name
// fails with ERROR_CLASS_ALREADY_EXISTS.
ATOM RegisterClassW(const WNDCLASSW* windowClass);
BOOL UnregisterClassW(LPCWSTR className, HINSTANCE instance);
int GetClassNameW(HWND window, LPWSTR name, int maxCount);

// Sends WM_NCCREATE and WM_CREATE to the new window (with its CREATESTRUCTW); a child
// (WS_CHILD) takes `menu` as its control identifier. The window belongs to the calling
// thread: its posted messages go to that thread's queue.
HWND CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR windowName, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter);
inline HWND CreateWindowW(LPCWSTR className, LPCWSTR windowName, DWORD style, int x, int y, int width, int height,
                          HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter) {
    return CreateWindowExW(0, className, windowName, style, x, y, width, height, parent, menu, instance, parameter);
}
// Only the owning thread may destroy a window. Its owned windows are destroyed first
// (each wholly), then the window gets WM_DESTROY, then its children are destroyed, then
// it gets WM_NCDESTROY and its handle becomes invalid. Messages still queued for it are
// dropped.
BOOL DestroyWindow(HWND window);
BOOL IsWindow(HWND window);
BOOL IsChild(HWND parent, HWND window);
// The first top-level window whose class and title (each compared without regard to
// case; null matches any) match.
HWND FindWindowW(LPCWSTR className, LPCWSTR windowName);
// The parent of a child window, the owner of a WS_POPUP window, else null.
HWND GetParent(HWND window);
HWND GetDlgItem(HWND dialog, int id);
constexpr UINT GW_HWNDNEXT = 2;
constexpr UINT GW_HWNDPREV = 3;
constexpr UINT GW_OWNER = 4;
constexpr UINT GW_CHILD = 5;
// GW_CHILD: the first child (creation order); GW_HWNDNEXT / GW_HWNDPREV: the sibling
// child after or before; GW_OWNER: the owner of a top-level window. Null at the ends.
HWND GetWindow(HWND window, UINT command);
// Calls `visit` for each top-level window, oldest first (the host keeps no z-order),
// until it answers FALSE; windows destroyed meanwhile are skipped.
using WNDENUMPROC = BOOL(CALLBACK*)(HWND, LPARAM);
BOOL EnumWindows(WNDENUMPROC visit, LPARAM argument);
int GetDlgCtrlID(HWND window);
DWORD GetWindowThreadProcessId(HWND window, LPDWORD processId);

BOOL SetWindowTextW(HWND window, LPCWSTR text);        // through WM_SETTEXT
int GetWindowTextW(HWND window, LPWSTR text, int maxCount);  // through WM_GETTEXT
int GetWindowTextLengthW(HWND window);                 // through WM_GETTEXTLENGTH

BOOL EnableWindow(HWND window, BOOL enable);  // non-zero when the window was disabled
BOOL IsWindowEnabled(HWND window);
BOOL ShowWindow(HWND window, int command);    // non-zero when the window was visible
BOOL IsWindowVisible(HWND window);            // itself and every parent visible
// The host has one input focus for the process (the device has one user). Focus moved
// into a top-level window of the calling thread that is not active activates it.
HWND SetFocus(HWND window);
HWND GetFocus();
// Each thread has an active top-level window. It changes when a top-level window is shown
// (SW_SHOW, SW_SHOWNORMAL, SW_RESTORE, or made with WS_VISIBLE), when the focus moves into
// another one, and here; a hidden or destroyed active window hands activation to its owner
// when the owner is visible and enabled. Each change sends WM_ACTIVATE to the window
// losing activation, then to the one gaining it.
HWND SetActiveWindow(HWND window);  // the previously active window
HWND GetActiveWindow();
// The host has one user and no other program: the foreground window is the active window
// of its thread, and typed keys reach the one focus whatever is in front. A window of the
// calling thread is activated; FALSE for no window.
BOOL SetForegroundWindow(HWND window);

// Windows have no frame on the host: the client area is the whole window.
BOOL GetWindowRect(HWND window, LPRECT rect);  // screen coordinates
BOOL GetClientRect(HWND window, LPRECT rect);
BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint);
BOOL ClientToScreen(HWND window, LPPOINT point);
BOOL ScreenToClient(HWND window, LPPOINT point);

// Pointer-wide window values: the procedure, the instance, the parent, the user data.
constexpr int GWLP_WNDPROC = -4;
constexpr int GWLP_HINSTANCE = -6;
constexpr int GWLP_HWNDPARENT = -8;
constexpr int GWLP_ID = -12;
constexpr int GWLP_USERDATA = -21;

// The Ptr forms carry LONG_PTR values, so a pointer kept in a window survives on a
// 64-bit host. Non-negative indexes address the class's cbWndExtra bytes in the
// device's 32-bit layout (index + 4 must fit).
LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value);
LONG_PTR GetWindowLongPtrW(HWND window, int index);
// The 32-bit forms keep and return the low 32 bits, as Windows does; where pointers are
// wider than a LONG they refuse the pointer-only indexes (procedure, instance, parent)
// with ERROR_INVALID_INDEX.
LONG SetWindowLongW(HWND window, int index, LONG value);
LONG GetWindowLongW(HWND window, int index);
LRESULT CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// ---- messages ------------------------------------------------------------------------------------

// Queues the message for the window's thread; HWND_BROADCAST queues it for every
// top-level window; a null window posts to the calling thread. From any thread.
BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
BOOL PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam);
// Calls the window procedure on the calling thread when it owns the window; otherwise
// the owner thread runs it when it next reads its queue, while the sender waits (and
// meanwhile answers messages sent to itself). 0 for a window that does not exist or
// whose thread ends before it reads the message. A sender terminated while it waits
// takes back a message the owner has not taken yet, and otherwise ends only once the
// owner has answered it, since the arguments may point into the sender's stack.
LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// Answers pending sent messages first, then looks for a posted message. A window filter
// also takes messages for its descendants; (HWND)-1 takes only thread messages. WM_QUIT
// passes every filter, once no other posted message does.
BOOL PeekMessageW(LPMSG message, HWND window, UINT filterMin, UINT filterMax, UINT removeMessage);
// Waits for a message; 0 for WM_QUIT, -1 for a window filter that is not a window.
BOOL GetMessageW(LPMSG message, HWND window, UINT filterMin, UINT filterMax);
LRESULT DispatchMessageW(const MSG* message);
void PostQuitMessage(int exitCode);
// WM_NCCREATE takes the window text, WM_SETTEXT / WM_GETTEXT / WM_GETTEXTLENGTH keep it,
// WM_CLOSE destroys the window; everything else answers 0.
LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
#endif  // _WIN32
