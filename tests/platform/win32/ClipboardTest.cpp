// Who may open the clipboard: it is held for a window, and any thread may open it again
// for that same window while another thread of the process has it open.
#include <gtest/gtest.h>

#include <thread>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

// Opens the clipboard for `window` on a thread of its own and closes it again there when
// that succeeded; returns whether it opened and the error it left.
std::pair<BOOL, DWORD> OpenOnAnotherThread(HWND window) {
    std::pair<BOOL, DWORD> result{FALSE, 0};
    std::thread([&] {
        SetLastError(0);
        result.first = OpenClipboard(window);
        result.second = GetLastError();
        if (result.first) CloseClipboard();
    }).join();
    return result;
}

}  // namespace

TEST(Clipboard, IsHeldForAWindowNotForAThread) {
    kiv_test::TempDeviceRoot root;
    const HWND mine = kiv_test::MakePlainWindow(10, 10), other = kiv_test::MakePlainWindow(10, 10);

    ASSERT_TRUE(OpenClipboard(mine));
    EXPECT_EQ(OpenOnAnotherThread(nullptr), (std::pair<BOOL, DWORD>{FALSE, ERROR_ACCESS_DENIED}));
    EXPECT_EQ(OpenOnAnotherThread(other).first, FALSE);
    EXPECT_EQ(OpenOnAnotherThread(mine).first, TRUE) << "the same window from another thread";
    // That thread closed it, so it is free for any window now.
    EXPECT_EQ(OpenOnAnotherThread(other).first, TRUE);

    ASSERT_TRUE(OpenClipboard(nullptr));
    EXPECT_EQ(OpenOnAnotherThread(nullptr).first, TRUE) << "opened for no window, any thread may open it for none";
    ASSERT_TRUE(OpenClipboard(nullptr));
    EXPECT_TRUE(CloseClipboard());
    DestroyWindow(mine);
    DestroyWindow(other);
}
