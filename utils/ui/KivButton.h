// CKivButton: the library's push button. Subclassing a dialog's push buttons gives them
// one look on every screen: a flat face with a rounded frame and the library's font.
#pragma once

#include "platform/mfc/Wnd.h"

class CKivButton : public CWnd {
public:
    // Subclasses every push button among the dialog's children; each object lives until
    // its button is destroyed.
    static int SubclassAllBtnsInDlg(CWnd* dialog);
    static bool IsKivButton(HWND window);
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

protected:
    void PostNcDestroy() override { delete this; }

private:
    void Draw();
    bool drawing_ = false;
};
