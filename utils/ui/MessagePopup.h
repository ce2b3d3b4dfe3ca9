// The library's message popup: a small modal dialog with the text, a caption and the
// buttons of an MB_ type (OK; OK and Cancel; Yes and No; Yes, No and Cancel; Retry and
// Cancel; Abort, Retry and Ignore). The result is the pressed button's IDOK, IDYES, ...
#pragma once

#include "platform/mfc/Dialog.h"

namespace kiv_ui {
// Runs the popup's loop until a button is pressed (Enter presses the first, Escape gives
// IDCANCEL, or for a popup without Cancel the last button).
int MessagePopup(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type);
// The popup's template for a text, caption and type, so that it can be shown modeless.
CDialogTemplate MessagePopupTemplate(LPCWSTR text, LPCWSTR caption, UINT type);
}  // namespace kiv_ui
