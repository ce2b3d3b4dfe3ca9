// The registry in the .reg text format: the writer emits "Windows Registry Editor
// Version 5.00" in UTF-16LE; the reader also takes "REGEDIT4" files, parses the whole
// text into a list of changes first and applies them only when every line was valid.
// Both go through the Reg* functions, so they work over the host's registry and over
// the system's alike.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <optional>
#include <vector>

#include "platform/host/Host.h"
#include "platform/host/NeutralLocale.h"
#include "platform/host/TextCodec.h"
#include "platform/win32/Registry.h"
#ifndef _WIN32
#include "platform/win32/WholeFile.h"
#endif

namespace {

struct RegValue {
    std::wstring name;
    DWORD type = 0;
    std::vector<BYTE> data;
};

// The predefined roots in the order an export lists them.
struct RootName {
    HKEY key;
    const wchar_t* name;
    const wchar_t* shortName;
};
const RootName kRoots[] = {
    {HKEY_CLASSES_ROOT, L"HKEY_CLASSES_ROOT", L"HKCR"},
    {HKEY_CURRENT_USER, L"HKEY_CURRENT_USER", L"HKCU"},
    {HKEY_LOCAL_MACHINE, L"HKEY_LOCAL_MACHINE", L"HKLM"},
    {HKEY_USERS, L"HKEY_USERS", L"HKU"},
};
constexpr int kRootCount = static_cast<int>(std::size(kRoots));

// Where the registry is the system's, an export holds only the two roots the platform
// uses (the other two hold the whole system's classes and users).
bool Exported(const RootName& root) {
#ifdef _WIN32
    return root.key == HKEY_CURRENT_USER || root.key == HKEY_LOCAL_MACHINE;
#else
    (void)root;
    return true;
#endif
}

// Keys nest at most this deep below their root.
constexpr size_t kMaxKeyDepth = 512;

std::wstring FoldName(std::wstring_view name) {
    std::wstring folded(name);
    for (auto& c : folded) c = kiv_text::FoldCase(c);
    return folded;
}

bool SplitKeyPath(std::wstring_view path, std::vector<std::wstring>& parts) {
    parts.clear();
    size_t start = 0;
    for (;;) {
        const size_t end = path.find(L'\\', start);
        const std::wstring_view part = path.substr(start, end == std::wstring_view::npos ? end : end - start);
        if (part.empty() || part.size() > kMaxRegKeyNameLength) return false;
        parts.emplace_back(part);
        if (end == std::wstring_view::npos) return true;
        start = end + 1;
    }
}

std::wstring JoinKeyPath(const std::vector<std::wstring>& parts) {
    std::wstring path;
    for (const auto& part : parts) path.append(path.empty() ? L"" : L"\\").append(part);
    return path;
}

constexpr std::wstring_view kHeader5 = L"Windows Registry Editor Version 5.00";
constexpr std::wstring_view kHeader4 = L"REGEDIT4";
// A registry file larger than this is refused rather than read.
constexpr size_t kMaxFileBytes = 64 * 1024 * 1024;

bool IsStringType(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }

// ---- writer -----------------------------------------------------------------------------

std::vector<wchar_t> WideUnits(const std::vector<BYTE>& data) {
    std::vector<wchar_t> units(data.size() / sizeof(wchar_t));
    if (!units.empty()) std::memcpy(units.data(), data.data(), units.size() * sizeof(wchar_t));
    return units;
}

std::wstring Quoted(std::wstring_view text) {
    std::wstring out = L"\"";
    for (wchar_t c : text) {
        if (c == L'\\' || c == L'"') out += L'\\';
        out += c;
    }
    return out + L"\"";
}

// A REG_SZ written as "text" must read back identically: whole characters, one
// terminator at the end, and nothing that would break the line.
std::optional<std::wstring> PlainString(const RegValue& value) {
    if (value.type != REG_SZ || value.data.size() % sizeof(wchar_t) != 0) return std::nullopt;
    std::vector<wchar_t> units = WideUnits(value.data);
    if (units.empty() || units.back() != L'\0') return std::nullopt;
    units.pop_back();
    for (wchar_t c : units)
        if (c == L'\0' || c == L'\r' || c == L'\n') return std::nullopt;
    return std::wstring(units.begin(), units.end());
}

std::string FileBytes(const RegValue& value) {
    if (!IsStringType(value.type)) return std::string(value.data.begin(), value.data.end());
    std::vector<wchar_t> units = WideUnits(value.data);
    return kiv_text::ToUtf16Le(std::wstring_view(units.data(), units.size()));
}

// hex lists wrap as the desktop tool wraps them: a trailing comma and backslash, then
// two blanks on the next line, keeping lines near 80 columns.
void AppendHex(std::wstring& out, size_t lineStart, const std::string& bytes) {
    static const wchar_t digits[] = L"0123456789abcdef";
    for (size_t i = 0; i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        out += digits[b >> 4];
        out += digits[b & 15];
        if (i + 1 == bytes.size()) break;
        out += L',';
        if (out.size() - lineStart > 76) {
            out += L"\\\r\n  ";
            lineStart = out.size() - 2;
        }
    }
}

void AppendValue(std::wstring& out, const RegValue& value) {
    const size_t lineStart = out.size();
    out += value.name.empty() ? std::wstring(L"@") : Quoted(value.name);
    out += L'=';
    if (auto text = PlainString(value)) {
        out += Quoted(*text);
    } else if (value.type == REG_DWORD && value.data.size() == 4) {
        DWORD v = 0;
        std::memcpy(&v, value.data.data(), 4);
        wchar_t number[16];
        std::swprintf(number, 16, L"dword:%08x", static_cast<unsigned>(v));
        out += number;
    } else {
        if (value.type == REG_BINARY) {
            out += L"hex:";
        } else {
            wchar_t prefix[24];
            std::swprintf(prefix, 24, L"hex(%x):", static_cast<unsigned>(value.type));
            out += prefix;
        }
        AppendHex(out, lineStart, FileBytes(value));
    }
    out += L"\r\n";
}

// The values of an open key in the order the registry enumerates them.
std::vector<RegValue> ValuesOf(HKEY key) {
    std::vector<RegValue> values;
    DWORD count = 0, maxName = 0, maxData = 0;
    if (RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, &maxName, &maxData,
                         nullptr, nullptr) != ERROR_SUCCESS)
        return values;
    std::vector<wchar_t> name(maxName + 1);
    std::vector<BYTE> data(maxData);
    for (DWORD i = 0; i < count; ++i) {
        DWORD nameLength = static_cast<DWORD>(name.size()), dataSize = static_cast<DWORD>(data.size()), type = 0;
        if (RegEnumValueW(key, i, name.data(), &nameLength, nullptr, &type, data.data(), &dataSize) != ERROR_SUCCESS)
            break;
        values.push_back({std::wstring(name.data(), nameLength), type,
                          std::vector<BYTE>(data.begin(), data.begin() + dataSize)});
    }
    return values;
}

std::vector<std::wstring> SubkeysOf(HKEY key) {
    std::vector<std::wstring> names;
    wchar_t name[kMaxRegKeyNameLength + 1];
    for (DWORD i = 0;; ++i) {
        DWORD length = kMaxRegKeyNameLength + 1;
        if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        names.emplace_back(name, length);
    }
    return names;
}

// Depth first in the registry's order of enumeration, without recursion.
void AppendTree(std::wstring& out, const RootName& root) {
    struct Pending {
        std::wstring subPath;  // below the root; empty for the root itself
    };
    std::vector<Pending> stack{{L""}};
    while (!stack.empty()) {
        const Pending p = std::move(stack.back());
        stack.pop_back();
        HKEY key = nullptr;
        if (RegOpenKeyExW(root.key, p.subPath.empty() ? nullptr : p.subPath.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
            continue;
        const std::vector<RegValue> values = ValuesOf(key);
        if (!p.subPath.empty() || !values.empty()) {
            out += L"[" + std::wstring(root.name) + (p.subPath.empty() ? L"" : L"\\" + p.subPath) + L"]\r\n";
            for (const auto& v : values) AppendValue(out, v);
            out += L"\r\n";
        }
        const std::vector<std::wstring> children = SubkeysOf(key);
        RegCloseKey(key);
        for (auto it = children.rbegin(); it != children.rend(); ++it)
            stack.push_back({p.subPath.empty() ? *it : p.subPath + L"\\" + *it});
    }
}

// ---- reader ---------------------------------------------------------------------------------

struct Change {
    enum Kind { OpenKey, DeleteKey, SetValue, DeleteValue } kind = OpenKey;
    int root = 0;
    std::vector<std::wstring> path;
    std::wstring name;
    DWORD type = 0;
    std::vector<BYTE> data;
};

struct Line {
    std::wstring_view text;
    size_t number;
};

std::vector<Line> SplitLines(std::wstring_view text) {
    std::vector<Line> lines;
    size_t number = 1, start = 0;
    for (size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && text[i] != L'\r' && text[i] != L'\n') continue;
        lines.push_back({text.substr(start, i - start), number++});
        if (i + 1 < text.size() && text[i] == L'\r' && text[i + 1] == L'\n') ++i;
        start = i + 1;
    }
    return lines;
}

bool IsBlank(wchar_t c) { return c == L' ' || c == L'\t'; }

std::wstring_view Trim(std::wstring_view s) {
    while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
    while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
    return s;
}

int HexDigit(wchar_t c) {
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    return -1;
}

// Up to `maxDigits` hex digits making up all of `s`.
bool ParseHexNumber(std::wstring_view s, size_t maxDigits, DWORD& value) {
    if (s.empty() || s.size() > maxDigits) return false;
    value = 0;
    for (wchar_t c : s) {
        int d = HexDigit(c);
        if (d < 0) return false;
        value = (value << 4) | static_cast<DWORD>(d);
    }
    return true;
}

class Reader {
public:
    bool Parse(std::wstring_view text, std::vector<Change>& changes, std::wstring& error);

private:
    bool Fail(size_t line, std::wstring_view reason) {
        error_ = L"line " + std::to_wstring(line) + L": " + std::wstring(reason);
        return false;
    }
    bool ParseKey(std::wstring_view s, size_t line);
    bool ParseValue(std::wstring_view s, size_t line);
    bool ParseQuoted(std::wstring_view& s, std::wstring& out, size_t line);
    bool ParseData(std::wstring_view s, size_t line, Change& change);
    // `pieces` gives, for each joined line of the list, where it begins in `s` and its
    // line number, so that a bad byte is reported on its own line.
    bool ParseHexBytes(std::wstring_view s, const std::vector<std::pair<size_t, size_t>>& pieces, std::string& bytes);

    bool regedit4_ = false;
    bool inKey_ = false;
    std::vector<Change>* changes_ = nullptr;
    std::wstring error_;
    const std::vector<Line>* lines_ = nullptr;
    size_t next_ = 0;
};

bool Reader::Parse(std::wstring_view text, std::vector<Change>& changes, std::wstring& error) {
    const std::vector<Line> lines = SplitLines(text);
    lines_ = &lines;
    changes_ = &changes;
    next_ = 0;
    while (next_ < lines.size() && Trim(lines[next_].text).empty()) ++next_;
    if (next_ == lines.size()) {
        error = L"line 1: the file is empty; expected \"Windows Registry Editor Version 5.00\" or \"REGEDIT4\"";
        return false;
    }
    const std::wstring_view header = Trim(lines[next_].text);
    if (header == kHeader4) {
        regedit4_ = true;
    } else if (header != kHeader5) {
        Fail(lines[next_].number, L"expected \"Windows Registry Editor Version 5.00\" or \"REGEDIT4\"");
        error = error_;
        return false;
    }
    for (++next_; next_ < lines.size();) {
        const Line& l = lines[next_++];
        const std::wstring_view s = Trim(l.text);
        bool ok = true;
        if (s.empty() || s.front() == L';') continue;
        if (s.front() == L'[') ok = ParseKey(s, l.number);
        else if (s.front() == L'"' || s.front() == L'@') ok = ParseValue(s, l.number);
        else ok = Fail(l.number, L"expected a [key], a value or a ; comment");
        if (!ok) {
            error = error_;
            return false;
        }
    }
    return true;
}

bool Reader::ParseKey(std::wstring_view s, size_t line) {
    if (s.back() != L']') return Fail(line, L"a key line must end with ']'");
    s = s.substr(1, s.size() - 2);
    Change change;
    if (!s.empty() && s.front() == L'-') {
        change.kind = Change::DeleteKey;
        s.remove_prefix(1);
    }
    const size_t slash = s.find(L'\\');
    const std::wstring rootName = FoldName(s.substr(0, slash));
    change.root = -1;
    for (int i = 0; i < kRootCount; ++i) {
        if (rootName == FoldName(kRoots[i].name) || rootName == FoldName(kRoots[i].shortName)) change.root = i;
    }
    if (change.root < 0) return Fail(line, L"the key must begin with HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, "
                                           L"HKEY_CLASSES_ROOT or HKEY_USERS");
    if (slash != std::wstring_view::npos) {
        const std::wstring_view rest = s.substr(slash + 1);
        if (rest.empty() || rest.back() == L'\\' || !SplitKeyPath(rest, change.path))
            return Fail(line, L"the key path has an empty name or a name longer than 255 characters");
        if (change.path.size() > kMaxKeyDepth) return Fail(line, L"the key path is nested too deeply");
        for (const auto& part : change.path)
            if (part.find(L'\0') != std::wstring::npos) return Fail(line, L"a key name holds a NUL character");
    } else if (change.kind == Change::DeleteKey) {
        return Fail(line, L"a root key cannot be deleted");
    }
    inKey_ = change.kind == Change::OpenKey;
    changes_->push_back(std::move(change));
    return true;
}

bool Reader::ParseQuoted(std::wstring_view& s, std::wstring& out, size_t line) {
    // s begins with the opening quote; on return it begins after the closing one.
    out.clear();
    for (size_t i = 1; i < s.size(); ++i) {
        wchar_t c = s[i];
        if (c == L'"') {
            s.remove_prefix(i + 1);
            return true;
        }
        if (c == L'\\') {
            if (i + 1 == s.size()) break;
            c = s[++i];
            if (c != L'\\' && c != L'"') return Fail(line, L"only \\\\ and \\\" may follow a backslash in quotes");
        }
        if (c == L'\0') return Fail(line, L"a quoted text holds a NUL character");
        out += c;
    }
    return Fail(line, L"a quoted text has no closing quote");
}

bool Reader::ParseValue(std::wstring_view s, size_t line) {
    if (!inKey_) return Fail(line, L"a value must follow a [key] line");
    Change change;
    change.kind = Change::SetValue;
    if (s.front() == L'@') {
        s.remove_prefix(1);
    } else if (!ParseQuoted(s, change.name, line)) {
        return false;
    }
    if (change.name.size() > kMaxRegValueNameLength) return Fail(line, L"the value name is too long");
    s = Trim(s);
    if (s.empty() || s.front() != L'=') return Fail(line, L"expected '=' after the value name");
    s = Trim(s.substr(1));
    if (s == L"-") {
        change.kind = Change::DeleteValue;
        changes_->push_back(std::move(change));
        return true;
    }
    if (!ParseData(s, line, change)) return false;
    changes_->push_back(std::move(change));
    return true;
}

bool Reader::ParseData(std::wstring_view s, size_t line, Change& change) {
    if (!s.empty() && s.front() == L'"') {
        std::wstring text;
        if (!ParseQuoted(s, text, line)) return false;
        if (!Trim(s).empty()) return Fail(line, L"unexpected text after the closing quote");
        change.type = REG_SZ;
        text += L'\0';
        const auto* bytes = reinterpret_cast<const BYTE*>(text.data());
        change.data.assign(bytes, bytes + text.size() * sizeof(wchar_t));
        return true;
    }
    if (s.starts_with(L"dword:")) {
        DWORD v = 0;
        if (!ParseHexNumber(s.substr(6), 8, v)) return Fail(line, L"dword: takes one to eight hex digits");
        change.type = REG_DWORD;
        change.data.resize(4);
        std::memcpy(change.data.data(), &v, 4);
        return true;
    }
    std::wstring_view list;
    if (s.starts_with(L"hex:")) {
        change.type = REG_BINARY;
        list = s.substr(4);
    } else if (s.starts_with(L"hex(")) {
        const size_t close = s.find(L"):");
        if (close == std::wstring_view::npos || !ParseHexNumber(s.substr(4, close - 4), 8, change.type))
            return Fail(line, L"hex(type): takes a type of one to eight hex digits");
        list = s.substr(close + 2);
    } else {
        return Fail(line, L"expected \"text\", dword:, hex:, hex(type): or - after '='");
    }
    // A hex list continues on the next lines while a line ends with a backslash.
    std::wstring joined;
    std::vector<std::pair<size_t, size_t>> pieces{{0, line}};
    list = Trim(list);
    while (!list.empty() && list.back() == L'\\') {
        joined.append(list.substr(0, list.size() - 1));
        if (next_ == lines_->size()) return Fail(line, L"the hex list continues past the end of the file");
        const Line& more = (*lines_)[next_++];
        pieces.emplace_back(joined.size(), more.number);
        list = Trim(more.text);
    }
    joined.append(list);
    std::string bytes;
    if (!ParseHexBytes(joined, pieces, bytes)) return false;
    if (IsStringType(change.type)) {
        // The desktop format holds text as UTF-16LE; REGEDIT4 as 8-bit characters.
        if (!regedit4_ && bytes.size() % 2 != 0) return Fail(line, L"UTF-16 text needs an even number of bytes");
        const std::wstring text = regedit4_ ? kiv_text::FromLatin1(bytes) : kiv_text::FromUtf16Le(bytes);
        const auto* p = reinterpret_cast<const BYTE*>(text.data());
        change.data.assign(p, p + text.size() * sizeof(wchar_t));
    } else {
        change.data.assign(bytes.begin(), bytes.end());
    }
    return true;
}

bool Reader::ParseHexBytes(std::wstring_view s, const std::vector<std::pair<size_t, size_t>>& pieces,
                           std::string& bytes) {
    const wchar_t* const begin = s.data();
    s = Trim(s);
    if (!s.empty() && s.back() == L',') s.remove_suffix(1);
    if (Trim(s).empty()) return true;
    bytes.reserve(s.size() / 3 + 1);
    for (;;) {
        const size_t comma = s.find(L',');
        const std::wstring_view digits = Trim(s.substr(0, comma));
        DWORD b = 0;
        if (!ParseHexNumber(digits, 2, b)) {
            const auto at = static_cast<size_t>(digits.data() - begin);
            size_t line = pieces.front().second;
            for (const auto& [start, number] : pieces)
                if (start <= at) line = number;
            return Fail(line, L"a hex list holds bytes of one or two hex digits separated by commas");
        }
        bytes.push_back(static_cast<char>(b));
        if (comma == std::wstring_view::npos) return true;
        s.remove_prefix(comma + 1);
    }
}

void Apply(const std::vector<Change>& changes) {
    HKEY current = nullptr;
    auto close = [&current] {
        if (current) RegCloseKey(current);
        current = nullptr;
    };
    for (const auto& c : changes) {
        const HKEY root = kRoots[c.root].key;
        const std::wstring path = JoinKeyPath(c.path);
        switch (c.kind) {
            case Change::OpenKey:
                close();
                if (RegCreateKeyExW(root, path.empty() ? nullptr : path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                    &current, nullptr) != ERROR_SUCCESS)
                    current = nullptr;
                break;
            case Change::DeleteKey:
                close();
                RegDeleteKeyW(root, path.c_str());  // the key with everything below it
                break;
            case Change::SetValue:
                if (current)
                    RegSetValueExW(current, c.name.c_str(), 0, c.type, c.data.data(), static_cast<DWORD>(c.data.size()));
                break;
            case Change::DeleteValue:
                if (current) RegDeleteValueW(current, c.name.c_str());
                break;
        }
    }
    close();
}

bool ReadRegistryFile(const std::wstring& path, std::string& bytes, std::wstring& error) {
    if (kiv_win32::ReadWholeFile(path.c_str(), bytes, kMaxFileBytes)) return true;
    error = GetLastError() == ERROR_NOT_ENOUGH_MEMORY ? path + L" is not a registry file of at most 64 MB"
                                                      : L"cannot open " + path;
    return false;
}

}  // namespace

namespace kiv_win32 {

std::string ExportRegistryText() {
    std::wstring text = std::wstring(kHeader5) + L"\r\n\r\n";
    for (const auto& root : kRoots)
        if (Exported(root)) AppendTree(text, root);
    return "\xFF\xFE" + kiv_text::ToUtf16Le(text);
}

bool ImportRegistryText(std::string_view bytes, std::wstring* error) {
    std::wstring text;
    if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF && static_cast<unsigned char>(bytes[1]) == 0xFE)
        text = kiv_text::FromUtf16Le(bytes.substr(2));
    else
        text = kiv_text::DecodeText(bytes);
    std::vector<Change> changes;
    std::wstring reason;
    if (!Reader().Parse(text, changes, reason)) {
        if (error) *error = reason;
        return false;
    }
    Apply(changes);
    return true;
}

}  // namespace kiv_win32

namespace kiv_host {

bool ImportRegistry(const std::string& hostPath, std::wstring* error) {
    std::string bytes;
    std::wstring reason;
    bool ok = ReadRegistryFile(kiv_text::FromUtf8(hostPath), bytes, reason) &&
              kiv_win32::ImportRegistryText(bytes, &reason);
    if (!ok) {
        Log(1, "RegistryFile", __LINE__, kiv_text::FromUtf8(hostPath) + L": " + reason);
        if (error) *error = reason;
    }
    return ok;
}

bool ExportRegistry(const std::string& hostPath) {
    return kiv_win32::ReplaceWholeFile(kiv_text::FromUtf8(hostPath).c_str(), kiv_win32::ExportRegistryText());
}

}  // namespace kiv_host
