// The name lookup of a settings group: the first item of a name, found by a linear scan
// in small groups and through an open-addressing table in large ones. The table is made
// on the first lookup, kept up to date as items are appended, and dropped when an item
// leaves (removal costs a pass over the array anyway), so it always gives the answer the
// scan would give.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/kivutils/KivArray.h"

namespace kiv_settings_detail {

template <class T>
class FirstByName {
public:
    T* Find(const CKivArray<T*>& items, std::wstring_view name) {
        if (items.GetSize() <= kLinearLimit) {
            for (T* item : items)
                if (item->GetName().view() == name) return item;
            return nullptr;
        }
        if (slots_.empty()) Build(items);
        for (size_t i = Hash(name) & Mask();; i = (i + 1) & Mask()) {
            if (slots_[i] == nullptr) return nullptr;
            if (slots_[i]->GetName().view() == name) return slots_[i];
        }
    }

    // After `item` was appended to `items`.
    void Added(const CKivArray<T*>& items, T* item) {
        if (slots_.empty()) return;
        if (2 * (used_ + 1) > slots_.size()) {
            Build(items);
            return;
        }
        Insert(item);
    }

    void Invalidate() {
        slots_.clear();
        used_ = 0;
    }

private:
    static constexpr int kLinearLimit = 8;

    size_t Mask() const { return slots_.size() - 1; }
    // FNV-1a over the characters: names are short, so a light hash beats a strong one.
    static size_t Hash(std::wstring_view name) {
        std::uint64_t h = 14695981039346656037ULL;
        for (wchar_t c : name) h = (h ^ static_cast<std::uint64_t>(c)) * 1099511628211ULL;
        return static_cast<size_t>(h ^ (h >> 29));
    }

    void Build(const CKivArray<T*>& items) {
        size_t size = 16;
        while (size < 2 * static_cast<size_t>(items.GetSize()) + 2) size *= 2;
        slots_.assign(size, nullptr);
        used_ = 0;
        for (T* item : items) Insert(item);
    }

    // Keeps an earlier item of the same name: lookups answer with the first.
    void Insert(T* item) {
        const std::wstring_view name = item->GetName().view();
        size_t i = Hash(name) & Mask();
        for (; slots_[i] != nullptr; i = (i + 1) & Mask())
            if (slots_[i]->GetName().view() == name) return;
        slots_[i] = item;
        ++used_;
    }

    std::vector<T*> slots_;
    size_t used_ = 0;
};

}  // namespace kiv_settings_detail
