#include "platform/host/NeutralLocale.h"

#include <cwchar>

#ifdef _WIN32
#include <windows.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#else
#include <wctype.h>
#endif

namespace kiv_text {

#ifdef _WIN32

namespace {

// The system's invariant case tables, one UTF-16 unit at a time.
wchar_t MapCase(wchar_t c, DWORD flags) {
    wchar_t out = c;
    if (LCMapStringEx(LOCALE_NAME_INVARIANT, flags, &c, 1, &out, 1, nullptr, nullptr, 0) != 1) return c;
    return out;
}

}  // namespace

wchar_t FoldCase(wchar_t c) {
    if (c < 0x80) return (c >= L'A' && c <= L'Z') ? c + 32 : c;
    return MapCase(c, LCMAP_LOWERCASE);
}

wchar_t RaiseCase(wchar_t c) {
    if (c < 0x80) return (c >= L'a' && c <= L'z') ? c - 32 : c;
    return MapCase(c, LCMAP_UPPERCASE);
}

NeutralNumbers::NeutralNumbers() : previousMode_(_configthreadlocale(_ENABLE_PER_THREAD_LOCALE)) {
    const char* current = std::setlocale(LC_NUMERIC, nullptr);
    std::strncpy(previous_, current ? current : "C", sizeof previous_ - 1);
    std::setlocale(LC_NUMERIC, "C");
}

NeutralNumbers::~NeutralNumbers() {
    std::setlocale(LC_NUMERIC, previous_);
    _configthreadlocale(previousMode_);
}

#else

locale_t NeutralLocale() {
    static const locale_t loc = [] {
        locale_t l = newlocale(LC_ALL_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
        if (!l) l = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
        return l;
    }();
    return loc;
}

wchar_t FoldCase(wchar_t c) {
    if (c < 0x80) return (c >= L'A' && c <= L'Z') ? c + 32 : c;
    return static_cast<wchar_t>(towlower_l(static_cast<wint_t>(c), NeutralLocale()));
}

wchar_t RaiseCase(wchar_t c) {
    if (c < 0x80) return (c >= L'a' && c <= L'z') ? c - 32 : c;
    return static_cast<wchar_t>(towupper_l(static_cast<wint_t>(c), NeutralLocale()));
}

NeutralNumbers::NeutralNumbers() : previous_(uselocale(NeutralLocale())) {}
NeutralNumbers::~NeutralNumbers() { uselocale(previous_); }

#endif

double NeutralWcstod(const wchar_t* text) {
    NeutralNumbers neutral;
    return std::wcstod(text, nullptr);
}

}  // namespace kiv_text
