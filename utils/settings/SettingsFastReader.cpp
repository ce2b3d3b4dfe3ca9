// The strict settings reader: one pass reads the text and builds the tree as it goes;
// a text that turns out not to be ordinary has its tree undone. Whatever the platform's
// tokenizer might read differently (entities, comments, odd markup, other encodings,
// nameless groups, stray text) makes it decline.
#include "utils/settings/SettingsFastReader.h"

#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "platform/host/TextCodec.h"
#include "utils/settings/XmlConfigStorage.h"

namespace kiv_settings_detail {

namespace {


bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

struct NameTable {
    bool name[256] = {};
    constexpr NameTable() {
        for (int c = 'a'; c <= 'z'; ++c) name[c] = true;
        for (int c = 'A'; c <= 'Z'; ++c) name[c] = true;
        for (int c = '0'; c <= '9'; ++c) name[c] = true;
        for (char c : {'_', ':', '-', '.'}) name[static_cast<unsigned char>(c)] = true;
    }
};
constexpr NameTable kNames;

bool IsNameChar(char c) { return kNames.name[static_cast<unsigned char>(c)]; }

std::uint64_t Load8(const char* p) {
    std::uint64_t word;
    std::memcpy(&word, p, 8);
    return word;
}

// Whether the N-1 bytes at `p` are `word`. The words here are 5 to 13 bytes, and two
// overlapping word loads beat a call into the C library, which the compiler makes for
// the longer ones.
template <size_t N>
bool SameBytes(const char* p, const char (&word)[N]) {
    constexpr size_t kLength = N - 1;
    if constexpr (kLength >= 8 && kLength <= 16) {
        return Load8(p) == Load8(word) && Load8(p + kLength - 8) == Load8(word + kLength - 8);
    } else {
        for (size_t i = 0; i < kLength; ++i)
            if (p[i] != word[i]) return false;
        return true;
    }
}

template <size_t N>
bool Is(std::string_view s, const char (&word)[N]) {
    return s.size() == N - 1 && SameBytes(s.data(), word);
}

template <size_t N>
bool Begins(std::string_view s, const char (&word)[N]) {
    return s.size() >= N - 1 && SameBytes(s.data(), word);
}

// Characters that end plain text: markup, entities, control characters and quotes. Text
// that both readers take exactly as it stands has none of them (quotes are allowed in
// element content).
struct StopTable {
    bool stop[256] = {};
    constexpr StopTable() {
        for (int c = 0; c < 0x20; ++c) stop[c] = true;
        stop[static_cast<unsigned char>('<')] = stop[static_cast<unsigned char>('>')] = true;
        stop[static_cast<unsigned char>('&')] = stop[static_cast<unsigned char>('"')] = true;
        stop[static_cast<unsigned char>('\'')] = true;
    }
};
constexpr StopTable kStops;

// The end of the plain run that starts at `from`. Names and values are a few bytes to a
// few dozen, so sixteen at a time ends most runs in one step with one well-predicted
// branch, where a byte loop mispredicts at every run's varying end.
size_t PlainRunEnd(std::string_view s, size_t from) {
#if defined(__SSE2__)
    const __m128i lastControl = _mm_set1_epi8(0x1F);
    for (; from + 16 <= s.size(); from += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s.data() + from));
        // An unsigned subtraction that stops at zero leaves zero exactly for the controls.
        __m128i stops = _mm_cmpeq_epi8(_mm_subs_epu8(bytes, lastControl), _mm_setzero_si128());
        for (char c : {'<', '>', '&', '"', '\''}) stops = _mm_or_si128(stops, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)));
        if (const int marks = _mm_movemask_epi8(stops)) return from + std::countr_zero(static_cast<unsigned>(marks));
    }
#endif
    while (from < s.size() && !kStops.stop[static_cast<unsigned char>(s[from])]) ++from;
    return from;
}

// Widens into `out`, reusing its storage; the bytes are valid UTF-8.
void WidenInto(std::string_view utf8, CKivStringT& out) {
    wchar_t* p = out.GetBufferSetLength(static_cast<int>(utf8.size()));
    for (char c : utf8) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            out = CKivStringT(kiv_text::FromUtf8(utf8));
            return;
        }
        *p++ = static_cast<wchar_t>(c);
    }
}

// Thirty-two bytes a step: the whole file is checked before anything is read from it.
bool IsAscii(std::string_view s) {
    const char* p = s.data();
    size_t i = 0;
    for (; i + 32 <= s.size(); i += 32)
        if ((Load8(p + i) | Load8(p + i + 8) | Load8(p + i + 16) | Load8(p + i + 24)) & 0x8080808080808080ULL)
            return false;
    for (; i < s.size(); ++i)
        if (static_cast<unsigned char>(s[i]) >= 0x80) return false;
    return true;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Adds one digit to a number being read; past 2^32 the number stops growing, which keeps
// it in range and still beyond every 32-bit value.
void AddDigit(long long& v, char digit) {
    if (v <= 1LL << 32) v = v * 10 + (digit - '0');
}

int ClampToInt(long long v) { return v > INT_MAX ? INT_MAX : v < INT_MIN ? INT_MIN : static_cast<int>(v); }

// The number _wtol reads from ASCII text without control characters: blanks, a sign,
// decimal digits; a number beyond the 32-bit range gives its nearest end.
int ReadLongAscii(std::string_view s) {
    size_t i = 0;
    while (i < s.size() && s[i] == ' ') ++i;
    bool negative = false;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) negative = s[i++] == '-';
    long long v = 0;
    for (; i < s.size() && IsDigit(s[i]); ++i) AddDigit(v, s[i]);
    return ClampToInt(negative ? -v : v);
}

// The element content of a saved whole number or flag: bare digits, read as they are
// found (they are what ReadLongAscii reads from them).
struct Digits {
    size_t end;
    int number;
};

// Up to eight digits at once: each byte less '0' is its digit, and the first byte that is
// not a digit ends the run (only that lowest mark is certain; a borrow may mark above it).
// Three multiplies then fold the digits into their number. Longer runs take the loop.
bool EightDigitsAtOnce(std::string_view s, size_t from, Digits& out) {
    if (std::endian::native != std::endian::little || from + 8 > s.size()) return false;
    const std::uint64_t values = Load8(s.data() + from) - 0x3030303030303030ULL;
    const std::uint64_t nonDigits = (values | (values + 0x7676767676767676ULL)) & 0x8080808080808080ULL;
    if (nonDigits == 0) return false;
    const int count = std::countr_zero(nonDigits) / 8;
    if (count == 0) {
        out = {from, 0};
        return true;
    }
    // The digits to the top bytes, zeros before them: the number as eight digits.
    std::uint64_t v = values << (8 * (8 - count));
    v = (v * 10 + (v >> 8)) & 0x00FF00FF00FF00FFULL;
    v = (v * 100 + (v >> 16)) & 0x0000FFFF0000FFFFULL;
    v = (v * 10000 + (v >> 32)) & 0xFFFFFFFFULL;
    out = {from + count, static_cast<int>(v)};
    return true;
}

Digits ReadDigits(std::string_view s, size_t from) {
    Digits digits;
    if (EightDigitsAtOnce(s, from, digits)) return digits;
    long long v = 0;
    for (; from < s.size() && IsDigit(s[from]); ++from) AddDigit(v, s[from]);
    return {from, ClampToInt(v)};
}

// Builds the tree while it reads; the caller undoes it when the text turns out not to be
// ordinary after all.
class Builder {
public:
    // `ascii`: the whole text is ASCII, so that names widen a byte to a character.
    Builder(CConfigGroup& root, std::string_view text, bool ascii)
        : open_{&root}, ascii_(ascii), textEnd_(text.data() + text.size()) {}

    void OpenGroup(std::string_view name) {
        WidenInto(name, name_);
        auto* group = new CXmlConfigGroup(*open_.back(), name_);
        if (open_.size() == 1) topLevel_.push_back(group);
        open_.push_back(group);
    }

    void CloseGroup() {
        static_cast<CXmlConfigGroup*>(open_.back())->LoadFinished();
        open_.pop_back();
    }

    // A whole number or flag whose content was bare digits, already read.
    void Number(std::string_view name, bool flag, Digits digits, bool empty) {
        if (flag) Group().AddLoadedValue(Name(name), !empty && digits.number != 0);
        else Group().AddLoadedValue(Name(name), digits.number);
    }

    void Value(std::string_view name, std::string_view type, std::string_view content) {
        // Whole numbers and flags are read straight from the bytes, as the format reads
        // them; the other types take the shared way.
        if (Is(type, "int") && IsAscii(content)) {
            Group().AddLoadedValue(Name(name), ReadLongAscii(content));
        } else if (Is(type, "bool") && IsAscii(content)) {
            Group().AddLoadedValue(Name(name), !content.empty() && ReadLongAscii(content) != 0);
        } else {
            WidenInto(name, name_);
            WidenInto(type, type_);
            WidenInto(content, content_);
            CreateLoadedValue(Group(), name_, type_, content_);
        }
    }

    // Deletes every group made so far, newest first.
    void Undo() {
        for (auto it = topLevel_.rbegin(); it != topLevel_.rend(); ++it) (*it)->Delete();
        topLevel_.clear();
    }

private:
    CXmlConfigGroup& Group() { return static_cast<CXmlConfigGroup&>(*open_.back()); }

    // The name as wide text. Names are short: an ASCII one widens into a fixed buffer,
    // where the string's resizing would cost more than the widening.
    std::wstring_view Name(std::string_view name) {
        if (!ascii_ || name.size() > kNameBuffer) {
            WidenInto(name, name_);
            return name_.view();
        }
        WidenAscii(name, nameBuffer_);
        return {nameBuffer_, name.size()};
    }

    // Eight characters a step where the text goes on far enough for whole steps (a name is
    // followed by at least its closing quote and the tag's end); one at a time elsewhere.
    void WidenAscii(std::string_view name, wchar_t* out) const {
        size_t i = 0;
#if defined(__SSE2__)
        if constexpr (sizeof(wchar_t) == 4) {
            const __m128i zero = _mm_setzero_si128();
            for (; i < name.size() && name.data() + i + 8 <= textEnd_; i += 8) {
                const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(name.data() + i));
                const __m128i halves = _mm_unpacklo_epi8(bytes, zero);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_unpacklo_epi16(halves, zero));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i + 4), _mm_unpackhi_epi16(halves, zero));
            }
        }
#endif
        for (; i < name.size(); ++i) out[i] = static_cast<wchar_t>(name[i]);
    }

    static constexpr size_t kNameBuffer = 64;

    std::vector<CConfigGroup*> open_;
    std::vector<CConfigGroup*> topLevel_;
    const bool ascii_;
    const char* const textEnd_;
    // Room for a whole last step of eight past the longest name.
    wchar_t nameBuffer_[kNameBuffer + 8];
    CKivStringT name_, type_, content_;
};

class Scanner {
public:
    explicit Scanner(std::string_view text) : s_(text) {}

    bool Run(Builder& out) {
        if (!Prolog() || !Literal("<kiv_config>")) return false;
        int depth = 0;
        for (;;) {
            SkipBlanks();
            if (depth > 0 && SavedValue(out)) continue;
            if (pos_ + 1 < s_.size() && s_[pos_ + 1] == '/') {
                if (Literal("</group>")) {
                    if (--depth < 0) return false;
                    out.CloseGroup();
                    continue;
                }
                if (Literal("</kiv_config>")) break;
                return false;
            }
            std::string_view tag;
            Attributes attributes;
            if (!StartTag(tag, attributes)) return false;
            if (Is(tag, "value") && depth > 0) {
                const size_t end = ContentEnd(s_, pos_);
                const std::string_view content = s_.substr(pos_, end - pos_);
                pos_ = end;
                if (!Literal("</value>")) return false;
                if (!attributes.name.empty() && !attributes.type.empty())
                    out.Value(attributes.name, attributes.type, content);
            } else if (Is(tag, "group")) {
                if (attributes.name.empty() || ++depth > kMaxGroupDepth) return false;
                out.OpenGroup(attributes.name);
            } else {
                return false;
            }
        }
        SkipBlanks();
        return depth == 0 && pos_ == s_.size();
    }

private:
    struct Attributes {
        std::string_view name, type;
        bool sawName = false, sawType = false;
    };

    bool Prolog() {
        SkipBlanks();
        if (s_.substr(pos_, 5) == "<?xml") {
            const size_t end = s_.find("?>", pos_);
            if (end == std::string_view::npos || !IsPlainDeclaration(s_.substr(pos_ + 5, end - pos_ - 5))) return false;
            pos_ = end + 2;
        }
        SkipBlanks();
        return true;
    }

    static bool IsPlainDeclaration(std::string_view body) {
        for (char c : body)
            if (c == '<' || c == '>' || (static_cast<unsigned char>(c) < 0x20 && !IsBlank(c))) return false;
        return true;
    }

    // "<name attr="v" ...>" with double-quoted plain values; the first of each name counts.
    bool StartTag(std::string_view& tag, Attributes& attributes) {
        if (SavedStartTag(tag, attributes)) return true;
        if (pos_ >= s_.size() || s_[pos_] != '<') return false;
        size_t i = pos_ + 1;
        const size_t nameStart = i;
        while (i < s_.size() && IsNameChar(s_[i])) ++i;
        tag = s_.substr(nameStart, i - nameStart);
        if (tag.empty()) return false;
        for (;;) {
            const size_t blanks = i;
            while (i < s_.size() && IsBlank(s_[i])) ++i;
            if (i < s_.size() && s_[i] == '>') {
                pos_ = i + 1;
                return true;
            }
            if (i == blanks) return false;
            const size_t attrStart = i;
            while (i < s_.size() && IsNameChar(s_[i])) ++i;
            const std::string_view attr = s_.substr(attrStart, i - attrStart);
            if (attr.empty() || i + 1 >= s_.size() || s_[i] != '=' || s_[i + 1] != '"') return false;
            const size_t valueStart = i + 2;
            const size_t close = PlainRunEnd(s_, valueStart);
            if (close >= s_.size() || s_[close] != '"') return false;
            const std::string_view value = s_.substr(valueStart, close - valueStart);
            if (Is(attr, "name") && !attributes.sawName) attributes.name = value, attributes.sawName = true;
            if (Is(attr, "type") && !attributes.sawType) attributes.type = value, attributes.sawType = true;
            i = close + 1;
        }
    }

    // A value element exactly as the storage saves it, '<value name="N" type="T">C</value>',
    // read in one go; it reads as the general way below reads it. Anything else is left
    // to that way, from the same place.
    bool SavedValue(Builder& out) {
        const std::string_view rest = From(s_, pos_);
        if (!Begins(rest, "<value name=\"")) return false;
        const size_t nameEnd = PlainRunEnd(rest, 13);
        if (!Begins(From(rest, nameEnd), "\" type=\"")) return false;
        const size_t typeStart = nameEnd + 8;
        const size_t typeEnd = TypeEnd(rest, typeStart);
        if (!Begins(From(rest, typeEnd), "\">")) return false;
        const std::string_view name = Between(rest, 13, nameEnd);
        const std::string_view type = Between(rest, typeStart, typeEnd);
        const size_t contentStart = typeEnd + 2;
        // Whole numbers and flags are saved as bare digits: read while they are found.
        const bool flag = Is(type, "bool");
        if (flag || Is(type, "int")) {
            const Digits digits = ReadDigits(rest, contentStart);
            if (Begins(From(rest, digits.end), "</value>")) {
                if (!name.empty()) out.Number(name, flag, digits, digits.end == contentStart);
                pos_ += digits.end + 8;
                return true;
            }
        }
        const size_t contentEnd = ContentEnd(rest, contentStart);
        if (!Begins(From(rest, contentEnd), "</value>")) return false;
        if (!name.empty() && !type.empty()) out.Value(name, type, Between(rest, contentStart, contentEnd));
        pos_ += contentEnd + 8;
        return true;
    }

    // Views of `s` at positions already known to lie within it, without the library's
    // checks (which cost a call each on this path).
    static std::string_view From(std::string_view s, size_t from) { return {s.data() + from, s.size() - from}; }
    static std::string_view Between(std::string_view s, size_t from, size_t to) { return {s.data() + from, to - from}; }

    // The end of a type word: the words the storage saves are known by sight (each ends
    // at its quote, as a run would), any other is a run.
    static size_t TypeEnd(std::string_view s, size_t from) {
        const std::string_view word = From(s, from);
        if (Begins(word, "int\"") || Begins(word, "str\"") || Begins(word, "dbl\"")) return from + 3;
        if (Begins(word, "bool\"")) return from + 4;
        return PlainRunEnd(s, from);
    }

    // The end of an element's text: plain runs, with quotes allowed between them.
    static size_t ContentEnd(std::string_view s, size_t from) {
        size_t end = PlainRunEnd(s, from);
        while (end < s.size() && (s[end] == '"' || s[end] == '\'')) end = PlainRunEnd(s, end + 1);
        return end;
    }

    // The start tags exactly as the storage saves them, '<group name="N">' and
    // '<value name="N" type="T">', read without the general loop below (whose short,
    // varying runs cost more in mispredicted branches than in reading); they read as
    // that loop reads them. Anything else is left to the loop, from the same place.
    bool SavedStartTag(std::string_view& tag, Attributes& attributes) {
        const std::string_view rest = s_.substr(pos_);
        const bool value = Begins(rest, "<value name=\"");
        if (!value && !Begins(rest, "<group name=\"")) return false;
        size_t i = 13;
        const size_t nameEnd = PlainRunEnd(rest, i);
        if (nameEnd >= rest.size() || rest[nameEnd] != '"') return false;
        const std::string_view name = rest.substr(i, nameEnd - i);
        i = nameEnd + 1;
        std::string_view type;
        if (value) {
            if (!Begins(rest.substr(i), " type=\"")) return false;
            i += 7;
            const size_t typeEnd = PlainRunEnd(rest, i);
            if (typeEnd >= rest.size() || rest[typeEnd] != '"') return false;
            type = rest.substr(i, typeEnd - i);
            i = typeEnd + 1;
        }
        if (i >= rest.size() || rest[i] != '>') return false;
        tag = rest.substr(1, 5);
        attributes.name = name;
        attributes.sawName = true;
        if (value) {
            attributes.type = type;
            attributes.sawType = true;
        }
        pos_ += i + 1;
        return true;
    }

    template <size_t N>
    bool Literal(const char (&text)[N]) {
        if (!Is(s_.substr(pos_, N - 1), text)) return false;
        pos_ += N - 1;
        return true;
    }

    // The saved file breaks its lines with CR LF: that pair is passed in one step.
    void SkipBlanks() {
        if (pos_ + 2 <= s_.size() && s_[pos_] == '\r' && s_[pos_ + 1] == '\n') pos_ += 2;
        while (pos_ < s_.size() && IsBlank(s_[pos_])) ++pos_;
    }

    std::string_view s_;
    size_t pos_ = 0;
};

}  // namespace

bool ReadOrdinarySettings(std::string_view bytes, CConfigGroup& root) {
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
    const bool ascii = IsAscii(bytes);
    if (!ascii && !kiv_text::IsValidUtf8(bytes)) return false;
    Builder builder(root, bytes, ascii);
    if (Scanner(bytes).Run(builder)) return true;
    builder.Undo();
    return false;
}

}  // namespace kiv_settings_detail
