// Conversions between the system's wide text and the byte encodings met at file and
// host boundaries: UTF-8, UTF-16LE (surrogate pairs beyond the BMP) and Latin-1.
// Decoders never fail: a malformed sequence becomes U+FFFD and decoding goes on.
#pragma once

#include <string>
#include <string_view>

namespace kiv_text {

// One character of wide text at text[i], i moved past it: where wchar_t holds UTF-16
// units a surrogate pair is one character; a lone surrogate comes back as itself.
char32_t NextChar(std::wstring_view text, size_t& i);
// Appends a character as one unit, or as a surrogate pair where wchar_t is 16 bits.
void AppendChar(std::wstring& out, char32_t c);

std::string ToUtf8(std::wstring_view text);
bool IsValidUtf8(std::string_view bytes);  // well-formed, no surrogates, no overlong forms
std::wstring FromUtf8(std::string_view bytes);
std::string ToUtf16Le(std::wstring_view text);       // no BOM
std::wstring FromUtf16Le(std::string_view bytes);    // no BOM expected; an odd last byte is dropped
std::string ToLatin1(std::wstring_view text);        // characters beyond U+00FF become '?'
std::wstring FromLatin1(std::string_view bytes);

// Decodes a whole text file by its byte-order mark: FF FE is UTF-16LE, EF BB BF is UTF-8.
// Without a mark the text is UTF-8 as long as it holds at least as many UTF-8 sequences
// beyond ASCII as stray bytes (bytes that begin no valid sequence): each stray byte then
// reads as its Latin-1 character and the rest as UTF-8, and the encoding found is Utf8,
// so that the next save in it writes the whole file as valid UTF-8. Text with more
// stray bytes than sequences is Latin-1 throughout.
enum class Encoding { Latin1, Utf8, Utf8Bom, Utf16LeBom };
std::wstring DecodeText(std::string_view bytes, Encoding* found = nullptr);

}  // namespace kiv_text
