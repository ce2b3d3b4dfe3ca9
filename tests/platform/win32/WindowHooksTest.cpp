// The live display's hooks into the windows family: word of changed pixels and
// placement, and the GUI thread's turn while it waits for messages. Only the Linux host
// has them: on Windows the system shows the windows itself.
#ifndef _WIN32
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "platform/win32/Win32.h"
#include "platform/win32/WindowHooks.h"
#include "tests/support/TestSupport.h"

using kiv_win32::WindowChange;

namespace {

std::vector<std::pair<HWND, WindowChange>> changes;
void Record(HWND window, WindowChange change) { changes.emplace_back(window, change); }

int turns = 0;
void PostOnThirdTurn() {
    if (++turns == 3) PostMessageW(nullptr, WM_USER + 7, 0, 0);
}

HWND MakeWindow(HWND parent) {
    WNDCLASSW wc{};
    wc.lpfnWndProc = DefWindowProcW;
    wc.lpszClassName = L"hooked";
    RegisterClassW(&wc);
    return CreateWindowExW(0, L"hooked", L"", parent ? WS_CHILD : WS_POPUP, 0, 0, 20, 10, parent, nullptr, nullptr,
                           nullptr);
}

}  // namespace

TEST(WindowChangeHook, HearsDrawingPlacementAndDestructionButNotMemoryDrawing) {
    kiv_test::TempDeviceRoot root;
    changes.clear();
    kiv_win32::SetWindowChangeHook(&Record);
    HWND top = MakeWindow(nullptr);
    HWND child = MakeWindow(top);
    HDC dc = GetDC(child);
    ReleaseDC(child, dc);
    HDC memory = CreateCompatibleDC(nullptr);
    DeleteDC(memory);
    ShowWindow(top, SW_SHOW);
    ShowWindow(top, SW_SHOW);  // no change, nothing to hear
    MoveWindow(child, 2, 2, 5, 5, TRUE);
    DestroyWindow(top);
    kiv_win32::SetWindowChangeHook(nullptr);
    const std::vector<std::pair<HWND, WindowChange>> expected = {
        {child, WindowChange::Pixels},    {top, WindowChange::Placement},   {child, WindowChange::Placement},
        {top, WindowChange::Destroyed},   {child, WindowChange::Destroyed},
    };
    EXPECT_EQ(changes, expected);
}

TEST(MessageWaitHook, RunsWhileGetMessageWaitsAndWhatItPostsEndsTheWait) {
    kiv_test::TempDeviceRoot root;
    turns = 0;
    kiv_win32::SetMessageWaitHook(&PostOnThirdTurn, 1);
    MSG msg{};
    ASSERT_TRUE(GetMessageW(&msg, nullptr, 0, 0));
    EXPECT_EQ(msg.message, WM_USER + 7);
    EXPECT_EQ(turns, 3);
    // PeekMessageW gives the hook its turn when it finds nothing, and then sees its post.
    turns = 2;
    EXPECT_TRUE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.message, WM_USER + 7);
    kiv_win32::SetMessageWaitHook(nullptr, 0);
    turns = 2;
    EXPECT_FALSE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(turns, 2) << "a removed hook is not called";
}

#endif  // _WIN32
