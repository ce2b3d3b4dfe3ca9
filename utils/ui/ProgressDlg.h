// CKivProgressDlg: a progress bar over a long job that runs on a worker thread. The
// worker never touches the dialog: it posts WM_KIV_PROGRESS with the position (and
// WM_KIV_PROGRESS_DONE at the end) to the dialog's window, and watches IsCancelled() or
// waits on the cancel event. Escape or the title bar's Cancel asks the job to stop; the
// dialog closes when the worker says it is done, IDOK when it ran to its end, IDCANCEL
// when it was cancelled. The bar is the window class "KivProgressBar" (PBM_ messages).
#pragma once

#include <atomic>
#include <functional>

#include "utils/ui/DlgBase.h"

constexpr UINT WM_KIV_PROGRESS = WM_APP + 0x120;       // wParam the position
constexpr UINT WM_KIV_PROGRESS_DONE = WM_APP + 0x121;

constexpr UINT PBM_SETRANGE32 = WM_USER + 6;  // wParam low, lParam high
constexpr UINT PBM_SETPOS = WM_USER + 2;      // the old position
constexpr UINT PBM_GETPOS = WM_USER + 8;
constexpr const wchar_t* kProgressBarClass = L"KivProgressBar";

constexpr int IDC_PROGRESS_TEXT = 2001;
constexpr int IDC_PROGRESS_BAR = 2002;

class CKivProgressDlg : public CDlgBase {
public:
    CKivProgressDlg(LPCWSTR caption, LPCWSTR text, int range, CWnd* parent = nullptr);
    ~CKivProgressDlg() override;

    // Modeless, for a caller that runs its own loop.
    BOOL Create(CWnd* parent = nullptr);
    // Runs `job` on a worker thread while the dialog shows its progress; returns IDOK or
    // IDCANCEL once the job has returned. The job posts its positions with PostProgress.
    INT_PTR RunModal(const std::function<void(CKivProgressDlg&)>& job);

    // From any thread.
    bool IsCancelled() const { return m_cancelled.load(); }
    HANDLE GetCancelEvent() const { return m_cancelEvent; }
    // The window jobs post to; fixed while a job of RunModal runs.
    HWND GetJobWindow() const { return m_jobWindow; }
    static BOOL PostProgress(HWND dialog, int position);
    static BOOL PostDone(HWND dialog);

    // The user-interface thread's view.
    int GetPos() const;
    int GetRange() const { return m_range; }
    bool IsFinished() const { return m_finished; }
    int GetResult() const { return m_result; }
    void RequestCancel();

    BOOL OnInitDialog() override;
    int EscapeKey() override;
    void OnCancel() override { RequestCancel(); }
    void OnOK() override {}

protected:
    DECLARE_MESSAGE_MAP()
    LRESULT OnProgress(WPARAM wParam, LPARAM lParam);
    LRESULT OnDone(WPARAM wParam, LPARAM lParam);

private:
    void RegisterTemplate() const;
    CKivStringT m_caption;
    CKivStringT m_text;
    int m_range;
    std::atomic<bool> m_cancelled{false};
    HANDLE m_cancelEvent = nullptr;
    bool m_finished = false;
    int m_result = 0;
    const std::function<void(CKivProgressDlg&)>* m_job = nullptr;
    HANDLE m_worker = nullptr;
    HWND m_jobWindow = nullptr;
};
