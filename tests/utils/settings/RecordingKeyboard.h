// A keyboard window of the class the library looks for ("Keybord Window") that answers the
// letters query and records every switch. The class outlives its windows on Windows, so
// every test of this suite must register it with this one procedure: a second procedure
// under the same name would never be called there.
#pragma once

#include <vector>

#include "platform/win32/Win32.h"

namespace kiv_test {

struct RecordingKeyboard {
    static inline bool alpha = false;
    static inline std::vector<LPARAM> switches;

    static LRESULT CALLBACK Proc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_COMMAND && wParam == 7) return alpha ? 1 : 0;
        if (message == WM_COMMAND && wParam == 8) {
            switches.push_back(lParam);
            alpha = lParam != 0;
            return 0;
        }
        return DefWindowProcW(window, message, wParam, lParam);
    }

    // A new keyboard window with letters off and nothing recorded; nullptr on failure.
    static HWND Create() {
        alpha = false;
        switches.clear();
        WNDCLASSW wc{};
        wc.lpfnWndProc = Proc;
        wc.lpszClassName = L"Keybord Window";
        RegisterClassW(&wc);  // already there from an earlier test on Windows
        return CreateWindowExW(0, L"Keybord Window", L"", 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    }
};

}  // namespace kiv_test
