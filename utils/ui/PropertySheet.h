// Property sheets: a dialog with the library's title bar, a row of tabs under it and one
// page at a time below. Pages are child dialogs made from their own templates; they keep
// the dialog base's key mapping (their handlers see a key first, then the sheet's).
// Switching pages: a tap on a tab, or Left and Right when the focused control does not
// use the arrows itself (an edit field's caret does). Enter and Escape on a page go to
// the sheet as OK and Cancel; OK asks the active page to let go, then every page to apply.
#pragma once

#include <vector>

#include "utils/ui/DlgBase.h"

class CKivPropertySheet;

// The height of the row of tabs under the title bar.
constexpr int kSheetTabHeight = 22;

class CKivPropertyPage : public CDlgBase {
    DECLARE_DYNAMIC(CKivPropertyPage)
public:
    // The template should be styled WS_CHILD; the sheet places the page below its tabs.
    CKivPropertyPage(LPCWSTR templateName, LPCWSTR title);
    const CKivStringT& GetTitle() const { return m_title; }
    CKivPropertySheet* GetSheet() const { return m_sheet; }

    // The page is shown; FALSE is not refused, it only reports.
    virtual BOOL OnSetActive() { return TRUE; }
    // The page is about to be left; FALSE keeps it (an entry to correct first).
    virtual BOOL OnKillActive() { return TRUE; }
    // The sheet closes with OK; FALSE keeps the sheet open on this page.
    virtual BOOL OnApply() { return TRUE; }
    void OnOK() override;
    void OnCancel() override;
    BOOL OnInitDialog() override;

protected:
    DECLARE_MESSAGE_MAP()
    void OnPaint();

private:
    friend class CKivPropertySheet;
    CKivStringT m_title;
    LPCWSTR m_templateName;
    CKivPropertySheet* m_sheet = nullptr;
};

class CKivPropertySheet : public CDlgBase {
    DECLARE_DYNAMIC(CKivPropertySheet)
public:
    explicit CKivPropertySheet(LPCWSTR caption, CWnd* parent = nullptr);
    ~CKivPropertySheet() override;
    // Pages stay the caller's; add them before the sheet is made.
    void AddPage(CKivPropertyPage* page);
    BOOL Create(CWnd* parent = nullptr);
    INT_PTR DoModal() override;

    int GetPageCount() const { return static_cast<int>(m_pages.size()); }
    CKivPropertyPage* GetPage(int index) const;
    int GetActiveIndex() const { return m_active; }
    CKivPropertyPage* GetActivePage() const { return GetPage(m_active); }
    // FALSE when the index is out of range or the active page refuses to be left.
    BOOL SetActivePage(int index);
    RECT GetTabRect(int index) const;
    HWND GetTabsWindow() const { return m_tabs; }

    BOOL OnInitDialog() override;
    int ArrowLeftKey() override;
    int ArrowRightKey() override;
    void OnOK() override;

protected:
    void PaintTabs();

private:
    static LRESULT CALLBACK TabsProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam);
    bool FocusTakesArrows() const;
    void RegisterTemplate() const;

    CKivStringT m_caption;
    std::vector<CKivPropertyPage*> m_pages;
    int m_active = -1;
    HWND m_tabs = nullptr;
};
