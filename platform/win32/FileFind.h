// Finding files: FindFirstFileW, FindNextFileW and FindClose over a folder of device or
// host paths, with the '*' and '?' wildcards of the last path component matched without
// regard to case, as the device's file system does.
#pragma once

#include "platform/win32/Files.h"
#include "platform/win32/Wildcard.h"

#ifndef _WIN32

constexpr int MAX_PATH = 260;
constexpr DWORD ERROR_NO_MORE_FILES = 18;

struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwOID;
    WCHAR cFileName[MAX_PATH];
};
using LPWIN32_FIND_DATAW = WIN32_FIND_DATAW*;

// The first entry matching `pattern` (e.g. "\My Documents\Zeb\*.dxf"); INVALID_HANDLE_VALUE
// with ERROR_FILE_NOT_FOUND when nothing matches, ERROR_PATH_NOT_FOUND without the folder.
// Entries come in name order; "." and ".." are not listed; names longer than the
// structure holds are skipped.
HANDLE FindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW data);
// FALSE with ERROR_NO_MORE_FILES after the last entry.
BOOL FindNextFileW(HANDLE find, LPWIN32_FIND_DATAW data);
BOOL FindClose(HANDLE find);

#endif  // _WIN32
