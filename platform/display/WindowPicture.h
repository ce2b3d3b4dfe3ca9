// What a screen shows of a top-level window on the host: the window's own surface with
// each visible child's surface laid over it, copied as the windows last drew them.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/win32/Win32.h"

namespace kiv_display {

// A picture of 0x00RRGGBB pixels, rows top-down.
struct TWindowPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

// Copies the window's surface and then, depth first in creation order, each visible
// child's surface at its place, clipped to its parent, as a screen stacks them. No
// window is asked to paint. False when the window does not exist.
bool ComposeWindowPicture(HWND window, TWindowPicture& picture);

// Sends WM_PAINT to the window and then to each visible descendant: the paint a desktop
// asks of a window it shows for the first time or that asked to be painted again.
void PaintWindowTree(HWND window);

}  // namespace kiv_display
