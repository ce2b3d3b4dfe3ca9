// What kivutil's dialog views share: saving a dialog as a picture after painting it and
// its controls, and the calculator dialog shown after a key sequence.
#pragma once

#include <string>

#include "platform/mfc/Wnd.h"
#include "utils/calculator/Calculator.h"

namespace kivutil {

// Paints the dialog and its controls and saves the window as PNG (or BMP by name);
// prints where it went, or one line on stderr and false.
bool SaveDialogPicture(CWnd& dialog, const std::string& path);

// Opens the calculator dialog (standard or scientific) over a host window, presses the
// keys of `expression` (calculator grammar; empty presses nothing), saves the picture
// and prints the display. Exit status as the commands return it.
int ShowCalculatorDialog(const std::string& expression, ECalcAngleMode mode, int digits, bool scientific,
                         const std::string& output);

}  // namespace kivutil
