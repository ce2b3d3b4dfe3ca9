// The XML file back end of the settings tree: the whole file is read on the first
// access to any group and written back, as a whole, when the last handle on a modified
// tree goes. Root element "kiv_config", groups and typed values one element a line.
#pragma once

#include <string_view>

#include "platform/kivutils/KivString.h"
#include "utils/settings/ConfigStorage.h"

class CXmlParser;
class CXmlConfigGroup;
class CConfigGroup;
namespace kiv_settings_detail {
void ReadSettingsTokens(CXmlParser& parser, CConfigGroup& root);
}

class CXmlConfigValue : public CConfigValue {
public:
    CXmlConfigValue(CXmlConfigGroup& parent, const CKivStringT& name);
    // Values read from the file start loaded, typed and with their datum, unannounced.
    CXmlConfigValue(CXmlConfigGroup& parent, const CKivStringT& name, const CKivStringT& value);
    CXmlConfigValue(CXmlConfigGroup& parent, const CKivStringT& name, int value);
    CXmlConfigValue(CXmlConfigGroup& parent, const CKivStringT& name, double value);
    CXmlConfigValue(CXmlConfigGroup& parent, const CKivStringT& name, bool value);
    // For the file readers: the name as the text holds it, with no string made for it.
    struct ReadName {
        std::wstring_view text;
    };
    template <class Datum>
    CXmlConfigValue(CXmlConfigGroup& parent, ReadName name, const Datum& value);
    ~CXmlConfigValue() override;

private:
    bool DoDelete() override;
    bool DoLoad() override;
    void DoSave(bool value) override;
    void DoSave(double value) override;
    void DoSave(int value) override;
    void DoSave(const CKivStringT& value) override;
    virtual bool DoLoad(bool& value);
    virtual bool DoLoad(double& value);
    virtual bool DoLoad(int& value);
    virtual bool DoLoad(CKivStringT& value);
};

class CXmlConfigGroup : public CConfigGroup {
public:
    CXmlConfigGroup(CConfigGroup& parent, const CKivStringT& name);
    ~CXmlConfigGroup() override;

    // Reads this group's values and sub-groups up to its end tag.
    void Load(CXmlParser& parser);

    // For the file readers: a value read from the file, with its datum, unannounced.
    template <class Datum>
    void AddLoadedValue(std::wstring_view name, const Datum& datum) {
        NewLoadedValue<CXmlConfigValue>(*this, CXmlConfigValue::ReadName{name}, datum);
    }
    // For the file readers, once every item of this group is read.
    void LoadFinished() { IndexByName(); }

protected:
    bool ShouldAlwaysLoadAllValues() override;
    bool ShouldAlwaysLoadAllGroups() override;

private:
    CConfigValue* CreateValue(const CKivStringT& name) override;
    CConfigGroup* CreateGroup(const CKivStringT& name) override;
    int Depth();
    CConfigValue* FindValue(const CKivStringT& name) override;
    CConfigGroup* FindGroup(const CKivStringT& name) override;
    void DoDelete() override;
    void LoadAllValues() override;
    void LoadAllGroups() override;
    void DoSave() override;
};

template <class Datum>
CXmlConfigValue::CXmlConfigValue(CXmlConfigGroup& parent, ReadName name, const Datum& value)
    : CConfigValue(parent, name.text) {
    SetValue(value);
}

class CXmlConfigStorage : public CConfigStorage {
public:
    explicit CXmlConfigStorage(const CKivStringT& path);
    // A fresh, unloaded tree of its own on the same file.
    CXmlConfigStorage(const CXmlConfigStorage& other);
    // Releases this storage's tree (saving it if it was the last handle), then shares
    // the other's.
    CXmlConfigStorage& operator=(const CXmlConfigStorage& other);
    ~CXmlConfigStorage() override;

    void OnValueAdded(CConfigValue& value) override;
    void OnValueChanged(CConfigValue& value) override;
    void OnGroupAdded(CConfigGroup& group) override;

    // The stake-out settings, "StakeoutSettings.xml" in the user-settings folder.
    static CXmlConfigStorage GetStakeoutSettings();

    const CKivStringT& GetPath() const { return m_path; }

    // Writes the tree now, changed or not (a deletion alone marks nothing changed);
    // false when the file could not be written, which leaves it as it was.
    bool Flush();
    // True when the file exists but was not read (larger than the reader takes, or not
    // readable): the tree is empty, and no save may replace the file with it.
    bool IsFileRefused() const { return m_fileRefused; }

protected:
    bool ShouldAlwaysLoadAllGroups() override;

private:
    friend class CXmlConfigGroup;
    friend void kiv_settings_detail::ReadSettingsTokens(CXmlParser& parser, CConfigGroup& root);

    CConfigGroup* CreateGroup(CConfigGroup& parent, const CKivStringT& name) override;
    CConfigGroup* FindGroup(CConfigGroup& parent, const CKivStringT& name) override;
    void LoadAllGroups(CConfigGroup& parent) override;

    static void ParseAllGroups(CConfigGroup& parent, CXmlParser& parser);
    bool Save();
    static void SaveGroup(std::wstring& out, CConfigGroup& group);
    void Release();

    CKivStringT m_path;
    bool m_modified = false;
    bool m_fileRefused = false;
};
