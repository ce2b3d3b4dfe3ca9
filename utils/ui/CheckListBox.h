// CKivCheckListBox: a list whose rows carry a check box: unchecked, checked, or the
// third, indeterminate state (set by the program for "some of these", never by a tap).
// Up and Down move the current row, Space toggles it, a tap on the box toggles that row.
// The list is the window class "KivCheckList", usable in dialog templates and driven by
// the list-box messages plus CLB_SETCHECK and CLB_GETCHECK; the class below wraps them.
#pragma once

#include "platform/kivutils/Heap.h"
#include "platform/mfc/Wnd.h"

constexpr const wchar_t* kCheckListClass = L"KivCheckList";

constexpr UINT CLB_SETCHECK = WM_USER + 0x160;  // wParam row, lParam state; LB_ERR for a bad row
constexpr UINT CLB_GETCHECK = WM_USER + 0x161;  // wParam row; LB_ERR for a bad row
// Sent to the parent as WM_COMMAND when a tap or Space changes a row's state.
constexpr WORD CLBN_CHKCHANGE = 0x40;

class CKivCheckListBox : public CWnd, public SharedHeapObject {
public:
    using SharedHeapObject::operator new;
    using SharedHeapObject::operator delete;
    static void RegisterClass();
    BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id);
    // Wraps the dialog's "KivCheckList" control of this identifier.
    BOOL AttachItem(UINT id, CWnd* dialog) { return AttachDlgItem(id, dialog); }

    int AddString(LPCWSTR text) { return static_cast<int>(SendMessage(LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text))); }
    int GetCount() const { return static_cast<int>(SendMessage(LB_GETCOUNT)); }
    int GetCurSel() const { return static_cast<int>(SendMessage(LB_GETCURSEL)); }
    int SetCurSel(int row) { return static_cast<int>(SendMessage(LB_SETCURSEL, static_cast<WPARAM>(row))); }
    int SetCheck(int row, int state) {
        return static_cast<int>(SendMessage(CLB_SETCHECK, static_cast<WPARAM>(row), state));
    }
    int GetCheck(int row) const { return static_cast<int>(SendMessage(CLB_GETCHECK, static_cast<WPARAM>(row))); }
    CKivStringT GetText(int row) const;
};
