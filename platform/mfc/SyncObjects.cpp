// CSyncObject and its kinds: thin owners of a Win32 event or critical section.
#include "platform/mfc/SyncObjects.h"

CSyncObject::CSyncObject(LPCWSTR) {}

CSyncObject::~CSyncObject() {
    if (m_hObject) ::CloseHandle(m_hObject);
}

BOOL CSyncObject::Lock(DWORD timeout) {
    return m_hObject && ::WaitForSingleObject(m_hObject, timeout) == WAIT_OBJECT_0 ? TRUE : FALSE;
}

CCriticalSection::CCriticalSection() { ::InitializeCriticalSection(&m_sect); }
CCriticalSection::~CCriticalSection() { ::DeleteCriticalSection(&m_sect); }

BOOL CCriticalSection::Lock() {
    ::EnterCriticalSection(&m_sect);
    return TRUE;
}

BOOL CCriticalSection::Lock(DWORD) { return Lock(); }

BOOL CCriticalSection::Unlock() {
    ::LeaveCriticalSection(&m_sect);
    return TRUE;
}

CEvent::CEvent(BOOL initiallyOwn, BOOL manualReset, LPCWSTR name, LPSECURITY_ATTRIBUTES attributes)
    : CSyncObject(name) {
    m_hObject = ::CreateEventW(attributes, manualReset, initiallyOwn, name);
}

BOOL CEvent::SetEvent() { return ::SetEvent(m_hObject); }
BOOL CEvent::ResetEvent() { return ::ResetEvent(m_hObject); }
BOOL CEvent::PulseEvent() { return ::PulseEvent(m_hObject); }

CSingleLock::CSingleLock(CSyncObject* object, BOOL initialLock) : m_pObject(object) {
    if (initialLock) Lock();
}

CSingleLock::~CSingleLock() { Unlock(); }

BOOL CSingleLock::Lock(DWORD timeout) {
    if (!m_pObject || m_bAcquired) return m_bAcquired;
    m_bAcquired = m_pObject->Lock(timeout);
    return m_bAcquired;
}

BOOL CSingleLock::Unlock() {
    if (m_pObject && m_bAcquired) m_bAcquired = !m_pObject->Unlock();
    return !m_bAcquired;
}
