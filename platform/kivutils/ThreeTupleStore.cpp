// The record store behind every INI file: a vector per section keeps the order, an
// open-addressing index of case-folded names keeps lookups constant-time however large
// the file, without a folded copy of any name.
#include "platform/kivutils/ThreeTupleStore.h"

#include <algorithm>

namespace kiv_settings {
namespace detail {
namespace {

wchar_t Fold(wchar_t c) {
    if (static_cast<unsigned long>(c) < 0x80) return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c + 32) : c;
    return kiv_strings::ToLower(c);
}

}  // namespace

std::uint32_t FoldedNameIndex::Hash(std::wstring_view name) {
    std::uint64_t h = 14695981039346656037ULL ^ name.size();
    for (wchar_t c : name) h = (h ^ static_cast<std::uint32_t>(Fold(c))) * 0x9E3779B97F4A7C15ULL;
    return static_cast<std::uint32_t>(h ^ (h >> 32));
}

bool FoldedNameIndex::SameFolded(std::wstring_view a, std::wstring_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i] && Fold(a[i]) != Fold(b[i])) return false;
    return true;
}

void FoldedNameIndex::Insert(size_t position, std::uint32_t hash) {
    if (2 * (used_ + 1) > slots_.size()) Grow();
    size_t i = hash & Mask();
    while (slots_[i].position != 0) i = (i + 1) & Mask();
    slots_[i] = Slot{static_cast<std::uint32_t>(position + 1), hash};
    ++used_;
}

void FoldedNameIndex::Grow() {
    std::vector<Slot> old(std::max<size_t>(16, 2 * slots_.size()), Slot{0, 0});
    old.swap(slots_);
    for (const Slot& slot : old) {
        if (slot.position == 0) continue;
        size_t i = slot.hash & Mask();
        while (slots_[i].position != 0) i = (i + 1) & Mask();
        slots_[i] = slot;
    }
}

}  // namespace detail

namespace {
std::wstring_view ViewOf(const wchar_t* name) { return name ? std::wstring_view(name) : std::wstring_view(); }
}  // namespace

size_t CThreeTupleStore::FindSectionIndex(std::wstring_view section) const {
    return bySection_.Find(section, detail::FoldedNameIndex::Hash(section),
                           [this](size_t i) { return sections_[i].name.view(); });
}

size_t CThreeTupleStore::FindKeyIndex(const Section& section, std::wstring_view key) const {
    return section.byKey.Find(key, detail::FoldedNameIndex::Hash(key),
                              [&section](size_t i) { return section.records[i].key.view(); });
}

const CThreeTupleStore::Section* CThreeTupleStore::FindSection(const wchar_t* section) const {
    const size_t i = FindSectionIndex(ViewOf(section));
    return i == detail::FoldedNameIndex::npos ? nullptr : &sections_[i];
}

CThreeTupleStore::Section& CThreeTupleStore::SectionFor(std::wstring_view section) {
    return sections_[AddSectionAt(section)];
}

size_t CThreeTupleStore::AddSectionAt(std::wstring_view section) {
    const std::uint32_t hash = detail::FoldedNameIndex::Hash(section);
    const size_t found = bySection_.Find(section, hash, [this](size_t i) { return sections_[i].name.view(); });
    if (found != detail::FoldedNameIndex::npos) return found;
    sections_.push_back(Section{CKivStringT(section), {}, {}});
    bySection_.Insert(sections_.size() - 1, hash);
    return sections_.size() - 1;
}

bool CThreeTupleStore::AddValueAt(size_t sectionIndex, std::wstring_view key, std::wstring_view value) {
    if (sectionIndex >= sections_.size()) return false;
    Section& s = sections_[sectionIndex];
    const std::uint32_t hash = detail::FoldedNameIndex::Hash(key);
    if (s.byKey.Find(key, hash, [&s](size_t i) { return s.records[i].key.view(); }) != detail::FoldedNameIndex::npos)
        return false;
    s.records.push_back(Record{CKivStringT(key), CKivStringT(value)});
    s.byKey.Insert(s.records.size() - 1, hash);
    return true;
}

const CThreeTupleStore::Record* CThreeTupleStore::FindRecord(const wchar_t* section, const wchar_t* key) const {
    const Section* s = FindSection(section);
    if (!s) return nullptr;
    const size_t i = FindKeyIndex(*s, ViewOf(key));
    return i == detail::FoldedNameIndex::npos ? nullptr : &s->records[i];
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
    Section& s = SectionFor(ViewOf(section));
    const size_t i = FindKeyIndex(s, ViewOf(key));
    if (i != detail::FoldedNameIndex::npos) {
        s.records[i].value = value;
        return;
    }
    s.records.push_back(Record{CKivStringT(key), CKivStringT(value)});
    s.byKey.Insert(s.records.size() - 1, detail::FoldedNameIndex::Hash(ViewOf(key)));
}

bool CThreeTupleStore::AddValue(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    return AddValueAt(AddSectionAt(ViewOf(section)), ViewOf(key), ViewOf(value));
}

void CThreeTupleStore::AddSection(const wchar_t* section) { AddSectionAt(ViewOf(section)); }

bool CThreeTupleStore::RemoveValue(const wchar_t* section, const wchar_t* key) {
    const size_t si = FindSectionIndex(ViewOf(section));
    if (si == detail::FoldedNameIndex::npos) return false;
    Section& s = sections_[si];
    const size_t i = FindKeyIndex(s, ViewOf(key));
    if (i == detail::FoldedNameIndex::npos) return false;
    s.records.erase(s.records.begin() + static_cast<std::ptrdiff_t>(i));
    s.byKey.Rebuild(s.records.size(), [&s](size_t k) { return s.records[k].key.view(); });
    return true;
}

bool CThreeTupleStore::RemoveSection(const wchar_t* section) {
    const size_t i = FindSectionIndex(ViewOf(section));
    if (i == detail::FoldedNameIndex::npos) return false;
    sections_.erase(sections_.begin() + static_cast<std::ptrdiff_t>(i));
    bySection_.Rebuild(sections_.size(), [this](size_t k) { return sections_[k].name.view(); });
    return true;
}

void CThreeTupleStore::Clear() {
    sections_.clear();
    bySection_.Clear();
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
