// The registry helpers: each call opens its key, works and closes it again.
#include "platform/kivutils/Registry.h"

#include <vector>

namespace kiv_registry {
namespace {

// Closes the key at the end of the scope.
struct OpenKey {
    HKEY key = nullptr;
    ~OpenKey() {
        if (key) RegCloseKey(key);
    }
};

}  // namespace

bool EnumSections(HKEY root, const wchar_t* keyPath, CKivArray<CKivStringT>& sections) {
    sections.RemoveAll();
    OpenKey k;
    if (RegOpenKeyExW(root, keyPath, 0, KEY_READ, &k.key) != ERROR_SUCCESS) return false;
    wchar_t name[kMaxRegKeyNameLength + 1];
    for (DWORD i = 0;; ++i) {
        DWORD length = kMaxRegKeyNameLength + 1;
        const LONG status = RegEnumKeyExW(k.key, i, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_NO_MORE_ITEMS) return true;
        if (status != ERROR_SUCCESS) return false;
        sections.Add(CKivStringT(name, static_cast<int>(length)));
    }
}

bool ReadStringValue(HKEY root, const wchar_t* keyPath, const wchar_t* valueName, CKivStringT& value) {
    OpenKey k;
    if (RegOpenKeyExW(root, keyPath, 0, KEY_READ, &k.key) != ERROR_SUCCESS) return false;
    DWORD type = 0, size = 0;
    if (RegQueryValueExW(k.key, valueName, nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return false;
    if (type != REG_SZ && type != REG_EXPAND_SZ) return false;
    std::vector<wchar_t> text(size / sizeof(wchar_t) + 1, L'\0');
    if (RegQueryValueExW(k.key, valueName, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size) !=
        ERROR_SUCCESS)
        return false;
    size_t length = size / sizeof(wchar_t);
    while (length > 0 && text[length - 1] == L'\0') --length;
    value = CKivStringT(text.data(), static_cast<int>(length));
    return true;
}

bool ReadDwordValue(HKEY root, const wchar_t* keyPath, const wchar_t* valueName, DWORD& value) {
    OpenKey k;
    if (RegOpenKeyExW(root, keyPath, 0, KEY_READ, &k.key) != ERROR_SUCCESS) return false;
    DWORD type = 0, read = 0, size = sizeof(read);
    if (RegQueryValueExW(k.key, valueName, nullptr, &type, reinterpret_cast<BYTE*>(&read), &size) != ERROR_SUCCESS ||
        type != REG_DWORD || size != sizeof(read))
        return false;
    value = read;
    return true;
}

bool WriteStringValue(HKEY root, const wchar_t* keyPath, const wchar_t* valueName, const wchar_t* value) {
    OpenKey k;
    if (RegCreateKeyExW(root, keyPath, 0, nullptr, 0, KEY_WRITE, nullptr, &k.key, nullptr) != ERROR_SUCCESS)
        return false;
    const std::wstring text = value ? value : L"";
    return RegSetValueExW(k.key, valueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}

bool WriteDwordValue(HKEY root, const wchar_t* keyPath, const wchar_t* valueName, DWORD value) {
    OpenKey k;
    if (RegCreateKeyExW(root, keyPath, 0, nullptr, 0, KEY_WRITE, nullptr, &k.key, nullptr) != ERROR_SUCCESS)
        return false;
    return RegSetValueExW(k.key, valueName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof(value)) ==
           ERROR_SUCCESS;
}

}  // namespace kiv_registry
