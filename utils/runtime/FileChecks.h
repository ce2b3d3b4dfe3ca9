// FileChecks: the questions an application asks about a file or folder before it uses
// one: is it there, is it a folder, may it be written, how much room is left on its
// volume, how large and how old is it. Paths are device paths ('\Storage Card\job.xml')
// or host paths ('/tmp/job.xml').
#pragma once

#include <cstdint>

#include "platform/win32/Win32.h"

namespace FileChecks {

// A file or a folder of that name exists.
bool Exists(const wchar_t* path);
bool IsFolder(const wchar_t* path);
bool IsFile(const wchar_t* path);

// Whether writing would succeed now: an existing file is not read-only and opens for
// writing (no other handle holds it against writers); a folder takes a new file (one is
// made and removed to find out); a name that does not exist yet is writable when its
// folder is.
bool IsWritable(const wchar_t* path);

// The room on the volume that holds `path` (a file or folder that exists): the bytes
// this user may still write and, when asked, the volume's size. False when the volume
// cannot be asked.
bool GetFreeSpace(const wchar_t* path, std::uint64_t& freeBytes, std::uint64_t* totalBytes = nullptr);

// A file's size in bytes and the time of its last write (UTC). False for a folder or a
// name that does not exist.
bool GetSizeAndTime(const wchar_t* path, std::uint64_t& size, FILETIME& lastWrite);
bool GetSize(const wchar_t* path, std::uint64_t& size);

}  // namespace FileChecks
