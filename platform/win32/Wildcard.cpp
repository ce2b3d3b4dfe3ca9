// The '*' and '?' wildcards of file names, matched without regard to case as the
// device's file system does; shared by the find calls and the file dialogs.
#include "platform/win32/Wildcard.h"

#include <cwctype>

namespace kiv_win32 {

bool MatchesWildcard(std::wstring_view pattern, std::wstring_view name) {
    // Iterative match with one backtrack point for the last '*'.
    size_t p = 0, n = 0, star = std::wstring_view::npos, mark = 0;
    auto same = [](wchar_t a, wchar_t b) { return std::towlower(static_cast<wint_t>(a)) == std::towlower(static_cast<wint_t>(b)); };
    while (n < name.size()) {
        if (p < pattern.size() && (pattern[p] == L'?' || same(pattern[p], name[n]))) {
            ++p;
            ++n;
        } else if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            mark = n;
        } else if (star != std::wstring_view::npos) {
            p = star + 1;
            n = ++mark;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == L'*') ++p;
    // "*.*" also matches names without a dot, as on the device.
    return p == pattern.size() || pattern.substr(p) == L".*";
}

}  // namespace kiv_win32
