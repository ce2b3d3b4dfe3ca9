// CWinThread and AfxBeginThread: a worker thread object over CreateThread. A thread
// started with a procedure runs it; otherwise InitInstance, Run and ExitInstance.
#pragma once

#include "platform/mfc/Afx.h"

using AFX_THREADPROC = UINT (*)(LPVOID);

class CWinThread : public CObject {
public:
    CWinThread();
    CWinThread(AFX_THREADPROC procedure, LPVOID parameter);
    ~CWinThread() override;  // closes the thread handle
    CWinThread(const CWinThread&) = delete;
    CWinThread& operator=(const CWinThread&) = delete;

    // Starts the thread (suspended with CREATE_SUSPENDED); m_hThread and m_nThreadID are
    // set before it runs. Without CREATE_SUSPENDED an auto-deleting object may be gone by
    // the time this returns. A stack size below what the host needs is raised to a safe
    // minimum.
    BOOL CreateThread(DWORD flags = 0, UINT stackSize = 0, LPSECURITY_ATTRIBUTES attributes = nullptr);
    DWORD ResumeThread();
    BOOL SetThreadPriority(int priority);
    int GetThreadPriority();
    operator HANDLE() const { return m_hThread; }

    virtual BOOL InitInstance() { return FALSE; }
    virtual int Run() { return 0; }
    virtual int ExitInstance() { return 0; }
    // Deletes the object when m_bAutoDelete is set; called as the thread ends.
    virtual void Delete();

    HANDLE m_hThread = nullptr;
    DWORD m_nThreadID = 0;
    BOOL m_bAutoDelete = TRUE;
    AFX_THREADPROC m_pfnThreadProc = nullptr;
    LPVOID m_pThreadParams = nullptr;
};

// Creates the thread suspended, applies the priority where the host allows it (the
// device's levels, THREAD_PRIORITY_NORMAL by default) and starts it unless
// CREATE_SUSPENDED is given. The object deletes itself when the thread ends, unless
// m_bAutoDelete is cleared before it does. Null when the thread cannot be created.
CWinThread* AfxBeginThread(AFX_THREADPROC procedure, LPVOID parameter, int priority = THREAD_PRIORITY_NORMAL,
                           UINT stackSize = 0, DWORD flags = 0, LPSECURITY_ATTRIBUTES attributes = nullptr);

// Ends the calling thread with `exitCode`; `deleteThread` FALSE keeps its CWinThread.
void AfxEndThread(UINT exitCode, BOOL deleteThread = TRUE);
