// CKivMutex: a mutex over the Win32 subset's mutex object, named (shared by every user of
// the name in the process) or not, taken with a timeout; CKivMutexLock holds it for a scope.
#pragma once

#include "platform/kivutils/Heap.h"
#include "platform/win32/Win32.h"

class CKivMutex : public SharedHeapObject {
public:
    // A null or empty name makes a mutex of its own; a name already in use opens that
    // mutex (AlreadyExisted() then tells so).
    explicit CKivMutex(const wchar_t* name = nullptr);
    ~CKivMutex();
    CKivMutex(const CKivMutex&) = delete;
    CKivMutex& operator=(const CKivMutex&) = delete;

    // False only when the system could not make the mutex; every call then fails.
    bool IsValid() const { return handle_ != nullptr; }
    bool AlreadyExisted() const { return existed_; }

    // Takes the mutex within `milliseconds` (INFINITE: waits as long as it takes). The
    // owner may take it again and gives it back as often. A mutex whose owner thread
    // ended without giving it back is taken all the same; WasAbandoned() then says the
    // data it guards may be half-changed.
    bool Lock(DWORD milliseconds = INFINITE);
    // False when the calling thread does not own the mutex.
    bool Unlock();
    // Whether the last successful Lock on this object found the mutex abandoned.
    bool WasAbandoned() const { return abandoned_; }
    HANDLE GetHandle() const { return handle_; }

private:
    HANDLE handle_ = nullptr;
    bool existed_ = false;
    bool abandoned_ = false;
};

// Takes the mutex on construction and gives it back at the end of the scope, if taken.
class CKivMutexLock : public SharedHeapObject {
public:
    explicit CKivMutexLock(CKivMutex& mutex, DWORD milliseconds = INFINITE);
    ~CKivMutexLock();
    CKivMutexLock(const CKivMutexLock&) = delete;
    CKivMutexLock& operator=(const CKivMutexLock&) = delete;

    // False when the timeout passed before the mutex could be taken.
    bool IsLocked() const { return locked_; }
    // Gives the mutex back before the scope ends.
    void Unlock();

private:
    CKivMutex& mutex_;
    bool locked_ = false;
};
