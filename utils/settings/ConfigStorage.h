// The settings tree: a storage holds a root of named groups, a group holds named values
// and sub-groups, a value holds one typed datum. Loading is lazy and a back end (the XML
// file, for one) supplies creation, lookup, loading and saving through the private slots.
#pragma once

#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivArray.h"
#include "platform/kivutils/KivString.h"
#include "utils/settings/ItemBlocks.h"
#include "utils/settings/ItemName.h"
#include "utils/settings/NameIndex.h"

class CConfigGroup;
class CConfigStorage;
class CConfigRootGroup;

class CConfigValue : public SharedHeapObject {
public:
    enum EValueType : int { None = 0, String = 1, Integer = 2, Double = 3, Boolean = 4 };

    virtual ~CConfigValue();

    // A value read in bulk lives in its group's blocks (see CConfigGroup::NewLoadedValue)
    // and a value made one by one on the heap; deleting either runs here, so that every
    // way of destroying a value frees only what the heap gave.
    static void operator delete(CConfigValue* value, std::destroying_delete_t);
    // For a constructor that throws inside a new-expression.
    using SharedHeapObject::operator delete;

    CConfigGroup& GetParent() const { return m_parent; }
    CConfigStorage& GetStorage() const;
    const CKivStringT& GetName() const { return m_name.AsString(); }
    std::wstring_view NameView() const { return m_name.view(); }

    EValueType GetType();
    bool HasValue();
    // Tells the back end, leaves the parent and destroys this value.
    void Delete();

    CKivStringT GetAsString();
    CKivStringT GetAsString(const CKivStringT& defaultValue);
    int GetAsInteger(int defaultValue);
    double GetAsDouble(double defaultValue);
    bool GetAsBoolean(bool defaultValue);

    void SetAsString(const CKivStringT& value);
    void SetAsInteger(int value);
    void SetAsDouble(double value);
    void SetAsBoolean(bool value);

    bool IsEqualTo(const CKivStringT& value) const;
    bool IsEqualTo(int value) const;
    bool IsEqualTo(double value) const;
    bool IsEqualTo(bool value) const;

    CConfigValue(const CConfigValue&) = delete;
    CConfigValue& operator=(const CConfigValue&) = delete;

protected:
    CConfigValue(CConfigGroup& parent, const CKivStringT& name);
    CConfigValue(CConfigGroup& parent, std::wstring_view name);

    // Store a datum without saving or notifying; back ends use these while loading.
    void SetValue(const CKivStringT& value);
    void SetValue(int value);
    void SetValue(double value);
    void SetValue(bool value);

private:
    virtual bool DoDelete() = 0;
    virtual bool DoLoad() = 0;
    virtual void DoSave(bool value) = 0;
    virtual void DoSave(double value) = 0;
    virtual void DoSave(int value) = 0;
    virtual void DoSave(const CKivStringT& value) = 0;

    void ClearValueAndType();
    void LoadOnDemand(EValueType requestedType);
    void Notify(bool isNew, bool changed);
    template <class T>
    void Set(const T& value, EValueType type);

    friend class CConfigGroup;

    CConfigGroup& m_parent;
    EValueType m_type = None;
    kiv_settings_detail::ItemName m_name;
    bool m_hasValue = false;
    bool m_needsLoad = true;
    // A stand-in for an item that cannot exist (see CConfigGroup): setting it does nothing.
    bool m_standIn = false;
    bool m_inGroupBlock = false;
    union {
        wchar_t* text;  // null for the empty text
        int integer;
        double real;
        bool boolean;
    } m_datum{};
};

class CConfigGroup : public SharedHeapObject {
public:
    virtual ~CConfigGroup();
    virtual CConfigStorage& GetStorage();

    const CKivStringT& GetName() const { return m_name; }
    std::wstring_view NameView() const { return m_name.view(); }
    CConfigGroup* GetParent() const { return m_parent; }

    unsigned GetNumberOfValues();
    CConfigValue& GetValue(unsigned index);
    CConfigValue& GetValue(const CKivStringT& name);
    CConfigValue& GetValue(const CKivStringT& name, unsigned index);

    unsigned GetNumberOfGroups();
    CConfigGroup& GetGroup(unsigned index);
    CConfigGroup& GetGroup(const CKivStringT& name);
    CConfigGroup& GetGroup(const CKivStringT& name, unsigned index);

    CKivStringT GetStringValue(const CKivStringT& name);
    CKivStringT GetStringValue(const CKivStringT& name, const CKivStringT& defaultValue);
    void SetStringValue(const CKivStringT& name, const CKivStringT& value);
    int GetIntegerValue(const CKivStringT& name, int defaultValue);
    void SetIntegerValue(const CKivStringT& name, int value);
    double GetDoubleValue(const CKivStringT& name, double defaultValue);
    void SetDoubleValue(const CKivStringT& name, double value);
    bool GetBooleanValue(const CKivStringT& name, bool defaultValue);
    void SetBooleanValue(const CKivStringT& name, bool value);

    // Tells the back end, leaves the parent and destroys this group with its subtree.
    // Does nothing on the root.
    void Delete();

    CConfigGroup(const CConfigGroup&) = delete;
    CConfigGroup& operator=(const CConfigGroup&) = delete;

protected:
    CConfigGroup(CConfigGroup& parent, const CKivStringT& name);

    virtual bool ShouldAlwaysLoadAllValues();
    virtual bool ShouldAlwaysLoadAllGroups();

    // For a back end reading its file: a value placed in the tree's blocks, which cost
    // far less than a heap block per value. It is destroyed as any other value.
    template <class Value, class... Args>
    Value* NewLoadedValue(Args&&... args) {
        Value* value = new (m_valueBlocks->Allocate(sizeof(Value))) Value(std::forward<Args>(args)...);
        static_cast<CConfigValue*>(value)->m_inGroupBlock = true;
        return value;
    }
    // For a back end that has read all of this group's items: makes the name lookups
    // now, while the names are fresh in the cache, rather than on the first lookup.
    void IndexByName();

private:
    friend class CConfigValue;
    friend class CConfigRootGroup;
    friend class CConfigStorage;

    CConfigGroup();

    virtual CConfigValue* CreateValue(const CKivStringT& name) = 0;
    virtual CConfigGroup* CreateGroup(const CKivStringT& name) = 0;
    virtual CConfigValue* FindValue(const CKivStringT& name) = 0;
    virtual CConfigGroup* FindGroup(const CKivStringT& name) = 0;
    virtual void DoDelete() = 0;
    virtual void LoadAllValues() = 0;
    virtual void LoadAllGroups() = 0;
    virtual void DoSave() = 0;

    void Add(CConfigValue& value);
    void Add(CConfigGroup& group);
    void Remove(const CConfigValue& value);
    void Remove(const CConfigGroup& group);
    void ClearGroups();
    void ClearValues();
    void LoadAllValuesOnDemand();
    void LoadAllGroupsOnDemand();
    void Save();

    CConfigValue& FirstValueNamed(const CKivStringT& name);
    CConfigGroup& FirstGroupNamed(const CKivStringT& name);
    CConfigValue& Placeholder();
    CConfigGroup& PlaceholderGroup();

    CConfigGroup* m_parent = nullptr;
    CKivStringT m_name;
    bool m_isNew = false;
    bool m_groupsLoaded = false;
    bool m_valuesLoaded = false;
    CKivArray<CConfigGroup*> m_groups;
    CKivArray<CConfigValue*> m_values;

    // Name to the first item of that name, kept in step with the arrays, so that a
    // lookup by name costs the same in a group of ten values as in one of ten thousand.
    kiv_settings_detail::FirstByName<CConfigValue> m_firstValue;
    kiv_settings_detail::FirstByName<CConfigGroup> m_firstGroup;
    // The room for the values read from the file, shared by the whole tree and owned by
    // its root, which outlives every value in it.
    std::unique_ptr<kiv_settings_detail::ItemBlocks> m_ownValueBlocks;
    kiv_settings_detail::ItemBlocks* m_valueBlocks;

    // Stand-ins handed out where no item can exist (a value asked of the root, an index
    // beyond the end), so that a caller's mistake reads defaults instead of crashing.
    // A stand-in and everything inside it are inert: a value set there is dropped, and no
    // group is saved and nobody is told, so the mistake never rewrites the back end.
    CConfigValue* m_placeholder = nullptr;
    CConfigGroup* m_placeholderGroup = nullptr;
    bool m_standIn = false;
};

class CConfigStorage : public SharedHeapObject {
public:
    virtual ~CConfigStorage();
    virtual void OnValueAdded(CConfigValue& value);
    virtual void OnValueChanged(CConfigValue& value);
    virtual void OnGroupAdded(CConfigGroup& group);

    unsigned GetNumberOfGroups();
    CConfigGroup& GetGroup(unsigned index);
    CConfigGroup& GetGroup(const CKivStringT& name);
    CConfigGroup& GetGroup(const CKivStringT& name, unsigned index);

protected:
    CConfigStorage();
    CConfigStorage(const CConfigStorage& other);
    CConfigStorage& operator=(const CConfigStorage& other);

    virtual bool ShouldAlwaysLoadAllGroups();

    unsigned GetNumberOfReferences() const;
    // Another storage sharing this tree, or null; a back end hands it what the tree
    // still owes the file when this storage lets go first.
    CConfigStorage* AnotherHolderOfTree() const;

private:
    friend class CConfigRootGroup;

    virtual CConfigGroup* CreateGroup(CConfigGroup& parent, const CKivStringT& name) = 0;
    virtual CConfigGroup* FindGroup(CConfigGroup& parent, const CKivStringT& name) = 0;
    virtual void LoadAllGroups(CConfigGroup& parent) = 0;

    void ReleaseRoot();

    CConfigRootGroup* m_root = nullptr;
};
