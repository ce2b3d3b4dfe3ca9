// What the handheld's Win32 has and desktop Windows lacks, for builds against the real
// <windows.h>: the event action call, the wide-name export lookup, the transparent blit
// under the device's name, and the host helpers the platform's other parts share.
#pragma once

#include <string>
#include <string_view>

#ifndef WINAPI
#error "Desktop.h follows <windows.h>"
#endif

// A 16-bit relic of <windows.h> that would take the library's own GetFreeSpace.
#undef GetFreeSpace

// The longest key name and value name the registry takes, in characters.
constexpr DWORD kMaxRegKeyNameLength = 255;
constexpr DWORD kMaxRegValueNameLength = 16383;

constexpr DWORD EVENT_PULSE = 1;
constexpr DWORD EVENT_RESET = 2;
constexpr DWORD EVENT_SET = 3;

// The handheld's one call behind SetEvent, ResetEvent and PulseEvent.
BOOL EventModify(HANDLE event, DWORD action);
// The device's wide-name form; names are matched exactly, as exported.
FARPROC GetProcAddressW(HMODULE module, LPCWSTR procName);
// Copies, stretching as needed, every source pixel that is not `transparent`. The
// source is a device context or a bitmap.
BOOL TransparentImage(HDC dest, LONG x, LONG y, LONG width, LONG height, HANDLE source, LONG xSrc, LONG ySrc,
                      LONG widthSrc, LONG heightSrc, COLORREF transparent);

namespace kiv_win32 {

// The system's controls are registered by the system; this only makes sure the common
// ones are there.
void RegisterStandardControls();
// Paints the window and its children now, so a saved window shows what a screen would.
void RedrawWindowTree(HWND window);
// The font a control draws with when none was set: the stock GUI font.
HFONT DefaultControlFont();
// The face the platform's fonts default to: proportional or fixed pitch.
LOGFONTW DefaultFont(bool fixedPitch);

// Whole-file reading and atomic replacement (see WholeFile.h).
bool ReadWholeFile(const wchar_t* path, std::string& bytes, size_t limit);
bool ReplaceWholeFile(const wchar_t* path, std::string_view bytes);

// The registry as .reg text and its import, over the system's registry: the keys under
// the roots the platform uses (HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER).
std::string ExportRegistryText();
bool ImportRegistryText(std::string_view bytes, std::wstring* error = nullptr);

}  // namespace kiv_win32

// ---- device paths -------------------------------------------------------------------
// A desktop has drive letters where the handheld has one tree: a path that begins with a
// single backslash ('\Storage Card\a.txt') names a file under the host's device root
// (kiv_host::SetDeviceRoot), as it does on the Linux host. The file calls the platform
// makes are routed through that mapping; every other path reaches the system unchanged.
namespace kiv_win32 {

std::wstring DesktopPath(LPCWSTR path);

HANDLE DeviceCreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                         DWORD disposition, DWORD flags, HANDLE templateFile);
DWORD DeviceGetFileAttributesW(LPCWSTR path);
BOOL DeviceGetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID information);
BOOL DeviceSetFileAttributesW(LPCWSTR path, DWORD attributes);
BOOL DeviceMoveFileW(LPCWSTR from, LPCWSTR to);
BOOL DeviceMoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags);
BOOL DeviceDeleteFileW(LPCWSTR path);
BOOL DeviceCreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security);
FILE* DeviceWfopen(const wchar_t* path, const wchar_t* mode);
HANDLE DeviceFindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW data);

}  // namespace kiv_win32

// ---- the device's forms of system calls -----------------------------------------------
// Deleting a key deletes everything below it on the handheld; the desktop's RegDeleteKeyW
// refuses a key that has subkeys. A path of no names would be the key itself, which is
// refused (ERROR_INVALID_PARAMETER).
// Modules: one registered in process (kiv_host::RegisterModule) is found first, without
// regard to case; then Name.dll and libName.dll in the folders of KIV_MODULE_PATH (';'
// between them); then the system's own search. A device path is mapped as a file's is.
namespace kiv_win32 {

LONG DeviceRegDeleteKeyW(HKEY key, LPCWSTR subKey);
HMODULE DeviceLoadLibraryW(LPCWSTR fileName);
FARPROC DeviceGetProcAddress(HMODULE module, LPCSTR procName);
BOOL DeviceFreeLibrary(HMODULE module);

}  // namespace kiv_win32

#ifndef KIV_DESKTOP_IMPLEMENTATION
#undef CreateFile
#undef GetFileAttributes
#undef GetFileAttributesEx
#undef SetFileAttributes
#undef MoveFile
#undef MoveFileEx
#undef DeleteFile
#undef CreateDirectory
#undef FindFirstFile
#define CreateFileW kiv_win32::DeviceCreateFileW
#define GetFileAttributesW kiv_win32::DeviceGetFileAttributesW
#define GetFileAttributesExW kiv_win32::DeviceGetFileAttributesExW
#define SetFileAttributesW kiv_win32::DeviceSetFileAttributesW
#define MoveFileW kiv_win32::DeviceMoveFileW
#define MoveFileExW kiv_win32::DeviceMoveFileExW
#define DeleteFileW kiv_win32::DeviceDeleteFileW
#define CreateDirectoryW kiv_win32::DeviceCreateDirectoryW
#define _wfopen kiv_win32::DeviceWfopen
#define FindFirstFileW kiv_win32::DeviceFindFirstFileW
#undef RegDeleteKey
#undef LoadLibrary
#define RegDeleteKeyW kiv_win32::DeviceRegDeleteKeyW
#define LoadLibraryW kiv_win32::DeviceLoadLibraryW
#define GetProcAddress kiv_win32::DeviceGetProcAddress
#define FreeLibrary kiv_win32::DeviceFreeLibrary
#endif
