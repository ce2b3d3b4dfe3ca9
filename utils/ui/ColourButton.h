// CKivColourButton: a button that shows a colour as a swatch beside its text. Left and
// Right step through its palette while it has the focus (the dialog hears of each change
// as BN_CLICKED); a tap or Enter reports BN_CLICKED as on any button.
#pragma once

#include <vector>

#include "utils/ui/OwnerDrawButton.h"

class CKivColourButton : public CKivOwnerDrawButton {
public:
    CKivColourButton();
    void SetColour(COLORREF colour);
    COLORREF GetColour() const { return colour_; }
    // The colours Left and Right step through; the current colour is kept when it is in
    // the palette, otherwise the first one is taken.
    void SetPalette(const std::vector<COLORREF>& palette);
    const std::vector<COLORREF>& GetPalette() const { return palette_; }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

protected:
    void DrawItem(HDC dc, const RECT& rect, const TButtonState& state) override;

private:
    void Step(int by);
    COLORREF colour_;
    std::vector<COLORREF> palette_;
};
