// Device paths on a desktop: the file calls of the platform, each mapping a device path
// under the host's device root before the system sees it.
#define KIV_DESKTOP_IMPLEMENTATION
#include "platform/win32/Win32.h"

#include <cstdio>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"

namespace kiv_win32 {

std::wstring DesktopPath(LPCWSTR path) {
    if (!path || path[0] != L'\\' || path[1] == L'\\') return path ? std::wstring(path) : std::wstring();
    std::wstring mapped = kiv_text::FromUtf8(kiv_host::ToHostPath(path));
    for (wchar_t& c : mapped)
        if (c == L'/') c = L'\\';
    return mapped;
}

HANDLE DeviceCreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                         DWORD disposition, DWORD flags, HANDLE templateFile) {
    return ::CreateFileW(DesktopPath(path).c_str(), access, share, security, disposition, flags, templateFile);
}

DWORD DeviceGetFileAttributesW(LPCWSTR path) { return ::GetFileAttributesW(DesktopPath(path).c_str()); }

BOOL DeviceGetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID information) {
    return ::GetFileAttributesExW(DesktopPath(path).c_str(), level, information);
}

BOOL DeviceSetFileAttributesW(LPCWSTR path, DWORD attributes) {
    return ::SetFileAttributesW(DesktopPath(path).c_str(), attributes);
}

BOOL DeviceMoveFileW(LPCWSTR from, LPCWSTR to) {
    return ::MoveFileW(DesktopPath(from).c_str(), DesktopPath(to).c_str());
}

BOOL DeviceMoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
    return ::MoveFileExW(DesktopPath(from).c_str(), to ? DesktopPath(to).c_str() : nullptr, flags);
}

BOOL DeviceDeleteFileW(LPCWSTR path) { return ::DeleteFileW(DesktopPath(path).c_str()); }

BOOL DeviceCreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
    return ::CreateDirectoryW(DesktopPath(path).c_str(), security);
}

FILE* DeviceWfopen(const wchar_t* path, const wchar_t* mode) { return ::_wfopen(DesktopPath(path).c_str(), mode); }

HANDLE DeviceFindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW data) {
    return ::FindFirstFileW(DesktopPath(pattern).c_str(), data);
}

}  // namespace kiv_win32
