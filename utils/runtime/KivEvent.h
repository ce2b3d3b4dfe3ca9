// CKivEvent: an event over the Win32 subset, manual-reset (stays set and releases every
// waiter) or auto-reset (each Set releases one waiter), named (shared by every user of
// the name in the process) or not, waited for with a timeout.
#pragma once

#include "platform/kivutils/Heap.h"
#include "platform/win32/Win32.h"

class CKivEvent : public SharedHeapObject {
public:
    enum EReset { eAutoReset, eManualReset };

    // A name already in use opens that event: its reset mode and state stay as they are
    // and AlreadyExisted() tells so.
    explicit CKivEvent(EReset reset = eAutoReset, bool initiallySet = false, const wchar_t* name = nullptr);
    ~CKivEvent();
    CKivEvent(const CKivEvent&) = delete;
    CKivEvent& operator=(const CKivEvent&) = delete;

    bool IsValid() const { return handle_ != nullptr; }
    bool AlreadyExisted() const { return existed_; }

    bool Set();
    bool Reset();
    // Releases the threads waiting now (manual reset) or the one that has waited longest
    // (auto reset) and leaves the event clear; nobody waiting, it only clears it.
    bool Pulse();
    // True when the event was (or became) set within `milliseconds`; an auto-reset event
    // is cleared again by the wait that it releases.
    bool Wait(DWORD milliseconds = INFINITE);
    HANDLE GetHandle() const { return handle_; }

private:
    HANDLE handle_ = nullptr;
    bool existed_ = false;
};
