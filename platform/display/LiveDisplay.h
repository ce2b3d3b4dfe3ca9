// The live display: shows the visible top-level windows of the GUI thread in real
// desktop windows and feeds the desktop's mouse and keyboard into the message queues, so
// a person can use the dialogs that otherwise run headless. It presents the very
// surfaces the windows draw into; nothing is drawn twice. Optional: without it, or
// without a desktop, everything stays headless.
//
// The desktop's keys stand for the controller's: F1 to F9, the arrows, Enter, Escape,
// Tab, Backspace, Delete, Home, End, Shift, and Insert for the alpha key. Typed
// characters arrive as the keypad types them (see InputFeed.h).
#pragma once

#include <string>

namespace kiv_display {

// The desktop key that stands for the controller's alpha key.
constexpr const char* kAlphaKeyName = "Insert";

// Attaches the display to the calling thread, which owns the windows to show and reads
// their messages. From then on, whenever that thread waits in GetMessageW (or finds
// nothing in PeekMessageW), the display takes its turn. False, with a one-line reason,
// where no desktop can be reached (no DISPLAY or WAYLAND_DISPLAY, or the desktop refuses).
bool Attach(std::string& reason);
// Closes the desktop windows and lets go of the desktop; the windows go on headless.
void Detach();
bool IsAttached();

// One turn: the desktop's input goes into the queues, windows that asked to be painted
// are painted, windows shown since the last turn get desktop windows, and windows whose
// pixels changed are presented again. A loop that never waits for messages calls it.
void Pump();

}  // namespace kiv_display
