// The name lookup of a settings group: the first item of a name, found by a linear scan
// in small groups and through an open-addressing table in large ones. The table is made
// on the first lookup (or as soon as a reader has read the whole group), kept up to date
// as items are appended, and dropped when an item leaves (removal costs a pass over the
// array anyway), so it always gives the answer the scan would give.
#pragma once

#include <cstdint>
#include <cstring>
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
                if (SameName(item->NameView(), name)) return item;
            return nullptr;
        }
        if (slots_.empty()) Build(items);
        // A program mostly reads a group's settings in the order the file holds them (the
        // file keeps the order in which the program first asked for each), so the item
        // after the last one found is tried before the table. It is the first of its name
        // only while no name is held twice.
        if (!sameNameTwice_ && next_ < static_cast<std::uint32_t>(items.GetSize()) &&
            SameName(items[static_cast<int>(next_)]->NameView(), name))
            return items[static_cast<int>(next_++)];
        const std::uint32_t hash = Hash(name);
        for (size_t i = hash & Mask();; i = (i + 1) & Mask()) {
            const Slot slot = slots_[i];
            if (slot.index == kEmpty) return nullptr;
            if (slot.hash != hash) continue;
            T* item = items[static_cast<int>(slot.index)];
            if (SameName(item->NameView(), name)) {
                next_ = slot.index + 1;
                return item;
            }
        }
    }

    // Makes the table now, when it would be made on the first lookup anyway.
    void Prepare(const CKivArray<T*>& items) {
        if (items.GetSize() > kLinearLimit && slots_.empty()) Build(items);
    }

    // After an item was appended to `items`.
    void Added(const CKivArray<T*>& items) {
        if (slots_.empty()) return;
        if (2 * (used_ + 1) > slots_.size()) {
            Build(items);
            return;
        }
        Insert(items, static_cast<std::uint32_t>(items.GetSize() - 1));
    }

    void Invalidate() {
        slots_.clear();
        used_ = 0;
        next_ = 0;
        sameNameTwice_ = false;
    }

private:
    static constexpr int kLinearLimit = 8;
    static constexpr std::uint32_t kEmpty = UINT32_MAX;

    // A position in the array, with the name's hash kept beside it so that a probe past
    // another name reads neither the array nor that item. Items are only ever appended
    // while the table lives, so positions stay put.
    struct Slot {
        std::uint32_t index;
        std::uint32_t hash;
    };

    size_t Mask() const { return slots_.size() - 1; }
    // Names are short, so a light hash beats a strong one: two characters to a 64-bit
    // word, one multiply per word, and a final fold of the high bits into the low ones.
    static std::uint32_t Hash(std::wstring_view name) {
        std::uint64_t h = 14695981039346656037ULL ^ name.size();
        size_t i = 0;
        for (; i + 2 <= name.size(); i += 2) {
            const std::uint64_t pair = static_cast<std::uint32_t>(name[i]) |
                                       (static_cast<std::uint64_t>(static_cast<std::uint32_t>(name[i + 1])) << 32);
            h = (h ^ pair) * 0x9E3779B97F4A7C15ULL;
        }
        if (i < name.size()) h = (h ^ static_cast<std::uint32_t>(name[i])) * 0x9E3779B97F4A7C15ULL;
        return static_cast<std::uint32_t>(h ^ (h >> 32));
    }
    // Names are a handful of characters: eight bytes a step, then the last characters one
    // by one, beat a call into the C library.
    static bool SameName(std::wstring_view a, std::wstring_view b) {
        if (a.size() != b.size()) return false;
        constexpr size_t kStep = 8 / sizeof(wchar_t);
        size_t i = 0;
        for (; i + kStep <= a.size(); i += kStep) {
            std::uint64_t x, y;
            std::memcpy(&x, a.data() + i, 8);
            std::memcpy(&y, b.data() + i, 8);
            if (x != y) return false;
        }
        for (; i < a.size(); ++i)
            if (a[i] != b[i]) return false;
        return true;
    }

    void Build(const CKivArray<T*>& items) {
        size_t size = 16;
        while (size < 2 * static_cast<size_t>(items.GetSize()) + 2) size *= 2;
        slots_.assign(size, Slot{kEmpty, 0});
        used_ = 0;
        next_ = 0;
        sameNameTwice_ = false;
        for (int i = 0; i < items.GetSize(); ++i) Insert(items, static_cast<std::uint32_t>(i));
    }

    // Keeps an earlier item of the same name: lookups answer with the first.
    void Insert(const CKivArray<T*>& items, std::uint32_t index) {
        const std::wstring_view name = items[static_cast<int>(index)]->NameView();
        const std::uint32_t hash = Hash(name);
        size_t i = hash & Mask();
        for (; slots_[i].index != kEmpty; i = (i + 1) & Mask()) {
            if (slots_[i].hash == hash && SameName(items[static_cast<int>(slots_[i].index)]->NameView(), name)) {
                sameNameTwice_ = true;
                return;
            }
        }
        slots_[i] = Slot{index, hash};
        ++used_;
    }

    std::vector<Slot> slots_;
    size_t used_ = 0;
    // Where the next lookup in file order will land.
    std::uint32_t next_ = 0;
    bool sameNameTwice_ = false;
};

}  // namespace kiv_settings_detail
