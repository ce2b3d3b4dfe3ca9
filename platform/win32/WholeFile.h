// Whole-file reading and atomic replacement over the Win32 file family: the one place
// that knows how a file is swapped for a new one without ever leaving it half written.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include <string>
#include <string_view>

#include "platform/win32/Win32Types.h"

namespace kiv_win32 {

// Reads a file of at most `limit` bytes. False (with GetLastError set) when it cannot be
// opened, or with ERROR_NOT_ENOUGH_MEMORY when it is larger than the limit.
bool ReadWholeFile(const wchar_t* path, std::string& bytes, size_t limit);

// Writes `bytes` to a sibling temporary file, flushes it and renames it over `path`, so
// a crash or a full disk leaves the old file or the new one, never a torn one. A
// read-only target or a folder is left alone (false); a hidden target stays hidden.
bool ReplaceWholeFile(const wchar_t* path, std::string_view bytes);

}  // namespace kiv_win32
#endif  // _WIN32
