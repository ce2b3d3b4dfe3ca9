// The record store behind every INI file: a vector per section keeps the order, a hash
// index of case-folded names keeps lookups constant-time however large the file.
#include "platform/kivutils/ThreeTupleStore.h"

namespace kiv_settings {
namespace {

std::wstring Folded(const wchar_t* name) {
    std::wstring folded = name ? name : L"";
    for (auto& c : folded) c = kiv_strings::ToLower(c);
    return folded;
}

template <class Items, class NameOf>
void Reindex(const Items& items, std::unordered_map<std::wstring, size_t>& index, NameOf nameOf) {
    index.clear();
    for (size_t i = 0; i < items.size(); ++i) index.emplace(Folded(nameOf(items[i])), i);
}

}  // namespace

const CThreeTupleStore::Section* CThreeTupleStore::FindSection(const wchar_t* section) const {
    const auto it = bySection_.find(Folded(section));
    return it == bySection_.end() ? nullptr : &sections_[it->second];
}

CThreeTupleStore::Section& CThreeTupleStore::SectionFor(const wchar_t* section) {
    const auto [it, added] = bySection_.emplace(Folded(section), sections_.size());
    if (added) sections_.push_back(Section{CKivStringT(section), {}, {}});
    return sections_[it->second];
}

const CThreeTupleStore::Record* CThreeTupleStore::FindRecord(const wchar_t* section, const wchar_t* key) const {
    const Section* s = FindSection(section);
    if (!s) return nullptr;
    const auto it = s->byKey.find(Folded(key));
    return it == s->byKey.end() ? nullptr : &s->records[it->second];
}

CKivStringT CThreeTupleStore::GetValue(const wchar_t* section, const wchar_t* key, const wchar_t* defaultValue) const {
    const Record* r = FindRecord(section, key);
    return r ? r->value : CKivStringT(defaultValue);
}

bool CThreeTupleStore::HasValue(const wchar_t* section, const wchar_t* key) const {
    return FindRecord(section, key) != nullptr;
}

bool CThreeTupleStore::HasSection(const wchar_t* section) const { return FindSection(section) != nullptr; }

void CThreeTupleStore::SetValue(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    Section& s = SectionFor(section);
    const auto [it, added] = s.byKey.emplace(Folded(key), s.records.size());
    if (added) s.records.push_back(Record{CKivStringT(key), CKivStringT(value)});
    else s.records[it->second].value = value;
}

bool CThreeTupleStore::AddValue(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    Section& s = SectionFor(section);
    const auto [it, added] = s.byKey.emplace(Folded(key), s.records.size());
    if (added) s.records.push_back(Record{CKivStringT(key), CKivStringT(value)});
    return added;
}

void CThreeTupleStore::AddSection(const wchar_t* section) { SectionFor(section); }

bool CThreeTupleStore::RemoveValue(const wchar_t* section, const wchar_t* key) {
    const auto found = bySection_.find(Folded(section));
    if (found == bySection_.end()) return false;
    Section& s = sections_[found->second];
    const auto it = s.byKey.find(Folded(key));
    if (it == s.byKey.end()) return false;
    s.records.erase(s.records.begin() + static_cast<std::ptrdiff_t>(it->second));
    Reindex(s.records, s.byKey, [](const Record& r) { return r.key.GetString(); });
    return true;
}

bool CThreeTupleStore::RemoveSection(const wchar_t* section) {
    const auto it = bySection_.find(Folded(section));
    if (it == bySection_.end()) return false;
    sections_.erase(sections_.begin() + static_cast<std::ptrdiff_t>(it->second));
    Reindex(sections_, bySection_, [](const Section& s) { return s.name.GetString(); });
    return true;
}

void CThreeTupleStore::Clear() {
    sections_.clear();
    bySection_.clear();
}

CKivStringT CThreeTupleStore::GetSectionName(int sectionIndex) const {
    if (sectionIndex < 0 || sectionIndex >= GetSectionCount()) return {};
    return sections_[static_cast<size_t>(sectionIndex)].name;
}

int CThreeTupleStore::GetKeyCount(int sectionIndex) const {
    if (sectionIndex < 0 || sectionIndex >= GetSectionCount()) return 0;
    return static_cast<int>(sections_[static_cast<size_t>(sectionIndex)].records.size());
}

CKivStringT CThreeTupleStore::GetKeyName(int sectionIndex, int keyIndex) const {
    if (keyIndex < 0 || keyIndex >= GetKeyCount(sectionIndex)) return {};
    return sections_[static_cast<size_t>(sectionIndex)].records[static_cast<size_t>(keyIndex)].key;
}

CKivStringT CThreeTupleStore::GetValueAt(int sectionIndex, int keyIndex) const {
    if (keyIndex < 0 || keyIndex >= GetKeyCount(sectionIndex)) return {};
    return sections_[static_cast<size_t>(sectionIndex)].records[static_cast<size_t>(keyIndex)].value;
}

bool operator==(const CThreeTupleStore& a, const CThreeTupleStore& b) {
    if (a.sections_.size() != b.sections_.size()) return false;
    for (size_t i = 0; i < a.sections_.size(); ++i) {
        const auto& x = a.sections_[i];
        const auto& y = b.sections_[i];
        if (x.name != y.name || x.records.size() != y.records.size()) return false;
        for (size_t k = 0; k < x.records.size(); ++k)
            if (x.records[k].key != y.records[k].key || x.records[k].value != y.records[k].value) return false;
    }
    return true;
}

}  // namespace kiv_settings
