// kivutil's live view: a window shown on the desktop through the live display, used
// until it is closed. Without a desktop, or in a build without the display, it says so.
#pragma once

#include "platform/mfc/Wnd.h"

namespace kivutil {

// Attaches the live display to this thread; on failure prints one line on stderr saying
// why and how to get a desktop, and answers false.
bool OpenDesktop();

// Runs the message loop with `window` on the desktop until it is hidden or destroyed (its
// desktop window closed, Escape, OK or Cancel), then lets go of the desktop. Exit status.
int RunOnDesktop(CWnd& window);

}  // namespace kivutil
