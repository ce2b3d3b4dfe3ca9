// The two calculator dialogs over the calculator engine, a standard one and a
// scientific one, and LoadCalculator, which opens them for a target control and
// switches between them. OK writes the shown value into the target control.
#pragma once

#include <memory>

#include "utils/calculator/Calculator.h"
#include "utils/ui/DlgBase.h"

// Opens the calculator last used (the standard one at first) over `dialog`, seeded with
// the target's text when that reads as a number. With `writeResult`, OK writes the value
// into the target. FALSE when the dialog window does not exist.
BOOL LoadCalculator(HWND dialog, HWND target, bool writeResult);
// Switches to the other calculator, seeded with `text` (the value the closing one
// showed); a null text seeds nothing.
BOOL LoadCalculator(HWND dialog, HWND target, LPCWSTR text, bool writeResult);

// Button identifiers: the engine's key plus this base; the switch button has its own.
constexpr int kCalcButtonBase = 2000;
constexpr int IDC_CALC_SWITCH = 1999;
constexpr int IDC_CALC_DISPLAY = 1998;
constexpr int IDC_CALC_MODE = 1997;

class CCalcDlg : public CDlgBase {
public:
    enum EKind { eStandard = 0, eScientific = 1 };
    CCalcDlg(EKind kind, CWnd* owner, HWND target, bool writeResult);
    ~CCalcDlg() override;

    EKind GetKind() const { return kind_; }
    CCalculator& GetCalculator() { return calc_; }
    HWND GetTarget() const { return target_; }
    // Presses a key as its button does and shows the result.
    void Press(ECalcKey key);

    BOOL OnInitDialog() override;
    BOOL PreTranslateMessage(MSG* msg) override;
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;
    int EnterKey() override;
    int EscapeKey() override;
    void OnOK() override;
    void OnCancel() override;

    static LPCWSTR TemplateName(EKind kind);

protected:
    void PostNcDestroy() override;

private:
    void ShowDisplay();
    void Close();

    EKind kind_;
    HWND target_;
    bool writeResult_;
    CCalculator calc_;
};

namespace kiv_ui {
// The calculator dialog that is open, or null.
CCalcDlg* GetOpenCalculator();
}  // namespace kiv_ui
