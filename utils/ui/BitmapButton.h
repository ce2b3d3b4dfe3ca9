// CKivBitmapButton: an owner-drawn button that shows a bitmap (and its text to the
// right of it, when it has one), with its own bitmaps for the pressed and disabled states.
#pragma once

#include "utils/ui/OwnerDrawButton.h"

class CKivBitmapButton : public CKivOwnerDrawButton {
public:
    CKivBitmapButton() = default;
    ~CKivBitmapButton() override;
    // The bitmaps belong to the button from then on; a missing pressed or disabled bitmap
    // falls back to the normal one (shifted when pressed, greyed when disabled).
    void SetBitmaps(HBITMAP normal, HBITMAP pressed = nullptr, HBITMAP disabled = nullptr);
    // The library's drawn bitmaps by resource identifier (the title bar's 13540 to 13546).
    BOOL LoadBitmaps(UINT normal, UINT pressed = 0, UINT disabled = 0);
    HBITMAP GetBitmap() const { return normal_; }

protected:
    void DrawItem(HDC dc, const RECT& rect, const TButtonState& state) override;

private:
    void Free();
    HBITMAP normal_ = nullptr;
    HBITMAP pressed_ = nullptr;
    HBITMAP disabled_ = nullptr;
};
