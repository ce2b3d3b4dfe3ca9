// kiv_settings::CThreeTupleStore: settings as (section, key, value) records of wide text,
// the content of an INI file. Sections and keys keep the order in which they were first
// inserted and are found without regard to case, as INI users expect.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"

namespace kiv_settings {

class CThreeTupleStore : public SharedHeapObject {
public:
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
    struct Record {
        CKivStringT key;
        CKivStringT value;
    };
    struct Section {
        CKivStringT name;
        std::vector<Record> records;
        std::unordered_map<std::wstring, size_t> byKey;  // folded key -> index in records
    };
    const Section* FindSection(const wchar_t* section) const;
    Section& SectionFor(const wchar_t* section);
    const Record* FindRecord(const wchar_t* section, const wchar_t* key) const;

    std::vector<Section> sections_;
    std::unordered_map<std::wstring, size_t> bySection_;  // folded name -> index in sections_
};

}  // namespace kiv_settings
