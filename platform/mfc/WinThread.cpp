// CWinThread over the Win32 subset's threads. The object is told which thread it runs on
// through a thread-local pointer, so that AfxEndThread can find it.
#include "platform/mfc/WinThread.h"

#include <new>

namespace {

thread_local CWinThread* currentThread = nullptr;

// Runs Delete as the thread ends, also when it ends by TerminateThread or AfxEndThread
// (both unwind the thread's stack).
struct DeleteAtEnd {
    CWinThread* thread;
    ~DeleteAtEnd() { thread->Delete(); }
};

DWORD WINAPI ThreadStart(LPVOID parameter) {
    auto* thread = static_cast<CWinThread*>(parameter);
    currentThread = thread;
    DeleteAtEnd guard{thread};
    if (thread->m_pfnThreadProc) return thread->m_pfnThreadProc(thread->m_pThreadParams);
    if (!thread->InitInstance()) return static_cast<DWORD>(thread->ExitInstance());
    return static_cast<DWORD>(thread->Run());
}

}  // namespace

CWinThread::CWinThread() = default;

CWinThread::CWinThread(AFX_THREADPROC procedure, LPVOID parameter)
    : m_pfnThreadProc(procedure), m_pThreadParams(parameter) {}

CWinThread::~CWinThread() {
    if (m_hThread) ::CloseHandle(m_hThread);
}

// The thread starts only once its handle and identifier are stored: an auto-deleting
// object may be gone as soon as its thread runs, so nothing touches it after the resume.
BOOL CWinThread::CreateThread(DWORD flags, UINT stackSize, LPSECURITY_ATTRIBUTES attributes) {
    DWORD id = 0;
    HANDLE thread = ::CreateThread(attributes, stackSize, ThreadStart, this, flags | CREATE_SUSPENDED, &id);
    if (!thread) return FALSE;
    m_hThread = thread;
    m_nThreadID = id;
    if (!(flags & CREATE_SUSPENDED)) ::ResumeThread(thread);
    return TRUE;
}

DWORD CWinThread::ResumeThread() { return ::ResumeThread(m_hThread); }
BOOL CWinThread::SetThreadPriority(int priority) { return ::SetThreadPriority(m_hThread, priority); }
int CWinThread::GetThreadPriority() { return ::GetThreadPriority(m_hThread); }

void CWinThread::Delete() {
    if (m_bAutoDelete) delete this;
}

CWinThread* AfxBeginThread(AFX_THREADPROC procedure, LPVOID parameter, int priority, UINT stackSize, DWORD flags,
                           LPSECURITY_ATTRIBUTES attributes) {
    auto* thread = new (std::nothrow) CWinThread(procedure, parameter);
    if (!thread) return nullptr;
    if (!thread->CreateThread(flags | CREATE_SUSPENDED, stackSize, attributes)) {
        delete thread;
        return nullptr;
    }
    thread->SetThreadPriority(priority);  // fails only for a level the device does not have
    if (!(flags & CREATE_SUSPENDED)) thread->ResumeThread();
    return thread;
}

void AfxEndThread(UINT exitCode, BOOL deleteThread) {
    if (currentThread && !deleteThread) currentThread->m_bAutoDelete = FALSE;
    ::ExitThread(exitCode);
}
