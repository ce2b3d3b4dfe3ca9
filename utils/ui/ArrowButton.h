// CKivArrowButton: an on-screen arrow key. Its face is an arrow; tapping it gives its
// dialog the arrow key of its direction (a key press and its release), so the dialog's
// ArrowUpKey ... ArrowRightKey handlers and the focused control see it exactly as the
// controller's hardware arrow. Screens use it where a stylus is quicker than the keypad.
#pragma once

#include "utils/ui/OwnerDrawButton.h"

class CKivArrowButton : public CKivOwnerDrawButton {
public:
    enum EDirection { eUp, eDown, eLeft, eRight };
    explicit CKivArrowButton(EDirection direction = eUp) : direction_(direction) {}
    void SetDirection(EDirection direction) {
        direction_ = direction;
        Redraw();
    }
    EDirection GetDirection() const { return direction_; }
    BYTE GetVirtualKey() const;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

protected:
    void DrawItem(HDC dc, const RECT& rect, const TButtonState& state) override;

private:
    void SendArrow();
    EDirection direction_;
    HWND focusBeforeTap_ = nullptr;  // between the press and the release of a tap
};
