// Virtual memory of the Win32 subset: reserve address space, commit pages of it as they
// are needed, release it (the vector image arenas reserve their 4 GiB this way); and
// file mappings, whose views show a file's bytes in memory without reading them.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Win32Types.h"

constexpr DWORD MEM_COMMIT = 0x00001000;
constexpr DWORD MEM_RESERVE = 0x00002000;
constexpr DWORD MEM_DECOMMIT = 0x00004000;
constexpr DWORD MEM_RELEASE = 0x00008000;
constexpr DWORD PAGE_NOACCESS = 0x01;
constexpr DWORD PAGE_READONLY = 0x02;
constexpr DWORD PAGE_READWRITE = 0x04;
constexpr DWORD PAGE_WRITECOPY = 0x08;

// MEM_RESERVE (address null) reserves inaccessible address space; MEM_COMMIT makes a
// range of a reservation usable with the given protection (zero-filled on first touch);
// MEM_RESERVE | MEM_COMMIT does both. Sizes are rounded up to whole pages.
LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD allocationType, DWORD protect);
// MEM_RELEASE (size 0) gives back a whole reservation; MEM_DECOMMIT a range of it.
BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD freeType);

// ---- file mappings ----------------------------------------------------------------------

constexpr DWORD FILE_MAP_COPY = 0x0001;
constexpr DWORD FILE_MAP_WRITE = 0x0002;
constexpr DWORD FILE_MAP_READ = 0x0004;
constexpr DWORD FILE_MAP_ALL_ACCESS = 0x000F001F;

constexpr DWORD ERROR_INVALID_ADDRESS = 487;
constexpr DWORD ERROR_FILE_INVALID = 1006;
constexpr DWORD ERROR_MAPPED_ALIGNMENT = 1132;

struct SYSTEM_INFO {
    union {
        DWORD dwOemId;
        struct {
            WORD wProcessorArchitecture;
            WORD wReserved;
        };
    };
    DWORD dwPageSize;
    LPVOID lpMinimumApplicationAddress;
    LPVOID lpMaximumApplicationAddress;
    DWORD_PTR dwActiveProcessorMask;
    DWORD dwNumberOfProcessors;
    DWORD dwProcessorType;
    DWORD dwAllocationGranularity;  // views of a mapping start at multiples of it: 64 KiB
    WORD wProcessorLevel;
    WORD wProcessorRevision;
};
using LPSYSTEM_INFO = SYSTEM_INFO*;

void GetSystemInfo(LPSYSTEM_INFO info);

// A mapping of `file` (opened for reading; for PAGE_READWRITE also for writing) or, with
// INVALID_HANDLE_VALUE, of fresh zeroed memory of the given size that views of the same
// mapping share. A size of 0 takes the file's size; an empty file cannot be mapped
// (ERROR_FILE_INVALID). A PAGE_READWRITE mapping larger than its file makes the file that
// long; a read-only or copy-on-write one cannot (ERROR_NOT_ENOUGH_MEMORY). The mapping
// keeps the file open after `file` is closed, and so keeps its share mode. A named
// mapping is shared process-wide while any handle or view of it lives: an existing name
// returns a new handle to that mapping with ERROR_ALREADY_EXISTS.
HANDLE CreateFileMappingW(HANDLE file, LPSECURITY_ATTRIBUTES attributes, DWORD protect, DWORD maximumSizeHigh,
                          DWORD maximumSizeLow, LPCWSTR name);
// A new handle to the named mapping; null and ERROR_FILE_NOT_FOUND when there is none.
HANDLE OpenFileMappingW(DWORD access, BOOL inherit, LPCWSTR name);
// A view of `bytes` of the mapping from the offset (a multiple of the granularity; 0
// bytes: to the mapping's end). FILE_MAP_READ reads, FILE_MAP_WRITE (or ALL_ACCESS)
// reads and writes through to the file and needs a PAGE_READWRITE mapping; FILE_MAP_COPY
// reads and writes privately: a written page becomes this view's own copy and the file
// never sees it. The view lives until UnmapViewOfFile, also after the mapping's handle
// is closed.
LPVOID MapViewOfFile(HANDLE mapping, DWORD desiredAccess, DWORD fileOffsetHigh, DWORD fileOffsetLow,
                     SIZE_T numberOfBytesToMap);
// `baseAddress` must be the start of a view (else ERROR_INVALID_ADDRESS).
BOOL UnmapViewOfFile(LPCVOID baseAddress);
// Writes the changed pages of [address, address + bytes) of a view to the file and waits
// until they are there; 0 bytes: to the view's end. A copy-on-write view has nothing to
// write.
BOOL FlushViewOfFile(LPCVOID baseAddress, SIZE_T numberOfBytesToFlush);
#endif  // _WIN32
