// File-name wildcards: '*' for any run of characters, '?' for one, the way the device's
// file system matches them.
#pragma once

#include <string_view>

namespace kiv_win32 {
// Whether `name` matches the wildcard pattern, ignoring case.
bool MatchesWildcard(std::wstring_view pattern, std::wstring_view name);
}  // namespace kiv_win32
