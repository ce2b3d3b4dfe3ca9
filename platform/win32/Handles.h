// The one handle table of the Win32 subset. Every kernel object (file, event, thread,
// ...) is a typed object behind a handle; CloseHandle and WaitForSingleObject dispatch
// to the object's own operations instead of testing kinds.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include <memory>

#include "platform/win32/Win32Types.h"

constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_ABANDONED = 0x80;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

namespace kiv_win32 {

class HandleObject {
public:
    virtual ~HandleObject() = default;
    // Blocks until the object is signalled or the timeout passes; objects that cannot be
    // waited on keep this default, which fails with ERROR_INVALID_HANDLE.
    virtual DWORD Wait(DWORD milliseconds);
    // Runs once, when the handle that names this object is closed. The object itself lives
    // while anybody still holds it (a thread's handle closed while it runs, say).
    virtual void OnClose() {}
    // Drawing objects (device contexts, bitmaps, pens, ...) share the table but are
    // released by DeleteObject, DeleteDC or ReleaseDC; CloseHandle refuses them.
    virtual bool IsDrawingObject() const { return false; }
};

HANDLE AddHandle(std::shared_ptr<HandleObject> object);
std::shared_ptr<HandleObject> FindHandle(HANDLE handle);
// Takes the object out of the table without running OnClose; null when there is none.
std::shared_ptr<HandleObject> RemoveHandle(HANDLE handle);

template <class T>
std::shared_ptr<T> FindHandleAs(HANDLE handle) {
    return std::dynamic_pointer_cast<T>(FindHandle(handle));
}

}  // namespace kiv_win32

BOOL CloseHandle(HANDLE handle);
DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);
#endif  // _WIN32
