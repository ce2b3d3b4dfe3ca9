// Finding the Bluetooth serial ports in the registry corners of each stack, and the
// order in which the stacks are asked on each handheld model.
#include "utils/devices/BluetoothRegistry.h"

#include <algorithm>
#include <string>

#include "platform/kivutils/Platform.h"
#include "platform/kivutils/Registry.h"
#include "platform/win32/Win32.h"
#include "utils/devices/ScanText.h"
#include "utils/settings/SettingsStore.h"

namespace {

using kiv_df::ECommPort;

constexpr wchar_t kActiveDrivers[] = L"Drivers\\Active";
constexpr wchar_t kInternalDriver[] = L"Software\\KIV\\Bluetooth\\Driver";
constexpr wchar_t kInternalDriver2[] = L"Software\\KIV\\Bluetooth\\Driver1";
constexpr wchar_t kMsPorts[] = L"Software\\Microsoft\\BlueTooth\\Serial\\Ports";
// The stacks keep their values in buffers of 512 bytes: 256 characters of the device.
constexpr DWORD kValueChars = 256;

ECommPort NoPort() { return kiv_df::eCommNone; }

// "COM%d" with a number from 1 to 255; anything else is no port.
ECommPort ParsePortName(const std::wstring& text) {
    int number = 0;
    if (kiv_scan::Scan(text.c_str(), L"COM%d", {number}) != 1 || number < 1 || number > 255) return NoPort();
    return static_cast<ECommPort>(number);
}

class Key {
public:
    Key(HKEY parent, const wchar_t* path) {
        if (RegOpenKeyExW(parent, path, 0, KEY_READ, &key_) != ERROR_SUCCESS) key_ = nullptr;
    }
    explicit Key(const wchar_t* path) : Key(HKEY_LOCAL_MACHINE, path) {}
    ~Key() {
        if (key_) RegCloseKey(key_);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    explicit operator bool() const { return key_ != nullptr; }
    HKEY get() const { return key_; }

    // A value of string type that fits the stacks' buffers, without its terminator.
    bool ReadString(const wchar_t* name, std::wstring& value, DWORD* typeOut = nullptr) const {
        wchar_t buffer[kValueChars + 1] = {};
        DWORD type = REG_NONE, size = kValueChars * sizeof(wchar_t);
        if (RegQueryValueExW(key_, name, nullptr, &type, reinterpret_cast<LPBYTE>(buffer), &size) != ERROR_SUCCESS) return false;
        if (typeOut) *typeOut = type;
        if (type != REG_SZ && type != REG_EXPAND_SZ) return false;
        value.assign(buffer, size / sizeof(wchar_t));
        while (!value.empty() && value.back() == L'\0') value.pop_back();
        return true;
    }

    ECommPort ReadPort(const wchar_t* name) const {
        std::wstring text;
        return ReadString(name, text) ? ParsePortName(text) : NoPort();
    }

    // The name of subkey `index`; false when the enumeration ends.
    bool SubkeyName(DWORD index, std::wstring& name) const {
        wchar_t buffer[257];
        DWORD length = 257;
        if (RegEnumKeyExW(key_, index, buffer, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) return false;
        name.assign(buffer, length);
        return true;
    }

private:
    HKEY key_ = nullptr;
};

bool KeyExists(const wchar_t* path) { return static_cast<bool>(Key(path)); }

bool EqualNoCase(std::wstring_view a, std::wstring_view b) { return CKivStringT(a).CompareNoCase(CKivStringT(b)) == 0; }

// The active drivers whose "Key" names `target`. An entry without a readable "Key" is
// not skipped: its "Name" decides, as the driver manager of these models leaves some
// entries without one.
ECommPort ScanActiveDrivers(const wchar_t* target) {
    Key active(kActiveDrivers);
    if (!active) return NoPort();
    std::wstring name;
    for (DWORD i = 0; active.SubkeyName(i, name); ++i) {
        Key entry(active.get(), name.c_str());
        if (!entry) continue;
        std::wstring driverKey;
        DWORD type = REG_NONE;
        if (entry.ReadString(L"Key", driverKey, &type) && driverKey != target) continue;
        if (const ECommPort port = entry.ReadPort(L"Name")) return port;
    }
    return NoPort();
}

bool IsSocketCardEntry(const std::wstring& value) {
    static constexpr std::wstring_view kHead = L"Drivers\\PCMCIA\\Socket-CF+_Personal_Network_Card";
    static constexpr std::wstring_view kTail = L"\\Bluetooth COM Port";
    if (value.size() < kHead.size() + kTail.size()) return false;
    const std::wstring_view v = value;
    return EqualNoCase(v.substr(0, kHead.size()), kHead) && EqualNoCase(v.substr(v.size() - kTail.size()), kTail);
}

// Walks the active drivers from `first` and answers the "Name" of the first whose "key"
// satisfies `matches`; `found` tells whether any did.
template <class Match>
ECommPort FindActiveByKey(const Key& active, DWORD first, Match matches, bool& found) {
    std::wstring name, value;
    for (DWORD i = first; active.SubkeyName(i, name); ++i) {
        Key entry(active.get(), name.c_str());
        if (!entry || !entry.ReadString(L"key", value) || !matches(value)) continue;
        found = true;
        return entry.ReadPort(L"Name");
    }
    return NoPort();
}

ECommPort MsFallback(kiv_df::ECommPort (*stored)(), void (*store)(kiv_df::ECommPort)) {
    if (const ECommPort chosen = stored()) return chosen;
    CKivArray<ECommPort> ports;
    GetMsBtComPorts(ports);
    // Port 2 takes the lowest port too: the user picks the second one by hand.
    const ECommPort first = ports.IsEmpty() ? NoPort() : ports[0];
    store(first);
    return first;
}

bool InternalDriverPresent() {
    if (kiv_platform::IsGetac()) return KeyExists(kInternalDriver);
    return kiv_platform::IsPellan() || kiv_platform::IsMirel() || kiv_platform::IsDorsk() || kiv_platform::IsOstra();
}

ECommPort ConfigFilePort() { return GetBtConfigIniPort(L"BtConfig.ini"); }

struct PortForms {
    ECommPort (*socket)();
    ECommPort (*internal)();
    ECommPort (*stored)();
    void (*store)(ECommPort);
};

ECommPort Dispatch(const PortForms& forms) {
    if (IsNewInternalKivBluetoothAvailable()) {
        const ECommPort socket = forms.socket();
        return socket ? socket : forms.internal();
    }
    if (GetUseInternalBT()) {
        if (InternalDriverPresent())
            if (const ECommPort internal = forms.internal()) return internal;
        return kiv_platform::IsTarvoOld() ? ConfigFilePort() : NoPort();
    }
    const ECommPort socket = forms.socket();
    if (kiv_platform::IsMirel()) {
        if (socket) return socket;
        if (const ECommPort internal = forms.internal()) return internal;
        return static_cast<ECommPort>(6);  // the model's built-in serial port for its radio
    }
    return socket ? socket : MsFallback(forms.stored, forms.store);
}

}  // namespace

ECommPort GetInternalKivBluetoothComPort() { return ScanActiveDrivers(kInternalDriver); }
ECommPort GetInternalKivBluetoothComPort2() { return ScanActiveDrivers(kInternalDriver2); }
ECommPort GetBluetoothComPortForOstra() { return ScanActiveDrivers(L"Drivers\\BuiltIn\\AveBT1"); }
ECommPort GetBluetoothComPort2ForOstra() { return ScanActiveDrivers(L"Drivers\\BuiltIn\\AveBT2"); }

ECommPort GetBluetoothComPortForSocket() {
    if (!KeyExists(L"SOFTWARE\\Socket Communications\\Bluetooth\\Socket BT COM Port")) return NoPort();
    Key active(kActiveDrivers);
    if (!active) return NoPort();
    bool found = false;
    ECommPort port = FindActiveByKey(
        active, 0,
        [](const std::wstring& v) {
            return EqualNoCase(v, L"Software\\Socket Communications\\Bluetooth\\Socket BT COM Port") ||
                   EqualNoCase(v, L"Software\\Socket Communications\\Bluetooth\\Bt Device\\Bluetooth COM Port");
        },
        found);
    if (found) return port;
    // The CF card's entries: the second pass starts at index 1, so a card entry that is
    // the first active driver is not found. Kept: the card never registers first.
    return FindActiveByKey(active, 1, IsSocketCardEntry, found);
}

ECommPort GetBluetoothComPort2ForSocket() {
    if (!KeyExists(L"SOFTWARE\\Socket Communications\\Bluetooth\\Socket BT COM Port 2")) return NoPort();
    Key active(kActiveDrivers);
    if (!active) return NoPort();
    bool found = false;
    return FindActiveByKey(
        active, 0,
        [](const std::wstring& v) { return EqualNoCase(v, L"Software\\Socket Communications\\Bluetooth\\Socket BT COM Port 2"); },
        found);
}

bool GetMsBtComPorts(CKivArray<ECommPort>& ports) {
    ports.RemoveAll();
    CKivArray<CKivStringT> names;
    const bool listed = kiv_registry::EnumSections(HKEY_LOCAL_MACHINE, kMsPorts, names);
    for (const CKivStringT& name : names) {
        CKivStringT value;
        const CKivStringT path = CKivStringT(kMsPorts) + L"\\" + name;
        if (!kiv_registry::ReadStringValue(HKEY_LOCAL_MACHINE, path, L"Port", value)) continue;
        if (const ECommPort port = ParsePortName(value.str())) ports.Add(port);
    }
    std::sort(ports.begin(), ports.end());
    return listed;
}

ECommPort GetBluetoothComPortForIpaq() {
    DWORD value = 0;
    if (kiv_registry::ReadDwordValue(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Compaq\\BtConfig", L"AutostartRadio", value) && value == 1)
        return NoPort();
    if (!kiv_registry::ReadDwordValue(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Widcomm\\BtConfig\\General", L"StackMode", value) ||
        value != 1)
        return NoPort();
    CKivStringT application;
    DWORD number = 0;
    const wchar_t* serialApp = L"SOFTWARE\\Widcomm\\BtConfig\\Applications\\0001";
    if (kiv_registry::ReadStringValue(HKEY_LOCAL_MACHINE, serialApp, L"Name", application) &&
        application == L"Generic Serial" &&
        kiv_registry::ReadDwordValue(HKEY_LOCAL_MACHINE, serialApp, L"ComPortNumber", number) && number != 0)
        return static_cast<ECommPort>(number);
    if (KeyExists(L"Drivers\\BuiltIn\\Serial8")) return static_cast<ECommPort>(8);
    if (KeyExists(L"Drivers\\BuiltIn\\Serial6")) return static_cast<ECommPort>(6);
    return NoPort();
}

ECommPort GetBluetoothComPort() {
    return Dispatch({GetBluetoothComPortForSocket, GetInternalKivBluetoothComPort, GetSelectedBluetoothPort,
                     SetSelectedBluetoothPort});
}

ECommPort GetBluetoothComPort2() {
    return Dispatch({GetBluetoothComPort2ForSocket, GetInternalKivBluetoothComPort2, GetSelectedBluetoothPort2,
                     SetSelectedBluetoothPort2});
}

// Each call probes afresh: a stack may have come or gone since the last screen.
ECommPort GetBluetoothComPortSelected() {
    const ECommPort chosen = GetSelectedBluetoothPort();
    if (chosen && (chosen == GetBluetoothComPort() || chosen == GetBluetoothComPort2())) return chosen;
    const ECommPort first = GetBluetoothComPort();
    return first ? first : GetBluetoothComPort2();
}

ECommPort GetBluetoothComPort2Selected() {
    const ECommPort chosen = GetSelectedBluetoothPort2();
    if (chosen && (chosen == GetBluetoothComPort2() || chosen == GetBluetoothComPort())) return chosen;
    const ECommPort second = GetBluetoothComPort2();
    return second ? second : GetBluetoothComPort();
}

bool IsNewInternalKivBluetoothAvailable() { return InternalDriverPresent() && GetInternalKivBluetoothComPort() != 0; }

bool IsInternalKivBluetoothAvailable() {
    return IsNewInternalKivBluetoothAvailable() || (kiv_platform::IsTarvoOld() && ConfigFilePort() != 0);
}

bool IsInternalKivBluetoothInstalled() {
    return (InternalDriverPresent() && KeyExists(kInternalDriver)) || (kiv_platform::IsTarvoOld() && ConfigFilePort() != 0);
}

bool IsSocketBluetoothAvailable() { return GetBluetoothComPortForSocket() != 0; }

bool isMsBtManagerAvailable() {
    if (IsInternalKivBluetoothInstalled()) return false;
    CKivArray<ECommPort> ports;
    GetMsBtComPorts(ports);
    return !ports.IsEmpty();
}
