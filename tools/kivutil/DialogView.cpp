// kivutil's dialog pictures and the calculator dialog view.
#include "tools/kivutil/DialogView.h"

#include <iostream>
#include <vector>

#include "platform/host/TextCodec.h"
#include "platform/win32/PictureFiles.h"
#include "tools/kivutil/Command.h"
#include "utils/calculator/CalcExpression.h"
#include "utils/ui/CalcDialog.h"

namespace kivutil {

bool SaveDialogPicture(CWnd& dialog, const std::string& path) {
    dialog.RedrawWindow();
    const std::wstring wide = kiv_text::FromUtf8(path);
    if (!kiv_host::SavePicture(dialog.m_hWnd, wide.c_str())) {
        std::cerr << "kivutil: cannot write \"" << path << "\"; give a writable file path ending in .png or .bmp\n";
        return false;
    }
    RECT r{};
    dialog.GetClientRect(&r);
    std::cout << "saved " << path << " (" << r.right << "x" << r.bottom << ")\n";
    return true;
}

int ShowCalculatorDialog(const std::string& expression, ECalcAngleMode mode, int digits, bool scientific,
                         const std::string& output) {
    std::vector<ECalcKey> keys;
    if (!expression.empty()) {
        TCalcExpressionError error;
        const std::wstring wide = kiv_text::FromUtf8(expression);
        if (!CalcExpressionToKeys(wide.c_str(), keys, error))
            return BadInput("column " + std::to_string(error.column) + " of \"" + expression +
                            "\": " + kiv_text::ToUtf8(error.reason.view()));
    }
    // The calculator opens over a host window standing in for the application's screen,
    // for a target field that receives the result on OK.
    CWnd owner;
    if (!owner.CreateEx(0, nullptr, L"kivutil", WS_POPUP, RECT{0, 0, 240, 320}, nullptr, 0)) return kExitFailed;
    HWND target = CreateWindowExW(0, L"EDIT", L"", WS_CHILD, 0, 0, 100, 20, owner.m_hWnd, nullptr, nullptr, nullptr);
    // The standard calculator opens first; the scientific one is the switch away from it.
    if (!LoadCalculator(owner.m_hWnd, target, true)) return kExitFailed;
    CCalcDlg* calc = kiv_ui::GetOpenCalculator();
    // The switch form of LoadCalculator, as the owner dialog calls it when the user
    // taps the calculator's switch button.
    if (scientific && calc->GetKind() != CCalcDlg::eScientific) {
        LoadCalculator(owner.m_hWnd, target, nullptr, true);
        calc = kiv_ui::GetOpenCalculator();
    }
    if (!calc) return kExitFailed;
    calc->GetCalculator().SetAngleMode(mode);
    calc->GetCalculator().SetDisplayDigits(digits);
    for (ECalcKey k : keys) {
        // Through the dialog's own button where it has one, as a tap would.
        if (HWND button = ::GetDlgItem(calc->m_hWnd, kCalcButtonBase + k)) ::SendMessageW(button, BM_CLICK, 0, 0);
        else calc->Press(k);
    }
    calc->Press(static_cast<ECalcKey>(-1));
    AfxPumpPendingMessages();
    std::cout << kiv_text::ToUtf8(calc->GetCalculator().GetDisplay().view()) << "\n";
    const bool saved = SaveDialogPicture(*calc, output);
    calc->DestroyWindow();
    owner.DestroyWindow();
    return saved ? kExitOk : kExitFailed;
}

}  // namespace kivutil
