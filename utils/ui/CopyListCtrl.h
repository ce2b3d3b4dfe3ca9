// CKivCopyListCtrl: a list of rows in columns whose selected rows are copied as text to
// the clipboard (CF_UNICODETEXT): a heading line, then one line per row, cells apart by
// tabs and lines ended by CR LF, so that the text pastes into a table as it stood. The
// columns take their order and visibility from the list's column settings.
// Keys: Up and Down move the current row (with Shift they extend the selection), Space
// selects or deselects the current row, Ctrl+A selects all, Ctrl+C copies. With nothing
// selected, the current row is copied. The list is the window class "KivCopyList".
#pragma once

#include "platform/kivutils/Heap.h"
#include "platform/mfc/Wnd.h"

class CColumnSettings;

constexpr const wchar_t* kCopyListClass = L"KivCopyList";

// One column: the identifier the column settings know it by, its heading and width.
struct TKivListColumn {
    LPCWSTR id;
    LPCWSTR heading;
    int width;
};

constexpr UINT KLM_ADDCOLUMN = WM_USER + 0x170;        // lParam const TKivListColumn*; the column's index
constexpr UINT KLM_ADDROW = WM_USER + 0x171;           // wParam cell count, lParam const LPCWSTR*; the row's index
constexpr UINT KLM_APPLYCOLUMNS = WM_USER + 0x172;     // lParam const CColumnSettings*; the columns shown
constexpr UINT KLM_SETSEL = WM_USER + 0x173;           // wParam row, lParam select; LB_ERR for a bad row
constexpr UINT KLM_GETSEL = WM_USER + 0x174;           // wParam row
constexpr UINT KLM_GETSELCOUNT = WM_USER + 0x175;
constexpr UINT KLM_COPY = WM_USER + 0x176;             // the rows copied, or LB_ERR when the clipboard is busy
constexpr UINT KLM_GETCOLUMNORDER = WM_USER + 0x177;   // wParam position among the shown columns; its index, or LB_ERR
constexpr UINT KLM_GETCELL = WM_USER + 0x178;          // wParam row, lParam column; const wchar_t* or null

class CKivCopyListCtrl : public CWnd, public SharedHeapObject {
public:
    using SharedHeapObject::operator new;
    using SharedHeapObject::operator delete;
    static void RegisterClass();
    BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id);
    BOOL AttachItem(UINT id, CWnd* dialog) { return AttachDlgItem(id, dialog); }

    int AddColumn(LPCWSTR id, LPCWSTR heading, int width);
    int AddRow(std::initializer_list<LPCWSTR> cells);
    // Orders and hides the columns as the named list's settings say: the columns they list
    // come first in their order, shown or hidden by their flag; columns they do not know
    // follow, shown, in the order they were added. Returns the number of columns shown.
    int ApplyColumnSettings(const CColumnSettings& settings);
    int GetCurSel() const { return static_cast<int>(SendMessage(LB_GETCURSEL)); }
    void SetSel(int row, bool select) { SendMessage(KLM_SETSEL, static_cast<WPARAM>(row), select); }
    bool GetSel(int row) const { return SendMessage(KLM_GETSEL, static_cast<WPARAM>(row)) > 0; }
    int GetSelCount() const { return static_cast<int>(SendMessage(KLM_GETSELCOUNT)); }
    int Copy() { return static_cast<int>(SendMessage(KLM_COPY)); }
};

namespace kiv_ui {
// The clipboard's text, or empty when it holds none (or another window has it open).
CKivStringT GetClipboardText(HWND window);
// Replaces the clipboard's contents with the text; false when it could not be opened.
bool SetClipboardText(HWND window, const CKivStringT& text);
}  // namespace kiv_ui
