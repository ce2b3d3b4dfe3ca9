// kiv_settings::CThreeTupleStore: settings as (section, key, value) records of wide text,
// the content of an INI file. Sections and keys keep the order in which they were first
// inserted and are found without regard to case, as INI users expect.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"

namespace kiv_settings {

namespace detail {
// Positions of names in an array, found without regard to case: an open-addressing table
// of (position + 1, hash of the folded name). It holds no text of its own; a probe
// compares against the array's names, so adding a name costs no allocation.
class FoldedNameIndex {
public:
    static constexpr size_t npos = static_cast<size_t>(-1);
    static std::uint32_t Hash(std::wstring_view name);
    static bool SameFolded(std::wstring_view a, std::wstring_view b);
    // `nameAt(i)` gives the name at position i as a view.
    template <class NameAt>
    size_t Find(std::wstring_view name, std::uint32_t hash, NameAt nameAt) const {
        if (slots_.empty()) return npos;
        for (size_t i = hash & Mask();; i = (i + 1) & Mask()) {
            const Slot& slot = slots_[i];
            if (slot.position == 0) return npos;
            if (slot.hash == hash && SameFolded(nameAt(slot.position - 1), name)) return slot.position - 1;
        }
    }
    // Records that `position` now holds a name of this hash (not yet in the index).
    void Insert(size_t position, std::uint32_t hash);
    template <class NameAt>
    void Rebuild(size_t count, NameAt nameAt) {
        Clear();
        for (size_t i = 0; i < count; ++i) Insert(i, Hash(nameAt(i)));
    }
    void Clear() {
        slots_.clear();
        used_ = 0;
    }

private:
    struct Slot {
        std::uint32_t position;  // position + 1; 0 marks a free slot
        std::uint32_t hash;
    };
    size_t Mask() const { return slots_.size() - 1; }
    void Grow();
    std::vector<Slot> slots_;
    size_t used_ = 0;
};
}  // namespace detail

class CThreeTupleStore : public SharedHeapObject {
public:
    static constexpr size_t npos = detail::FoldedNameIndex::npos;
    CThreeTupleStore() = default;
    virtual ~CThreeTupleStore() = default;
    CThreeTupleStore(const CThreeTupleStore&) = default;
    CThreeTupleStore& operator=(const CThreeTupleStore&) = default;

    // The value of (section, key), or `defaultValue` when there is none.
    CKivStringT GetValue(const wchar_t* section, const wchar_t* key, const wchar_t* defaultValue = L"") const;
    bool HasValue(const wchar_t* section, const wchar_t* key) const;
    // Sets (section, key) to `value`, replacing an earlier value in its place; a new
    // record goes after the others of its section, a new section after the others.
    void SetValue(const wchar_t* section, const wchar_t* key, const wchar_t* value);
    // Adds the record only when the store has none for (section, key); true if added.
    bool AddValue(const wchar_t* section, const wchar_t* key, const wchar_t* value);
    // Makes sure the section exists, even without records (an empty INI section).
    void AddSection(const wchar_t* section);
    // The reader's forms: the section by its position (from AddSectionAt), names as
    // views, so that a file is read without a temporary copy of each name.
    size_t AddSectionAt(std::wstring_view section);
    bool AddValueAt(size_t sectionIndex, std::wstring_view key, std::wstring_view value);
    bool RemoveValue(const wchar_t* section, const wchar_t* key);
    bool RemoveSection(const wchar_t* section);
    void Clear();

    bool IsEmpty() const { return sections_.empty(); }
    int GetSectionCount() const { return static_cast<int>(sections_.size()); }
    bool HasSection(const wchar_t* section) const;
    // Names as first inserted; an index out of range gives an empty text.
    CKivStringT GetSectionName(int sectionIndex) const;
    int GetKeyCount(int sectionIndex) const;
    CKivStringT GetKeyName(int sectionIndex, int keyIndex) const;
    CKivStringT GetValueAt(int sectionIndex, int keyIndex) const;

    friend bool operator==(const CThreeTupleStore& a, const CThreeTupleStore& b);

private:
    // A name or value: `length` characters at `at` in text_.
    struct Span {
        size_t at = 0;
        size_t length = 0;
    };
    struct Record {
        Span key;
        Span value;
    };
    struct Section {
        Span name;
        std::vector<Record> records;
        detail::FoldedNameIndex byKey;  // positions in records
    };
    std::wstring_view View(Span span) const { return std::wstring_view(text_.data() + span.at, span.length); }
    Span Keep(std::wstring_view text);
    void Replace(Span& span, std::wstring_view text);
    void Forget(Span span) { unused_ += span.length; }
    void CompactIfWasteful();
    size_t FindSectionIndex(std::wstring_view section) const;
    size_t FindKeyIndex(const Section& section, std::wstring_view key) const;
    const Section* FindSection(const wchar_t* section) const;
    Section& SectionFor(std::wstring_view section);
    const Record* FindRecord(const wchar_t* section, const wchar_t* key) const;

    // Every name and value back to back: a file of ten thousand records is two or three
    // blocks instead of twenty thousand strings. Replaced and removed text stays behind
    // until it is most of the block, then the live text is packed again.
    std::wstring text_;
    size_t unused_ = 0;
    std::vector<Section> sections_;
    detail::FoldedNameIndex bySection_;  // positions in sections_
};

}  // namespace kiv_settings
