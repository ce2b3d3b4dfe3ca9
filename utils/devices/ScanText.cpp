// The scanf subset of the instrument texts: integers, decimal numbers, single letters
// and literal characters, read without the process locale.
#include "utils/devices/ScanText.h"

#include <charconv>
#include <climits>
#include <limits>
#include <string>

namespace kiv_scan {
namespace {

bool IsSpace(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }
bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

void SkipSpace(const wchar_t*& p) {
    while (IsSpace(*p)) ++p;
}

// An integer as %d reads it: a sign and decimal digits; saturated at the int range.
bool ReadInt(const wchar_t*& p, int& out) {
    const wchar_t* q = p;
    bool negative = false;
    if (*q == L'+' || *q == L'-') negative = *q++ == L'-';
    if (!IsDigit(*q)) return false;
    long long value = 0;
    for (; IsDigit(*q); ++q)
        if (value <= INT_MAX) value = value * 10 + (*q - L'0');
    if (negative) value = -value;
    out = value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : static_cast<int>(value);
    p = q;
    return true;
}

// A decimal number as %f reads it: the longest prefix that can begin a number is
// consumed, so "1.5e" fails as it does in the C library. Digits beyond what a double
// can tell apart do not change the value, so the copy is bounded.
template <class T>
bool ReadReal(const wchar_t*& p, T& out) {
    const wchar_t* q = p;
    std::string text;
    auto take = [&](wchar_t c) {
        if (text.size() < 400) text.push_back(static_cast<char>(c));
        ++q;
    };
    if (*q == L'+' || *q == L'-') {
        if (*q == L'-') text.push_back('-');
        ++q;
    }
    bool digits = false;
    while (IsDigit(*q)) take(*q), digits = true;
    if (*q == L'.') {
        take(*q);
        while (IsDigit(*q)) take(*q), digits = true;
    }
    if (!digits) return false;
    if (*q == L'e' || *q == L'E') {
        take(*q);
        if (*q == L'+' || *q == L'-') take(*q);
        if (!IsDigit(*q)) return false;
        int exponentDigits = 0;
        while (IsDigit(*q)) {
            if (exponentDigits++ < 6) take(*q);
            else ++q;
        }
    }
    T value{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        // The C library gives infinity or zero here and still counts the field.
        const bool tiny = text.find_first_of("eE") != std::string::npos &&
                          text.find('-', text.find_first_of("eE")) != std::string::npos;
        value = tiny ? T(0) : (text[0] == '-' ? -std::numeric_limits<T>::infinity() : std::numeric_limits<T>::infinity());
    } else if (result.ec != std::errc()) {
        return false;
    }
    out = value;
    p = q;
    return true;
}

}  // namespace

int Scan(const wchar_t* text, const wchar_t* format, std::initializer_list<Field> fields) {
    if (!text || !format) return -1;
    const wchar_t* p = text;
    const Field* next = fields.begin();
    int stored = 0;
    for (const wchar_t* f = format; *f; ++f) {
        if (IsSpace(*f)) {
            SkipSpace(p);
            continue;
        }
        if (*f != L'%') {
            if (*p == L'\0') return stored == 0 ? -1 : stored;
            if (*p != *f) return stored;
            ++p;
            continue;
        }
        ++f;
        bool isLong = false;
        if (*f == L'l') isLong = true, ++f;
        if (next == fields.end()) return stored;
        Field::Kind wanted;
        if (*f == L'd') wanted = Field::Kind::Int;
        else if (*f == L'f') wanted = isLong ? Field::Kind::Double : Field::Kind::Float;
        else if (*f == L'c') wanted = Field::Kind::Char;
        else return stored;
        if (next->kind() != wanted) return stored;
        if (wanted != Field::Kind::Char) SkipSpace(p);
        if (*p == L'\0') return stored == 0 ? -1 : stored;
        bool ok = true;
        switch (wanted) {
        case Field::Kind::Int: ok = ReadInt(p, *static_cast<int*>(next->target())); break;
        case Field::Kind::Float: ok = ReadReal(p, *static_cast<float*>(next->target())); break;
        case Field::Kind::Double: ok = ReadReal(p, *static_cast<double*>(next->target())); break;
        case Field::Kind::Char: *static_cast<wchar_t*>(next->target()) = *p++; break;
        }
        if (!ok) return stored;
        ++stored;
        ++next;
    }
    return stored;
}

}  // namespace kiv_scan
