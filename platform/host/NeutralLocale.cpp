#include "platform/host/NeutralLocale.h"

#include <wctype.h>

#include <cwchar>

namespace kiv_text {

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

double NeutralWcstod(const wchar_t* text) {
    const locale_t previous = uselocale(NeutralLocale());
    const double value = std::wcstod(text, nullptr);
    uselocale(previous);
    return value;
}

}  // namespace kiv_text
