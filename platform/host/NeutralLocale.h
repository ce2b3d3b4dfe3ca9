// The one locale-neutral locale of the platform (C.UTF-8, or C where the host lacks it):
// number text and case folding that are the same whatever the user's locale says.
#pragma once

#ifndef _WIN32
#include <locale.h>
#endif

namespace kiv_text {

#ifndef _WIN32
locale_t NeutralLocale();
#endif
// Lower and upper case by simple Unicode mapping: ASCII directly, everything else by
// the neutral tables.
wchar_t FoldCase(wchar_t c);
wchar_t RaiseCase(wchar_t c);
// wcstod of the text under the neutral locale: '.' is the decimal point for every user.
double NeutralWcstod(const wchar_t* text);

// While it lives, the calling thread's C library formats and reads numbers the neutral
// way, whatever the process locale is.
class NeutralNumbers {
public:
    NeutralNumbers();
    ~NeutralNumbers();
    NeutralNumbers(const NeutralNumbers&) = delete;
    NeutralNumbers& operator=(const NeutralNumbers&) = delete;

private:
#ifdef _WIN32
    int previousMode_ = 0;
    char previous_[128] = {};
#else
    locale_t previous_;
#endif
};

}  // namespace kiv_text
