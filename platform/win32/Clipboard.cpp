// The process-wide clipboard: who has it open, who owns it, and a block per format.
#include "platform/win32/Clipboard.h"

#include <map>
#include <mutex>
#include <thread>

#include "platform/host/Host.h"

namespace {

struct ClipboardState {
    std::mutex lock;
    bool open = false;
    std::thread::id opener;
    HWND openWindow = nullptr;
    HWND owner = nullptr;
    std::map<UINT, HGLOBAL> data;
};

void FreeAll(ClipboardState& s) {
    for (auto& [format, block] : s.data) GlobalFree(block);
    s.data.clear();
}

ClipboardState& Board() {
    static ClipboardState* state = [] {
        kiv_host::AddResetHook("win32.clipboard", [] {
            std::lock_guard g(Board().lock);
            FreeAll(Board());
            Board().open = false;
            Board().openWindow = Board().owner = nullptr;
        });
        return new ClipboardState;
    }();
    return *state;
}

bool OpenedHere(const ClipboardState& s) { return s.open && s.opener == std::this_thread::get_id(); }

}  // namespace

BOOL OpenClipboard(HWND owner) {
    auto& s = Board();
    std::lock_guard g(s.lock);
    // The clipboard belongs to the window it was opened for, not to a thread: opening it
    // again for that window succeeds from any thread, which then holds it; for another
    // window (or none, when it was opened for one) it is refused.
    if (s.open && s.openWindow != owner) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    s.open = true;
    s.opener = std::this_thread::get_id();
    s.openWindow = owner;
    return TRUE;
}

BOOL CloseClipboard() {
    auto& s = Board();
    std::lock_guard g(s.lock);
    if (!OpenedHere(s)) {
        SetLastError(ERROR_CLIPBOARD_NOT_OPEN);
        return FALSE;
    }
    s.open = false;
    s.openWindow = nullptr;
    return TRUE;
}

BOOL EmptyClipboard() {
    auto& s = Board();
    std::lock_guard g(s.lock);
    if (!OpenedHere(s)) {
        SetLastError(ERROR_CLIPBOARD_NOT_OPEN);
        return FALSE;
    }
    FreeAll(s);
    s.owner = s.openWindow;
    return TRUE;
}

HANDLE SetClipboardData(UINT format, HANDLE memory) {
    auto& s = Board();
    std::lock_guard g(s.lock);
    if (!OpenedHere(s)) {
        SetLastError(ERROR_CLIPBOARD_NOT_OPEN);
        return nullptr;
    }
    if (!memory || GlobalSize(memory) == 0) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto it = s.data.find(format);
    if (it != s.data.end() && it->second != memory) GlobalFree(it->second);
    s.data[format] = memory;
    return memory;
}

HANDLE GetClipboardData(UINT format) {
    auto& s = Board();
    std::lock_guard g(s.lock);
    if (!OpenedHere(s)) {
        SetLastError(ERROR_CLIPBOARD_NOT_OPEN);
        return nullptr;
    }
    auto it = s.data.find(format);
    return it == s.data.end() ? nullptr : it->second;
}

BOOL IsClipboardFormatAvailable(UINT format) {
    auto& s = Board();
    std::lock_guard g(s.lock);
    return s.data.count(format) ? TRUE : FALSE;
}

HWND GetClipboardOwner() {
    auto& s = Board();
    std::lock_guard g(s.lock);
    return s.owner;
}
