// Internal to the win32 library: the registry's tree of keys and values, shared by the
// Reg* functions and the .reg reader and writer. One lock guards the whole tree.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/win32/Win32Types.h"

namespace kiv_win32::detail {

// Folds a name for comparison: the registry ignores case and keeps what was written.
std::wstring FoldName(std::wstring_view name);

struct RegValue {
    std::wstring name;
    DWORD type = 0;
    std::vector<BYTE> data;
};

// Children and values keep creation order in vectors; the folded-name indexes make a
// look-up constant time.
class RegKey {
public:
    explicit RegKey(std::wstring name) : name_(std::move(name)) {}

    const std::wstring& name() const { return name_; }
    bool deleted() const { return deleted_; }

    RegKey* FindChild(std::wstring_view name) const;
    RegKey* AddChild(std::wstring_view name);  // the existing child when the name is taken
    void RemoveChild(RegKey* child);           // marks its whole subtree deleted
    const std::vector<std::shared_ptr<RegKey>>& children() const { return children_; }
    std::shared_ptr<RegKey> ChildHandle(RegKey* child) const;

    const RegValue* FindValue(std::wstring_view name) const;
    void SetValue(std::wstring_view name, DWORD type, std::vector<BYTE> data);
    bool RemoveValue(std::wstring_view name);
    const std::vector<RegValue>& values() const { return values_; }

    void MarkDeleted();

private:
    std::wstring name_;
    bool deleted_ = false;
    std::vector<std::shared_ptr<RegKey>> children_;
    std::unordered_map<std::wstring, size_t> childIndex_;
    std::vector<RegValue> values_;
    std::unordered_map<std::wstring, size_t> valueIndex_;
};

constexpr int kRootCount = 4;
// The predefined roots in the order a .reg export lists them.
struct RootName {
    HKEY key;
    const wchar_t* name;
    const wchar_t* shortName;
};
extern const RootName kRoots[kRootCount];

struct RegistryState {
    std::mutex lock;
    std::shared_ptr<RegKey> roots[kRootCount];
    std::unordered_map<std::uintptr_t, std::shared_ptr<RegKey>> open;
    std::uintptr_t nextHandle = 0x2000;
};

// The registry; created empty on first use and emptied by kiv_host::ResetForTesting.
RegistryState& Registry();
int RootIndex(HKEY key);  // -1 for a key that is not a predefined root

// Splits a key path at backslashes (one trailing backslash is allowed). False for an
// empty component or one longer than the device allows.
bool SplitKeyPath(std::wstring_view path, std::vector<std::wstring>& parts);

}  // namespace kiv_win32::detail
