// The error stack's per-thread state: the open contexts, and the records of what went
// wrong, oldest first, with the depth each was recorded at.
#include "utils/runtime/ErrorStack.h"

#include <cstdarg>
#include <deque>
#include <string>
#include <vector>

namespace {

struct Context {
    std::wstring text;
    bool recorded = false;  // written to the records with an earlier error
};

struct Record {
    int depth = 0;
    std::wstring text;
    bool error = false;
};

struct ThreadErrors {
    std::vector<Context> open;
    int uncounted = 0;  // contexts open beyond the cap, whose text is not kept
    std::deque<Record> records;
    bool dropped = false;
    int cap = CKivErrorStack::kDefaultCap;

    void Trim() {
        while (static_cast<int>(records.size()) > cap) {
            records.pop_front();
            dropped = true;
        }
    }
};

ThreadErrors& Mine() {
    thread_local ThreadErrors errors;
    return errors;
}

std::wstring Formatted(const wchar_t* format, va_list args) { return format ? kiv_strings::FormatWide(format, args) : L""; }

void PushText(std::wstring text) {
    ThreadErrors& e = Mine();
    if (static_cast<int>(e.open.size()) >= e.cap) ++e.uncounted;
    else e.open.push_back(Context{std::move(text), false});
}

}  // namespace

void CKivErrorStack::Push(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    std::wstring text = Formatted(format, args);
    va_end(args);
    PushText(std::move(text));
}

void CKivErrorStack::Pop() {
    ThreadErrors& e = Mine();
    if (e.uncounted > 0) --e.uncounted;
    else if (!e.open.empty()) e.open.pop_back();
}

void CKivErrorStack::Report(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    std::wstring text = Formatted(format, args);
    va_end(args);
    ThreadErrors& e = Mine();
    for (size_t depth = 0; depth < e.open.size(); ++depth) {
        Context& context = e.open[depth];
        if (context.recorded) continue;
        e.records.push_back(Record{static_cast<int>(depth), context.text, false});
        context.recorded = true;
    }
    e.records.push_back(Record{static_cast<int>(e.open.size()), std::move(text), true});
    e.Trim();
}

CKivStringT CKivErrorStack::GetText() {
    const ThreadErrors& e = Mine();
    std::wstring text;
    if (e.dropped && !e.records.empty()) text = L"...";
    for (const Record& record : e.records) {
        if (!text.empty()) text += L"\r\n";
        text.append(2 * static_cast<size_t>(record.depth), L' ');
        text += record.text;
    }
    return CKivStringT(text.c_str());
}

bool CKivErrorStack::HasErrors() {
    for (const Record& record : Mine().records) {
        if (record.error) return true;
    }
    return false;
}

int CKivErrorStack::GetCount() { return static_cast<int>(Mine().records.size()); }

CKivStringT CKivErrorStack::GetLastError() {
    const ThreadErrors& e = Mine();
    for (auto it = e.records.rbegin(); it != e.records.rend(); ++it) {
        if (it->error) return CKivStringT(it->text.c_str());
    }
    return CKivStringT();
}

void CKivErrorStack::Clear() {
    ThreadErrors& e = Mine();
    e.records.clear();
    e.dropped = false;
    for (Context& context : e.open) context.recorded = false;
}

void CKivErrorStack::SetCap(int records) {
    ThreadErrors& e = Mine();
    e.cap = records < 1 ? 1 : records;
    e.Trim();
}

int CKivErrorStack::GetCap() { return Mine().cap; }

int CKivErrorStack::GetDepth() {
    const ThreadErrors& e = Mine();
    return static_cast<int>(e.open.size()) + e.uncounted;
}

CKivErrorScope::CKivErrorScope(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    std::wstring text = Formatted(format, args);
    va_end(args);
    PushText(std::move(text));
}

CKivErrorScope::~CKivErrorScope() { CKivErrorStack::Pop(); }
