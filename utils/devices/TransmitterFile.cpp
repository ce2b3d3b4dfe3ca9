// The transmitter data file "\LumaroData.ini": one section per channel with the
// transmitter's serial number, calibration blocks and set-up, and the rules by which
// files of older versions are read.
#include <array>

#include "platform/kivutils/FileFuncs.h"
#include "platform/kivutils/IniFile.h"
#include "platform/kivutils/KivFormats.h"
#include "platform/win32/Win32.h"
#include "utils/devices/LumaroParams.h"
#include "utils/devices/ScanText.h"
#include "utils/settings/AppStrPaths.h"

namespace LumaroParams {

void TransData::Reset() {
    valid = false;
    serialNumber.Empty();
    for (auto& block : dataBlocks) block.Empty();
    channel = -1;
}

void TransPos::Reset() {
    transmitterName.Empty();
    heightSet = false;
    transmitterHeight = 0.0;
    knownOffset = 0.0;
    vertical = true;
    fixedHeightCode = 0;
    knownPointName.Empty();
}

void TransInfo::Reset() {
    for (auto& d : data) d.Reset();
    for (auto& p : pos) p.Reset();
}

namespace {

constexpr wchar_t kVersionSection[] = L"VERSION";
constexpr wchar_t kVersionKey[] = L"version";

CKivStringT DataFolder() {
    const CKivStringT folder = AppStrPaths::GetSessionSettingsPath();
    if (!FileFuncs::IsDirExist(folder)) FileFuncs::CreateDir(folder);
    return folder;
}

CKivStringT ChannelSection(int channel) {
    CKivStringT section;
    section.Format(L"CHANNEL%d", channel);
    return section;
}

CKivStringT BlockKey(int block) {
    CKivStringT key;
    key.Format(L"DataBlock%d", block);
    return key;
}

bool Exists(const CKivStringT& path) { return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES; }

// The versions the system ever wrote; anything else is a file of another program.
bool KnownVersion(float v) {
    for (float known : {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 1.0f})
        if (v == known) return true;
    return false;
}

// Reads "TransHeight" into the channel's set-up; false when it gives no position.
bool ReadHeight(const CKivStringT& text, bool version05, TransPos& pos) {
    if (text.IsEmpty()) return false;
    if (text.Find(L"Fixed:") >= 0) {
        int code = 0;
        if (kiv_scan::Scan(text, L"Fixed:%d", {code}) != 1) return false;
        pos.fixedHeightCode = code;
        // The mounts' heights; an unknown code keeps whatever height there was.
        if (code == 0 || code == 20) pos.transmitterHeight = 2.0;
        else if (code == 15) pos.transmitterHeight = 1.5;
        else if (code == 18) pos.transmitterHeight = 1.8;
        pos.vertical = true;
        return true;
    }
    double height = 0.0;
    wchar_t unit = L'V';
    if (kiv_scan::Scan(text, L"%lf%c", {height, unit}) < 2) return false;
    pos.transmitterHeight = height;
    pos.fixedHeightCode = 0;
    pos.vertical = unit != L'S';
    // Files of version 0.5 held the vertical height to the base, not to the mark.
    if (version05 && pos.vertical) pos.transmitterHeight -= 0.073;
    return true;
}

}  // namespace

bool LoadTransmitterInfo(TransInfo& info) {
    const CKivStringT folder = DataFolder();
    const CKivStringT path = folder + L"\\LumaroData.ini";
    if (!Exists(path)) {
        // The file's name before the product was renamed: moved once, then found directly.
        const CKivStringT older = folder + L"\\OrbekData.ini";
        if (!Exists(older)) return false;
        MoveFileW(older, path);
    }
    kiv_settings::CThreeTupleStore store;
    kiv_settings::ETextEncoding encoding;
    if (!kiv_settings::readSettingsAsIni(path, store, encoding)) return false;
    info.Reset();

    float version = 0.0f;
    if (kiv_scan::Scan(store.GetValue(kVersionSection, kVersionKey, L""), L"%f", {version}) != 1) return false;
    if (!KnownVersion(version)) return false;
    const bool withPosition = version == 0.5f || version == 1.0f;

    for (int i = 0; i < 4; ++i) {
        const CKivStringT section = ChannelSection(i + 1);
        TransData& data = info.data[i];
        TransPos& pos = info.pos[i];
        data.channel = i;
        data.serialNumber = store.GetValue(section, L"SN", L"");
        data.valid = !data.serialNumber.IsEmpty();
        for (int b = 0; b < 4; ++b) {
            data.dataBlocks[b] = store.GetValue(section, BlockKey(b + 1), L"");
            data.valid = data.valid && !data.dataBlocks[b].IsEmpty();
        }
        if (!data.valid) {
            data.Reset();
            pos.Reset();
            continue;
        }
        if (!withPosition) continue;  // versions before 0.5 kept no set-up
        const bool positionValid = ReadHeight(store.GetValue(section, L"TransHeight", L""), version == 0.5f, pos);
        pos.transmitterName = store.GetValue(section, L"TransName", L"");
        pos.knownPointName = store.GetValue(section, L"KnownName", L"");
        double offset = 0.0;
        if (!kiv_formats::StringToDouble(store.GetValue(section, L"KnownOffset", L""), offset)) offset = 0.0;
        pos.knownOffset = offset;
        if (!positionValid) pos.Reset();
    }
    // `heightSet` stays false: the user confirms the height again in every session.
    return true;
}

bool SaveTransmitterInfo(TransInfo const& info) {
    const CKivStringT path = DataFolder() + L"\\LumaroData.ini";
    kiv_settings::CThreeTupleStore store;
    store.SetValue(kVersionSection, kVersionKey, L"1.00");
    for (int i = 0; i < 4; ++i) {
        const CKivStringT section = ChannelSection(i + 1);
        const TransData& data = info.data[i];
        const TransPos& pos = info.pos[i];
        if (!data.valid) {
            store.SetValue(section, L"SN", L"");
            for (int b = 0; b < 4; ++b) store.SetValue(section, BlockKey(b + 1), L"");
            store.SetValue(section, L"TransHeight", L"");
            store.SetValue(section, L"TransName", L"");
            store.SetValue(section, L"KnownName", L"");
            store.SetValue(section, L"KnownOffset", kiv_formats::DoubleToString(0.0));
            continue;
        }
        store.SetValue(section, L"SN", data.serialNumber);
        for (int b = 0; b < 4; ++b) store.SetValue(section, BlockKey(b + 1), data.dataBlocks[b]);
        CKivStringT height;
        if (pos.heightSet) {
            if (pos.fixedHeightCode != 0) height.Format(L"Fixed:%d", pos.fixedHeightCode);
            else height.Format(L"%f%c", pos.transmitterHeight, pos.vertical ? L'V' : L'S');
        }
        store.SetValue(section, L"TransHeight", height);
        store.SetValue(section, L"TransName", pos.transmitterName);
        store.SetValue(section, L"KnownName", pos.knownPointName);
        store.SetValue(section, L"KnownOffset", kiv_formats::DoubleToString(pos.knownOffset));
    }
    return kiv_settings::writeSettingsAsIni(path, store, kiv_settings::eEncodingUtf16LE);
}

}  // namespace LumaroParams
