// INI text to records and back. A value keeps its text exactly, trailing blanks
// included; only the blanks around '=' go, so a value's own leading blanks do not
// survive a round trip (as with the device's own profile files).
#include "platform/kivutils/IniFile.h"

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

std::wstring Text(std::wstring_view view) { return std::wstring(view); }

void ParseLine(std::wstring_view line, std::wstring& section, CThreeTupleStore& store) {
    const std::wstring_view content = TrimBlanks(line);
    if (content.empty() || content.front() == L';' || content.front() == L'#') return;
    if (content.front() == L'[') {
        const size_t close = content.find(L']');
        if (close != std::wstring_view::npos) {
            section = Text(TrimBlanks(content.substr(1, close - 1)));
            store.AddSection(section.c_str());
            return;
        }
    }
    const size_t equals = line.find(L'=');
    if (equals == std::wstring_view::npos) return;  // neither section nor record
    const std::wstring key = Text(TrimBlanks(line.substr(0, equals)));
    if (key.empty()) return;
    std::wstring_view value = line.substr(equals + 1);
    while (!value.empty() && IsSpaceOrTab(value.front())) value.remove_prefix(1);
    // The first record of a key wins, as with the device's own profile functions.
    store.AddValue(section.c_str(), key.c_str(), Text(value).c_str());
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
    std::wstring section;
    std::wstring_view rest(text);
    while (!rest.empty()) {
        const size_t end = rest.find(L'\n');
        std::wstring_view line = rest.substr(0, end);
        rest = end == std::wstring_view::npos ? std::wstring_view() : rest.substr(end + 1);
        if (!line.empty() && line.back() == L'\r') line.remove_suffix(1);
        ParseLine(line, section, store);
    }
}

bool formatSettingsIni(const CThreeTupleStore& store, ETextEncoding encoding, std::string& bytes) {
    std::wstring text;
    if (!BuildText(store, text)) return false;
    switch (encoding) {
        case eEncodingAnsi: bytes = kiv_text::ToLatin1(text); break;
        case eEncodingUtf8: bytes = kiv_text::ToUtf8(text); break;
        case eEncodingUtf8Bom: bytes = "\xEF\xBB\xBF" + kiv_text::ToUtf8(text); break;
        case eEncodingUtf16LE: bytes = "\xFF\xFE" + kiv_text::ToUtf16Le(text); break;
        default: return false;
    }
    // What the reader would not see again is refused: a character the encoding lacks,
    // ANSI text that reads as UTF-8, a leading U+FEFF taken for a byte-order mark.
    return kiv_text::DecodeText(bytes) == text;
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

bool writeSettingsAsIni(const wchar_t* path, const CThreeTupleStore& store, ETextEncoding encoding) {
    std::string bytes;
    if (!formatSettingsIni(store, encoding, bytes)) return false;
    return FileFuncs::WriteWholeFile(path, bytes);
}

}  // namespace kiv_settings
