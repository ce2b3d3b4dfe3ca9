// The Win32 file family: handles on files, attributes, moving, deleting, folders and
// the CRT's _wfopen. Paths are device paths ('\Storage Card\a.txt') or host paths
// ('/tmp/a.txt'); share modes hold between handles and, through advisory locks, processes.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include <cstdio>

#include "platform/win32/Handles.h"
#include "platform/win32/Win32Types.h"

// ---- access, sharing, creation --------------------------------------------------------
constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD GENERIC_ALL = 0x10000000;

constexpr DWORD FILE_SHARE_READ = 0x00000001;
constexpr DWORD FILE_SHARE_WRITE = 0x00000002;
constexpr DWORD FILE_SHARE_DELETE = 0x00000004;

constexpr DWORD CREATE_NEW = 1;
constexpr DWORD CREATE_ALWAYS = 2;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD OPEN_ALWAYS = 4;
constexpr DWORD TRUNCATE_EXISTING = 5;

// ---- attributes -------------------------------------------------------------------------
constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x00000001;
constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x00000002;
constexpr DWORD FILE_ATTRIBUTE_SYSTEM = 0x00000004;
constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x00000010;
constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x00000020;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x00000080;
constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x00000100;
constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;

constexpr DWORD FILE_FLAG_WRITE_THROUGH = 0x80000000;
constexpr DWORD FILE_FLAG_RANDOM_ACCESS = 0x10000000;
constexpr DWORD FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000;

// ---- positions ------------------------------------------------------------------------------
constexpr DWORD FILE_BEGIN = 0;
constexpr DWORD FILE_CURRENT = 1;
constexpr DWORD FILE_END = 2;
constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;

constexpr DWORD MOVEFILE_REPLACE_EXISTING = 0x00000001;

// Error codes of this family beyond the shared ones.
constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
constexpr DWORD ERROR_DIRECTORY = 267;

// Asynchronous I/O does not exist on the device; the parameter must be null.
struct OVERLAPPED;
using LPOVERLAPPED = OVERLAPPED*;

// CREATE_ALWAYS over an existing file gives it the hidden and read-only attributes asked
// for in place of its own; TRUNCATE_EXISTING keeps them.
HANDLE CreateFileW(LPCWSTR fileName, DWORD desiredAccess, DWORD shareMode,
                   LPSECURITY_ATTRIBUTES security, DWORD creationDisposition,
                   DWORD flagsAndAttributes, HANDLE templateFile);
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD bytesToRead, LPDWORD bytesRead, LPOVERLAPPED overlapped);
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD bytesToWrite, LPDWORD bytesWritten,
               LPOVERLAPPED overlapped);
// Without `distanceHigh` a position must fit below INVALID_SET_FILE_POINTER, else the call
// fails with ERROR_INVALID_PARAMETER and the position stays.
DWORD SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh, DWORD moveMethod);
DWORD GetFileSize(HANDLE file, LPDWORD fileSizeHigh);
BOOL SetEndOfFile(HANDLE file);
BOOL FlushFileBuffers(HANDLE file);

DWORD GetFileAttributesW(LPCWSTR fileName);
// Folders take the hidden attribute but not the read-only one.
BOOL SetFileAttributesW(LPCWSTR fileName, DWORD attributes);
BOOL MoveFileW(LPCWSTR existingName, LPCWSTR newName);
BOOL MoveFileExW(LPCWSTR existingName, LPCWSTR newName, DWORD flags);
BOOL DeleteFileW(LPCWSTR fileName);
BOOL CreateDirectoryW(LPCWSTR pathName, LPSECURITY_ATTRIBUTES security);
BOOL RemoveDirectoryW(LPCWSTR pathName);

// The CRT's wide fopen. Streams are always binary ("t" is accepted and ignored) and
// share like the CRT's default: reading and writing allowed to others.
FILE* _wfopen(const wchar_t* fileName, const wchar_t* mode);

// ---- volumes and file information -----------------------------------------------------------

// Any path on the volume, a file or a folder (device path, host path, or null for the
// current folder's volume): the bytes free to the caller, the volume's size and the bytes
// free in all. Any of the three results may be null.
BOOL GetDiskFreeSpaceExW(LPCWSTR directoryName, PULARGE_INTEGER freeBytesAvailableToCaller,
                         PULARGE_INTEGER totalNumberOfBytes, PULARGE_INTEGER totalNumberOfFreeBytes);

enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard, GetFileExMaxInfoLevel };

struct WIN32_FILE_ATTRIBUTE_DATA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
};
using LPWIN32_FILE_ATTRIBUTE_DATA = WIN32_FILE_ATTRIBUTE_DATA*;

// GetFileExInfoStandard only. Times are UTC; a folder's size is 0. Where the host's file
// system keeps no creation time, the time of the file's last change stands in for it.
BOOL GetFileAttributesExW(LPCWSTR fileName, GET_FILEEX_INFO_LEVELS infoLevel, LPVOID fileInformation);
#endif  // _WIN32
