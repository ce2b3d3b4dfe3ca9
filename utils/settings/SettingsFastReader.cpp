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

// Eight bytes at a time: the whole file is checked before anything is read from it.
bool IsAscii(std::string_view s) {
    size_t i = 0;
    for (; i + 8 <= s.size(); i += 8) {
        std::uint64_t word;
        std::memcpy(&word, s.data() + i, 8);
        if (word & 0x8080808080808080ULL) return false;
    }
    for (; i < s.size(); ++i)
        if (static_cast<unsigned char>(s[i]) >= 0x80) return false;
    return true;
}

// The number _wtol reads from ASCII text without control characters: blanks, a sign,
// decimal digits; a number beyond the 32-bit range gives its nearest end.
int ReadLongAscii(std::string_view s) {
    size_t i = 0;
    while (i < s.size() && s[i] == ' ') ++i;
    bool negative = false;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) negative = s[i++] == '-';
    long long v = 0;
    for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i)
        if (v <= 1LL << 32) v = v * 10 + (s[i] - '0');
    if (negative) v = -v;
    return v > INT_MAX ? INT_MAX : v < INT_MIN ? INT_MIN : static_cast<int>(v);
}

// Builds the tree while it reads; the caller undoes it when the text turns out not to be
// ordinary after all.
class Builder {
public:
    explicit Builder(CConfigGroup& root) : open_{&root} {}

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

    void Value(std::string_view name, std::string_view type, std::string_view content) {
        auto& group = static_cast<CXmlConfigGroup&>(*open_.back());
        WidenInto(name, name_);
        // Whole numbers and flags are read straight from the bytes, as the format reads
        // them; the other types take the shared way.
        if (Is(type, "int") && IsAscii(content)) {
            group.AddLoadedValue(name_, ReadLongAscii(content));
        } else if (Is(type, "bool") && IsAscii(content)) {
            group.AddLoadedValue(name_, !content.empty() && ReadLongAscii(content) != 0);
        } else {
            WidenInto(type, type_);
            WidenInto(content, content_);
            CreateLoadedValue(group, name_, type_, content_);
        }
    }

    // Deletes every group made so far, newest first.
    void Undo() {
        for (auto it = topLevel_.rbegin(); it != topLevel_.rend(); ++it) (*it)->Delete();
        topLevel_.clear();
    }

private:
    std::vector<CConfigGroup*> open_;
    std::vector<CConfigGroup*> topLevel_;
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
                size_t end = PlainRunEnd(s_, pos_);
                while (end < s_.size() && (s_[end] == '"' || s_[end] == '\'')) end = PlainRunEnd(s_, end + 1);
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

    void SkipBlanks() {
        while (pos_ < s_.size() && IsBlank(s_[pos_])) ++pos_;
    }

    std::string_view s_;
    size_t pos_ = 0;
};

}  // namespace

bool ReadOrdinarySettings(std::string_view bytes, CConfigGroup& root) {
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
    if (!IsAscii(bytes) && !kiv_text::IsValidUtf8(bytes)) return false;
    Builder builder(root);
    if (Scanner(bytes).Run(builder)) return true;
    builder.Undo();
    return false;
}

}  // namespace kiv_settings_detail
