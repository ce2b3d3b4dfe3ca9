// CDlgBase: the base of every dialog of the application. It carries the library's
// title bar in place of the system caption, routes the controller's hardware keys
// (F1 to F9, Enter, Escape, the arrows and their releases, the alpha key) to virtual
// handlers, opens the soft keyboard and the calculator for the tapped or focused
// control, and gives control helpers that log a missing control instead of failing.
// It tells its parent when it opens (10025) and the main window when it closes (10024).
// CDlgCtrlItem binds a translatable text to a control identifier.
#pragma once

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"
#include "platform/mfc/Dialog.h"
#include "utils/settings/SettingsStore.h"
#include "utils/ui/Titlebar.h"

// Messages between the dialogs and the application's windows.
constexpr UINT WM_KIV_DIALOG_CLOSED = 10024;  // posted to the main window (or the parent)
constexpr UINT WM_KIV_DIALOG_OPENED = 10025;  // sent to the parent
constexpr UINT WM_KIV_KEYINPUT_CLOSE = 21236;
constexpr UINT WM_KIV_SHOW_KEYINPUT = 21238;
// The title bar's menu button command and the Help entry of its menu.
constexpr UINT ID_TBAR_MENU = 11023;
constexpr UINT ID_TBAR_HELP = 83;

// The dialog's background: its colour and a solid brush of it.
class CDlgBackground {
public:
    // The argument is deliberately ignored: dialogs always take the system button-face
    // colour, whatever colour their constructor asks for.
    void SetColour(COLORREF requested);
    COLORREF GetColour() const { return colour_; }
    HBRUSH GetBrush() const { return brush_; }
    CDlgBackground() = default;
    ~CDlgBackground();
    CDlgBackground(const CDlgBackground&) = delete;
    CDlgBackground& operator=(const CDlgBackground&) = delete;

private:
    COLORREF colour_ = 0;
    HBRUSH brush_ = nullptr;
};

class CDlgBase : public CDialog, public SharedHeapObject {
    DECLARE_DYNAMIC(CDlgBase)
public:
    CDlgBase();
    CDlgBase(LPCWSTR templateName, CWnd* parent);
    CDlgBase(UINT templateId, CWnd* parent);
    ~CDlgBase() override;
    using SharedHeapObject::operator new;
    using SharedHeapObject::operator delete;

    // ---- title-bar building: before the dialog is shown, then FinalizeChanges ----
    void ShowOkButton();
    void ShowFinishButton();
    void ShowCancelButton();
    void HideCloseButton() { m_bShowClose = FALSE; }
    void HideMenuButton() { m_bShowMenu = FALSE; }
    void HideTitle() { m_bShowTitle = FALSE; }
    void AddButton(LPCWSTR name, LPCWSTR text, UINT id) { m_titlebar.AddButton(name, text, id); }
    void AddSettingsButton(LPCWSTR name, UINT id);
    void AddEDMButton(LPCWSTR name, UINT id);
    void AddCheckButton(LPCWSTR name, UINT id);
    void AddBitmapButton(LPCWSTR name, UINT id, UINT bitmap, BOOL flag);
    // Without a name the button is addressed as "#" followed by its command.
    void AddBitmapButton(UINT id, UINT bitmap, BOOL flag);
    void AddMenuButton(UINT id, UINT bitmap, UINT pressedBitmap);
    void AddMenuButton(LPCWSTR name, UINT id, UINT bitmap, UINT pressedBitmap);
    void AddMenuItem(LPCWSTR text, UINT id, int position = -1) { m_titlebar.AddMenuItem(text, id, position); }
    void AddPopupMenuItem(LPCWSTR text, const CTitlebarMenu& menu, int position = -1) {
        m_titlebar.AddPopupMenuItem(text, menu, position);
    }
    void AddSeparator(int position = -1) { m_titlebar.AddSeparator(position); }
    BOOL RemoveMenuItem(int position) { return m_titlebar.RemoveMenuItem(position); }
    void RemoveAllMenuItems() { m_titlebar.RemoveAllMenuItems(); }
    BOOL CheckTbarMenuItem(UINT id, BOOL state) { return m_titlebar.CheckTbarMenuItem(id, state); }
    BOOL EnableTbarMenuItem(UINT id, BOOL state) { return m_titlebar.EnableTbarMenuItem(id, state); }
    BOOL ChangeButtonText(LPCWSTR name, LPCWSTR text) { return m_titlebar.ChangeButtonText(name, text); }
    // Without a name: the right-hand button "Z".
    BOOL ChangeButtonBitmap(UINT bitmap) { return ChangeButtonBitmap(L"Z", bitmap); }
    BOOL ChangeButtonBitmap(LPCWSTR name, UINT bitmap);
    void SetWindowTextW(LPCWSTR text);
#ifndef _WIN32
    // <windows.h> makes SetWindowText this very name, so only the host spells it out.
    void SetWindowText(LPCWSTR text) { SetWindowTextW(text); }
#endif
    void FinalizeChanges() { m_titlebar.FinalizeChanges(); }
    CTitlebar& GetTitlebar() { return m_titlebar; }

    // ---- control helpers: a missing identifier is logged and ignored ----
    BOOL SetDlgItemText(int id, LPCWSTR text);
    BOOL GetDlgItemText(int id, CKivStringT& text);
    int GetDlgItemText(int id, LPWSTR buffer, int length);
    CKivStringT GetDlgItemText(int id);
    BOOL EnableDlgItem(int id, BOOL enable = TRUE);
    BOOL IsDlgItemEnabled(int id);
    BOOL ShowDlgItem(int id, BOOL show = TRUE);
    BOOL IsDlgItemVisible(int id);
    void CheckDlgButton(int id, UINT check);
    UINT GetDlgButtonCheckedState(int id);
    BOOL SetDlgEditReadOnly(int id, BOOL readOnly = TRUE);
    void SetDlgEditLimitText(int id, int limit);
    BOOL SetDlgItemFocus(int id);
    BOOL PostSetDlgItemFocus(int id);
    bool EnableControls(const int* ids, int count);
    bool DisableControls(const int* ids, int count);
    bool HideControls(const int* ids, int count);
    bool ShowControls(const int* ids, int count);
    HFONT GetFont() const;
    // The library's message popup with this dialog as owner; an empty caption shows the
    // translated "Warning!".
    int MessageBoxW(LPCWSTR text, LPCWSTR caption = L"", UINT type = MB_OK, ESounds sound = eSoundWarning);

    // ---- the handlers: non-zero means handled, and the key is swallowed ----
    virtual void UpdateAlphaKeyIndicator();
    virtual int FunctionKeyF1() { return 0; }
    virtual int FunctionKeyF2() { return 0; }
    virtual int FunctionKeyF3() { return 0; }
    virtual int FunctionKeyF4() { return 0; }
    virtual int FunctionKeyF5() { return 0; }
    virtual int FunctionKeyF6() { return 0; }
    virtual int FunctionKeyF7() { return 0; }
    virtual int FunctionKeyF8() { return 0; }
    virtual int FunctionKeyF9() { return 0; }
    virtual int EnterKey() { return 0; }
    virtual int EscapeKey() { return 0; }
    virtual int ArrowUpKey() { return 0; }
    virtual int ArrowDownKey() { return 0; }
    virtual int ArrowLeftKey() { return 0; }
    virtual int ArrowRightKey() { return 0; }
    virtual int ArrowUpKey_Keyup() { return 0; }
    virtual int ArrowDownKey_Keyup() { return 0; }
    virtual int ArrowLeftKey_Keyup() { return 0; }
    virtual int ArrowRightKey_Keyup() { return 0; }
    virtual int CalcKey();

    BOOL PreTranslateMessage(MSG* msg) override;
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;
    BOOL OnInitDialog() override;

    bool IsChildOfDialog() const { return m_bChildOfDialog; }
    BYTE GetKeyPressFlag() const { return m_bKeyPress; }
    BYTE GetShiftFlag() const { return m_bShift; }
    COLORREF GetBackgroundColour() const { return m_background.GetColour(); }

protected:
    DECLARE_MESSAGE_MAP()
    void PostNcDestroy() override;
    void OnPaint();
    void OnActivate(UINT state, CWnd* other, BOOL minimized);
    void OnDestroy();
    void OnDisplayMenu();
    void OnSettingChange(UINT flags, LPCWSTR section);
    LRESULT OnKeyInputClose(WPARAM wParam, LPARAM lParam);
    LRESULT OnShowKeyInput(WPARAM wParam, LPARAM lParam);
    LRESULT HandleInitDialog(WPARAM wParam, LPARAM lParam);

    // For dialogs that always live inside another dialog (property pages), whatever
    // parent they were constructed with.
    void SetChildOfDialog(bool child) { m_bChildOfDialog = child; }

    // Kept for derived dialogs: cleared by a key press no handler swallowed, and by the
    // release of Shift.
    BYTE m_bKeyPress = 0;
    BYTE m_bShift = 0;

private:
    void BuildBase(CWnd* parent);
    HWND Item(int id, int line);

    BYTE m_bShowOk = FALSE;
    BYTE m_bShowCancel = FALSE;
    BYTE m_bShowClose = TRUE;
    BYTE m_bShowTitle = TRUE;
    BYTE m_bShowMenu = TRUE;
    BYTE m_bShowFinish = FALSE;
    bool m_bChildOfDialog = false;
    CTitlebar m_titlebar;
    CDlgBackground m_background;
};

class CTextInfoManager;

// A translatable text bound to a control of a dialog.
class CDlgCtrlItem : public SharedHeapObject {
public:
    static constexpr UINT kUnbound = 0xFFFFFFFF;
    void Create(CTextInfoManager* manager, LPCWSTR text);
    void BindCtrlID(UINT id) { m_id = id; }
    void UnBindCtrlID() { m_id = kUnbound; }
    BOOL IsBound() const { return m_id != kUnbound; }
    UINT GetCtrlID() const { return m_id; }
    const CKivStringT& GetText() const { return m_text; }
    CKivStringT GetXlatedText() const;
    void SetText(LPCWSTR text) { m_text = text ? text : L""; }
    // Writes the translated text (or the given one) into the bound control; FALSE when
    // unbound or when the dialog has no such control.
    BOOL UpdateText(CWnd* dialog) const;
    BOOL UpdateText(CWnd* dialog, LPCWSTR text) const;
    CTextInfoManager* GetManager() const { return m_manager; }

private:
    UINT m_id = kUnbound;
    CKivStringT m_text;
    CTextInfoManager* m_manager = nullptr;
};
