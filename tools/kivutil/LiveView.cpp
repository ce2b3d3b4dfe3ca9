// The live view of kivutil's dialogs. The display is optional: a build without SDL2 has
// no kivdisplay, and the view then answers as a machine without a desktop does.
#include "tools/kivutil/LiveView.h"

#include <iostream>
#include <string>

#include "platform/host/TextCodec.h"
#include "tools/kivutil/Command.h"
#ifdef KIV_HAVE_DISPLAY
#include "platform/display/LiveDisplay.h"
#endif

namespace kivutil {

bool OpenDesktop() {
#ifdef KIV_HAVE_DISPLAY
    std::string reason;
    if (kiv_display::Attach(reason)) return true;
    std::cerr << "kivutil: cannot show a window: " << reason << "; run it on a desktop, or leave out --show\n";
#else
    std::cerr << "kivutil: cannot show a window: this kivutil was built without the live display (SDL2); "
                 "leave out --show\n";
#endif
    return false;
}

int RunOnDesktop(CWnd& window) {
#ifdef KIV_HAVE_DISPLAY
    CKivStringT title;
    window.GetWindowText(title);
    std::cout << "showing \"" << kiv_text::ToUtf8(title.view())
              << "\": F1-F9, the arrows, Enter, Escape and Tab are the controller's keys, "
              << kiv_display::kAlphaKeyName << " its alpha key; close the window or press Escape to end" << std::endl;
    MSG msg{};
    while (::IsWindow(window.m_hWnd) && window.IsWindowVisible()) {
        if (::GetMessageW(&msg, nullptr, 0, 0) <= 0) break;
        if (!AfxPreTranslateMessage(&msg)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
    }
    kiv_display::Detach();
    return kExitOk;
#else
    (void)window;
    return kExitBadInput;
#endif
}

}  // namespace kivutil
