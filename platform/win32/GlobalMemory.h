// Global memory of the Win32 subset: blocks behind handles that are locked to reach their
// bytes. The clipboard takes its data in such blocks and keeps them once it has them.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Win32Types.h"

using HGLOBAL = HANDLE;

constexpr UINT GMEM_FIXED = 0x0000;
constexpr UINT GMEM_MOVEABLE = 0x0002;
constexpr UINT GMEM_ZEROINIT = 0x0040;
constexpr UINT GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;
constexpr UINT GPTR = GMEM_FIXED | GMEM_ZEROINIT;

// A block of `bytes` (at least one byte is reserved for an empty request); null and
// ERROR_NOT_ENOUGH_MEMORY when it cannot be had. The bytes are zeroed with GMEM_ZEROINIT.
HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes);
// The block's first byte; each lock counts and is undone by one GlobalUnlock. Null and
// ERROR_INVALID_HANDLE for a handle that is not a block.
LPVOID GlobalLock(HGLOBAL memory);
// FALSE once the count is back at zero (with ERROR_SUCCESS), or for a block not locked
// (ERROR_NOT_LOCKED).
BOOL GlobalUnlock(HGLOBAL memory);
// Null on success, the handle itself when it is not a block.
HGLOBAL GlobalFree(HGLOBAL memory);
// The size asked for; 0 for a handle that is not a block.
SIZE_T GlobalSize(HGLOBAL memory);

constexpr DWORD ERROR_NOT_LOCKED = 158;

#endif  // _WIN32
