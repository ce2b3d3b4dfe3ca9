// CKivOwnerDrawButton: a dialog's button whose face the dialog's own code draws. The
// control keeps its behaviour (taps, Space, Enter when focused, BN_CLICKED to the
// dialog); after every message the face is drawn again through DrawItem, so derived
// buttons only say what their face looks like.
#pragma once

#include "platform/kivutils/Heap.h"
#include "platform/mfc/Wnd.h"

// What a face is drawn for.
struct TButtonState {
    bool pushed = false;
    bool focused = false;
    bool enabled = true;
};

class CKivOwnerDrawButton : public CWnd, public SharedHeapObject {
public:
    using SharedHeapObject::operator new;
    using SharedHeapObject::operator delete;
    // Takes over the dialog's button with this identifier (best made BS_OWNERDRAW, so that
    // the dialog's push-button styling leaves it alone); FALSE when there is none.
    BOOL Attach(UINT id, CWnd* dialog);
    void Redraw();
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

protected:
    // The default face: the library's rounded push-button face with the window text.
    virtual void DrawItem(HDC dc, const RECT& rect, const TButtonState& state);
    // The rounded face in a colour, with the focus frame; the text area is returned.
    static RECT DrawFace(HDC dc, const RECT& rect, const TButtonState& state, COLORREF face);
    void DrawLabel(HDC dc, const RECT& rect, const TButtonState& state);

private:
    bool drawing_ = false;
};
