// CKivStringT: the family's wide-character string, with the behaviour of MFC's CString
// that the library relies on (clamped Left/Mid/Right, -1 for "not found", Tokenize's
// cursor, printf-style Format in which %s and %c take wide arguments).
#pragma once

#include <cstdarg>
#include <functional>
#include <string>
#include <string_view>

class CKivStringT {
public:
    CKivStringT() = default;
    CKivStringT(const wchar_t* text) : s_(text ? text : L"") {}
    CKivStringT(const wchar_t* text, int length) : s_(text ? text : L"", text && length > 0 ? length : 0) {}
    CKivStringT(wchar_t ch, int repeat = 1) : s_(repeat > 0 ? repeat : 0, ch) {}
    CKivStringT(const char* utf8);  // narrow text is read as UTF-8
    CKivStringT(std::wstring text) : s_(std::move(text)) {}
    CKivStringT(std::wstring_view text) : s_(text) {}

    operator const wchar_t*() const { return s_.c_str(); }
    const wchar_t* GetString() const { return s_.c_str(); }
    const std::wstring& str() const { return s_; }
    std::wstring_view view() const { return s_; }

    int GetLength() const { return static_cast<int>(s_.size()); }
    bool IsEmpty() const { return s_.empty(); }
    void Empty() { s_.clear(); }
    wchar_t GetAt(int i) const { return s_.at(static_cast<size_t>(i)); }
    void SetAt(int i, wchar_t c) { s_.at(static_cast<size_t>(i)) = c; }
    wchar_t operator[](int i) const { return GetAt(i); }

    CKivStringT Left(int count) const;
    CKivStringT Mid(int first) const;
    CKivStringT Mid(int first, int count) const;
    CKivStringT Right(int count) const;
    CKivStringT SpanIncluding(const wchar_t* set) const;
    CKivStringT SpanExcluding(const wchar_t* set) const;

    int Find(wchar_t ch, int start = 0) const;
    int Find(const wchar_t* sub, int start = 0) const;
    int ReverseFind(wchar_t ch) const;
    int FindOneOf(const wchar_t* set) const;

    CKivStringT& MakeLower();
    CKivStringT& MakeUpper();
    CKivStringT& MakeReverse();
    CKivStringT& Trim();
    CKivStringT& Trim(wchar_t ch);
    CKivStringT& Trim(const wchar_t* set);
    CKivStringT& TrimLeft();
    CKivStringT& TrimLeft(wchar_t ch);
    CKivStringT& TrimLeft(const wchar_t* set);
    CKivStringT& TrimRight();
    CKivStringT& TrimRight(wchar_t ch);
    CKivStringT& TrimRight(const wchar_t* set);

    int Replace(wchar_t from, wchar_t to);
    int Replace(const wchar_t* from, const wchar_t* to);
    int Remove(wchar_t ch);
    int Insert(int index, wchar_t ch);
    int Insert(int index, const wchar_t* text);
    int Delete(int index, int count = 1);

    // Skips leading delimiters and returns the next token; at the end returns an empty
    // text and sets start to -1.
    CKivStringT Tokenize(const wchar_t* delimiters, int& start) const;

    int Compare(const wchar_t* other) const;
    int CompareNoCase(const wchar_t* other) const;

    void Format(const wchar_t* format, ...);
    void AppendFormat(const wchar_t* format, ...);
    void FormatV(const wchar_t* format, va_list args);
    void AppendFormatV(const wchar_t* format, va_list args);

    wchar_t* GetBuffer(int minLength = 0);
    wchar_t* GetBufferSetLength(int length);
    void ReleaseBuffer(int newLength = -1);

    CKivStringT& operator=(const wchar_t* text) {
        s_ = text ? text : L"";
        return *this;
    }
    CKivStringT& operator=(wchar_t ch) {
        s_.assign(1, ch);
        return *this;
    }
    // Replace or extend the text with `length` characters at `text`, keeping the storage
    // the string already has (a reader that refills the same strings allocates once).
    void SetString(const wchar_t* text, int length) {
        const size_t n = text && length > 0 ? static_cast<size_t>(length) : 0;
        // Within the storage the string has, the text is copied over the old one and the
        // length set, without the general replace (which plans for a text that overlaps
        // the string's own anywhere); only a text longer than that storage takes it.
        const size_t old = s_.size();
        if (n <= old) {
            std::char_traits<wchar_t>::move(s_.data(), text, n);  // the text may lie in the string
            s_.erase(n);
        } else if (n <= s_.capacity()) {
            std::char_traits<wchar_t>::copy(s_.data(), text, old);
            s_.append(text + old, n - old);
        } else {
            s_.assign(text, n);
        }
    }
    void Append(const wchar_t* text, int length) {
        if (text && length > 0) s_.append(text, static_cast<size_t>(length));
    }
    CKivStringT& operator+=(const CKivStringT& other) {
        s_ += other.s_;
        return *this;
    }
    CKivStringT& operator+=(const wchar_t* text) {
        if (text) s_ += text;
        return *this;
    }
    CKivStringT& operator+=(wchar_t ch) {
        s_.push_back(ch);
        return *this;
    }

    friend CKivStringT operator+(CKivStringT a, const CKivStringT& b) { return a += b; }
    friend CKivStringT operator+(CKivStringT a, const wchar_t* b) { return a += b; }
    friend CKivStringT operator+(CKivStringT a, wchar_t b) { return a += b; }
    friend CKivStringT operator+(const wchar_t* a, const CKivStringT& b) { return CKivStringT(a) += b; }
    friend CKivStringT operator+(wchar_t a, const CKivStringT& b) { return CKivStringT(a) += b; }

    friend bool operator==(const CKivStringT& a, const CKivStringT& b) { return a.s_ == b.s_; }
    friend bool operator==(const CKivStringT& a, const wchar_t* b) { return a.s_ == (b ? b : L""); }
    friend bool operator!=(const CKivStringT& a, const CKivStringT& b) { return !(a == b); }
    friend bool operator!=(const CKivStringT& a, const wchar_t* b) { return !(a == b); }
    friend bool operator<(const CKivStringT& a, const CKivStringT& b) { return a.s_ < b.s_; }

private:
    std::wstring s_;
};

using TStr = CKivStringT;

template <>
struct std::hash<CKivStringT> {
    size_t operator()(const CKivStringT& s) const noexcept { return std::hash<std::wstring>()(s.str()); }
};

namespace kiv_strings {
// Case folding of the family's strings: ASCII, Latin-1 and the other letters the C.UTF-8
// tables know, independent of the process locale.
wchar_t ToLower(wchar_t c);
wchar_t ToUpper(wchar_t c);
bool IsBlank(wchar_t c);  // blank, tab, CR, LF, vertical tab, form feed
// printf into wide text under the C locale, with the Windows meaning of %s/%c (wide) and
// %S/%C (narrow, read as UTF-8). Never fails: a bad format yields what was formatted.
std::wstring FormatWide(const wchar_t* format, va_list args);
}  // namespace kiv_strings
