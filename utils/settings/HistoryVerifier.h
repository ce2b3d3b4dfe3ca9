// The reader that the history writer's design implies: recomputes the running checksum
// of a history document and checks every CheckSum element against it, following the
// writer across sessions (a document may have been closed and reopened after any
// CheckSum element, and a reopened writer restarts its running value).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kivutils/Heap.h"

namespace kiv_history {

// Where the running value that a CheckSum element matched came from.
enum EHistoryBasis : int {
    eRunning = 0,    // the value carried from the start of the document or session
    eRestored = 1,   // a reopened writer's value, restored from the element before it
    eRestarted = 2,  // a reopened writer whose restore failed and that started from zero
};

struct THistoryCheck : SharedHeapObject {
    int line = 0;               // 1-based line of the CheckSum element
    std::uint32_t stored = 0;   // the number in the element
    EHistoryBasis basis = eRunning;
};

struct THistoryVerdict : SharedHeapObject {
    bool ok = false;
    std::vector<THistoryCheck> checks;  // every element that matched, in document order
    int failLine = 0;                   // where it went wrong, when not ok
    std::wstring problem;               // one sentence, when not ok
};

// Verifies the whole file content (with its byte-order mark).
THistoryVerdict VerifyHistory(std::string_view bytes);

}  // namespace kiv_history
