// The record store behind every INI file: a vector per section keeps the order, an
// open-addressing index of case-folded names keeps lookups constant-time however large
// the file, without a folded copy of any name, and the text itself lives in one block.
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

// Names are short: two folded characters to a 64-bit word and one multiply per word keep
// the chain of dependent multiplies half as long as one per character.
std::uint32_t FoldedNameIndex::Hash(std::wstring_view name) {
    std::uint64_t h = 14695981039346656037ULL ^ name.size();
    const auto folded = [](wchar_t c) { return static_cast<std::uint64_t>(static_cast<std::uint32_t>(Fold(c))); };
    size_t i = 0;
    for (; i + 2 <= name.size(); i += 2)
        h = (h ^ (folded(name[i]) | folded(name[i + 1]) << 32)) * 0x9E3779B97F4A7C15ULL;
    if (i < name.size()) h = (h ^ folded(name[i])) * 0x9E3779B97F4A7C15ULL;
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

// Packing costs a pass over the live text, so it waits until most of the block is unused
// and the block is worth the pass.
constexpr size_t kPackingFloor = 4096;
}  // namespace

CThreeTupleStore::Span CThreeTupleStore::Keep(std::wstring_view text) {
    const Span span{text_.size(), text.size()};
    text_.append(text.data(), text.size());
    return span;
}

void CThreeTupleStore::Replace(Span& span, std::wstring_view text) {
    // A value no longer than the old one is written over it, which keeps a value that is
    // set again and again (a counter, a last-used path) from growing the block.
    if (text.size() <= span.length) {
        std::wstring_view::traits_type::move(text_.data() + span.at, text.data(), text.size());
        unused_ += span.length - text.size();
        span.length = text.size();
        return;
    }
    Forget(span);
    span = Keep(text);
}

void CThreeTupleStore::CompactIfWasteful() {
    if (unused_ < kPackingFloor || 2 * unused_ < text_.size()) return;
    std::wstring packed;
    packed.reserve(text_.size() - unused_);
    const auto move = [&](Span& span) {
        const Span moved{packed.size(), span.length};
        packed.append(View(span));
        span = moved;
    };
    for (Section& s : sections_) {
        move(s.name);
        for (Record& r : s.records) {
            move(r.key);
            move(r.value);
        }
    }
    text_.swap(packed);
    unused_ = 0;
}

size_t CThreeTupleStore::FindSectionIndex(std::wstring_view section) const {
    return bySection_.Find(section, detail::FoldedNameIndex::Hash(section),
                           [this](size_t i) { return View(sections_[i].name); });
}

size_t CThreeTupleStore::FindKeyIndex(const Section& section, std::wstring_view key) const {
    return section.byKey.Find(key, detail::FoldedNameIndex::Hash(key),
                              [this, &section](size_t i) { return View(section.records[i].key); });
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
    const size_t found = bySection_.Find(section, hash, [this](size_t i) { return View(sections_[i].name); });
    if (found != detail::FoldedNameIndex::npos) return found;
    sections_.push_back(Section{Keep(section), {}, {}});
    bySection_.Insert(sections_.size() - 1, hash);
    return sections_.size() - 1;
}

bool CThreeTupleStore::AddValueAt(size_t sectionIndex, std::wstring_view key, std::wstring_view value) {
    if (sectionIndex >= sections_.size()) return false;
    Section& s = sections_[sectionIndex];
    const std::uint32_t hash = detail::FoldedNameIndex::Hash(key);
    if (s.byKey.Find(key, hash, [this, &s](size_t i) { return View(s.records[i].key); }) !=
        detail::FoldedNameIndex::npos)
        return false;
    const Span k = Keep(key);
    s.records.push_back(Record{k, Keep(value)});
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
    return r ? CKivStringT(View(r->value)) : CKivStringT(defaultValue);
}

bool CThreeTupleStore::HasValue(const wchar_t* section, const wchar_t* key) const {
    return FindRecord(section, key) != nullptr;
}

bool CThreeTupleStore::HasSection(const wchar_t* section) const { return FindSection(section) != nullptr; }

void CThreeTupleStore::SetValue(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    const size_t si = AddSectionAt(ViewOf(section));
    Section& s = sections_[si];
    const size_t i = FindKeyIndex(s, ViewOf(key));
    if (i != detail::FoldedNameIndex::npos) {
        Replace(s.records[i].value, ViewOf(value));
        CompactIfWasteful();
        return;
    }
    AddValueAt(si, ViewOf(key), ViewOf(value));
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
    Forget(s.records[i].key);
    Forget(s.records[i].value);
    s.records.erase(s.records.begin() + static_cast<std::ptrdiff_t>(i));
    s.byKey.Rebuild(s.records.size(), [this, &s](size_t k) { return View(s.records[k].key); });
    CompactIfWasteful();
    return true;
}

bool CThreeTupleStore::RemoveSection(const wchar_t* section) {
    const size_t i = FindSectionIndex(ViewOf(section));
    if (i == detail::FoldedNameIndex::npos) return false;
    const Section& gone = sections_[i];
    Forget(gone.name);
    for (const Record& r : gone.records) {
        Forget(r.key);
        Forget(r.value);
    }
    sections_.erase(sections_.begin() + static_cast<std::ptrdiff_t>(i));
    bySection_.Rebuild(sections_.size(), [this](size_t k) { return View(sections_[k].name); });
    CompactIfWasteful();
    return true;
}

void CThreeTupleStore::Clear() {
    sections_.clear();
    bySection_.Clear();
    text_.clear();
    unused_ = 0;
}

CKivStringT CThreeTupleStore::GetSectionName(int sectionIndex) const {
    if (sectionIndex < 0 || sectionIndex >= GetSectionCount()) return {};
    return CKivStringT(View(sections_[static_cast<size_t>(sectionIndex)].name));
}

int CThreeTupleStore::GetKeyCount(int sectionIndex) const {
    if (sectionIndex < 0 || sectionIndex >= GetSectionCount()) return 0;
    return static_cast<int>(sections_[static_cast<size_t>(sectionIndex)].records.size());
}

CKivStringT CThreeTupleStore::GetKeyName(int sectionIndex, int keyIndex) const {
    if (keyIndex < 0 || keyIndex >= GetKeyCount(sectionIndex)) return {};
    return CKivStringT(View(sections_[static_cast<size_t>(sectionIndex)].records[static_cast<size_t>(keyIndex)].key));
}

CKivStringT CThreeTupleStore::GetValueAt(int sectionIndex, int keyIndex) const {
    if (keyIndex < 0 || keyIndex >= GetKeyCount(sectionIndex)) return {};
    return CKivStringT(
        View(sections_[static_cast<size_t>(sectionIndex)].records[static_cast<size_t>(keyIndex)].value));
}

bool operator==(const CThreeTupleStore& a, const CThreeTupleStore& b) {
    if (a.sections_.size() != b.sections_.size()) return false;
    for (size_t i = 0; i < a.sections_.size(); ++i) {
        const auto& x = a.sections_[i];
        const auto& y = b.sections_[i];
        if (a.View(x.name) != b.View(y.name) || x.records.size() != y.records.size()) return false;
        for (size_t k = 0; k < x.records.size(); ++k)
            if (a.View(x.records[k].key) != b.View(y.records[k].key) ||
                a.View(x.records[k].value) != b.View(y.records[k].value))
                return false;
    }
    return true;
}

}  // namespace kiv_settings
