// The system's own controls as programs see them: the spelling of their classes.
#include <gtest/gtest.h>

#include <string>

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
