// Virtual memory of the Win32 subset: reserve address space, commit pages of it as they
// are needed, release it. The vector image arenas reserve their 4 GiB this way.
#pragma once

#include "platform/win32/Win32Types.h"

constexpr DWORD MEM_COMMIT = 0x00001000;
constexpr DWORD MEM_RESERVE = 0x00002000;
constexpr DWORD MEM_DECOMMIT = 0x00004000;
constexpr DWORD MEM_RELEASE = 0x00008000;
constexpr DWORD PAGE_NOACCESS = 0x01;
constexpr DWORD PAGE_READONLY = 0x02;
constexpr DWORD PAGE_READWRITE = 0x04;

// MEM_RESERVE (address null) reserves inaccessible address space; MEM_COMMIT makes a
// range of a reservation usable with the given protection (zero-filled on first touch);
// MEM_RESERVE | MEM_COMMIT does both. Sizes are rounded up to whole pages.
LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD allocationType, DWORD protect);
// MEM_RELEASE (size 0) gives back a whole reservation; MEM_DECOMMIT a range of it.
BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD freeType);
