// The system's own controls as programs see them: the spelling of their classes, and a
// button's BM_CLICK arriving as the press and release of a tap.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/win32/Win32.h"
#ifndef _WIN32
#include "platform/win32/Controls.h"
#endif
#include "tests/support/TestSupport.h"

namespace {

HWND MakeControl(const wchar_t* className, HWND parent, int id) {
    return CreateWindowExW(0, className, L"", WS_CHILD | WS_VISIBLE, 0, 0, 40, 20, parent,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
}

std::wstring ClassOf(HWND window) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    return name;
}

std::vector<UINT> g_buttonMessages;
std::vector<WPARAM> g_commands;
WNDPROC g_buttonProc = nullptr;

LRESULT CALLBACK RecordingButton(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_LBUTTONDOWN || message == WM_LBUTTONUP || message == BM_CLICK) g_buttonMessages.push_back(message);
    return CallWindowProcW(g_buttonProc, window, message, wParam, lParam);
}

LRESULT CALLBACK RecordingParent(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND) g_commands.push_back(wParam);
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

TEST(ControlClasses, AreSpelledTheSystemsWayWhateverSpellingMadeThem) {
    kiv_test::TempDeviceRoot root;
    kiv_win32::RegisterStandardControls();
    HWND parent = kiv_test::MakePlainWindow(100, 100);
    const struct {
        const wchar_t* made;
        const wchar_t* reported;
    } cases[] = {{L"EDIT", L"Edit"},         {L"button", L"Button"},     {L"STATIC", L"Static"},
                 {L"LISTBOX", L"ListBox"}, {L"combobox", L"ComboBox"}};
    int id = 100;
    for (const auto& c : cases) {
        HWND control = MakeControl(c.made, parent, ++id);
        ASSERT_NE(control, nullptr) << static_cast<const void*>(c.made);
        EXPECT_EQ(ClassOf(control), c.reported);
    }
    DestroyWindow(parent);
}

TEST(ControlClasses, ButtonClickIsAPressAndAReleaseWithOneNotification) {
    kiv_test::TempDeviceRoot root;
    kiv_win32::RegisterStandardControls();
    WNDCLASSW parentClass{};
    parentClass.lpfnWndProc = RecordingParent;
    parentClass.lpszClassName = L"KivTestRecordingParent";
    RegisterClassW(&parentClass);  // already there from an earlier run on Windows
    HWND parent = CreateWindowExW(0, L"KivTestRecordingParent", L"", 0, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(parent, nullptr);
    HWND button = MakeControl(L"BUTTON", parent, 7);
    ASSERT_NE(button, nullptr);
    g_buttonProc = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(button, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&RecordingButton)));
    g_buttonMessages.clear();
    g_commands.clear();

    SendMessageW(button, BM_CLICK, 0, 0);
    EXPECT_EQ(g_buttonMessages, (std::vector<UINT>{BM_CLICK, WM_LBUTTONDOWN, WM_LBUTTONUP}));
    EXPECT_EQ(g_commands, (std::vector<WPARAM>{MAKEWPARAM(7, BN_CLICKED)}));
    EXPECT_EQ(GetFocus(), button) << "the press focuses the button";
    SetWindowLongPtrW(button, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(g_buttonProc));
    DestroyWindow(parent);
}
