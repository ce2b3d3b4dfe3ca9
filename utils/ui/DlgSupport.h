// What every dialog of the library shares: the standard and bold fonts, their
// application to a dialog's controls, the translation of a dialog's texts, and the
// process-wide stack of top-most dialogs.
#pragma once

#include "platform/mfc/Wnd.h"

namespace kiv_ui {

// The library's fonts: DejaVu Sans with a 13-pixel em, normal or bold weight. Made on
// first use and kept for the life of the process.
HFONT StandardFont();
HFONT BoldFont();

// A one-pixel frame just inside the rectangle, and a filled rectangle, in a colour.
void DrawFrame(HDC dc, const RECT& rect, COLORREF colour);
void FillColour(HDC dc, const RECT& rect, COLORREF colour);

// Whether the window is of the named class. Class names ignore case, and the system
// spells its own controls' classes its own way ("Edit", "Button"), whatever spelling
// made the window.
bool IsWindowOfClass(HWND window, const wchar_t* className);

// Sends WM_SETFONT to the window's children and, recursively, to theirs.
void ApplyFontToDescendants(HWND window, HFONT font);

// Passes the window's text and its descendants' texts through Xlate. List and combo
// items are data and stay as they are.
void TranslateDialogTexts(HWND window);

// The top-most dialog stack. Pushing a window already on the stack moves it to the top.
void PushTopMostDialog(HWND window);
void RemoveTopMostDialog(HWND window);
HWND GetTopMostDialog();  // null when the stack is empty
int GetTopMostDialogCount();

}  // namespace kiv_ui
