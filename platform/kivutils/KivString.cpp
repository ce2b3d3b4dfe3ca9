// CKivStringT over std::wstring. Formatting runs under a C.UTF-8 locale of its own, so
// number text never takes the process locale's decimal comma.
#include "platform/kivutils/KivString.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string_view>
#include <cwchar>
#include <wchar.h>
#include <vector>

#include "platform/host/NeutralLocale.h"
#include "platform/host/TextCodec.h"

namespace kiv_strings {
namespace {

// Rewrites a format with Windows' wide-printf meanings into the C library's: %s and %c
// take wide arguments there, %S and %C narrow ones; %I64 is a 64-bit length.
std::wstring TranslateFormat(const wchar_t* f) {
    std::wstring out;
    while (*f) {
        if (*f != L'%') {
            out.push_back(*f++);
            continue;
        }
        out.push_back(*f++);
        if (*f == L'%') {
            out.push_back(*f++);
            continue;
        }
        while (*f && std::wcschr(L"-+ #0123456789.*", *f)) out.push_back(*f++);
        bool explicitLength = false;
        if (f[0] == L'I' && f[1] == L'6' && f[2] == L'4') {
            out += L"ll";
            f += 3;
            explicitLength = true;
        } else if (*f == L'h' && (f[1] == L's' || f[1] == L'c')) {
            ++f;  // %hs, %hc: narrow
            out.push_back(*f++);
            continue;
        }
        while (*f && std::wcschr(L"hlLqjzt", *f)) {
            out.push_back(*f++);
            explicitLength = true;
        }
        if (!*f) break;
        const wchar_t conv = *f++;
        if ((conv == L's' || conv == L'c') && !explicitLength) {
            out.push_back(L'l');
            out.push_back(conv);
        } else if (conv == L'S' || conv == L'C') {
            out.push_back(conv == L'S' ? L's' : L'c');
        } else {
            out.push_back(conv);
        }
    }
    return out;
}

}  // namespace

wchar_t ToLower(wchar_t c) { return kiv_text::FoldCase(c); }

wchar_t ToUpper(wchar_t c) { return kiv_text::RaiseCase(c); }

bool IsBlank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

namespace {

// One conversion formatted by the C library, the buffer grown until it fits; false when
// the library refuses it.
template <typename T>
bool AppendOne(std::wstring& out, const std::wstring& conversion, const int* stars, int starCount, T value) {
    std::vector<wchar_t> buffer(256);
    for (;;) {
        int n;
        if (starCount == 2) n = std::swprintf(buffer.data(), buffer.size(), conversion.c_str(), stars[0], stars[1], value);
        else if (starCount == 1) n = std::swprintf(buffer.data(), buffer.size(), conversion.c_str(), stars[0], value);
        else n = std::swprintf(buffer.data(), buffer.size(), conversion.c_str(), value);
        if (n >= 0) {
            out.append(buffer.data(), static_cast<size_t>(n));
            return true;
        }
        if (buffer.size() >= (1u << 24)) return false;
        buffer.resize(buffer.size() * 4);
    }
}

// Narrow text is UTF-8 for the family, as CKivStringT(const char*) reads it, on every host
// (the C library would read it in the process code page); nothing when it does not decode.
std::optional<std::wstring> NarrowText(const char* text) {
    if (!text) return std::wstring(L"(null)");
    const std::string_view bytes(text);
    if (!kiv_text::IsValidUtf8(bytes)) return std::nullopt;
    return kiv_text::FromUtf8(bytes);
}

}  // namespace

// Walks the translated format one conversion at a time, taking each argument by its
// type, so that narrow text is decoded by the family's own rules; numbers are formatted
// by the C library under the neutral locale. A bad format or narrow text that does not
// decode ends the result with what came before it.
std::wstring FormatWide(const wchar_t* format, va_list args) {
    if (!format) return {};
    const std::wstring f = TranslateFormat(format);
    kiv_text::NeutralNumbers neutral;
    va_list ap;
    va_copy(ap, args);
    std::wstring result;
    for (size_t i = 0; i < f.size();) {
        if (f[i] != L'%') {
            result.push_back(f[i++]);
            continue;
        }
        if (i + 1 < f.size() && f[i + 1] == L'%') {
            result.push_back(L'%');
            i += 2;
            continue;
        }
        const size_t start = i++;
        int stars[2] = {0, 0};
        int starCount = 0;
        while (i < f.size() && std::wcschr(L"-+ #0123456789.*", f[i])) {
            if (f[i] == L'*' && starCount < 2) stars[starCount++] = va_arg(ap, int);
            ++i;
        }
        std::wstring length;
        while (i < f.size() && std::wcschr(L"hlLqjzt", f[i])) length.push_back(f[i++]);
        if (i == f.size()) break;
        const wchar_t conv = f[i++];
        std::wstring conversion = f.substr(start, i - start);
        bool ok = true;
        switch (conv) {
            case L'd': case L'i': case L'u': case L'o': case L'x': case L'X': {
                const bool isSigned = conv == L'd' || conv == L'i';
                if (length == L"ll" || length == L"q" || length == L"j") {
                    ok = isSigned ? AppendOne(result, conversion, stars, starCount, va_arg(ap, long long))
                                  : AppendOne(result, conversion, stars, starCount, va_arg(ap, unsigned long long));
                } else if (length == L"l") {
                    ok = isSigned ? AppendOne(result, conversion, stars, starCount, va_arg(ap, long))
                                  : AppendOne(result, conversion, stars, starCount, va_arg(ap, unsigned long));
                } else if (length == L"z" || length == L"t") {
                    ok = isSigned ? AppendOne(result, conversion, stars, starCount, va_arg(ap, std::ptrdiff_t))
                                  : AppendOne(result, conversion, stars, starCount, va_arg(ap, size_t));
                } else {
                    ok = isSigned ? AppendOne(result, conversion, stars, starCount, va_arg(ap, int))
                                  : AppendOne(result, conversion, stars, starCount, va_arg(ap, unsigned));
                }
                break;
            }
            case L'f': case L'F': case L'e': case L'E': case L'g': case L'G': case L'a': case L'A':
                ok = length == L"L" ? AppendOne(result, conversion, stars, starCount, va_arg(ap, long double))
                                    : AppendOne(result, conversion, stars, starCount, va_arg(ap, double));
                break;
            case L'p': ok = AppendOne(result, conversion, stars, starCount, va_arg(ap, void*)); break;
            case L'c':
                if (length == L"l") {
                    ok = AppendOne(result, conversion, stars, starCount, static_cast<wint_t>(va_arg(ap, int)));
                } else {
                    const char narrow[2] = {static_cast<char>(va_arg(ap, int)), '\0'};
                    const auto text = NarrowText(narrow);
                    ok = text && text->size() == 1 &&
                         AppendOne(result, conversion.substr(0, conversion.size() - 1) + L"lc", stars, starCount,
                                   static_cast<wint_t>((*text)[0]));
                }
                break;
            case L's':
                if (length == L"l") {
                    ok = AppendOne(result, conversion, stars, starCount, va_arg(ap, const wchar_t*));
                } else {
                    const auto text = NarrowText(va_arg(ap, const char*));
                    ok = text && AppendOne(result, conversion.substr(0, conversion.size() - 1) + L"ls", stars, starCount,
                                           text->c_str());
                }
                break;
            default: ok = false; break;  // %n and unknown conversions are not formatted
        }
        if (!ok) break;
    }
    va_end(ap);
    return result;
}

}  // namespace kiv_strings

namespace {
bool InSet(wchar_t c, const wchar_t* set) { return set && c != 0 && std::wcschr(set, c) != nullptr; }
}  // namespace

CKivStringT::CKivStringT(const char* utf8) : s_(utf8 ? kiv_text::FromUtf8(utf8) : std::wstring()) {}

CKivStringT CKivStringT::Left(int count) const {
    if (count <= 0) return {};
    return CKivStringT(s_.substr(0, static_cast<size_t>(count)));
}

CKivStringT CKivStringT::Mid(int first) const { return Mid(first, GetLength()); }

CKivStringT CKivStringT::Mid(int first, int count) const {
    if (first < 0) first = 0;
    if (count < 0) count = 0;
    if (first >= GetLength()) return {};
    return CKivStringT(s_.substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

CKivStringT CKivStringT::Right(int count) const {
    if (count <= 0) return {};
    if (count >= GetLength()) return *this;
    return CKivStringT(s_.substr(s_.size() - static_cast<size_t>(count)));
}

CKivStringT CKivStringT::SpanIncluding(const wchar_t* set) const {
    size_t n = 0;
    while (n < s_.size() && InSet(s_[n], set)) ++n;
    return CKivStringT(s_.substr(0, n));
}

CKivStringT CKivStringT::SpanExcluding(const wchar_t* set) const {
    size_t n = 0;
    while (n < s_.size() && !InSet(s_[n], set)) ++n;
    return CKivStringT(s_.substr(0, n));
}

int CKivStringT::Find(wchar_t ch, int start) const {
    if (start < 0 || start >= GetLength()) return -1;
    const size_t p = s_.find(ch, static_cast<size_t>(start));
    return p == std::wstring::npos ? -1 : static_cast<int>(p);
}

int CKivStringT::Find(const wchar_t* sub, int start) const {
    if (!sub || start < 0 || start > GetLength()) return -1;
    const size_t p = s_.find(sub, static_cast<size_t>(start));
    return p == std::wstring::npos ? -1 : static_cast<int>(p);
}

int CKivStringT::ReverseFind(wchar_t ch) const {
    const size_t p = s_.rfind(ch);
    return p == std::wstring::npos ? -1 : static_cast<int>(p);
}

int CKivStringT::FindOneOf(const wchar_t* set) const {
    for (size_t i = 0; i < s_.size(); ++i)
        if (InSet(s_[i], set)) return static_cast<int>(i);
    return -1;
}

CKivStringT& CKivStringT::MakeLower() {
    for (auto& c : s_) c = kiv_strings::ToLower(c);
    return *this;
}

CKivStringT& CKivStringT::MakeUpper() {
    for (auto& c : s_) c = kiv_strings::ToUpper(c);
    return *this;
}

CKivStringT& CKivStringT::MakeReverse() {
    std::reverse(s_.begin(), s_.end());
    return *this;
}

CKivStringT& CKivStringT::TrimLeft() {
    size_t n = 0;
    while (n < s_.size() && kiv_strings::IsBlank(s_[n])) ++n;
    s_.erase(0, n);
    return *this;
}

CKivStringT& CKivStringT::TrimRight() {
    size_t n = s_.size();
    while (n > 0 && kiv_strings::IsBlank(s_[n - 1])) --n;
    s_.resize(n);
    return *this;
}

CKivStringT& CKivStringT::TrimLeft(const wchar_t* set) {
    size_t n = 0;
    while (n < s_.size() && InSet(s_[n], set)) ++n;
    s_.erase(0, n);
    return *this;
}

CKivStringT& CKivStringT::TrimRight(const wchar_t* set) {
    size_t n = s_.size();
    while (n > 0 && InSet(s_[n - 1], set)) --n;
    s_.resize(n);
    return *this;
}

CKivStringT& CKivStringT::TrimLeft(wchar_t ch) {
    const wchar_t set[2] = {ch, 0};
    return TrimLeft(set);
}

CKivStringT& CKivStringT::TrimRight(wchar_t ch) {
    const wchar_t set[2] = {ch, 0};
    return TrimRight(set);
}

CKivStringT& CKivStringT::Trim() { return TrimRight().TrimLeft(); }
CKivStringT& CKivStringT::Trim(wchar_t ch) { return TrimRight(ch).TrimLeft(ch); }
CKivStringT& CKivStringT::Trim(const wchar_t* set) { return TrimRight(set).TrimLeft(set); }

int CKivStringT::Replace(wchar_t from, wchar_t to) {
    int n = 0;
    for (auto& c : s_)
        if (c == from) {
            c = to;
            ++n;
        }
    return n;
}

int CKivStringT::Replace(const wchar_t* from, const wchar_t* to) {
    if (!from || !*from) return 0;
    const std::wstring_view f(from);
    const std::wstring_view t(to ? to : L"");
    std::wstring out;
    int n = 0;
    size_t pos = 0;
    for (size_t hit; (hit = s_.find(f, pos)) != std::wstring::npos; pos = hit + f.size(), ++n) {
        out.append(s_, pos, hit - pos);
        out.append(t);
    }
    if (n == 0) return 0;
    out.append(s_, pos);
    s_.swap(out);
    return n;
}

int CKivStringT::Remove(wchar_t ch) {
    const size_t before = s_.size();
    s_.erase(std::remove(s_.begin(), s_.end(), ch), s_.end());
    return static_cast<int>(before - s_.size());
}

int CKivStringT::Insert(int index, wchar_t ch) {
    const wchar_t text[2] = {ch, 0};
    return Insert(index, text);
}

int CKivStringT::Insert(int index, const wchar_t* text) {
    index = std::clamp(index, 0, GetLength());
    if (text) s_.insert(static_cast<size_t>(index), text);
    return GetLength();
}

int CKivStringT::Delete(int index, int count) {
    if (index < 0) index = 0;
    if (count > 0 && index < GetLength()) s_.erase(static_cast<size_t>(index), static_cast<size_t>(count));
    return GetLength();
}

CKivStringT CKivStringT::Tokenize(const wchar_t* delimiters, int& start) const {
    if (start < 0) return {};
    size_t i = static_cast<size_t>(start);
    while (i < s_.size() && InSet(s_[i], delimiters)) ++i;
    if (i >= s_.size()) {
        start = -1;
        return {};
    }
    size_t j = i;
    while (j < s_.size() && !InSet(s_[j], delimiters)) ++j;
    start = static_cast<int>(j < s_.size() ? j + 1 : j);
    return CKivStringT(s_.substr(i, j - i));
}

int CKivStringT::Compare(const wchar_t* other) const {
    const int r = s_.compare(other ? other : L"");
    return r < 0 ? -1 : (r > 0 ? 1 : 0);
}

int CKivStringT::CompareNoCase(const wchar_t* other) const {
    if (!other) other = L"";
    size_t i = 0;
    for (;; ++i) {
        const wchar_t a = i < s_.size() ? kiv_strings::ToLower(s_[i]) : 0;
        const wchar_t b = kiv_strings::ToLower(other[i]);
        if (a != b) return a < b ? -1 : 1;
        if (a == 0) return 0;
    }
}

void CKivStringT::FormatV(const wchar_t* format, va_list args) { s_ = kiv_strings::FormatWide(format, args); }
void CKivStringT::AppendFormatV(const wchar_t* format, va_list args) { s_ += kiv_strings::FormatWide(format, args); }

void CKivStringT::Format(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
}

void CKivStringT::AppendFormat(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    AppendFormatV(format, args);
    va_end(args);
}

wchar_t* CKivStringT::GetBuffer(int minLength) {
    if (minLength > GetLength()) s_.resize(static_cast<size_t>(minLength));
    return s_.data();
}

wchar_t* CKivStringT::GetBufferSetLength(int length) {
    s_.resize(length < 0 ? 0 : static_cast<size_t>(length));
    return s_.data();
}

void CKivStringT::ReleaseBuffer(int newLength) {
    if (newLength < 0) newLength = static_cast<int>(std::wcslen(s_.c_str()));
    s_.resize(std::min(static_cast<size_t>(newLength), s_.size()));
}
