// The MFC synchronisation classes over the Win32 subset: CSyncObject, CCriticalSection,
// CEvent and the scoped CSingleLock.
#pragma once

#include "platform/mfc/Afx.h"

class CSyncObject : public CObject {
public:
    explicit CSyncObject(LPCWSTR name = nullptr);
    ~CSyncObject() override;
    CSyncObject(const CSyncObject&) = delete;
    CSyncObject& operator=(const CSyncObject&) = delete;

    // Waits on the object's handle; TRUE when it was acquired within the timeout.
    virtual BOOL Lock(DWORD timeout = INFINITE);
    virtual BOOL Unlock() = 0;
    operator HANDLE() const { return m_hObject; }

    HANDLE m_hObject = nullptr;
};

class CCriticalSection : public CSyncObject {
public:
    CCriticalSection();
    ~CCriticalSection() override;

    BOOL Lock();
    // A critical section has no timeout: like MFC's, any timeout waits until it is entered.
    BOOL Lock(DWORD timeout) override;
    BOOL Unlock() override;
    operator CRITICAL_SECTION*() { return &m_sect; }

    CRITICAL_SECTION m_sect;
};

class CEvent : public CSyncObject {
public:
    explicit CEvent(BOOL initiallyOwn = FALSE, BOOL manualReset = FALSE, LPCWSTR name = nullptr,
                    LPSECURITY_ATTRIBUTES attributes = nullptr);
    BOOL SetEvent();
    BOOL ResetEvent();
    BOOL PulseEvent();
    BOOL Unlock() override { return TRUE; }
};

// Holds one synchronisation object for its scope; the destructor releases it.
class CSingleLock {
public:
    explicit CSingleLock(CSyncObject* object, BOOL initialLock = FALSE);
    ~CSingleLock();
    CSingleLock(const CSingleLock&) = delete;
    CSingleLock& operator=(const CSingleLock&) = delete;

    BOOL Lock(DWORD timeout = INFINITE);
    BOOL Unlock();
    BOOL IsLocked() const { return m_bAcquired; }

private:
    CSyncObject* m_pObject;
    BOOL m_bAcquired = FALSE;
};
