// The standard controls of the Win32 subset, drawn by the host: "STATIC", "EDIT",
// "BUTTON" (push, check and radio), "LISTBOX" and "COMBOBOX" (a drop list stepped with
// the arrow keys or chosen from its drop-down list), with the messages and notifications
// dialogs use to drive them.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Gdi.h"
#include "platform/win32/Windows.h"

constexpr UINT WM_SETFONT = 0x0030;
constexpr UINT WM_GETFONT = 0x0031;
constexpr UINT WM_GETDLGCODE = 0x0087;

constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int IDABORT = 3;
constexpr int IDRETRY = 4;
constexpr int IDIGNORE = 5;
constexpr int IDYES = 6;
constexpr int IDNO = 7;

// What a control asks of the dialog's key handling (WM_GETDLGCODE).
constexpr LRESULT DLGC_WANTARROWS = 0x0001;
constexpr LRESULT DLGC_WANTTAB = 0x0002;
constexpr LRESULT DLGC_WANTALLKEYS = 0x0004;
constexpr LRESULT DLGC_WANTMESSAGE = 0x0004;  // the same bit, answered for the one key asked about
constexpr LRESULT DLGC_HASSETSEL = 0x0008;
constexpr LRESULT DLGC_DEFPUSHBUTTON = 0x0010;
constexpr LRESULT DLGC_UNDEFPUSHBUTTON = 0x0020;
constexpr LRESULT DLGC_RADIOBUTTON = 0x0040;
constexpr LRESULT DLGC_WANTCHARS = 0x0080;
constexpr LRESULT DLGC_STATIC = 0x0100;
constexpr LRESULT DLGC_BUTTON = 0x2000;

// Combo box kinds. The host's combo box is always a drop list; the system reads a style
// without a kind as a simple combo box, which has no drop-down list, so templates say
// CBS_DROPDOWNLIST.
constexpr DWORD CBS_SIMPLE = 0x1;
constexpr DWORD CBS_DROPDOWN = 0x2;
constexpr DWORD CBS_DROPDOWNLIST = 0x3;

constexpr DWORD SS_LEFT = 0x0;
constexpr DWORD SS_CENTER = 0x1;
constexpr DWORD SS_RIGHT = 0x2;

constexpr DWORD ES_LEFT = 0x0000;
constexpr DWORD ES_RIGHT = 0x0002;
constexpr DWORD ES_PASSWORD = 0x0020;
constexpr DWORD ES_AUTOHSCROLL = 0x0080;
constexpr DWORD ES_READONLY = 0x0800;
constexpr UINT EM_GETSEL = 0x00B0;
constexpr UINT EM_SETSEL = 0x00B1;
constexpr UINT EM_LIMITTEXT = 0x00C5;
constexpr UINT EM_SETLIMITTEXT = EM_LIMITTEXT;
constexpr UINT EM_SETREADONLY = 0x00CF;
constexpr WORD EN_SETFOCUS = 0x0100;
constexpr WORD EN_KILLFOCUS = 0x0200;
constexpr WORD EN_CHANGE = 0x0300;

constexpr DWORD BS_PUSHBUTTON = 0x0;
constexpr DWORD BS_DEFPUSHBUTTON = 0x1;
constexpr DWORD BS_CHECKBOX = 0x2;
constexpr DWORD BS_AUTOCHECKBOX = 0x3;
constexpr DWORD BS_RADIOBUTTON = 0x4;
constexpr DWORD BS_GROUPBOX = 0x7;
constexpr DWORD BS_AUTORADIOBUTTON = 0x9;
constexpr DWORD BS_OWNERDRAW = 0xB;
constexpr DWORD BS_TYPEMASK = 0xF;
constexpr UINT BM_GETCHECK = 0x00F0;
constexpr UINT BM_SETCHECK = 0x00F1;
constexpr UINT BM_GETSTATE = 0x00F2;
constexpr UINT BM_SETSTATE = 0x00F3;
constexpr UINT BM_SETSTYLE = 0x00F4;
constexpr UINT BM_CLICK = 0x00F5;
constexpr WPARAM BST_UNCHECKED = 0;
constexpr WPARAM BST_CHECKED = 1;
constexpr int BST_INDETERMINATE = 2;
constexpr LRESULT BST_PUSHED = 4;  // in BM_GETSTATE's answer
constexpr LRESULT BST_FOCUS = 8;
constexpr WORD BN_CLICKED = 0;

constexpr LRESULT LB_ERR = -1;
constexpr UINT LB_ADDSTRING = 0x0180;
constexpr UINT LB_DELETESTRING = 0x0182;
constexpr UINT LB_RESETCONTENT = 0x0184;
constexpr UINT LB_SETCURSEL = 0x0186;
constexpr UINT LB_GETCURSEL = 0x0188;
constexpr UINT LB_GETTEXT = 0x0189;
constexpr UINT LB_GETTEXTLEN = 0x018A;
constexpr UINT LB_GETCOUNT = 0x018B;
constexpr WORD LBN_SELCHANGE = 1;

constexpr LRESULT CB_ERR = -1;
constexpr UINT CB_ADDSTRING = 0x0143;
constexpr UINT CB_DELETESTRING = 0x0144;
constexpr UINT CB_GETCOUNT = 0x0146;
constexpr UINT CB_GETCURSEL = 0x0147;
constexpr UINT CB_GETLBTEXT = 0x0148;
constexpr UINT CB_RESETCONTENT = 0x014B;
constexpr UINT CB_SETCURSEL = 0x014E;
constexpr UINT CB_SHOWDROPDOWN = 0x014F;
constexpr UINT CB_GETITEMHEIGHT = 0x0154;  // wParam -1: the selection field's height
constexpr UINT CB_GETDROPPEDSTATE = 0x0157;
constexpr UINT CB_GETTOPINDEX = 0x015B;
constexpr WORD CBN_SELCHANGE = 1;
constexpr WORD CBN_SETFOCUS = 3;
constexpr WORD CBN_KILLFOCUS = 4;
constexpr WORD CBN_DROPDOWN = 7;
constexpr WORD CBN_CLOSEUP = 8;
constexpr WORD CBN_SELENDOK = 9;
constexpr WORD CBN_SELENDCANCEL = 10;

constexpr UINT DM_GETDEFID = WM_USER + 0;
constexpr UINT DM_SETDEFID = WM_USER + 1;
constexpr WORD DC_HASDEFID = 0x534B;

constexpr UINT MB_OK = 0x0;
constexpr UINT MB_OKCANCEL = 0x1;
constexpr UINT MB_ABORTRETRYIGNORE = 0x2;
constexpr UINT MB_YESNOCANCEL = 0x3;
constexpr UINT MB_YESNO = 0x4;
constexpr UINT MB_RETRYCANCEL = 0x5;
constexpr UINT MB_TYPEMASK = 0xF;
constexpr UINT MB_ICONERROR = 0x10;
constexpr UINT MB_ICONQUESTION = 0x20;
constexpr UINT MB_ICONWARNING = 0x30;
constexpr UINT MB_ICONINFORMATION = 0x40;

namespace kiv_win32 {
// Registers the control classes once per process state (again after a host reset).
void RegisterStandardControls();
// Paints the window (WM_PAINT) and then, recursively, its visible children, copying each
// child's picture into its parent's surface, so that a saved top-level window shows what
// a screen would.
void RedrawWindowTree(HWND window);
// The font a control draws with when none was set: the stock GUI font.
HFONT DefaultControlFont();
}  // namespace kiv_win32
#endif  // _WIN32
