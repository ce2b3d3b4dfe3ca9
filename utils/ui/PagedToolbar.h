// CKivPagedToolbar: the row of soft keys along the bottom of a screen. Its buttons come
// in pages of a few; F1, F2, ... press the buttons of the page shown (the dialog hears
// the button's command as WM_COMMAND), and the page key (F9 unless set otherwise), or a
// tap on the page button at the right, turns to the next page, after the last back to
// the first. The dialog routes keys to it from its PreTranslateMessage.
#pragma once

#include <vector>

#include "platform/kivutils/Heap.h"
#include "platform/mfc/Wnd.h"

constexpr int kPagedToolbarHeight = 26;

class CKivPagedToolbar : public CWnd, public SharedHeapObject {
public:
    using SharedHeapObject::operator new;
    using SharedHeapObject::operator delete;
    // Along the bottom of the dialog's client area.
    BOOL Create(CWnd* dialog, UINT id, int buttonsPerPage = 4);
    int AddButton(LPCWSTR text, UINT command);
    void SetPageKey(BYTE virtualKey) { pageKey_ = virtualKey; }

    int GetPageCount() const;
    int GetPage() const { return page_; }
    void SetPage(int page);
    void NextPage() { SetPage(GetPageCount() ? (page_ + 1) % GetPageCount() : 0); }
    int GetButtonsPerPage() const { return perPage_; }
    // The command of the button in a slot of the page shown; 0 for an empty slot.
    UINT GetSlotCommand(int slot) const;
    // Presses a slot as a tap would: posts its command to the dialog; FALSE for an empty
    // or disabled slot.
    BOOL PressSlot(int slot);
    void EnableButton(UINT command, BOOL enable);
    // The page key turns the page; F1 to Fn press the slots. TRUE when the key was used.
    BOOL TranslateKey(const MSG* msg);
    RECT GetSlotRect(int slot) const;  // the page button is slot buttonsPerPage
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    struct Button {
        CKivStringT text;
        UINT command = 0;
        bool enabled = true;
    };
    const Button* SlotButton(int slot) const;
    void Paint();
    std::vector<Button> buttons_;
    int perPage_ = 4;
    int page_ = 0;
    BYTE pageKey_ = VK_F9;
    int pressed_ = -1;
};
