// What each of the host's standard controls keeps behind GWLP_USERDATA, and what the
// controls' files share: telling the owner, painting, and selecting an item of a list.
#pragma once

#ifndef _WIN32

#include <limits>
#include <string>
#include <vector>

#include "platform/win32/Controls.h"

namespace kiv_win32::controls {

enum class Kind { Static, Edit, Button, ListBox, ComboBox };

// What a control's handler answers for a message it leaves to DefWindowProcW; no
// message of the controls answers this value itself.
constexpr LRESULT kUnhandled = std::numeric_limits<LRESULT>::min();

struct ControlState {
    Kind kind;
    HFONT font = nullptr;
    // edit: selection anchor and caret; the text itself is the window text
    int anchor = 0;
    int caret = 0;
    int limit = 30000;
    bool readOnly = false;
    // button
    int check = 0;
    bool pushed = false;
    // list box and combo box
    std::vector<std::wstring> items;
    int current = -1;
    // combo box: its drop-down list, kept for the box's life; whether it is open, its first
    // shown row, the selection it opened with, whether the stylus is down in it, and the
    // height the box was made with, the list's room included
    HWND dropList = nullptr;
    bool dropped = false;
    int top = 0;
    int openedWith = -1;
    bool pressing = false;
    int droppedHeight = 0;
    int itemHeight = 0;  // a row in the box's font, measured by FitBox
};

inline ControlState* StateOf(HWND w) { return reinterpret_cast<ControlState*>(GetWindowLongPtrW(w, GWLP_USERDATA)); }
inline bool Focused(HWND w) { return GetFocus() == w; }

// Tells the owner `code` in a WM_COMMAND from the control.
void Notify(HWND w, WORD code);

void Fill(HDC dc, const RECT& r, COLORREF c);
void Frame(HDC dc, const RECT& r, COLORREF c, int width = 1);
// The height of a line of the font selected into `dc`, or of the control's font.
int LineHeight(HDC dc);
int FontHeight(HWND w, const ControlState& s);

// Which rows a list shows: the first, how many, how tall each is, and the margin inside
// its frame.
struct RowLayout {
    int first;
    int rows;
    int height;
    int inset;
};

// The rows of a list box or of a combo box's drop-down list, `selected` highlighted.
void PaintRows(HDC dc, const RECT& r, const std::vector<std::wstring>& items, int selected, RowLayout layout,
               COLORREF frame, int frameWidth);
// Paints the control's whole client area.
void Paint(HWND w);
// Makes item `index` (-1 for none) the selected one of a list box or combo box; false,
// changing nothing, for an index past the items. `notify` tells the owner of a change.
bool Select(HWND w, ControlState& s, int index, bool notify);

// The combo box's own (ComboBox.cpp).
extern const wchar_t kDropListClass[];
LRESULT CALLBACK DropListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam);
// What only a combo box does; kUnhandled for what it shares with the list box.
LRESULT ComboMessage(HWND w, ControlState& s, UINT message, WPARAM wParam, LPARAM lParam);
void PaintCombo(HWND w, HDC dc, const RECT& r, ControlState& s);
void PaintDropList(HWND list);
// Scrolls an open list so that the selected item is in view.
void ScrollIntoView(ControlState& s);
// Measures a row of the box's font and gives the box its selection field's height,
// keeping its place and width; done again whenever the font changes.
void FitBox(HWND w, ControlState& s);

}  // namespace kiv_win32::controls

#endif  // _WIN32
