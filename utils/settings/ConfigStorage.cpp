// The settings tree's model: typed values with lazy loading and change notification,
// groups with lazy lists and name lookups, and storages that share one counted root.
#include "utils/settings/ConfigStorage.h"

#include <algorithm>
#include <cwchar>
#include <new>
#include <vector>

#include "platform/kivutils/KivLog.h"

// The root of a storage's tree. It holds groups only, and it carries the count of the
// storages that share the tree, with the storages themselves so that the tree can be
// handed to a survivor when the storage it reports to goes first.
class CConfigRootGroup : public CConfigGroup {
public:
    explicit CConfigRootGroup(CConfigStorage& storage) : m_storage(&storage), m_holders{&storage} {}

    CConfigStorage& GetStorage() override { return *m_storage; }

    unsigned References() const { return static_cast<unsigned>(m_holders.size()); }
    void AddHolder(CConfigStorage& storage) { m_holders.push_back(&storage); }
    // Returns the number of holders left.
    unsigned DropHolder(CConfigStorage& storage) {
        auto it = std::find(m_holders.begin(), m_holders.end(), &storage);
        if (it != m_holders.end()) m_holders.erase(it);
        if (m_storage == &storage && !m_holders.empty()) m_storage = m_holders.front();
        return References();
    }
    CConfigStorage* AnotherHolder(const CConfigStorage& storage) const {
        for (CConfigStorage* s : m_holders)
            if (s != &storage) return s;
        return nullptr;
    }

protected:
    bool ShouldAlwaysLoadAllGroups() override { return m_storage->ShouldAlwaysLoadAllGroups(); }

private:
    CConfigValue* CreateValue(const CKivStringT&) override { return nullptr; }
    CConfigGroup* CreateGroup(const CKivStringT& name) override { return m_storage->CreateGroup(*this, name); }
    CConfigValue* FindValue(const CKivStringT&) override { return nullptr; }
    CConfigGroup* FindGroup(const CKivStringT& name) override { return m_storage->FindGroup(*this, name); }
    void DoDelete() override {}
    void LoadAllValues() override {}
    void LoadAllGroups() override { m_storage->LoadAllGroups(*this); }
    void DoSave() override {}

    CConfigStorage* m_storage;
    std::vector<CConfigStorage*> m_holders;
};

namespace {

// A value that no back end knows: it reads defaults.
class InertValue : public CConfigValue {
public:
    InertValue(CConfigGroup& parent, const CKivStringT& name) : CConfigValue(parent, name) {}

private:
    bool DoDelete() override { return true; }
    bool DoLoad() override { return true; }
    void DoSave(bool) override {}
    void DoSave(double) override {}
    void DoSave(int) override {}
    void DoSave(const CKivStringT&) override {}
};

// A group that no back end knows, holding inert values and groups.
class InertGroup : public CConfigGroup {
public:
    InertGroup(CConfigGroup& parent, const CKivStringT& name) : CConfigGroup(parent, name) {}

private:
    CConfigValue* CreateValue(const CKivStringT& name) override { return new InertValue(*this, name); }
    CConfigGroup* CreateGroup(const CKivStringT& name) override { return new InertGroup(*this, name); }
    CConfigValue* FindValue(const CKivStringT&) override { return nullptr; }
    CConfigGroup* FindGroup(const CKivStringT&) override { return nullptr; }
    void DoDelete() override {}
    void LoadAllValues() override {}
    void LoadAllGroups() override {}
    void DoSave() override {}
};

CKivStringT IndexedName(const CKivStringT& name, unsigned index) {
    CKivStringT indexed;
    indexed.Format(L"%s_%u", name.GetString(), index);
    return indexed;
}

// Erases `item` from `items`, keeping the order of the rest; the name table is made
// again on the next lookup.
template <class T, class Index>
void EraseItem(CKivArray<T*>& items, Index& firstByName, const T& item) {
    // From the back: the newest items are the ones most often taken away again.
    for (int i = items.GetSize() - 1; i >= 0; --i) {
        if (items[i] != &item) continue;
        items.RemoveAt(i);
        firstByName.Invalidate();
        return;
    }
}

}  // namespace

// ---- CConfigValue --------------------------------------------------------------------------

CConfigValue::CConfigValue(CConfigGroup& parent, const CKivStringT& name) : CConfigValue(parent, name.view()) {}

CConfigValue::CConfigValue(CConfigGroup& parent, std::wstring_view name)
    : m_parent(parent), m_name(name), m_standIn(parent.m_standIn) {
    m_parent.Add(*this);
}

CConfigValue::~CConfigValue() { ClearValueAndType(); }

void CConfigValue::operator delete(CConfigValue* value, std::destroying_delete_t) {
    const bool inGroupBlock = value->m_inGroupBlock;
    value->~CConfigValue();
    // The group's blocks go with the group.
    if (!inGroupBlock) SharedHeapObject::operator delete(value);
}

CConfigStorage& CConfigValue::GetStorage() const { return m_parent.GetStorage(); }

CConfigValue::EValueType CConfigValue::GetType() {
    LoadOnDemand(None);
    return m_type;
}

bool CConfigValue::HasValue() {
    LoadOnDemand(None);
    return m_hasValue;
}

void CConfigValue::Delete() {
    DoDelete();
    m_parent.Remove(*this);
    if (m_parent.m_placeholder == this) m_parent.m_placeholder = nullptr;
    delete this;
}

CKivStringT CConfigValue::GetAsString() { return GetAsString(CKivStringT()); }

CKivStringT CConfigValue::GetAsString(const CKivStringT& defaultValue) {
    LoadOnDemand(String);
    if (!m_hasValue || m_type != String) return defaultValue;
    return CKivStringT(m_datum.text);
}

int CConfigValue::GetAsInteger(int defaultValue) {
    LoadOnDemand(Integer);
    return (m_hasValue && m_type == Integer) ? m_datum.integer : defaultValue;
}

double CConfigValue::GetAsDouble(double defaultValue) {
    LoadOnDemand(Double);
    return (m_hasValue && m_type == Double) ? m_datum.real : defaultValue;
}

bool CConfigValue::GetAsBoolean(bool defaultValue) {
    LoadOnDemand(Boolean);
    return (m_hasValue && m_type == Boolean) ? m_datum.boolean : defaultValue;
}

bool CConfigValue::IsEqualTo(const CKivStringT& value) const {
    if (!m_hasValue || m_type != String) return false;
    if (m_datum.text == nullptr) return value.IsEmpty();
    return value.Compare(m_datum.text) == 0;
}

bool CConfigValue::IsEqualTo(int value) const { return m_hasValue && m_type == Integer && m_datum.integer == value; }

bool CConfigValue::IsEqualTo(double value) const { return m_hasValue && m_type == Double && m_datum.real == value; }

bool CConfigValue::IsEqualTo(bool value) const { return m_hasValue && m_type == Boolean && m_datum.boolean == value; }

template <class T>
void CConfigValue::Set(const T& value, EValueType type) {
    if (m_standIn) return;
    // A group that exists only in memory reaches the back end, ancestors first, before
    // its first value does.
    m_parent.Save();
    LoadOnDemand(type);
    const bool had = m_hasValue;
    const bool changed = had && !IsEqualTo(value);
    if (had && !changed) return;
    DoSave(value);
    SetValue(value);
    Notify(!had, changed);
}

void CConfigValue::SetAsString(const CKivStringT& value) { Set(value, String); }
void CConfigValue::SetAsInteger(int value) { Set(value, Integer); }
void CConfigValue::SetAsDouble(double value) { Set(value, Double); }
void CConfigValue::SetAsBoolean(bool value) { Set(value, Boolean); }

void CConfigValue::SetValue(const CKivStringT& value) {
    ClearValueAndType();
    if (!value.IsEmpty()) {
        const size_t length = static_cast<size_t>(value.GetLength());
        m_datum.text = new (std::nothrow) wchar_t[length + 1];
        if (m_datum.text) std::wmemcpy(m_datum.text, value.GetString(), length + 1);
    }
    m_type = String;
    m_hasValue = true;
    m_needsLoad = false;
}

void CConfigValue::SetValue(int value) {
    ClearValueAndType();
    m_datum.integer = value;
    m_type = Integer;
    m_hasValue = true;
    m_needsLoad = false;
}

void CConfigValue::SetValue(double value) {
    ClearValueAndType();
    m_datum.real = value;
    m_type = Double;
    m_hasValue = true;
    m_needsLoad = false;
}

void CConfigValue::SetValue(bool value) {
    ClearValueAndType();
    m_datum.boolean = value;
    m_type = Boolean;
    m_hasValue = true;
    m_needsLoad = false;
}

void CConfigValue::ClearValueAndType() {
    if (m_type == String) delete[] m_datum.text;
    m_type = None;
    m_datum.real = 0.0;
    m_datum.text = nullptr;
}

void CConfigValue::LoadOnDemand(EValueType requestedType) {
    if (!m_needsLoad) return;
    DoLoad();
    m_needsLoad = false;
    // A value without a datum takes the type of its first typed access.
    if (!m_hasValue) m_type = requestedType;
}

void CConfigValue::Notify(bool isNew, bool changed) {
    if (isNew) GetStorage().OnValueAdded(*this);
    else if (changed) GetStorage().OnValueChanged(*this);
}

// ---- CConfigGroup --------------------------------------------------------------------------

CConfigGroup::CConfigGroup()
    : m_ownValueBlocks(std::make_unique<kiv_settings_detail::ItemBlocks>()), m_valueBlocks(m_ownValueBlocks.get()) {}

CConfigGroup::CConfigGroup(CConfigGroup& parent, const CKivStringT& name)
    : m_parent(&parent), m_name(name), m_valueBlocks(parent.m_valueBlocks), m_standIn(parent.m_standIn) {
    parent.Add(*this);
}

CConfigGroup::~CConfigGroup() {
    ClearGroups();
    ClearValues();
    delete m_placeholder;
    delete m_placeholderGroup;
}

CConfigStorage& CConfigGroup::GetStorage() { return m_parent->GetStorage(); }

bool CConfigGroup::ShouldAlwaysLoadAllValues() { return false; }
bool CConfigGroup::ShouldAlwaysLoadAllGroups() { return false; }

unsigned CConfigGroup::GetNumberOfValues() {
    LoadAllValuesOnDemand();
    return static_cast<unsigned>(m_values.GetSize());
}

CConfigValue& CConfigGroup::GetValue(unsigned index) {
    LoadAllValuesOnDemand();
    if (index >= static_cast<unsigned>(m_values.GetSize())) {
        LOGMESSAGE(1, L"Settings group '%s' has no value at position %u", m_name.GetString(), index);
        return Placeholder();
    }
    return *m_values[static_cast<int>(index)];
}

CConfigValue& CConfigGroup::GetValue(const CKivStringT& name) { return FirstValueNamed(name); }

CConfigValue& CConfigGroup::GetValue(const CKivStringT& name, unsigned index) {
    return FirstValueNamed(IndexedName(name, index));
}

unsigned CConfigGroup::GetNumberOfGroups() {
    LoadAllGroupsOnDemand();
    return static_cast<unsigned>(m_groups.GetSize());
}

CConfigGroup& CConfigGroup::GetGroup(unsigned index) {
    LoadAllGroupsOnDemand();
    if (index >= static_cast<unsigned>(m_groups.GetSize())) {
        LOGMESSAGE(1, L"Settings group '%s' has no group at position %u", m_name.GetString(), index);
        return PlaceholderGroup();
    }
    return *m_groups[static_cast<int>(index)];
}

CConfigGroup& CConfigGroup::GetGroup(const CKivStringT& name) { return FirstGroupNamed(name); }

CConfigGroup& CConfigGroup::GetGroup(const CKivStringT& name, unsigned index) {
    return FirstGroupNamed(IndexedName(name, index));
}

CConfigValue& CConfigGroup::FirstValueNamed(const CKivStringT& name) {
    if (!m_valuesLoaded && ShouldAlwaysLoadAllValues()) LoadAllValuesOnDemand();
    if (CConfigValue* known = m_firstValue.Find(m_values, name.view())) return *known;
    CConfigValue* value = m_isNew ? nullptr : FindValue(name);
    if (!value) value = CreateValue(name);
    return value ? *value : Placeholder();
}

CConfigGroup& CConfigGroup::FirstGroupNamed(const CKivStringT& name) {
    if (!m_groupsLoaded && ShouldAlwaysLoadAllGroups()) LoadAllGroupsOnDemand();
    if (CConfigGroup* known = m_firstGroup.Find(m_groups, name.view())) return *known;
    if (!m_isNew)
        if (CConfigGroup* found = FindGroup(name)) return *found;
    CConfigGroup* group = CreateGroup(name);
    if (!group) return PlaceholderGroup();
    group->m_isNew = true;
    return *group;
}

CConfigValue& CConfigGroup::Placeholder() {
    if (!m_placeholder) {
        m_placeholder = new InertValue(*this, CKivStringT());
        m_placeholder->m_standIn = true;
        Remove(*m_placeholder);
    }
    return *m_placeholder;
}

CConfigGroup& CConfigGroup::PlaceholderGroup() {
    if (!m_placeholderGroup) {
        m_placeholderGroup = new InertGroup(*this, CKivStringT());
        m_placeholderGroup->m_standIn = true;
        Remove(*m_placeholderGroup);
    }
    return *m_placeholderGroup;
}

CKivStringT CConfigGroup::GetStringValue(const CKivStringT& name) { return GetValue(name).GetAsString(); }
CKivStringT CConfigGroup::GetStringValue(const CKivStringT& name, const CKivStringT& defaultValue) {
    return GetValue(name).GetAsString(defaultValue);
}
void CConfigGroup::SetStringValue(const CKivStringT& name, const CKivStringT& value) { GetValue(name).SetAsString(value); }
int CConfigGroup::GetIntegerValue(const CKivStringT& name, int defaultValue) {
    return GetValue(name).GetAsInteger(defaultValue);
}
void CConfigGroup::SetIntegerValue(const CKivStringT& name, int value) { GetValue(name).SetAsInteger(value); }
double CConfigGroup::GetDoubleValue(const CKivStringT& name, double defaultValue) {
    return GetValue(name).GetAsDouble(defaultValue);
}
void CConfigGroup::SetDoubleValue(const CKivStringT& name, double value) { GetValue(name).SetAsDouble(value); }
bool CConfigGroup::GetBooleanValue(const CKivStringT& name, bool defaultValue) {
    return GetValue(name).GetAsBoolean(defaultValue);
}
void CConfigGroup::SetBooleanValue(const CKivStringT& name, bool value) { GetValue(name).SetAsBoolean(value); }

void CConfigGroup::Delete() {
    if (!m_parent) return;
    DoDelete();
    m_parent->Remove(*this);
    if (m_parent->m_placeholderGroup == this) m_parent->m_placeholderGroup = nullptr;
    delete this;
}

void CConfigGroup::IndexByName() {
    m_firstValue.Prepare(m_values);
    m_firstGroup.Prepare(m_groups);
}

void CConfigGroup::Add(CConfigValue& value) {
    m_values.Add(&value);
    m_firstValue.Added(m_values);
}

void CConfigGroup::Add(CConfigGroup& group) {
    m_groups.Add(&group);
    m_firstGroup.Added(m_groups);
}

void CConfigGroup::Remove(const CConfigValue& value) { EraseItem(m_values, m_firstValue, value); }

void CConfigGroup::Remove(const CConfigGroup& group) { EraseItem(m_groups, m_firstGroup, group); }

void CConfigGroup::ClearGroups() {
    for (CConfigGroup* group : m_groups) delete group;
    m_groups.RemoveAll();
    m_firstGroup.Invalidate();
}

void CConfigGroup::ClearValues() {
    for (CConfigValue* value : m_values) delete value;
    m_values.RemoveAll();
    m_firstValue.Invalidate();
}

void CConfigGroup::LoadAllValuesOnDemand() {
    if (m_valuesLoaded) return;
    if (!m_isNew) LoadAllValues();
    m_valuesLoaded = true;
}

void CConfigGroup::LoadAllGroupsOnDemand() {
    if (m_groupsLoaded) return;
    if (!m_isNew) LoadAllGroups();
    m_groupsLoaded = true;
}

void CConfigGroup::Save() {
    if (!m_isNew) return;
    if (m_parent) m_parent->Save();
    DoSave();
    m_isNew = false;
    GetStorage().OnGroupAdded(*this);
}

// ---- CConfigStorage ------------------------------------------------------------------------

CConfigStorage::CConfigStorage() : m_root(new CConfigRootGroup(*this)) {}

CConfigStorage::CConfigStorage(const CConfigStorage& other) : m_root(other.m_root) {
    if (m_root) m_root->AddHolder(*this);
}

CConfigStorage& CConfigStorage::operator=(const CConfigStorage& other) {
    if (this == &other || m_root == other.m_root) return *this;
    CConfigRootGroup* taken = other.m_root;
    if (taken) taken->AddHolder(*this);
    ReleaseRoot();
    m_root = taken;
    return *this;
}

CConfigStorage::~CConfigStorage() { ReleaseRoot(); }

void CConfigStorage::ReleaseRoot() {
    if (!m_root) return;
    if (m_root->DropHolder(*this) == 0) delete m_root;
    m_root = nullptr;
}

void CConfigStorage::OnValueAdded(CConfigValue&) {}
void CConfigStorage::OnValueChanged(CConfigValue&) {}
void CConfigStorage::OnGroupAdded(CConfigGroup&) {}
bool CConfigStorage::ShouldAlwaysLoadAllGroups() { return false; }

unsigned CConfigStorage::GetNumberOfReferences() const { return m_root ? m_root->References() : 0; }

CConfigStorage* CConfigStorage::AnotherHolderOfTree() const { return m_root ? m_root->AnotherHolder(*this) : nullptr; }

unsigned CConfigStorage::GetNumberOfGroups() { return m_root->GetNumberOfGroups(); }
CConfigGroup& CConfigStorage::GetGroup(unsigned index) { return m_root->GetGroup(index); }
CConfigGroup& CConfigStorage::GetGroup(const CKivStringT& name) { return m_root->GetGroup(name); }
CConfigGroup& CConfigStorage::GetGroup(const CKivStringT& name, unsigned index) {
    return m_root->GetGroup(name, index);
}
