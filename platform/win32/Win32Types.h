// Basic Win32 types, handle types, structures and error codes shared by every API
// family of the subset. Each family's header adds its own constants.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using INT = int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using BOOL = int;
using BOOLEAN = BYTE;
using WCHAR = wchar_t;
using TCHAR = wchar_t;
using CHAR = char;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using LPTSTR = wchar_t*;
using LPCTSTR = const wchar_t*;
using LPVOID = void*;
using LPCVOID = const void*;
using PVOID = void*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using PDWORD = DWORD*;
using PLONG = LONG*;
using UINT_PTR = std::uintptr_t;
using INT_PTR = std::intptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using COLORREF = DWORD;
using ATOM = WORD;
using REGSAM = DWORD;
using LCID = DWORD;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif
#ifndef CALLBACK
#define CALLBACK
#endif
#ifndef WINAPI
#define WINAPI
#endif
#ifndef APIENTRY
#define APIENTRY
#endif

// Handles are opaque pointers to distinct incomplete types, as with STRICT on Win32.
#define KIV_DECLARE_HANDLE(name) \
    struct name##__;             \
    using name = name##__*
using HANDLE = void*;
KIV_DECLARE_HANDLE(HWND);
KIV_DECLARE_HANDLE(HKEY);
KIV_DECLARE_HANDLE(HINSTANCE);
KIV_DECLARE_HANDLE(HDC);
KIV_DECLARE_HANDLE(HGDIOBJ__);
KIV_DECLARE_HANDLE(HBITMAP);
KIV_DECLARE_HANDLE(HPEN);
KIV_DECLARE_HANDLE(HBRUSH);
KIV_DECLARE_HANDLE(HFONT);
KIV_DECLARE_HANDLE(HMENU);
KIV_DECLARE_HANDLE(HICON);
KIV_DECLARE_HANDLE(HCURSOR);
KIV_DECLARE_HANDLE(HRGN);
using HMODULE = HINSTANCE;
using HGDIOBJ = void*;
using PHKEY = HKEY*;
using LPHANDLE = HANDLE*;

#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

struct POINT {
    LONG x;
    LONG y;
};
using LPPOINT = POINT*;

struct SIZE {
    LONG cx;
    LONG cy;
};

struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
using LPRECT = RECT*;
using LPCRECT = const RECT*;

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

// A 64-bit count in the two halves the Win32 structures use.
union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
};
using PULARGE_INTEGER = ULARGE_INTEGER*;

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

constexpr COLORREF RGB(BYTE r, BYTE g, BYTE b) {
    return static_cast<COLORREF>(r) | (static_cast<COLORREF>(g) << 8) | (static_cast<COLORREF>(b) << 16);
}
constexpr BYTE GetRValue(COLORREF c) { return static_cast<BYTE>(c & 0xFF); }
constexpr BYTE GetGValue(COLORREF c) { return static_cast<BYTE>((c >> 8) & 0xFF); }
constexpr BYTE GetBValue(COLORREF c) { return static_cast<BYTE>((c >> 16) & 0xFF); }

constexpr WORD LOWORD(DWORD_PTR v) { return static_cast<WORD>(v & 0xFFFF); }
constexpr WORD HIWORD(DWORD_PTR v) { return static_cast<WORD>((v >> 16) & 0xFFFF); }
constexpr DWORD MAKELONG(WORD lo, WORD hi) { return static_cast<DWORD>(lo) | (static_cast<DWORD>(hi) << 16); }
#define MAKEWPARAM(l, h) (static_cast<WPARAM>(MAKELONG(static_cast<WORD>(l), static_cast<WORD>(h))))
#define MAKELPARAM(l, h) (static_cast<LPARAM>(MAKELONG(static_cast<WORD>(l), static_cast<WORD>(h))))

// ---- error codes (GetLastError) ---------------------------------------------------------
constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD NO_ERROR = 0;
constexpr DWORD ERROR_INVALID_FUNCTION = 1;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_OUTOFMEMORY = 14;
constexpr DWORD ERROR_WRITE_PROTECT = 19;
constexpr DWORD ERROR_NOT_READY = 21;
constexpr DWORD ERROR_WRITE_FAULT = 29;
constexpr DWORD ERROR_READ_FAULT = 30;
constexpr DWORD ERROR_SHARING_VIOLATION = 32;
constexpr DWORD ERROR_LOCK_VIOLATION = 33;
constexpr DWORD ERROR_HANDLE_EOF = 38;
constexpr DWORD ERROR_NOT_SUPPORTED = 50;
constexpr DWORD ERROR_FILE_EXISTS = 80;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_DISK_FULL = 112;
constexpr DWORD ERROR_CALL_NOT_IMPLEMENTED = 120;
constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
constexpr DWORD ERROR_INVALID_NAME = 123;
constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
constexpr DWORD ERROR_BAD_PATHNAME = 161;
constexpr DWORD ERROR_ALREADY_EXISTS = 183;
constexpr DWORD ERROR_ENVVAR_NOT_FOUND = 203;
constexpr DWORD ERROR_MORE_DATA = 234;
constexpr DWORD WAIT_TIMEOUT_ERROR = 258;
constexpr DWORD ERROR_NO_MORE_ITEMS = 259;
constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
constexpr DWORD ERROR_CLASS_ALREADY_EXISTS = 1410;
constexpr DWORD ERROR_CLASS_DOES_NOT_EXIST = 1411;
constexpr DWORD ERROR_TIMEOUT = 1460;
constexpr DWORD ERROR_BADDB = 1009;
constexpr DWORD ERROR_BADKEY = 1010;
constexpr DWORD ERROR_CANTOPEN = 1011;
constexpr DWORD ERROR_KEY_DELETED = 1018;

DWORD GetLastError();
void SetLastError(DWORD error);
#endif  // _WIN32
