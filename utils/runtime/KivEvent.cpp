// CKivEvent over CreateEventW, SetEvent, ResetEvent, PulseEvent and WaitForSingleObject.
#include "utils/runtime/KivEvent.h"

CKivEvent::CKivEvent(EReset reset, bool initiallySet, const wchar_t* name) {
    handle_ = CreateEventW(nullptr, reset == eManualReset, initiallySet, name && *name ? name : nullptr);
    existed_ = handle_ != nullptr && GetLastError() == ERROR_ALREADY_EXISTS;
}

CKivEvent::~CKivEvent() {
    if (handle_) CloseHandle(handle_);
}

bool CKivEvent::Set() { return handle_ && SetEvent(handle_); }
bool CKivEvent::Reset() { return handle_ && ResetEvent(handle_); }
bool CKivEvent::Pulse() { return handle_ && PulseEvent(handle_); }

bool CKivEvent::Wait(DWORD milliseconds) { return handle_ && WaitForSingleObject(handle_, milliseconds) == WAIT_OBJECT_0; }
