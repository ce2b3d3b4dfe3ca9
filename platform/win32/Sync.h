// Events, mutexes, critical sections, threads, Sleep and GetTickCount of the Win32
// subset. Events, mutexes and threads are objects of the one handle table: CloseHandle and
// WaitForSingleObject reach them through their handles like any other kernel object.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Handles.h"
#include "platform/win32/Win32Types.h"

// ---- events --------------------------------------------------------------------------

constexpr DWORD EVENT_PULSE = 1;
constexpr DWORD EVENT_RESET = 2;
constexpr DWORD EVENT_SET = 3;

constexpr DWORD SYNCHRONIZE = 0x00100000;
constexpr DWORD EVENT_MODIFY_STATE = 0x0002;
constexpr DWORD EVENT_ALL_ACCESS = 0x001F0003;

// An event whose name is already in use by another event of the process returns a new
// handle to that event (its reset mode and state are kept) and sets ERROR_ALREADY_EXISTS;
// names are compared as typed, as on the device.
HANDLE CreateEventW(LPSECURITY_ATTRIBUTES attributes, BOOL manualReset, BOOL initialState, LPCWSTR name);
// A new handle to the named event; null and ERROR_FILE_NOT_FOUND when no such event exists.
HANDLE OpenEventW(DWORD access, BOOL inherit, LPCWSTR name);
BOOL EventModify(HANDLE event, DWORD action);
// An auto-reset event releases the thread that has waited longest and stays
// non-signalled; it is left signalled only when no thread waits. A manual-reset event
// releases every waiting thread and stays signalled.
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);
// Releases the threads waiting at this moment (a manual-reset event) or the one that has
// waited longest (an auto-reset event) and leaves the event non-signalled; with no thread
// waiting it does nothing but that.
BOOL PulseEvent(HANDLE event);

// ---- mutexes -------------------------------------------------------------------------

constexpr DWORD MUTEX_ALL_ACCESS = 0x001F0001;
constexpr DWORD ERROR_NOT_OWNER = 288;

// A mutex is owned by one thread at a time and recursively: WaitForSingleObject takes it
// (again, by its owner), ReleaseMutex gives back one take. A thread that ends while it
// owns a mutex abandons it: the next thread to take it gets WAIT_ABANDONED and owns it.
// Named mutexes are shared process-wide by name like named events (their own names: an
// event and a mutex may carry the same name). An existing name returns a new handle to
// that mutex with ERROR_ALREADY_EXISTS and ignores `initialOwner`.
HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES attributes, BOOL initialOwner, LPCWSTR name);
// A new handle to the named mutex; null and ERROR_FILE_NOT_FOUND when no such mutex exists.
HANDLE OpenMutexW(DWORD access, BOOL inherit, LPCWSTR name);
// FALSE with ERROR_NOT_OWNER when the calling thread does not own the mutex.
BOOL ReleaseMutex(HANDLE mutex);

// ---- critical sections ---------------------------------------------------------------

// Recursive, like the device's: the owning thread may enter again and leaves as often.
// A thread blocked in EnterCriticalSection can be terminated there; it then ends without
// having entered.
struct CRITICAL_SECTION {
    alignas(16) unsigned char opaque[64];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

void InitializeCriticalSection(LPCRITICAL_SECTION section);
void DeleteCriticalSection(LPCRITICAL_SECTION section);
void EnterCriticalSection(LPCRITICAL_SECTION section);
void LeaveCriticalSection(LPCRITICAL_SECTION section);
BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section);

// ---- threads --------------------------------------------------------------------------

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);

constexpr DWORD CREATE_SUSPENDED = 0x00000004;
constexpr DWORD STILL_ACTIVE = 259;

// The device's priority levels: a lower number runs first. The host maps them to nice
// values and applies them where it is allowed to (raising needs privileges).
constexpr int THREAD_PRIORITY_TIME_CRITICAL = 0;
constexpr int THREAD_PRIORITY_HIGHEST = 1;
constexpr int THREAD_PRIORITY_ABOVE_NORMAL = 2;
constexpr int THREAD_PRIORITY_NORMAL = 3;
constexpr int THREAD_PRIORITY_BELOW_NORMAL = 4;
constexpr int THREAD_PRIORITY_LOWEST = 5;
constexpr int THREAD_PRIORITY_ABOVE_IDLE = 6;
constexpr int THREAD_PRIORITY_IDLE = 7;
constexpr int THREAD_PRIORITY_ERROR_RETURN = 0x7FFFFFFF;

// A stack size below what the host needs is raised to a safe minimum; 0 takes the
// host's default.
HANDLE CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize, LPTHREAD_START_ROUTINE start,
                    LPVOID parameter, DWORD creationFlags, LPDWORD threadId);
// Starts a thread created with CREATE_SUSPENDED; returns the previous suspend count
// (1), 0 for a running thread, or 0xFFFFFFFF for a bad handle.
DWORD ResumeThread(HANDLE thread);
// The host cannot stop a thread at an arbitrary instruction. The thread is cancelled at
// its next wait or sleep (WaitForSingleObject, Sleep, GetMessageW, a cross-thread
// SendMessageW, an EnterCriticalSection that has to wait, or one in progress now): its
// stack unwinds, so locks held through guards are released, and it ends with
// `exitCode`. Returns at once, as on the device; wait on the handle before freeing
// anything the thread may still touch. A catch (...) in the thread that does not
// rethrow would swallow the cancellation. A wait made while the stack unwinds, or while
// the ended thread destroys its windows, is not cancelled again.
BOOL TerminateThread(HANDLE thread, DWORD exitCode);
// Ends the calling thread with `exitCode` (unwinding its stack); on a thread that this
// subset did not create, it does nothing.
void ExitThread(DWORD exitCode);
// STILL_ACTIVE while the thread runs, then its exit code.
BOOL GetExitCodeThread(HANDLE thread, LPDWORD exitCode);
BOOL SetThreadPriority(HANDLE thread, int priority);
int GetThreadPriority(HANDLE thread);
DWORD GetCurrentThreadId();

// A sleep is a cancellation point for TerminateThread; Sleep(0) yields.
void Sleep(DWORD milliseconds);
// Milliseconds from a fixed point of a monotonic clock, wrapping at 2^32 (about 49.7
// days): measure intervals by unsigned subtraction.
DWORD GetTickCount();
#endif  // _WIN32
