// CDialog: dialogs made from templates described in C++ and registered by name or by
// identifier, shown modeless (Create) or modal (DoModal, with its own message loop),
// with the dialog manager's keys: Tab and Shift+Tab through the tab stops, Enter to the
// default button, Escape to Cancel.
#pragma once

#include <string>
#include <vector>

#include "platform/mfc/Wnd.h"

// One control of a dialog template. Positions are pixels of the dialog's client area.
struct CDialogItemTemplate {
    std::wstring className;  // "STATIC", "EDIT", "BUTTON", "LISTBOX", "COMBOBOX" or a registered class
    std::wstring text;
    int id = 0;
    DWORD style = 0;  // WS_CHILD and WS_VISIBLE are added
    RECT rect{};
};

struct CDialogTemplate {
    std::wstring caption;
    DWORD style = 0;  // WS_POPUP is added, unless WS_CHILD makes a dialog inside its parent
    RECT rect{0, 0, 240, 320};
    std::vector<CDialogItemTemplate> items;
};

// Registers (or replaces) a template under an identifier or a name; names compare
// exactly. A template is copied.
void AfxRegisterDialogTemplate(UINT id, const CDialogTemplate& dialogTemplate);
void AfxRegisterDialogTemplate(LPCWSTR name, const CDialogTemplate& dialogTemplate);
const CDialogTemplate* AfxFindDialogTemplate(UINT id);
const CDialogTemplate* AfxFindDialogTemplate(LPCWSTR name);

class CDialog : public CWnd {
    DECLARE_DYNAMIC(CDialog)
public:
    CDialog() = default;
    CDialog(UINT templateId, CWnd* parent);
    CDialog(LPCWSTR templateName, CWnd* parent);

    // Modeless: makes the window and its controls and initialises it; FALSE when the
    // template is not registered.
    BOOL Create(UINT templateId, CWnd* parent = nullptr);
    BOOL Create(LPCWSTR templateName, CWnd* parent = nullptr);
    // Modal: the parent is disabled while the dialog's loop runs; the result is the
    // value given to EndDialog, or -1 when the dialog could not be made.
    virtual INT_PTR DoModal();
    void EndDialog(int result);

    virtual BOOL OnInitDialog();
    virtual void OnOK() { EndDialog(IDOK); }
    virtual void OnCancel() { EndDialog(IDCANCEL); }

    BOOL PreTranslateMessage(MSG* msg) override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

    // Moves the focus to the next (or previous) enabled, visible tab stop.
    void NextDlgCtrl() { MoveFocus(false); }
    void PrevDlgCtrl() { MoveFocus(true); }
    void GotoDlgCtrl(CWnd* control);
    void SetDefID(UINT id) { m_defId = id; }
    DWORD GetDefID() const { return MAKELONG(static_cast<WORD>(m_defId), DC_HASDEFID); }
    BOOL IsModal() const { return m_modal; }

    HWND m_hWndParent = nullptr;  // the parent (owner) given to the constructor or Create

protected:
    DECLARE_MESSAGE_MAP()
    LRESULT HandleInitDialog(WPARAM wParam, LPARAM lParam);
    void OnPaint();

private:
    BOOL CreateFromTemplate(const CDialogTemplate* t, CWnd* parent);
    void MoveFocus(bool backwards);

    UINT m_templateId = 0;
    std::wstring m_templateName;
    UINT m_defId = IDOK;
    HFONT m_font = nullptr;
    HWND m_lastFocus = nullptr;  // the focused control when the dialog last lost activation
    bool m_modal = false;
    bool m_ended = false;
    int m_result = 0;
};

// Thin wrappers of the standard controls.
class CStatic : public CWnd {};
class CEdit : public CWnd {
public:
    void SetSel(int start, int end) { SendMessage(EM_SETSEL, static_cast<WPARAM>(start), end); }
    void GetSel(int& start, int& end) const {
        const auto r = static_cast<DWORD>(SendMessage(EM_GETSEL));
        start = LOWORD(r);
        end = HIWORD(r);
    }
    void SetLimitText(UINT max) { SendMessage(EM_LIMITTEXT, max); }
    BOOL SetReadOnly(BOOL readOnly = TRUE) { return static_cast<BOOL>(SendMessage(EM_SETREADONLY, readOnly)); }
};
class CButton : public CWnd {
public:
    int GetCheck() const { return static_cast<int>(SendMessage(BM_GETCHECK)); }
    void SetCheck(int check) { SendMessage(BM_SETCHECK, static_cast<WPARAM>(check)); }
};
class CListBox : public CWnd {
public:
    int AddString(LPCWSTR text) { return static_cast<int>(SendMessage(LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text))); }
    int GetCurSel() const { return static_cast<int>(SendMessage(LB_GETCURSEL)); }
    int SetCurSel(int index) { return static_cast<int>(SendMessage(LB_SETCURSEL, static_cast<WPARAM>(index))); }
    int GetCount() const { return static_cast<int>(SendMessage(LB_GETCOUNT)); }
};
class CComboBox : public CWnd {
public:
    int AddString(LPCWSTR text) { return static_cast<int>(SendMessage(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text))); }
    int GetCurSel() const { return static_cast<int>(SendMessage(CB_GETCURSEL)); }
    int SetCurSel(int index) { return static_cast<int>(SendMessage(CB_SETCURSEL, static_cast<WPARAM>(index))); }
};
