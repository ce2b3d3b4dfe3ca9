// Number text over std::from_chars and std::to_chars: exact, fast, and blind to the
// process locale. Wide text is narrowed to ASCII for the conversion; any character
// beyond ASCII can only make the number invalid.
#include "platform/kivutils/KivFormats.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <string>
#include <string_view>

#include "platform/kivmath/KivMath.h"

namespace kiv_formats {
namespace {

constexpr size_t kMaxNumberChars = 4096;

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Checks the decimal grammar of `s` and copies it to ASCII in `out` (room for s.size()
// characters); returns the ASCII length, 0 when `s` is not a decimal number.
size_t NarrowDecimal(std::wstring_view s, char* out) {
    size_t i = 0, n = 0;
    if (i < s.size() && (s[i] == L'+' || s[i] == L'-')) {
        if (s[i] == L'-') out[n++] = '-';
        ++i;
    }
    size_t digits = 0;
    for (; i < s.size() && IsDigit(s[i]); ++i, ++digits) out[n++] = static_cast<char>(s[i]);
    if (i < s.size() && s[i] == L'.') {
        out[n++] = '.';
        for (++i; i < s.size() && IsDigit(s[i]); ++i, ++digits) out[n++] = static_cast<char>(s[i]);
    }
    if (digits == 0) return 0;
    if (i < s.size() && (s[i] == L'e' || s[i] == L'E')) {
        out[n++] = 'e';
        ++i;
        if (i < s.size() && (s[i] == L'+' || s[i] == L'-')) out[n++] = static_cast<char>(s[i++]);
        size_t expDigits = 0;
        for (; i < s.size() && IsDigit(s[i]); ++i, ++expDigits) out[n++] = static_cast<char>(s[i]);
        if (expDigits == 0) return 0;
    }
    return i == s.size() ? n : 0;
}

std::wstring_view TrimBlanks(std::wstring_view s) {
    while (!s.empty() && kiv_strings::IsBlank(s.front())) s.remove_prefix(1);
    while (!s.empty() && kiv_strings::IsBlank(s.back())) s.remove_suffix(1);
    return s;
}

bool ParseAscii(std::string_view ascii, double& value) {
    double v;
    const auto [ptr, ec] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), v);
    if (ec != std::errc() || ptr != ascii.data() + ascii.size() || !std::isfinite(v)) return false;
    value = v;
    return true;
}

CKivStringT Widen(const char* p, size_t n) {
    std::wstring w(n, L'\0');
    for (size_t i = 0; i < n; ++i) w[i] = static_cast<unsigned char>(p[i]);
    return CKivStringT(std::move(w));
}

// ---- sexagesimal reading ------------------------------------------------------------

int MarkIndex(wchar_t c) {
    switch (c) {
        case 0x00B0: case 0x00BA: case L'd': case L'D': return 0;
        case L'\'': case 0x2032: case 0x2019: return 1;
        case L'"': case 0x2033: case 0x201D: return 2;
        default: return -1;
    }
}

int HemisphereSign(wchar_t c) {
    switch (c) {
        case L'N': case L'n': case L'E': case L'e': return 1;
        case L'S': case L's': case L'W': case L'w': return -1;
        default: return 0;
    }
}

struct Cursor {
    std::wstring_view s;
    size_t i = 0;
    bool AtEnd() const { return i >= s.size(); }
    wchar_t Peek() const { return AtEnd() ? L'\0' : s[i]; }
    size_t SkipBlanks() {
        const size_t from = i;
        while (!AtEnd() && (s[i] == L' ' || s[i] == L'\t')) ++i;
        return i - from;
    }
};

// One component: digits with an optional fraction. Returns false when there is no digit.
bool ReadComponent(Cursor& c, double& value, bool& hasFraction) {
    std::string ascii;
    size_t digits = 0;
    while (IsDigit(c.Peek())) ascii.push_back(static_cast<char>(c.s[c.i++])), ++digits;
    hasFraction = false;
    if (c.Peek() == L'.') {
        hasFraction = true;
        ascii.push_back('.');
        ++c.i;
        while (IsDigit(c.Peek())) ascii.push_back(static_cast<char>(c.s[c.i++])), ++digits;
    }
    return digits > 0 && digits < kMaxNumberChars && ParseAscii(ascii, value);
}

bool ReadAngle(std::wstring_view text, double& degrees, size_t& consumed, bool wholeText) {
    Cursor c{text};
    c.SkipBlanks();
    int sign = 1;
    bool signed_ = false;
    int hemisphere = HemisphereSign(c.Peek());
    if (hemisphere != 0) {
        ++c.i;
        c.SkipBlanks();
    } else if (c.Peek() == L'+' || c.Peek() == L'-') {
        sign = c.Peek() == L'-' ? -1 : 1;
        signed_ = true;
        ++c.i;
    }
    double parts[3] = {0, 0, 0};
    int count = 0;
    for (;;) {
        bool hasFraction;
        if (!ReadComponent(c, parts[count], hasFraction)) return false;
        const size_t beforeMark = c.i;
        c.SkipBlanks();
        const int mark = MarkIndex(c.Peek());
        // A 'd' or 'D' right after the number is the degree mark; hemisphere letters never
        // collide with marks.
        if (mark >= 0) {
            if (mark != count) return false;
            ++c.i;
        } else {
            c.i = beforeMark;
        }
        ++count;
        if (hasFraction || count == 3) break;
        // The next component follows a mark, blanks or a colon.
        const size_t beforeSeparator = c.i;
        const size_t blanks = c.SkipBlanks();
        bool separated = mark >= 0 || blanks > 0;
        if (c.Peek() == L':' && mark < 0) {
            ++c.i;
            c.SkipBlanks();
            separated = true;
        }
        if (!separated || !IsDigit(c.Peek())) {
            c.i = beforeSeparator;
            break;
        }
    }
    if (parts[1] >= 60.0 || parts[2] >= 60.0) return false;
    const size_t beforeTrailer = c.i;
    c.SkipBlanks();
    if (hemisphere == 0 && !signed_ && HemisphereSign(c.Peek()) != 0) {
        hemisphere = HemisphereSign(c.Peek());
        ++c.i;
    } else {
        c.i = beforeTrailer;
    }
    if (wholeText) {
        while (!c.AtEnd() && kiv_strings::IsBlank(c.Peek())) ++c.i;
        if (!c.AtEnd()) return false;
    }
    if (hemisphere != 0) sign = hemisphere;
    degrees = sign * (parts[0] + parts[1] / 60.0 + parts[2] / 3600.0);
    consumed = c.i;
    return true;
}

}  // namespace

bool StringToDouble(const wchar_t* text, double& value) {
    if (!text) return false;
    return StringToDoubleView(text, value);
}

bool StringToDoubleView(std::wstring_view text, double& value) {
    const std::wstring_view s = TrimBlanks(text);
    if (s.empty() || s.size() > kMaxNumberChars) return false;
    char ascii[kMaxNumberChars];
    const size_t n = NarrowDecimal(s, ascii);
    return n > 0 && ParseAscii(std::string_view(ascii, n), value);
}

bool StringToDegree(const wchar_t* text, double& degrees, const wchar_t** end) {
    if (!text) return false;
    double value;
    size_t consumed = 0;
    if (!ReadAngle(text, value, consumed, end == nullptr)) return false;
    degrees = value;
    if (end) *end = text + consumed;
    return true;
}

CKivStringT DoubleToString(double value, int precision) {
    if (!std::isfinite(value)) return CKivStringT(L"#####");
    if (precision < 0) precision = 0;
    if (precision > kMaxPrecision) precision = kMaxPrecision;
    char buffer[400];  // the largest double in fixed notation with 30 decimals fits
    const auto [ptr, ec] = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, precision);
    if (ec != std::errc()) return CKivStringT(L"#####");
    return Widen(buffer, static_cast<size_t>(ptr - buffer));
}

CKivStringT DoubleToString(double value) { return DoubleToString(value, kDefaultPrecision); }

CKivStringT DMSToString(double degrees, bool symbols, int precision) {
    if (!std::isfinite(degrees)) return CKivStringT(L"#####");
    if (precision < 0) precision = 0;
    if (precision > 9) precision = 9;
    const TSexagesimal p = SplitDegrees(std::fabs(degrees), precision + 4);
    char buffer[400];
    char* end = buffer;
    if (degrees < 0 && (p.degrees != 0 || p.minutes != 0 || p.seconds != 0 || p.fraction != 0)) *end++ = '-';
    end = std::to_chars(end, buffer + sizeof buffer, p.degrees, std::chars_format::fixed, 0).ptr;
    std::wstring out(buffer, end);
    auto two = [](int v) { return std::wstring{static_cast<wchar_t>(L'0' + v / 10), static_cast<wchar_t>(L'0' + v % 10)}; };
    out += symbols ? L"\u00B0" : L" ";
    out += two(p.minutes);
    out += symbols ? L"'" : L" ";
    out += two(p.seconds);
    if (precision > 0) {
        std::wstring digits(static_cast<size_t>(precision), L'0');
        long long f = p.fraction;
        for (int k = precision - 1; k >= 0; --k, f /= 10) digits[static_cast<size_t>(k)] = static_cast<wchar_t>(L'0' + f % 10);
        out += L'.';
        out += digits;
    }
    if (symbols) out += L'"';
    return CKivStringT(std::move(out));
}

CKivStringT ReplaceCommasWithDecPt(const wchar_t* text) {
    CKivStringT s(text);
    s.Replace(L',', L'.');
    return s;
}

int ParseDelimitersValues(const wchar_t* text, const wchar_t* delimiters, CKivArray<CKivStringT>& fields) {
    fields.RemoveAll();
    if (!text) return 0;
    const std::wstring_view s(text);
    const std::wstring_view delims(delimiters ? delimiters : L"");
    size_t start = 0;
    for (size_t i = 0; i <= s.size(); ++i) {
        if (i == s.size() || delims.find(s[i]) != std::wstring_view::npos) {
            if (i > start) fields.Add(CKivStringT(s.substr(start, i - start)));
            start = i + 1;
        }
    }
    return fields.GetSize();
}

int StringToInt(const wchar_t* text) {
    if (!text) return 0;
    const wchar_t* p = text;
    while (kiv_strings::IsBlank(*p)) ++p;
    bool negative = false;
    if (*p == L'+' || *p == L'-') negative = (*p++ == L'-');
    long long v = 0;
    for (; IsDigit(*p); ++p) {
        v = v * 10 + (*p - L'0');
        if (v > static_cast<long long>(INT_MAX) + 1) v = static_cast<long long>(INT_MAX) + 1;
    }
    if (negative) v = -v;
    if (v > INT_MAX) return INT_MAX;
    if (v < INT_MIN) return INT_MIN;
    return static_cast<int>(v);
}

CKivStringT IntToString(int value) {
    char buffer[16];
    const auto [ptr, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return Widen(buffer, static_cast<size_t>(ptr - buffer));
}

}  // namespace kiv_formats
