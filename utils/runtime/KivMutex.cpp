// CKivMutex and CKivMutexLock over CreateMutexW, WaitForSingleObject and ReleaseMutex.
#include "utils/runtime/KivMutex.h"

CKivMutex::CKivMutex(const wchar_t* name) {
    handle_ = CreateMutexW(nullptr, FALSE, name && *name ? name : nullptr);
    existed_ = handle_ != nullptr && GetLastError() == ERROR_ALREADY_EXISTS;
}

CKivMutex::~CKivMutex() {
    if (handle_) CloseHandle(handle_);
}

bool CKivMutex::Lock(DWORD milliseconds) {
    if (!handle_) return false;
    const DWORD result = WaitForSingleObject(handle_, milliseconds);
    if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED) return false;
    abandoned_ = result == WAIT_ABANDONED;
    return true;
}

bool CKivMutex::Unlock() { return handle_ && ReleaseMutex(handle_); }

CKivMutexLock::CKivMutexLock(CKivMutex& mutex, DWORD milliseconds) : mutex_(mutex) {
    locked_ = mutex_.Lock(milliseconds);
}

CKivMutexLock::~CKivMutexLock() { Unlock(); }

void CKivMutexLock::Unlock() {
    if (locked_) mutex_.Unlock();
    locked_ = false;
}
