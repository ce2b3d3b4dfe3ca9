// INI text to records and back. A value keeps its text exactly, trailing blanks
// included; only the blanks around '=' go, so a value's own leading blanks do not
// survive a round trip (as with the device's own profile files). The reader makes only
// records the writer accepts: a file read once can always be saved again.
#include "platform/kivutils/IniFile.h"

#include <algorithm>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/FileFuncs.h"
#include "platform/win32/Win32.h"

namespace kiv_settings {
namespace {

bool IsSpaceOrTab(wchar_t c) { return c == L' ' || c == L'\t'; }

std::wstring_view TrimBlanks(std::wstring_view text) {
    while (!text.empty() && IsSpaceOrTab(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsSpaceOrTab(text.back())) text.remove_suffix(1);
    return text;
}

// What the line scan stops for; everything else, every character beyond ASCII included,
// is ordinary text.
enum : unsigned char { kPlain = 0, kLineEnd, kNul, kEquals };
struct LineStops {
    unsigned char kind[128] = {};
    constexpr LineStops() {
        kind[static_cast<unsigned char>('\r')] = kind[static_cast<unsigned char>('\n')] = kLineEnd;
        kind[0] = kNul;
        kind[static_cast<unsigned char>('=')] = kEquals;
    }
};
constexpr LineStops kStops;

unsigned char StopKind(wchar_t c) {
    if (static_cast<unsigned long>(c) >= 128) return kPlain;
    return kStops.kind[static_cast<size_t>(c)];
}

// `line` holds no line break and no NUL; `equals` is the position of its first '=' or
// npos. `section` is the position of the current section in the store, or npos before
// the first header.
void ParseLine(std::wstring_view line, size_t equals, size_t& section, CThreeTupleStore& store) {
    const std::wstring_view content = TrimBlanks(line);
    if (content.empty() || content.front() == L';' || content.front() == L'#') return;
    if (content.front() == L'[') {
        // A header that never closes is no record either: its key would begin with '['.
        const size_t close = content.find(L']');
        if (close == std::wstring_view::npos) return;
        section = store.AddSectionAt(TrimBlanks(content.substr(1, close - 1)));
        return;
    }
    if (equals == std::wstring_view::npos) return;  // neither section nor record
    const std::wstring_view key = TrimBlanks(line.substr(0, equals));
    if (key.empty()) return;
    std::wstring_view value = line.substr(equals + 1);
    while (!value.empty() && IsSpaceOrTab(value.front())) value.remove_prefix(1);
    // Records before the first header belong to the section "".
    if (section == CThreeTupleStore::npos) section = store.AddSectionAt(std::wstring_view());
    // The first record of a key wins, as with the device's own profile functions.
    store.AddValueAt(section, key, value);
}

ETextEncoding EncodingOf(kiv_text::Encoding found) {
    switch (found) {
        case kiv_text::Encoding::Latin1: return eEncodingAnsi;
        case kiv_text::Encoding::Utf8: return eEncodingUtf8;
        case kiv_text::Encoding::Utf8Bom: return eEncodingUtf8Bom;
        case kiv_text::Encoding::Utf16LeBom: return eEncodingUtf16LE;
    }
    return eEncodingUtf16LE;
}

bool HasLineBreak(const CKivStringT& text) { return text.FindOneOf(L"\r\n") >= 0; }

bool HasEdgeBlanks(const CKivStringT& text) {
    return !text.IsEmpty() && (IsSpaceOrTab(text[0]) || IsSpaceOrTab(text[text.GetLength() - 1]));
}

bool IsWritableSectionName(const CKivStringT& name) {
    return !HasLineBreak(name) && name.Find(L']') < 0 && !HasEdgeBlanks(name);
}

bool IsWritableKey(const CKivStringT& key) {
    return !key.IsEmpty() && !HasLineBreak(key) && key.Find(L'=') < 0 && !HasEdgeBlanks(key) &&
           key[0] != L';' && key[0] != L'#' && key[0] != L'[';
}

bool BuildText(const CThreeTupleStore& store, std::wstring& text) {
    for (int s = 0; s < store.GetSectionCount(); ++s) {
        const CKivStringT name = store.GetSectionName(s);
        if (!IsWritableSectionName(name)) return false;
        // Records before the first header belong to the section ""; anywhere else, or
        // without records, that section needs its header "[]" to be read back in place.
        if (!(s == 0 && name.IsEmpty() && store.GetKeyCount(s) > 0)) {
            if (!text.empty()) text += L"\r\n";
            text += L"[" + name.str() + L"]\r\n";
        }
        for (int k = 0; k < store.GetKeyCount(s); ++k) {
            const CKivStringT key = store.GetKeyName(s, k);
            const CKivStringT value = store.GetValueAt(s, k);
            if (!IsWritableKey(key) || HasLineBreak(value)) return false;
            text += key.str() + L"=" + value.str() + L"\r\n";
        }
    }
    return true;
}

}  // namespace

void parseSettingsIni(std::string_view bytes, CThreeTupleStore& store, ETextEncoding& encoding) {
    store.Clear();
    kiv_text::Encoding found;
    const std::wstring text = kiv_text::DecodeText(bytes, &found);
    encoding = EncodingOf(found);
    size_t section = CThreeTupleStore::npos;
    // A line ends at CR LF, LF or a CR of its own, so no text read holds a line break.
    // One pass over each line finds its end, its first NUL and its first '='.
    const wchar_t* const data = text.data();
    const size_t size = text.size();
    size_t start = 0;
    while (start < size) {
        size_t end = start, cut = std::wstring_view::npos, equals = std::wstring_view::npos;
        for (; end < size; ++end) {
            const unsigned char kind = StopKind(data[end]);
            if (kind == kPlain) continue;
            if (kind == kLineEnd) break;
            if (kind == kNul && cut == std::wstring_view::npos) cut = end;
            if (kind == kEquals && equals == std::wstring_view::npos) equals = end;
        }
        // The store keeps C strings: what follows a NUL would be cut from a name anyway,
        // and a name cut short could end in a blank or come out empty, which no writer
        // accepts.
        const size_t lineEnd = std::min(end, cut);
        if (equals != std::wstring_view::npos && equals >= lineEnd) equals = std::wstring_view::npos;
        if (equals != std::wstring_view::npos) equals -= start;
        ParseLine(std::wstring_view(data + start, lineEnd - start), equals, section, store);
        const bool crLf = end + 1 < size && data[end] == L'\r' && data[end + 1] == L'\n';
        start = std::min(size, end + (crLf ? 2 : 1));
    }
}

bool formatSettingsIni(const CThreeTupleStore& store, ETextEncoding encoding, std::string& bytes,
                       ETextEncoding* written) {
    std::wstring text;
    if (!BuildText(store, text)) return false;
    const auto encode = [&text](ETextEncoding e) {
        switch (e) {
            case eEncodingAnsi: return kiv_text::ToLatin1(text);
            case eEncodingUtf8: return kiv_text::ToUtf8(text);
            case eEncodingUtf8Bom: return "\xEF\xBB\xBF" + kiv_text::ToUtf8(text);
            default: return "\xFF\xFE" + kiv_text::ToUtf16Le(text);
        }
    };
    if (encoding < eEncodingAnsi || encoding > eEncodingUtf8Bom) return false;
    // Text the reader would not see again in the encoding asked for (a character it
    // lacks, ANSI text that reads as UTF-8, a leading U+FEFF taken for a byte-order mark)
    // goes out as UTF-16LE, which holds every character: a setting is never lost because
    // the file it belongs to was once saved by a Latin-1 editor.
    for (const ETextEncoding e : {encoding, eEncodingUtf16LE}) {
        std::string encoded = encode(e);
        if (kiv_text::DecodeText(encoded) != text) continue;
        bytes = std::move(encoded);
        if (written) *written = e;
        return true;
    }
    return false;  // a character no encoding has, such as a lone surrogate
}

bool readSettingsAsIni(const wchar_t* path, CThreeTupleStore& store, ETextEncoding& encoding) {
    store.Clear();
    encoding = eEncodingUtf16LE;
    HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    DWORD high = 0;
    const DWORD size = GetFileSize(file, &high);
    std::string bytes;
    bool ok = size != INVALID_FILE_SIZE && high == 0 && size <= kMaxIniFileBytes;
    if (ok) {
        bytes.resize(size);
        DWORD read = 0;
        ok = ReadFile(file, bytes.data(), size, &read, nullptr);
        bytes.resize(read);  // a file that shrank meanwhile is read as it now is
    }
    CloseHandle(file);
    if (!ok) return false;
    parseSettingsIni(bytes, store, encoding);
    return true;
}

bool writeSettingsAsIni(const wchar_t* path, const CThreeTupleStore& store, ETextEncoding encoding,
                        ETextEncoding* written) {
    std::string bytes;
    ETextEncoding used = encoding;
    if (!formatSettingsIni(store, encoding, bytes, &used)) return false;
    if (!FileFuncs::WriteWholeFile(path, bytes)) return false;
    if (written) *written = used;
    return true;
}

}  // namespace kiv_settings
