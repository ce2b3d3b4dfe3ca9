// The Reg* functions over the in-memory registry tree. Open keys are handles of their
// own table (HKEY is not a kernel handle); a deleted key stays alive for the handles
// still open on it, which then fail with ERROR_KEY_DELETED.
#include "platform/win32/Registry.h"

#include "platform/host/NeutralLocale.h"


#include <algorithm>
#include <cstring>

#include "platform/host/Host.h"
#include "platform/win32/RegistryTree.h"

namespace kiv_win32::detail {

const RootName kRoots[kRootCount] = {
    {HKEY_CLASSES_ROOT, L"HKEY_CLASSES_ROOT", L"HKCR"},
    {HKEY_CURRENT_USER, L"HKEY_CURRENT_USER", L"HKCU"},
    {HKEY_LOCAL_MACHINE, L"HKEY_LOCAL_MACHINE", L"HKLM"},
    {HKEY_USERS, L"HKEY_USERS", L"HKU"},
};

std::wstring FoldName(std::wstring_view name) {
    std::wstring folded(name);
    for (auto& c : folded) c = kiv_text::FoldCase(c);
    return folded;
}

RegKey::~RegKey() {
    // Takes over the children of every key it is the last owner of; a child that an open
    // handle still holds keeps its own subtree.
    std::vector<std::shared_ptr<RegKey>> pending = children_.TakeAll();
    while (!pending.empty()) {
        std::shared_ptr<RegKey> key = std::move(pending.back());
        pending.pop_back();
        if (key.use_count() == 1)
            for (auto& c : key->children_.TakeAll()) pending.push_back(std::move(c));
    }
}

RegKey* RegKey::FindChild(std::wstring_view name) const {
    const auto* child = children_.Find(name);
    return child ? child->get() : nullptr;
}

RegKey* RegKey::AddChild(std::wstring_view name) {
    return children_.FindOrAdd(name, [&] { return std::make_shared<RegKey>(std::wstring(name), depth_ + 1); })
        .first->get();
}

std::shared_ptr<RegKey> RegKey::ChildHandle(RegKey* child) const {
    const auto* found = children_.Find(child->name());
    return found && found->get() == child ? *found : nullptr;
}

void RegKey::RemoveChild(RegKey* child) {
    const auto* found = children_.Find(child->name());
    if (!found || found->get() != child) return;
    child->MarkDeleted();
    children_.Remove(child->name());
}

void RegKey::MarkDeleted() {
    // Iterative, so that a very deep tree cannot exhaust the stack.
    std::vector<RegKey*> pending{this};
    while (!pending.empty()) {
        RegKey* key = pending.back();
        pending.pop_back();
        key->deleted_ = true;
        key->ForEachChild([&](RegKey& c) { pending.push_back(&c); });
    }
}

void RegKey::SetValue(std::wstring_view name, DWORD type, std::vector<BYTE> data) {
    auto [value, added] = values_.FindOrAdd(name, [&] { return RegValue{std::wstring(name), type, {}}; });
    value->type = type;  // an existing name keeps the case of its first writing
    value->data = std::move(data);
}

namespace {
void MakeRoots(RegistryState& state) {
    for (int i = 0; i < kRootCount; ++i) state.roots[i] = std::make_shared<RegKey>(kRoots[i].name, 0);
}
}  // namespace

RegistryState& Registry() {
    static RegistryState* state = [] {
        auto* s = new RegistryState;
        MakeRoots(*s);
        kiv_host::AddResetHook("win32.registry", [] {
            RegistryState& r = Registry();
            std::lock_guard g(r.lock);
            for (auto& root : r.roots) root->MarkDeleted();
            MakeRoots(r);
            r.open.clear();
        });
        return s;
    }();
    return *state;
}

int RootIndex(HKEY key) {
    for (int i = 0; i < kRootCount; ++i)
        if (kRoots[i].key == key) return i;
    return -1;
}

bool SplitKeyPath(std::wstring_view path, std::vector<std::wstring>& parts) {
    parts.clear();
    if (!path.empty() && path.back() == L'\\') path.remove_suffix(1);
    if (path.empty()) return true;
    size_t start = 0;
    for (;;) {
        size_t end = path.find(L'\\', start);
        std::wstring_view part = path.substr(start, end == std::wstring_view::npos ? std::wstring_view::npos : end - start);
        if (part.empty() || part.size() > kMaxRegKeyNameLength) return false;
        parts.emplace_back(part);
        if (end == std::wstring_view::npos) return true;
        start = end + 1;
    }
}

}  // namespace kiv_win32::detail

using kiv_win32::detail::Registry;
using kiv_win32::detail::RegistryState;
using kiv_win32::detail::RegKey;
using kiv_win32::detail::RegValue;

namespace {

// The key behind a handle (a root or an open key), checked for deletion. Called with
// the registry lock held.
LONG Resolve(RegistryState& r, HKEY key, RegKey*& found) {
    if (int root = kiv_win32::detail::RootIndex(key); root >= 0) {
        found = r.roots[root].get();
        return ERROR_SUCCESS;
    }
    auto it = r.open.find(reinterpret_cast<std::uintptr_t>(key));
    if (it == r.open.end()) return ERROR_INVALID_HANDLE;
    found = it->second.get();
    return found->deleted() ? ERROR_KEY_DELETED : ERROR_SUCCESS;
}

std::shared_ptr<RegKey> Holder(RegistryState& r, HKEY key, RegKey* target, RegKey* parent) {
    if (parent) return parent->ChildHandle(target);
    if (int root = kiv_win32::detail::RootIndex(key); root >= 0) return r.roots[root];
    return r.open.at(reinterpret_cast<std::uintptr_t>(key));
}

HKEY OpenHandle(RegistryState& r, std::shared_ptr<RegKey> key) {
    const std::uintptr_t value = r.nextHandle;
    r.nextHandle += 4;
    r.open.emplace(value, std::move(key));
    return reinterpret_cast<HKEY>(value);
}

std::wstring_view NameOrDefault(LPCWSTR name) { return name ? std::wstring_view(name) : std::wstring_view(); }

// Copies a value's data by the Win32 size protocol.
LONG CopyData(const RegValue& value, LPDWORD type, LPBYTE data, LPDWORD dataSize) {
    if (type) *type = value.type;
    const DWORD size = static_cast<DWORD>(value.data.size());
    if (!dataSize) return data ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
    if (data) {
        if (*dataSize < size) {
            *dataSize = size;
            return ERROR_MORE_DATA;
        }
        if (size) std::memcpy(data, value.data.data(), size);
    }
    *dataSize = size;
    return ERROR_SUCCESS;
}

LONG CopyName(const std::wstring& name, LPWSTR buffer, LPDWORD length) {
    if (!buffer || !length) return ERROR_INVALID_PARAMETER;
    if (*length < name.size() + 1) {
        *length = static_cast<DWORD>(name.size() + 1);
        return ERROR_MORE_DATA;
    }
    std::copy(name.begin(), name.end(), buffer);
    buffer[name.size()] = L'\0';
    *length = static_cast<DWORD>(name.size());
    return ERROR_SUCCESS;
}

// Walks `path` below `from`; with `create`, makes the missing keys.
LONG Walk(RegKey* from, LPCWSTR path, bool create, RegKey*& found, RegKey*& parent, bool& created) {
    std::vector<std::wstring> parts;
    if (!kiv_win32::detail::SplitKeyPath(NameOrDefault(path), parts)) return ERROR_INVALID_PARAMETER;
    found = from;
    parent = nullptr;
    created = false;
    if (create && from->depth() + parts.size() > kiv_win32::detail::kMaxKeyDepth) return ERROR_INVALID_PARAMETER;
    for (const auto& part : parts) {
        RegKey* next = found->FindChild(part);
        if (!next) {
            if (!create) return ERROR_FILE_NOT_FOUND;
            next = found->AddChild(part);
            created = true;
        }
        parent = found;
        found = next;
    }
    return ERROR_SUCCESS;
}

}  // namespace

namespace {

// Opens, or with `create` also makes, the key `subKey` names below `key`.
LONG OpenKey(HKEY key, LPCWSTR subKey, bool create, PHKEY result, bool& created) {
    created = false;
    if (!result) return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    RegistryState& r = Registry();
    std::lock_guard g(r.lock);
    RegKey* from = nullptr;
    if (LONG status = Resolve(r, key, from); status != ERROR_SUCCESS) return status;
    RegKey *found = nullptr, *parent = nullptr;
    if (LONG status = Walk(from, subKey, create, found, parent, created); status != ERROR_SUCCESS) return status;
    *result = OpenHandle(r, Holder(r, key, found, parent));
    return ERROR_SUCCESS;
}

}  // namespace

LONG RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD, REGSAM, PHKEY result) {
    bool created;
    return OpenKey(key, subKey, false, result, created);
}

LONG RegCreateKeyExW(HKEY key, LPCWSTR subKey, DWORD, LPWSTR, DWORD, REGSAM, LPSECURITY_ATTRIBUTES, PHKEY result,
                     LPDWORD disposition) {
    bool created;
    const LONG status = OpenKey(key, subKey, true, result, created);
    if (status == ERROR_SUCCESS && disposition) *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return status;
}

LONG RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD, LPWSTR keyClass,
                   LPDWORD classLength, FILETIME* lastWriteTime) {
    RegistryState& r = Registry();
    std::lock_guard g(r.lock);
    RegKey* from = nullptr;
    if (LONG status = Resolve(r, key, from); status != ERROR_SUCCESS) return status;
    if (index >= from->childCount()) return ERROR_NO_MORE_ITEMS;
    if (LONG status = CopyName(from->ChildAt(index).name(), name, nameLength); status != ERROR_SUCCESS)
        return status;
    if (keyClass && classLength && *classLength > 0) keyClass[0] = L'\0';
    if (classLength) *classLength = 0;
    if (lastWriteTime) *lastWriteTime = FILETIME{0, 0};
    return ERROR_SUCCESS;
}

LONG RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD, LPDWORD type, LPBYTE data,
                   LPDWORD dataSize) {
    RegistryState& r = Registry();
    std::lock_guard g(r.lock);
    RegKey* from = nullptr;
    if (LONG status = Resolve(r, key, from); status != ERROR_SUCCESS) return status;
    if (index >= from->valueCount()) return ERROR_NO_MORE_ITEMS;
    const RegValue& value = from->ValueAt(index);
    if (LONG status = CopyName(value.name, name, nameLength); status != ERROR_SUCCESS) return status;
    return CopyData(value, type, data, dataSize);
}

LONG RegQueryValueExW(HKEY key, LPCWSTR valueName, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD dataSize) {
    RegistryState& r = Registry();
    std::lock_guard g(r.lock);
    RegKey* from = nullptr;
    if (LONG status = Resolve(r, key, from); status != ERROR_SUCCESS) return status;
    const RegValue* value = from->FindValue(NameOrDefault(valueName));
    if (!value) return ERROR_FILE_NOT_FOUND;
    return CopyData(*value, type, data, dataSize);
}

LONG RegSetValueExW(HKEY key, LPCWSTR valueName, DWORD, DWORD type, const BYTE* data, DWORD dataSize) {
    if (!data && dataSize) return ERROR_INVALID_PARAMETER;
    const std::wstring_view name = NameOrDefault(valueName);
    if (name.size() > kMaxRegValueNameLength) return ERROR_INVALID_PARAMETER;
    std::vector<BYTE> bytes(data, data + dataSize);
    RegistryState& r = Registry();
    std::lock_guard g(r.lock);
    RegKey* from = nullptr;
    if (LONG status = Resolve(r, key, from); status != ERROR_SUCCESS) return status;
    from->SetValue(name, type, std::move(bytes));
    return ERROR_SUCCESS;
}

LONG RegDeleteValueW(HKEY key, LPCWSTR valueName) {
    RegistryState& r = Registry();
    std::lock_guard g(r.lock);
    RegKey* from = nullptr;
    if (LONG status = Resolve(r, key, from); status != ERROR_SUCCESS) return status;
    return from->RemoveValue(NameOrDefault(valueName)) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

LONG RegDeleteKeyW(HKEY key, LPCWSTR subKey) {
    if (!subKey || !*subKey) return ERROR_INVALID_PARAMETER;  // a key does not delete itself
    RegistryState& r = Registry();
    std::lock_guard g(r.lock);
    RegKey* from = nullptr;
    if (LONG status = Resolve(r, key, from); status != ERROR_SUCCESS) return status;
    RegKey *found = nullptr, *parent = nullptr;
    bool created = false;
    if (LONG status = Walk(from, subKey, false, found, parent, created); status != ERROR_SUCCESS) return status;
    if (!parent) return ERROR_INVALID_PARAMETER;  // a path of no names, such as "\\", names the key itself
    parent->RemoveChild(found);
    return ERROR_SUCCESS;
}

LONG RegCloseKey(HKEY key) {
    if (kiv_win32::detail::RootIndex(key) >= 0) return ERROR_SUCCESS;
    RegistryState& r = Registry();
    std::shared_ptr<RegKey> closing;  // released after the lock: it may be the last of a deleted tree
    std::lock_guard g(r.lock);
    auto it = r.open.find(reinterpret_cast<std::uintptr_t>(key));
    if (it == r.open.end()) return ERROR_INVALID_HANDLE;
    closing = std::move(it->second);
    r.open.erase(it);
    return ERROR_SUCCESS;
}

LONG RegQueryInfoKeyW(HKEY key, LPWSTR keyClass, LPDWORD classLength, LPDWORD, LPDWORD subKeys,
                      LPDWORD maxSubKeyLength, LPDWORD maxClassLength, LPDWORD values, LPDWORD maxValueNameLength,
                      LPDWORD maxValueLength, LPDWORD securityDescriptorSize, FILETIME* lastWriteTime) {
    RegistryState& r = Registry();
    std::lock_guard g(r.lock);
    RegKey* from = nullptr;
    if (LONG status = Resolve(r, key, from); status != ERROR_SUCCESS) return status;
    size_t longestKey = 0, longestName = 0, longestData = 0;
    from->ForEachChild([&](const RegKey& c) { longestKey = std::max(longestKey, c.name().size()); });
    from->ForEachValue([&](const RegValue& v) {
        longestName = std::max(longestName, v.name.size());
        longestData = std::max(longestData, v.data.size());
    });
    if (keyClass && classLength && *classLength > 0) keyClass[0] = L'\0';
    if (classLength) *classLength = 0;
    if (subKeys) *subKeys = static_cast<DWORD>(from->childCount());
    if (maxSubKeyLength) *maxSubKeyLength = static_cast<DWORD>(longestKey);
    if (maxClassLength) *maxClassLength = 0;
    if (values) *values = static_cast<DWORD>(from->valueCount());
    if (maxValueNameLength) *maxValueNameLength = static_cast<DWORD>(longestName);
    if (maxValueLength) *maxValueLength = static_cast<DWORD>(longestData);
    if (securityDescriptorSize) *securityDescriptorSize = 0;
    if (lastWriteTime) *lastWriteTime = FILETIME{0, 0};
    return ERROR_SUCCESS;
}
