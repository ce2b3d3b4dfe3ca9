// Handle values are never reused within a process, so a stale handle fails cleanly with
// ERROR_INVALID_HANDLE instead of reaching a newer object.
#include "platform/win32/Handles.h"

#include <mutex>
#include <unordered_map>

namespace kiv_win32 {
namespace {

struct Table {
    std::mutex lock;
    std::uintptr_t next = 0x1000;
    std::unordered_map<std::uintptr_t, std::shared_ptr<HandleObject>> objects;
};

Table& TheTable() {
    static Table* table = new Table;  // outlives static destructors of other units
    return *table;
}

}  // namespace

DWORD HandleObject::Wait(DWORD) {
    SetLastError(ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
}

HANDLE AddHandle(std::shared_ptr<HandleObject> object) {
    auto& t = TheTable();
    std::lock_guard g(t.lock);
    const std::uintptr_t value = t.next;
    t.next += 4;
    t.objects.emplace(value, std::move(object));
    return reinterpret_cast<HANDLE>(value);
}

std::shared_ptr<HandleObject> FindHandle(HANDLE handle) {
    auto& t = TheTable();
    std::lock_guard g(t.lock);
    auto it = t.objects.find(reinterpret_cast<std::uintptr_t>(handle));
    return it == t.objects.end() ? nullptr : it->second;
}

std::shared_ptr<HandleObject> RemoveHandle(HANDLE handle) {
    auto& t = TheTable();
    std::lock_guard g(t.lock);
    auto it = t.objects.find(reinterpret_cast<std::uintptr_t>(handle));
    if (it == t.objects.end()) return nullptr;
    auto object = std::move(it->second);
    t.objects.erase(it);
    return object;
}

}  // namespace kiv_win32

BOOL CloseHandle(HANDLE handle) {
    std::shared_ptr<kiv_win32::HandleObject> object;
    {
        auto& t = kiv_win32::TheTable();
        std::lock_guard g(t.lock);
        auto it = t.objects.find(reinterpret_cast<std::uintptr_t>(handle));
        if (it == t.objects.end() || it->second->IsDrawingObject()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        object = std::move(it->second);
        t.objects.erase(it);
    }
    object->OnClose();
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    auto object = kiv_win32::FindHandle(handle);
    if (!object) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    return object->Wait(milliseconds);
}
