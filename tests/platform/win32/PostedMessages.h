// Reading back what a test posted to this thread's queue.
#pragma once

#include <vector>

#include "platform/win32/Win32.h"

namespace kiv_test {

// Takes every message waiting in this thread's queue. WM_PAINT is never posted: the
// system makes it up for as long as a shown window has something to paint, so it is
// dispatched (the default procedure validates the window) rather than returned, or the
// loop would not end. The bound stops a queue that refills itself from hanging a test.
inline std::vector<MSG> DrainPosted() {
    std::vector<MSG> all;
    MSG m;
    for (int turns = 0; turns < 100000 && PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE); ++turns) {
        if (m.message == WM_PAINT) DispatchMessageW(&m);
        else all.push_back(m);
    }
    return all;
}

}  // namespace kiv_test
