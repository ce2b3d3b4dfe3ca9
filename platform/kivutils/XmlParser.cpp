// Tag forming and a lenient tokenizer. Every scan stops at the end of the text, and the
// searches for the ends of comments and the like remember their last answer, so a file of
// nothing but unfinished markup is still read in linear time.
#include "platform/kivutils/XmlParser.h"

#include <bit>
#include <climits>
#include <cwchar>

#if defined(__SSE2__) && WCHAR_MAX > 0xFFFF
#include <emmintrin.h>
#define KIV_XML_SCAN_SSE2 1
#endif

#include "platform/host/TextCodec.h"
#include "platform/win32/Win32.h"

namespace {

constexpr DWORD kErrorFileTooLarge = 223;  // ERROR_FILE_TOO_LARGE

bool IsBlank(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }

// The ASCII characters of names, by a table: every character beyond ASCII may be in a
// name too.
enum : unsigned char { kNameStart = 1, kNameChar = 2 };
struct NameTable {
    unsigned char kind[128] = {};
    constexpr NameTable() {
        for (int c = 'a'; c <= 'z'; ++c) kind[c] = kNameStart | kNameChar;
        for (int c = 'A'; c <= 'Z'; ++c) kind[c] = kNameStart | kNameChar;
        kind[static_cast<unsigned char>('_')] = kind[static_cast<unsigned char>(':')] = kNameStart | kNameChar;
        for (int c = '0'; c <= '9'; ++c) kind[c] = kNameChar;
        kind[static_cast<unsigned char>('-')] = kind[static_cast<unsigned char>('.')] = kNameChar;
    }
};
constexpr NameTable kNames;

bool IsNameStart(wchar_t c) {
    return static_cast<unsigned long>(c) >= 0x80 || (kNames.kind[static_cast<size_t>(c)] & kNameStart);
}

bool IsNameChar(wchar_t c) {
    return static_cast<unsigned long>(c) >= 0x80 || (kNames.kind[static_cast<size_t>(c)] & kNameChar);
}

// Scans from `from` to the first '>' or '<' (or the end, `size`), telling whether an odd
// number of double quotes or any single quote came on the way. A tag's attribute text is
// nearly always plain double-quoted values, and for such text this one pass settles where
// the tag ends; four characters are compared at a time where the processor allows. The
// scan stops at a '<' as the tag does, so unfinished tags are still read in linear time.
struct TagScan {
    size_t stop;       // the first '>' or '<', or `size`
    bool oddQuotes;    // an odd number of '"' before it
    bool singleQuote;  // a '\'' before it
};

TagScan ScanToTagClose(const wchar_t* text, size_t from, size_t size) {
    TagScan scan{size, false, false};
    size_t i = from;
#ifdef KIV_XML_SCAN_SSE2
    const __m128i close = _mm_set1_epi32('>');
    const __m128i open = _mm_set1_epi32('<');
    const __m128i dquote = _mm_set1_epi32('"');
    const __m128i squote = _mm_set1_epi32('\'');
    const auto bits = [](__m128i equal) { return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(equal))); };
    for (; i + 4 <= size; i += 4) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
        const unsigned stops = bits(_mm_or_si128(_mm_cmpeq_epi32(v, close), _mm_cmpeq_epi32(v, open)));
        unsigned quotes = bits(_mm_cmpeq_epi32(v, dquote));
        unsigned singles = bits(_mm_cmpeq_epi32(v, squote));
        if (stops != 0) {
            const unsigned before = (stops & (0u - stops)) - 1;
            quotes &= before;
            singles &= before;
        }
        scan.oddQuotes ^= (0x6996u >> quotes) & 1u;  // the parity of four bits
        scan.singleQuote |= singles != 0;
        if (stops != 0) {
            scan.stop = i + static_cast<size_t>(std::countr_zero(stops));
            return scan;
        }
    }
#endif
    for (; i < size; ++i) {
        const wchar_t c = text[i];
        if (c == L'>' || c == L'<') {
            scan.stop = i;
            return scan;
        }
        scan.oddQuotes ^= c == L'"';
        scan.singleQuote |= c == L'\'';
    }
    return scan;
}

std::wstring_view TrimBlanks(std::wstring_view text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

void AppendEscaped(std::wstring& out, wchar_t c) {
    switch (c) {
        case L'&': out += L"&amp;"; return;
        case L'<': out += L"&lt;"; return;
        case L'>': out += L"&gt;"; return;
        case L'"': out += L"&quot;"; return;
        default: break;
    }
    // Line breaks and tabs as references survive attribute-value normalisation and keep
    // the element on one line; other control characters are not XML at all, but our own
    // reader restores them, so no name is ever lost.
    if (static_cast<unsigned long>(c) < 0x20) {
        out += L"&#" + std::to_wstring(static_cast<unsigned>(c)) + L";";
        return;
    }
    out.push_back(c);
}

// The character of a numeric reference "#123" or "#x7B", or 0 when it is not one.
char32_t NumericReference(std::wstring_view body) {
    if (body.size() < 2 || body[0] != L'#') return 0;
    const bool hex = body[1] == L'x';
    const std::wstring_view digits = body.substr(hex ? 2 : 1);
    if (digits.empty() || digits.size() > 8) return 0;
    unsigned long value = 0;
    for (wchar_t d : digits) {
        int v;
        if (d >= L'0' && d <= L'9') v = d - L'0';
        else if (hex && d >= L'a' && d <= L'f') v = d - L'a' + 10;
        else if (hex && d >= L'A' && d <= L'F') v = d - L'A' + 10;
        else return 0;
        value = value * (hex ? 16 : 10) + static_cast<unsigned long>(v);
    }
    if (value == 0 || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return 0;
    return static_cast<char32_t>(value);
}

// The longest reference body: '#x' and eight digits.
constexpr size_t kMaxReferenceBody = 10;

// Resolves the five predefined entities and numeric references; anything else that
// begins with '&' stays as it stands. The ';' is looked for only as far as the longest
// reference reaches, so a value of nothing but '&' is still read in linear time.
std::wstring Unescape(std::wstring_view text) {
    std::wstring out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'&') {
            const size_t found = text.substr(i + 1, kMaxReferenceBody + 1).find(L';');
            if (found != std::wstring_view::npos) {
                const size_t semicolon = i + 1 + found;
                const std::wstring_view body = text.substr(i + 1, found);
                char32_t c = 0;
                if (body == L"amp") c = U'&';
                else if (body == L"lt") c = U'<';
                else if (body == L"gt") c = U'>';
                else if (body == L"quot") c = U'"';
                else if (body == L"apos") c = U'\'';
                else c = NumericReference(body);
                if (c != 0) {
                    kiv_text::AppendChar(out, c);
                    i = semicolon;
                    continue;
                }
            }
        }
        out.push_back(text[i]);
    }
    return out;
}

}  // namespace

// ---- forming -------------------------------------------------------------------------------

int CXmlParserBase::TagTypeFlag(int tagType) {
    switch (tagType) {
        case eTagOwnLine: return eTagLineBreak;
        case eTagWithAttributes: return eTagOpenForAttributes;
        case eTagEndsLine: return eTagLineBreak;
        default: return 0;
    }
}

CKivStringT CXmlParserBase::OpenTag(const wchar_t* name, int flags) {
    CKivStringT tag(L"<");
    tag += name;
    if (!(flags & eTagOpenForAttributes)) tag += L">";
    if (flags & eTagLineBreak) tag += L"\r\n";
    return tag;
}

CKivStringT CXmlParserBase::CloseTag(const wchar_t* name, int flags) {
    CKivStringT tag(L"</");
    tag += name;
    tag += L">";
    if (flags & eTagLineBreak) tag += L"\r\n";
    return tag;
}

CKivStringT CXmlParserBase::FormAttrib(const wchar_t* name, const wchar_t* value, bool closeTag) {
    std::wstring out = L" ";
    out += name ? name : L"";
    out += L"=\"";
    for (const wchar_t* c = value ? value : L""; *c; ++c) AppendEscaped(out, *c);
    out += closeTag ? L"\">" : L"\"";
    return CKivStringT(std::move(out));
}

// ---- reading ---------------------------------------------------------------------------------

int CXmlParser::Initialize(const wchar_t* path, CXmlParser*& parser) {
    parser = nullptr;
    HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return static_cast<int>(GetLastError());
    DWORD high = 0;
    const DWORD size = GetFileSize(file, &high);
    DWORD error = ERROR_SUCCESS;
    std::string bytes;
    if (size == INVALID_FILE_SIZE && GetLastError() != NO_ERROR) {
        error = GetLastError();
    } else if (high != 0 || size > kMaxFileBytes) {
        error = kErrorFileTooLarge;
    } else {
        bytes.resize(size);
        DWORD read = 0;
        if (!ReadFile(file, bytes.data(), size, &read, nullptr)) error = GetLastError();
        bytes.resize(read);
    }
    CloseHandle(file);
    if (error != ERROR_SUCCESS) return static_cast<int>(error);
    parser = new (std::nothrow) CXmlParser(kiv_text::DecodeText(bytes));
    return parser ? 0 : static_cast<int>(ERROR_NOT_ENOUGH_MEMORY);
}

void CXmlParser::Destroy(CXmlParser*& parser) {
    delete parser;
    parser = nullptr;
}

size_t CXmlParser::Search(std::wstring_view pattern, size_t from, SearchCache& cache) const {
    // A search from inside the span of the last one ends where that one ended.
    if (cache.from != std::wstring::npos && from >= cache.from && from <= cache.found) return cache.found;
    cache.from = from;
    cache.found = std::wstring_view(text_).find(pattern, from);
    return cache.found;
}

// A start or end tag at `at`, well formed up to its '>': a name, then for a start tag
// attribute text in which '<' appears nowhere, quoted or not.
bool CXmlParser::TryTagAt(size_t at, Markup& markup) const {
    const size_t size = text_.size();
    size_t i = at + 1;
    const bool end = i < size && text_[i] == L'/';
    if (end) ++i;
    if (i >= size || !IsNameStart(text_[i])) return false;
    while (i < size && IsNameChar(text_[i])) ++i;
    markup.nameEnd = i;
    if (end) {
        while (i < size && IsBlank(text_[i])) ++i;
        if (i >= size || text_[i] != L'>') return false;
        markup = Markup{Kind::End, at, i + 1, markup.nameEnd, false};
        return true;
    }
    if (i < size && !IsBlank(text_[i]) && text_[i] != L'/' && text_[i] != L'>') return false;
    const wchar_t* text = text_.data();
    const auto closeAt = [&](size_t close) {
        // The last character before the '>' that is not blank lies outside quotes (a
        // closing quote is itself not blank), so a '/' there closes the tag.
        size_t last = close;
        while (last > markup.nameEnd && IsBlank(text[last - 1])) --last;
        const bool selfClosed = last > markup.nameEnd && text[last - 1] == L'/';
        markup = Markup{Kind::Start, at, close + 1, markup.nameEnd, selfClosed};
        return true;
    };
    // A '<' before the first '>', quoted or not, refuses the tag, as does the end of the
    // text; a '>' after double quotes in pairs and no single quote lies outside every
    // quote and ends the tag. Only a '>' that may be quoted needs the loop below.
    const TagScan scan = ScanToTagClose(text, i, size);
    if (scan.stop == size || text[scan.stop] == L'<') return false;
    if (!scan.singleQuote && !scan.oddQuotes) return closeAt(scan.stop);
    for (; i < size; ++i) {
        const wchar_t c = text[i];
        if (c == L'<') return false;
        if (c == L'"' || c == L'\'') {
            // Inside quotes only the closing quote matters ('<' included: a quoted '<'
            // is refused too).
            for (++i; i < size && text[i] != c; ++i) {
                if (text[i] == L'<') return false;
            }
            if (i >= size) return false;
        } else if (c == L'>') {
            return closeAt(i);
        }
    }
    return false;
}

bool CXmlParser::TryMarkupAt(size_t at, Markup& markup) {
    // Nearly all markup is tags: the others all begin "<?" or "<!".
    if (at + 1 >= text_.size() || (text_[at + 1] != L'?' && text_[at + 1] != L'!')) return TryTagAt(at, markup);
    const std::wstring_view rest = std::wstring_view(text_).substr(at);
    size_t close = std::wstring::npos, length = 0;
    if (rest.starts_with(L"<?")) {
        close = Search(L"?>", at + 2, piEnd_), length = 2;
    } else if (rest.starts_with(L"<!--")) {
        close = Search(L"-->", at + 4, commentEnd_), length = 3;
    } else if (rest.starts_with(L"<![CDATA[")) {
        close = Search(L"]]>", at + 9, cdataEnd_), length = 3;
    } else if (rest.starts_with(L"<!")) {
        close = Search(L">", at + 2, declarationEnd_), length = 1;
    } else {
        return TryTagAt(at, markup);
    }
    if (close == std::wstring::npos) return false;
    markup = Markup{Kind::Skip, at, close + length, 0, false};
    return true;
}

void CXmlParser::FindMarkup(size_t from, Markup& markup) {
    // Markup is usually a few characters away: a plain scan beats a call per search. The
    // markup is filled in place: a copy of it read back whole right after the scan wrote
    // it field by field would stall on the store.
    const wchar_t* text = text_.data();
    const size_t size = text_.size();
    for (size_t at = from; at < size; ++at) {
        if (text[at] == L'<' && TryMarkupAt(at, markup)) return;
    }
    markup = Markup{Kind::None, size, size, 0, false};
}

bool CXmlParser::ReadToken(CKivStringT& tag, CKivStringT& attributes, CKivStringT& content) {
    tag.Empty();
    attributes.Empty();
    content.Empty();
    if (!pendingEnd_.IsEmpty()) {
        tag = pendingEnd_;
        pendingEnd_.Empty();
        return true;
    }
    for (;;) {
        // The markup found after the last content is read where it lies, not copied.
        Markup found;
        const bool cached = hasNext_ && next_.at >= pos_;
        if (!cached) FindMarkup(pos_, found);
        const Markup& markup = cached ? next_ : found;
        hasNext_ = false;
        if (markup.kind == Kind::None) {
            pos_ = text_.size();
            return false;
        }
        pos_ = markup.end;
        if (markup.kind == Kind::Skip) continue;
        const std::wstring_view text(text_);
        // The strings are refilled in place, so a caller that passes the same ones on
        // every call reads the whole file with hardly an allocation.
        const auto set = [](CKivStringT& target, std::wstring_view part) {
            target.SetString(part.data(), static_cast<int>(part.size()));
        };
        if (markup.kind == Kind::End) {
            set(tag, text.substr(markup.at + 1, markup.nameEnd - markup.at - 1));  // "/name"
            return true;
        }
        const std::wstring_view name = text.substr(markup.at + 1, markup.nameEnd - markup.at - 1);
        set(tag, name);
        std::wstring_view inside = TrimBlanks(text.substr(markup.nameEnd, markup.end - 1 - markup.nameEnd));
        if (markup.selfClosed) {
            inside.remove_suffix(1);  // the '/'
            set(attributes, TrimBlanks(inside));
            pendingEnd_.SetString(L"/", 1);
            pendingEnd_.Append(name.data(), static_cast<int>(name.size()));
            return true;
        }
        set(attributes, inside);
        FindMarkup(pos_, next_);
        hasNext_ = true;
        set(content, text.substr(pos_, next_.at - pos_));
        return true;
    }
}

CKivStringT CXmlParser::ReadAttrib(const CKivStringT& attributes, const wchar_t* name) {
    const std::wstring_view text = attributes.view();
    const std::wstring_view wanted = name ? name : L"";
    size_t i = 0;
    const auto skipBlanks = [&] {
        while (i < text.size() && IsBlank(text[i])) ++i;
    };
    for (;;) {
        skipBlanks();
        const size_t nameStart = i;
        while (i < text.size() && !IsBlank(text[i]) && text[i] != L'=') ++i;
        const std::wstring_view attribute = text.substr(nameStart, i - nameStart);
        skipBlanks();
        if (attribute.empty() || i >= text.size() || text[i] != L'=') return {};
        ++i;
        skipBlanks();
        std::wstring_view value;
        if (i < text.size() && (text[i] == L'"' || text[i] == L'\'')) {
            const size_t close = text.find(text[i], i + 1);
            if (close == std::wstring_view::npos) return {};
            value = text.substr(i + 1, close - i - 1);
            i = close + 1;
        } else {  // an unquoted value, as lenient readers accept
            const size_t start = i;
            while (i < text.size() && !IsBlank(text[i])) ++i;
            value = text.substr(start, i - start);
        }
        if (attribute == wanted) return CKivStringT(Unescape(value));
    }
}

bool CXmlParser::ParseValuesInBrackets(const CKivStringT& content, CKivArray<CKivStringT>& list, wchar_t separator) {
    list.RemoveAll();
    const std::wstring_view trimmed = TrimBlanks(content.view());
    if (trimmed.size() < 2 || trimmed.front() != L'[' || trimmed.back() != L']') {
        if (!content.IsEmpty()) list.Add(content);
        return true;
    }
    std::wstring_view inner = trimmed.substr(1, trimmed.size() - 2);
    for (;;) {
        const size_t sep = inner.find(separator);
        list.Add(CKivStringT(inner.substr(0, sep)));
        if (sep == std::wstring_view::npos) break;
        inner.remove_prefix(sep + 1);
    }
    return true;
}

namespace kiv_formats {

bool WriteString(FILE* file, const CKivStringT& text) {
    if (!file) return false;
    const std::string bytes = kiv_text::ToUtf8(text.view());
    return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
}

}  // namespace kiv_formats
