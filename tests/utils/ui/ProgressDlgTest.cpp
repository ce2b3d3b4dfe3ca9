// The progress dialog advanced by a worker thread's posted messages and cancelled by a
// key that arrives through the queue.
#include "utils/ui/ProgressDlg.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace {

TEST(ProgressDlg, WorkerAdvancesTheBarAndEscapeCancelsIt) {
    CKivProgressDlg d(L"Importing", L"Reading points...", 100);
    std::atomic<bool> sawCancel{false};
    std::vector<int> seen;
    const INT_PTR result = d.RunModal([&](CKivProgressDlg& dlg) {
        const HWND w = dlg.GetJobWindow();
        for (int i = 1; i <= 40; ++i) CKivProgressDlg::PostProgress(w, i);
        // The user presses Escape; the key reaches the dialog's queue like the keypad's.
        PostMessageW(w, WM_KEYDOWN, VK_ESCAPE, 1);
        // The job stops only once the dialog has seen the key.
        sawCancel = WaitForSingleObject(dlg.GetCancelEvent(), INFINITE) == WAIT_OBJECT_0 && dlg.IsCancelled();
        CKivProgressDlg::PostProgress(w, 41);
    });
    EXPECT_EQ(result, IDCANCEL);
    EXPECT_TRUE(sawCancel.load());
    EXPECT_TRUE(d.IsCancelled());
    EXPECT_TRUE(d.IsFinished());
}

TEST(ProgressDlg, AJobThatReturnsWithoutSayingSoStillClosesTheDialogWithOk) {
    CKivProgressDlg d(L"Exporting", L"Writing...", 10);
    const INT_PTR result = d.RunModal([&](CKivProgressDlg& dlg) {
        for (int i = 0; i <= 10; ++i) CKivProgressDlg::PostProgress(dlg.GetJobWindow(), i);
    });
    EXPECT_EQ(result, IDOK);
    EXPECT_FALSE(d.IsCancelled());
    EXPECT_EQ(d.m_hWnd, nullptr);
}

TEST(ProgressDlg, ModelessBarClampsToItsRangeAndCancelByTitleBarWaitsForTheJob) {
    CKivProgressDlg d(L"Copying", L"", 10);
    ASSERT_TRUE(d.Create());
    d.ShowWindow(SW_SHOW);
    // Positions posted from another thread, read in order by this one.
    HANDLE worker = CreateThread(nullptr, 0, [](LPVOID p) -> DWORD {
        for (int i : {3, 7, 25}) CKivProgressDlg::PostProgress(static_cast<HWND>(p), i);
        return 0;
    }, d.m_hWnd, 0, nullptr);
    WaitForSingleObject(worker, INFINITE);
    CloseHandle(worker);
    AfxPumpPendingMessages();
    EXPECT_EQ(d.GetPos(), 10);
    d.SendMessage(WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    EXPECT_TRUE(d.IsCancelled());
    EXPECT_TRUE(d.IsWindowVisible());  // still open until the job says it is done
    CKivProgressDlg::PostDone(d.m_hWnd);
    AfxPumpPendingMessages();
    EXPECT_FALSE(d.IsWindowVisible());
    EXPECT_EQ(d.GetResult(), IDCANCEL);
}

}  // namespace
