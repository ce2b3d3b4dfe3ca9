// The INI reader and writer of kiv_settings: a whole file to a CThreeTupleStore and
// back. Sections are "[name]" lines, records "key=value" lines, ';' and '#' lines are
// comments; records before the first section belong to the section named "".
#pragma once

#include <string>
#include <string_view>

#include "platform/kivutils/ThreeTupleStore.h"

namespace kiv_settings {

// The character encodings of the family's text files. Every file is written with CR LF
// line ends; eEncodingUtf16LE is the default for files the system writes.
enum ETextEncoding : int {
    eEncodingAnsi = 0,     // one byte a character, Latin-1
    eEncodingUtf8 = 1,     // UTF-8 without a byte-order mark
    eEncodingUtf16LE = 2,  // UTF-16LE with the byte-order mark FF FE
    eEncodingUtf8Bom = 3,  // UTF-8 with the byte-order mark EF BB BF
};

// Files larger than this are refused rather than read into memory.
constexpr size_t kMaxIniFileBytes = 16u << 20;

// Replaces the store's content with the file's and reports the encoding found: the mark
// tells UTF-16LE or UTF-8; a file without one is UTF-8 when it holds at least as many
// UTF-8 sequences beyond ASCII as stray bytes (which then read as their Latin-1
// characters, and the next save in UTF-8 mends them), ANSI otherwise. A line ends at
// CR LF, LF or a lone CR; the rest of a line after a NUL is ignored, and a line that
// begins with '[' but has no ']' is malformed and skipped, so every record read can be
// written back. Blanks around '=' are not part of the key or the value.
// False, with an empty store and eEncodingUtf16LE, when the file is missing, unreadable
// or too large.
bool readSettingsAsIni(const wchar_t* path, CThreeTupleStore& store, ETextEncoding& encoding);

// Writes the whole store as the file's new content, atomically, in `encoding`, or, when
// its text would not read back the same in that encoding (a character it lacks; ANSI
// bytes that happen to be valid UTF-8; a leading U+FEFF taken for a mark), as UTF-16LE
// with its mark; `written`, when given, tells which. A value's leading blanks are
// written but do not read back: the blanks after '=' are not part of the value.
// False, with the file untouched, when the store cannot be written as INI at all: a
// line break in any text, a section name with ']', a key with '=' or starting with ';',
// '#' or '[', blanks at either end of a name, an empty key, a character no encoding
// holds (a lone surrogate), or an encoding that is none of the above.
bool writeSettingsAsIni(const wchar_t* path, const CThreeTupleStore& store, ETextEncoding encoding,
                        ETextEncoding* written = nullptr);

// The same on bytes in memory.
void parseSettingsIni(std::string_view bytes, CThreeTupleStore& store, ETextEncoding& encoding);
bool formatSettingsIni(const CThreeTupleStore& store, ETextEncoding encoding, std::string& bytes,
                       ETextEncoding* written = nullptr);

}  // namespace kiv_settings
