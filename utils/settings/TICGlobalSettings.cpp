// The global settings file "nurvo.ini": the identifier table and typed reads and writes.
// Every call goes to the file, so no copy in memory can fall behind another writer.
#include <charconv>
#include <cstring>
#include <string>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/FileFuncs.h"
#include "platform/kivutils/IniFile.h"
#include "utils/settings/AppStrPaths.h"
#include "utils/settings/SettingsStore.h"

namespace {

struct SettingPlace {
    int id;
    const wchar_t* section;
    const wchar_t* key;
};

// Deliberate: "UseDefaultMeasurmentAccuracies" is spelled so in the file.
constexpr SettingPlace kPlaces[] = {
    {1, L"Settings", L"CtrlerPortGps"},
    {2, L"Settings", L"MenuType"},
    {3, L"Settings", L"MenuDispType"},
    {4, L"Settings", L"EuStyle"},
    {5, L"Settings", L"CtrlerPortTs"},
    {6, L"Settings", L"BoldFont"},
    {7, L"Settings", L"ShowStrings"},
    {9, L"Settings", L"CtrlerBaudGps"},
    {10, L"Settings", L"CtrlerBaudTs"},
    {11, L"Settings", L"StakeIncPtBy"},
    {12, L"Settings", L"ShowSecondCtrlCode"},
    {13, L"Settings", L"RangeDelimiter"},
    {2001, L"Bluetooth", L"Ts"},
    {2002, L"Settings", L"CtrlerDelimTs"},
    {2003, L"Settings", L"BSPointAzi"},
    {2004, L"Settings", L"StkAutoAdv"},
    {2005, L"Settings", L"DebugComms"},
    {2006, L"Bluetooth", L"PortPC"},
    {2007, L"Settings", L"ExternalRcv"},
    {2008, L"Settings", L"ExternalRcvPort"},
    {2009, L"Settings", L"InternalBT"},
    {2012, L"Settings", L"EstimateScale"},
    {2013, L"Settings", L"UseCalculatedScale"},
    {2014, L"Settings", L"3DResect"},
    {2015, L"Settings", L"3DResectMethod"},
    {2016, L"Settings", L"UseDefaultMeasurmentAccuracies"},
    {2017, L"Settings", L"DistanceError"},
    {2018, L"Settings", L"DistancePPM"},
    {2019, L"Settings", L"HorizontalError"},
    {2020, L"Settings", L"VerticalError"},
    {2021, L"Settings", L"VerticalUI"},
    {2022, L"Settings", L"UserMenuType"},
    {2023, L"Settings", L"MenuVal"},
    {2024, L"Settings", L"SoftKeyboard"},
    {2025, L"Settings", L"SerialPortPC"},
    {2026, L"Windows", L"MainWindow_1"},
    {2027, L"Windows", L"MainWindow_2"},
    {2028, L"Windows", L"MainWindow_3"},
    {2029, L"Windows", L"MainWindow_4"},
    {2030, L"Bluetooth", L"Port2PC"},
};

const SettingPlace* FindPlace(int id) {
    for (const SettingPlace& p : kPlaces)
        if (p.id == id) return &p;
    return nullptr;
}

std::string TrimmedUtf8(const CKivStringT& text) {
    CKivStringT t(text);
    t.Trim();
    return kiv_text::ToUtf8(t.view());
}

template <class T>
bool ParseWhole(const std::string& s, T& value) {
    const char* first = s.data();
    const char* last = s.data() + s.size();
    if (first != last && *first == '+') ++first;
    if (first == last) return false;
    auto [end, ec] = std::from_chars(first, last, value);
    return ec == std::errc() && end == last;
}

class CNurvoIniSettings : public ITICGlobalSettings {
public:
    bool GetSectionAndKey(int id, CKivStringT& section, CKivStringT& key) const override {
        const SettingPlace* p = FindPlace(id);
        if (!p) return false;
        section = p->section;
        key = p->key;
        return true;
    }

    CKivStringT GetFilePath() const override { return AppStrPaths::GetUserSettingsPath() + L"\\nurvo.ini"; }

    int ReadInt(int id, int defaultValue) override {
        int v = 0;
        return ReadText(id) && ParseWhole(TrimmedUtf8(text_), v) ? v : defaultValue;
    }
    double ReadDouble(int id, double defaultValue) override {
        double v = 0;
        return ReadText(id) && ParseWhole(TrimmedUtf8(text_), v) ? v : defaultValue;
    }
    CKivStringT ReadString(int id, const CKivStringT& defaultValue) override {
        return ReadText(id) ? text_ : defaultValue;
    }
    bool ReadBool(int id, bool defaultValue) override {
        if (!ReadText(id)) return defaultValue;
        CKivStringT t(text_);
        t.Trim();
        if (t.CompareNoCase(L"true") == 0) return true;
        if (t.CompareNoCase(L"false") == 0) return false;
        int v = 0;
        return ParseWhole(TrimmedUtf8(t), v) ? v != 0 : defaultValue;
    }

    bool WriteInt(int id, int value) override { return WriteText(id, std::to_wstring(value)); }
    bool WriteDouble(int id, double value) override {
        char buffer[64];
        auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
        if (ec != std::errc()) return false;
        return WriteText(id, CKivStringT(std::string(buffer, end).c_str()));
    }
    bool WriteString(int id, const CKivStringT& value) override { return WriteText(id, value); }
    bool WriteBool(int id, bool value) override { return WriteText(id, value ? L"1" : L"0"); }

private:
    // Reads the identifier's text into text_; false when the id is unknown or the file
    // has no such record.
    bool ReadText(int id) {
        const SettingPlace* p = FindPlace(id);
        if (!p) return false;
        kiv_settings::CThreeTupleStore store;
        kiv_settings::ETextEncoding encoding = kiv_settings::eEncodingUtf16LE;
        if (!kiv_settings::readSettingsAsIni(GetFilePath(), store, encoding) || !store.HasValue(p->section, p->key))
            return false;
        text_ = store.GetValue(p->section, p->key, L"");
        return true;
    }

    bool WriteText(int id, const CKivStringT& value) {
        const SettingPlace* p = FindPlace(id);
        if (!p) return false;
        kiv_settings::CThreeTupleStore store;
        kiv_settings::ETextEncoding encoding = kiv_settings::eEncodingUtf16LE;
        // A file that exists but does not read is left alone rather than replaced by
        // one record.
        if (!kiv_settings::readSettingsAsIni(GetFilePath(), store, encoding) && FileFuncs::IsFileExist(GetFilePath()))
            return false;
        store.SetValue(p->section, p->key, value);
        return kiv_settings::writeSettingsAsIni(GetFilePath(), store, encoding);
    }

    CKivStringT text_;
};

}  // namespace

ITICGlobalSettings* GetTICGlobalSettings() {
    static CNurvoIniSettings settings;
    return &settings;
}
