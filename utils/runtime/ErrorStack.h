// CKivErrorStack: what each thread was doing when something went wrong. Work pushes a
// context ("while loading job X") for its scope; an error reported inside records itself
// under the contexts open at that moment, so the caller at the top can show the whole
// chain in a message box after the scopes have closed. Each thread has its own stack.
#pragma once

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"

class CKivErrorStack {
public:
    // Records kept per thread unless SetCap says otherwise; beyond it the oldest go.
    static constexpr int kDefaultCap = 64;

    // Opens a context on the calling thread; every Push needs its Pop (CKivErrorScope
    // pairs them). printf-style, %s taking wide text.
    static void Push(const wchar_t* format, ...);
    // Closes the innermost context; nothing happens when none is open.
    static void Pop();
    // Records an error under the open contexts. A context is recorded once, with the
    // first error inside it, so two errors in one context show as two lines under it.
    static void Report(const wchar_t* format, ...);

    // The recorded chain as text, one record per line ("\r\n" between lines), each
    // indented two spaces per context it lies in; records dropped for the cap show as
    // one "..." line first. Empty when nothing was reported.
    static CKivStringT GetText();
    static bool HasErrors();
    // The number of records kept (contexts and errors), at most the cap.
    static int GetCount();
    // The innermost error reported, or empty.
    static CKivStringT GetLastError();
    // Forgets the records; open contexts stay open (and are recorded again with the
    // next error).
    static void Clear();

    // The calling thread's cap on kept records, at least 1. Lowering it drops the
    // oldest records at once. Open contexts beyond the cap are counted but their text
    // is not kept, so a runaway Push cannot exhaust memory.
    static void SetCap(int records);
    static int GetCap();
    // The number of contexts open on the calling thread.
    static int GetDepth();
};

// Pushes a context for the scope of the object.
class CKivErrorScope : public SharedHeapObject {
public:
    explicit CKivErrorScope(const wchar_t* format, ...);
    ~CKivErrorScope();
    CKivErrorScope(const CKivErrorScope&) = delete;
    CKivErrorScope& operator=(const CKivErrorScope&) = delete;
};
