// Internal to the win32 library: the registry's tree of keys and values, shared by the
// Reg* functions and the .reg reader and writer. One lock guards the whole tree.
#pragma once

#include <bit>
#include <memory>
#include <mutex>
#include <optional>
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

// Keys nest at most this deep below their root, whether made by RegCreateKeyExW or by an
// import; the device's own limit is far lower.
constexpr size_t kMaxKeyDepth = 512;

// Entries in creation order under names compared without regard to case. Each slot keeps
// its folded name, so no removal folds anything again. A removal leaves a hole that a
// compaction closes once holes outnumber entries, and a count tree over the slots finds
// the n-th entry: emptying a large key one entry at a time, enumerating as it goes,
// stays O(n log n).
template <class T>
class NamedEntries {
public:
    size_t size() const { return live_; }
    bool empty() const { return live_ == 0; }

    const T* Find(std::wstring_view name) const {
        auto it = index_.find(FoldName(name));
        return it == index_.end() ? nullptr : &*slots_[it->second].item;
    }

    // The entry under `name`, made by `make()` when the name is new; true when it was.
    template <class Make>
    std::pair<T*, bool> FindOrAdd(std::wstring_view name, Make&& make) {
        std::wstring folded = FoldName(name);
        if (auto it = index_.find(folded); it != index_.end()) return {&*slots_[it->second].item, false};
        index_.emplace(folded, slots_.size());
        slots_.push_back(Slot{std::move(folded), std::optional<T>(make())});
        const size_t i = slots_.size();  // counts are 1-based
        counts_.push_back(1 + Prefix(i - 1) - Prefix(i - (i & -i)));
        ++live_;
        return {&*slots_.back().item, true};
    }

    // `name` is not used once the entry is gone, so it may be the entry's own.
    bool Remove(std::wstring_view name) {
        auto it = index_.find(FoldName(name));
        if (it == index_.end()) return false;
        const size_t slot = it->second;
        index_.erase(it);
        slots_[slot].item.reset();
        for (size_t i = slot + 1; i < counts_.size(); i += i & -i) --counts_[i];
        --live_;
        const size_t holes = slots_.size() - live_;
        if (live_ == 0 || (holes >= 32 && holes > live_)) Compact();
        return true;
    }

    // The n-th entry in creation order, n < size().
    T& At(size_t n) { return *slots_[SlotOf(n)].item; }
    const T& At(size_t n) const { return *slots_[SlotOf(n)].item; }

    template <class Visit>
    void ForEach(Visit&& visit) const {
        for (const auto& s : slots_)
            if (s.item) visit(*s.item);
    }

    std::vector<T> TakeAll() {
        std::vector<T> all;
        all.reserve(live_);
        for (auto& s : slots_)
            if (s.item) all.push_back(std::move(*s.item));
        slots_.clear();
        index_.clear();
        counts_.assign(1, 0);
        live_ = 0;
        return all;
    }

private:
    struct Slot {
        std::wstring folded;
        std::optional<T> item;  // empty: a hole left by a removal
    };

    // Live slots among the first k.
    size_t Prefix(size_t k) const {
        size_t sum = 0;
        for (; k > 0; k -= k & -k) sum += counts_[k];
        return sum;
    }

    size_t SlotOf(size_t n) const {
        size_t position = 0, remaining = n + 1;
        for (size_t step = std::bit_floor(slots_.size()); step > 0; step >>= 1) {
            if (position + step < counts_.size() && counts_[position + step] < remaining) {
                position += step;
                remaining -= counts_[position];
            }
        }
        return position;  // the tree's 1-based slot position + 1, that is slot `position`
    }

    void Compact() {
        std::erase_if(slots_, [](const Slot& s) { return !s.item; });
        index_.clear();
        counts_.assign(slots_.size() + 1, 0);
        for (size_t i = 0; i < slots_.size(); ++i) {
            index_.emplace(slots_[i].folded, i);
            counts_[i + 1] = (i + 1) & -(i + 1);  // every slot is live: a node counts all it covers
        }
    }

    std::vector<Slot> slots_;
    std::unordered_map<std::wstring, size_t> index_;  // folded name to slot
    std::vector<size_t> counts_ = std::vector<size_t>(1, 0);  // Fenwick tree of live slots, 1-based
    size_t live_ = 0;
};

// A key of the tree. Its subtree is freed without recursion, so no depth of keys can
// exhaust the stack.
class RegKey {
public:
    RegKey(std::wstring name, size_t depth) : name_(std::move(name)), depth_(depth) {}
    ~RegKey();
    RegKey(const RegKey&) = delete;
    RegKey& operator=(const RegKey&) = delete;

    const std::wstring& name() const { return name_; }
    size_t depth() const { return depth_; }  // 0 for a root
    bool deleted() const { return deleted_; }

    RegKey* FindChild(std::wstring_view name) const;
    RegKey* AddChild(std::wstring_view name);  // the existing child when the name is taken
    void RemoveChild(RegKey* child);           // marks its whole subtree deleted
    size_t childCount() const { return children_.size(); }
    RegKey& ChildAt(size_t n) const { return *children_.At(n); }
    std::shared_ptr<RegKey> ChildHandle(RegKey* child) const;
    template <class Visit>
    void ForEachChild(Visit&& visit) const {
        children_.ForEach([&](const std::shared_ptr<RegKey>& c) { visit(*c); });
    }

    const RegValue* FindValue(std::wstring_view name) const { return values_.Find(name); }
    void SetValue(std::wstring_view name, DWORD type, std::vector<BYTE> data);
    bool RemoveValue(std::wstring_view name) { return values_.Remove(name); }
    size_t valueCount() const { return values_.size(); }
    const RegValue& ValueAt(size_t n) const { return values_.At(n); }
    template <class Visit>
    void ForEachValue(Visit&& visit) const {
        values_.ForEach(visit);
    }

    void MarkDeleted();

private:
    std::wstring name_;
    size_t depth_ = 0;
    bool deleted_ = false;
    NamedEntries<std::shared_ptr<RegKey>> children_;
    NamedEntries<RegValue> values_;
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
