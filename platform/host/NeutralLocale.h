// The one locale-neutral locale of the platform (C.UTF-8, or C where the host lacks it):
// number text and case folding that are the same whatever the user's locale says.
#pragma once

#include <locale.h>

namespace kiv_text {

locale_t NeutralLocale();
// Lower case by simple Unicode mapping: ASCII directly, everything else by the C.UTF-8 tables.
wchar_t FoldCase(wchar_t c);
// wcstod of the text under the neutral locale: '.' is the decimal point for every user.
double NeutralWcstod(const wchar_t* text);

}  // namespace kiv_text
