// The registry in the .reg text format: the writer emits "Windows Registry Editor
// Version 5.00" in UTF-16LE; the reader also takes "REGEDIT4" files, parses the whole
// text into a list of changes first and applies them only when every line was valid.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"
#include "platform/win32/Registry.h"
#include "platform/win32/RegistryTree.h"
#include "platform/win32/WholeFile.h"

namespace {

using kiv_win32::detail::RegKey;
using kiv_win32::detail::RegValue;

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

// Depth first in creation order, without recursion.
void AppendTree(std::wstring& out, const RegKey& root) {
    struct Pending {
        const RegKey* key;
        std::wstring path;
    };
    std::vector<Pending> stack{{&root, root.name()}};
    while (!stack.empty()) {
        Pending p = std::move(stack.back());
        stack.pop_back();
        if (p.key != &root || p.key->valueCount() > 0) {
            out += L"[" + p.path + L"]\r\n";
            p.key->ForEachValue([&](const RegValue& v) { AppendValue(out, v); });
            out += L"\r\n";
        }
        const size_t first = stack.size();
        p.key->ForEachChild([&](const RegKey& c) { stack.push_back({&c, p.path + L"\\" + c.name()}); });
        std::reverse(stack.begin() + static_cast<std::ptrdiff_t>(first), stack.end());
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
    const std::wstring rootName = kiv_win32::detail::FoldName(s.substr(0, slash));
    change.root = -1;
    for (int i = 0; i < kiv_win32::detail::kRootCount; ++i) {
        const auto& r = kiv_win32::detail::kRoots[i];
        if (rootName == kiv_win32::detail::FoldName(r.name) || rootName == kiv_win32::detail::FoldName(r.shortName))
            change.root = i;
    }
    if (change.root < 0) return Fail(line, L"the key must begin with HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, "
                                           L"HKEY_CLASSES_ROOT or HKEY_USERS");
    if (slash != std::wstring_view::npos) {
        const std::wstring_view rest = s.substr(slash + 1);
        if (rest.empty() || rest.back() == L'\\' || !kiv_win32::detail::SplitKeyPath(rest, change.path))
            return Fail(line, L"the key path has an empty name or a name longer than 255 characters");
        if (change.path.size() > kiv_win32::detail::kMaxKeyDepth) return Fail(line, L"the key path is nested too deeply");
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
    auto& r = kiv_win32::detail::Registry();
    std::lock_guard g(r.lock);
    RegKey* current = nullptr;
    for (const auto& c : changes) {
        RegKey* key = r.roots[c.root].get();
        switch (c.kind) {
            case Change::OpenKey:
                for (const auto& part : c.path) key = key->AddChild(part);
                current = key;
                break;
            case Change::DeleteKey: {
                RegKey* parent = nullptr;
                for (const auto& part : c.path) {
                    parent = key;
                    key = key ? key->FindChild(part) : nullptr;
                }
                if (key && parent) parent->RemoveChild(key);
                current = nullptr;
                break;
            }
            case Change::SetValue: current->SetValue(c.name, c.type, c.data); break;
            case Change::DeleteValue: current->RemoveValue(c.name); break;
        }
    }
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
    auto& r = detail::Registry();
    {
        std::lock_guard g(r.lock);
        for (const auto& root : r.roots) AppendTree(text, *root);
    }
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
