// UTF-8, UTF-16LE and Latin-1 codecs for wide text. Wide text is UTF-32 where wchar_t
// has 32 bits (Linux) and UTF-16 where it has 16 (Windows); the codecs work on whole
// characters, so a character beyond the BMP is one unit on one host and a pair on the other.
#include "platform/host/TextCodec.h"

namespace kiv_text {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr bool kWideIsUtf16 = sizeof(wchar_t) == 2;

bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

void AppendUtf8(std::string& out, char32_t c) {
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = kReplacement;
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

// Decodes one UTF-8 sequence at bytes[i]; returns its length, 0 when it is malformed.
size_t DecodeUtf8At(std::string_view bytes, size_t i, char32_t& c) {
    const auto b0 = static_cast<unsigned char>(bytes[i]);
    if (b0 < 0x80) { c = b0; return 1; }
    size_t len;
    char32_t min;
    if ((b0 & 0xE0) == 0xC0) { len = 2; c = b0 & 0x1F; min = 0x80; }
    else if ((b0 & 0xF0) == 0xE0) { len = 3; c = b0 & 0x0F; min = 0x800; }
    else if ((b0 & 0xF8) == 0xF0) { len = 4; c = b0 & 0x07; min = 0x10000; }
    else return 0;
    if (i + len > bytes.size()) return 0;
    for (size_t k = 1; k < len; ++k) {
        const auto b = static_cast<unsigned char>(bytes[i + k]);
        if ((b & 0xC0) != 0x80) return 0;
        c = (c << 6) | (b & 0x3F);
    }
    if (c < min || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return 0;
    return len;
}

}  // namespace

char32_t NextChar(std::wstring_view text, size_t& i) {
    const auto c = static_cast<char32_t>(text[i++]);
    if (kWideIsUtf16 && IsHighSurrogate(c) && i < text.size() && IsLowSurrogate(text[i]))
        return 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(text[i++]) - 0xDC00);
    return c;
}

void AppendChar(std::wstring& out, char32_t c) {
    if (kWideIsUtf16 && c >= 0x10000 && c <= 0x10FFFF) {
        c -= 0x10000;
        out.push_back(static_cast<wchar_t>(0xD800 | (c >> 10)));
        out.push_back(static_cast<wchar_t>(0xDC00 | (c & 0x3FF)));
    } else {
        out.push_back(static_cast<wchar_t>(c));
    }
}

bool IsValidUtf8(std::string_view bytes) {
    char32_t c;
    for (size_t i = 0; i < bytes.size();) {
        const size_t n = DecodeUtf8At(bytes, i, c);
        if (n == 0) return false;
        i += n;
    }
    return true;
}

std::string ToUtf8(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) AppendUtf8(out, NextChar(text, i));
    return out;
}

std::wstring FromUtf8(std::string_view bytes) {
    std::wstring out;
    out.reserve(bytes.size());
    for (size_t i = 0; i < bytes.size();) {
        char32_t c;
        const size_t n = DecodeUtf8At(bytes, i, c);
        if (n == 0) {
            out.push_back(static_cast<wchar_t>(kReplacement));
            ++i;
        } else {
            AppendChar(out, c);
            i += n;
        }
    }
    return out;
}

std::string ToUtf16Le(std::wstring_view text) {
    std::string out;
    out.reserve(text.size() * 2);
    auto unit = [&out](char32_t u) {
        out.push_back(static_cast<char>(u & 0xFF));
        out.push_back(static_cast<char>((u >> 8) & 0xFF));
    };
    for (size_t i = 0; i < text.size();) {
        char32_t c = NextChar(text, i);
        if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = kReplacement;
        if (c >= 0x10000) {
            c -= 0x10000;
            unit(0xD800 | (c >> 10));
            unit(0xDC00 | (c & 0x3FF));
        } else {
            unit(c);
        }
    }
    return out;
}

std::wstring FromUtf16Le(std::string_view bytes) {
    std::wstring out;
    out.reserve(bytes.size() / 2);
    const size_t units = bytes.size() / 2;
    auto at = [&bytes](size_t k) {
        return static_cast<char32_t>(static_cast<unsigned char>(bytes[2 * k]) |
                                     (static_cast<unsigned char>(bytes[2 * k + 1]) << 8));
    };
    for (size_t k = 0; k < units; ++k) {
        const char32_t u = at(k);
        if (u >= 0xD800 && u <= 0xDBFF && k + 1 < units && at(k + 1) >= 0xDC00 && at(k + 1) <= 0xDFFF) {
            AppendChar(out, 0x10000 + ((u - 0xD800) << 10) + (at(k + 1) - 0xDC00));
            ++k;
        } else if (u >= 0xD800 && u <= 0xDFFF) {
            out.push_back(static_cast<wchar_t>(kReplacement));
        } else {
            out.push_back(static_cast<wchar_t>(u));
        }
    }
    return out;
}

std::string ToLatin1(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const char32_t c = NextChar(text, i);
        out.push_back(c <= 0xFF ? static_cast<char>(c) : '?');
    }
    return out;
}

std::wstring FromLatin1(std::string_view bytes) {
    std::wstring out;
    out.reserve(bytes.size());
    for (char b : bytes) out.push_back(static_cast<wchar_t>(static_cast<unsigned char>(b)));
    return out;
}

std::wstring DecodeText(std::string_view bytes, Encoding* found) {
    Encoding enc;
    std::wstring text;
    if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
        static_cast<unsigned char>(bytes[1]) == 0xFE) {
        enc = Encoding::Utf16LeBom;
        text = FromUtf16Le(bytes.substr(2));
    } else if (bytes.size() >= 3 && bytes.substr(0, 3) == "\xEF\xBB\xBF") {
        enc = Encoding::Utf8Bom;
        text = FromUtf8(bytes.substr(3));
    } else {
        // A byte that begins no UTF-8 sequence is taken for the Latin-1 character it
        // would be, so a line added by a Latin-1 editor spoils only its own characters.
        size_t sequences = 0, strays = 0;
        text.reserve(bytes.size());
        for (size_t i = 0; i < bytes.size();) {
            char32_t c;
            const size_t n = DecodeUtf8At(bytes, i, c);
            if (n == 0) {
                text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(bytes[i])));
                ++strays;
                ++i;
            } else {
                AppendChar(text, c);
                if (n > 1) ++sequences;
                i += n;
            }
        }
        enc = Encoding::Utf8;
        // Mostly stray bytes: a Latin-1 file, in which a pair such as "\xC3\xA9" is two
        // characters, not one.
        if (strays > sequences) {
            enc = Encoding::Latin1;
            text = FromLatin1(bytes);
        }
    }
    if (found) *found = enc;
    return text;
}

}  // namespace kiv_text
