// Bluetooth port discovery over registries built through the Win32 registry functions
// and imported from a .reg file, on the handheld models that change the dispatch.
#include "utils/devices/BluetoothRegistry.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"
#include "utils/settings/SettingsStore.h"

namespace {

using kiv_host::EModel;

void SetString(const wchar_t* path, const wchar_t* name, const std::wstring& value) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr), ERROR_SUCCESS);
    const DWORD bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    ASSERT_EQ(RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()), bytes), ERROR_SUCCESS);
    RegCloseKey(key);
}

void SetDword(const wchar_t* path, const wchar_t* name, DWORD value) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr), ERROR_SUCCESS);
    ASSERT_EQ(RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value), ERROR_SUCCESS);
    RegCloseKey(key);
}

void CreateKey(const wchar_t* path) { SetDword(path, L"Index", 1); }

// An entry of "Drivers\Active" for a driver's registry key and its port name.
void ActiveDriver(const std::wstring& entry, const wchar_t* keyName, const wchar_t* driverKey, const wchar_t* port) {
    const std::wstring path = L"Drivers\\Active\\" + entry;
    if (driverKey) SetString(path.c_str(), keyName, driverKey);
    SetString(path.c_str(), L"Name", port);
}

void MsPort(const wchar_t* device, const wchar_t* port) {
    SetString((std::wstring(L"Software\\Microsoft\\BlueTooth\\Serial\\Ports\\") + device).c_str(), L"Port", port);
}

constexpr wchar_t kSocketInstalled[] = L"SOFTWARE\\Socket Communications\\Bluetooth\\Socket BT COM Port";
constexpr wchar_t kSocketKey[] = L"Software\\Socket Communications\\Bluetooth\\Socket BT COM Port";
constexpr wchar_t kCardKey[] = L"Drivers\\PCMCIA\\Socket-CF+_Personal_Network_Card_1\\Bluetooth COM Port";

class Bluetooth : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;
};

}  // namespace

TEST_F(Bluetooth, MicrosoftStackGivesTheLowestPortToBothAndStoresIt) {
    MsPort(L"00126f0a1b2c", L"COM8");
    MsPort(L"00126f0a1b2d", L"COM5");
    MsPort(L"00126f0a1b2e", L"COM0");
    MsPort(L"00126f0a1b2f", L"LPT1");
    CKivArray<kiv_df::ECommPort> ports;
    ASSERT_TRUE(GetMsBtComPorts(ports));
    ASSERT_EQ(ports.GetSize(), 2);
    EXPECT_EQ(ports[0], 5);
    EXPECT_EQ(ports[1], 8);
    EXPECT_EQ(GetBluetoothComPort(), 5);
    EXPECT_EQ(GetBluetoothComPort2(), 5);
    EXPECT_EQ(GetSelectedBluetoothPort(), 5);
    EXPECT_EQ(GetSelectedBluetoothPort2(), 5);
    EXPECT_TRUE(isMsBtManagerAvailable());
    // A stored choice is what the fallback answers from then on.
    SetSelectedBluetoothPort(static_cast<kiv_df::ECommPort>(8));
    EXPECT_EQ(GetBluetoothComPort(), 8);
}

TEST_F(Bluetooth, ActiveDriverScanTakesTheFirstValidPortOfItsKey) {
    kiv_host::SetModel(EModel::Pellan);
    ActiveDriver(L"01", L"Key", L"Software\\KIV\\Bluetooth\\Driver", L"COM0");
    ActiveDriver(L"02", L"Key", L"Software\\KIV\\Bluetooth\\Driver", L"COM256");
    ActiveDriver(L"03", L"Key", L"Drivers\\BuiltIn\\Serial", L"COM1");
    ActiveDriver(L"04", L"Key", L"software\\kiv\\bluetooth\\driver", L"COM2");  // the key is matched as written
    ActiveDriver(L"05", L"Key", L"Software\\KIV\\Bluetooth\\Driver1", L"COM9");
    ActiveDriver(L"06", L"Key", L"Software\\KIV\\Bluetooth\\Driver", L"COM7");
    EXPECT_EQ(GetInternalKivBluetoothComPort(), 7);
    EXPECT_EQ(GetInternalKivBluetoothComPort2(), 9);
    EXPECT_TRUE(IsNewInternalKivBluetoothAvailable());
    EXPECT_EQ(GetBluetoothComPort(), 7);  // no Socket stack: the internal driver
    EXPECT_EQ(GetBluetoothComPort2(), 9);
    // An entry without "Key" is not passed over: its name decides for every target.
    ActiveDriver(L"00", L"Key", nullptr, L"COM3");
    EXPECT_EQ(GetBluetoothComPortForOstra(), 3);
}

TEST_F(Bluetooth, SocketStackFirstPassThenCardEntriesFromIndexOne) {
    ActiveDriver(L"card", L"key", kCardKey, L"COM4");
    ActiveDriver(L"other", L"key", L"Drivers\\Serial", L"COM1");
    EXPECT_EQ(GetBluetoothComPortForSocket(), 0);  // stack not installed
    CreateKey(kSocketInstalled);
    // The card's entry is the first active driver: the second pass starts past it.
    EXPECT_EQ(GetBluetoothComPortForSocket(), 0);
    EXPECT_FALSE(IsSocketBluetoothAvailable());
    ActiveDriver(L"card2", L"key", L"drivers\\pcmcia\\SOCKET-CF+_PERSONAL_NETWORK_CARD\\bluetooth com port", L"COM6");
    EXPECT_EQ(GetBluetoothComPortForSocket(), 6);
    // A first-pass match wins wherever it stands.
    ActiveDriver(L"stack", L"key", L"SOFTWARE\\SOCKET COMMUNICATIONS\\BLUETOOTH\\SOCKET BT COM PORT", L"COM11");
    EXPECT_EQ(GetBluetoothComPortForSocket(), 11);
    EXPECT_EQ(GetBluetoothComPort(), 11);
    EXPECT_EQ(GetBluetoothComPort2ForSocket(), 0);
    CreateKey(L"SOFTWARE\\Socket Communications\\Bluetooth\\Socket BT COM Port 2");
    ActiveDriver(L"stack2", L"key", L"Software\\Socket Communications\\Bluetooth\\Socket BT COM Port 2", L"COM12");
    EXPECT_EQ(GetBluetoothComPort2(), 12);
}

TEST_F(Bluetooth, DispatchByModel) {
    // The radio model without any stack falls back to its fixed port.
    kiv_host::SetModel(EModel::Mirel);
    EXPECT_EQ(GetBluetoothComPort(), 6);
    EXPECT_EQ(GetBluetoothComPort2(), 6);
    // A Getac has the internal driver only when its key exists.
    kiv_host::SetModel(EModel::Getac);
    ActiveDriver(L"bt", L"Key", L"Software\\KIV\\Bluetooth\\Driver", L"COM3");
    MsPort(L"dev", L"COM5");
    EXPECT_FALSE(IsNewInternalKivBluetoothAvailable());
    EXPECT_EQ(GetBluetoothComPort(), 5);
    EXPECT_TRUE(isMsBtManagerAvailable());
    CreateKey(L"Software\\KIV\\Bluetooth\\Driver");
    EXPECT_TRUE(IsInternalKivBluetoothInstalled());
    EXPECT_FALSE(isMsBtManagerAvailable());
    EXPECT_EQ(GetBluetoothComPort(), 3);
    // Using the internal Bluetooth on a model without it gives no port at all.
    kiv_host::SetModel(EModel::Unknown);
    SetUseInternalBT(true);
    EXPECT_EQ(GetBluetoothComPort(), 0);
}

TEST_F(Bluetooth, SelectedPortMustStillBeFound) {
    MsPort(L"dev", L"COM5");
    SetSelectedBluetoothPort(static_cast<kiv_df::ECommPort>(9));
    // 9 is stored, so the fallback answers 9 and the choice still holds.
    EXPECT_EQ(GetBluetoothComPortSelected(), 9);
    // On the radio model the ports are found, not stored: a stale choice gives way.
    kiv_host::SetModel(EModel::Mirel);
    EXPECT_EQ(GetBluetoothComPortSelected(), 6);
    SetSelectedBluetoothPort2(static_cast<kiv_df::ECommPort>(6));
    EXPECT_EQ(GetBluetoothComPort2Selected(), 6);
    SetSelectedBluetoothPort2(static_cast<kiv_df::ECommPort>(2));
    EXPECT_EQ(GetBluetoothComPort2Selected(), 6);
}

TEST_F(Bluetooth, IpaqWidcommProbe) {
    EXPECT_EQ(GetBluetoothComPortForIpaq(), 0);
    SetDword(L"SOFTWARE\\Widcomm\\BtConfig\\General", L"StackMode", 1);
    SetString(L"SOFTWARE\\Widcomm\\BtConfig\\Applications\\0001", L"Name", L"Generic Serial");
    SetDword(L"SOFTWARE\\Widcomm\\BtConfig\\Applications\\0001", L"ComPortNumber", 7);
    EXPECT_EQ(GetBluetoothComPortForIpaq(), 7);
    SetString(L"SOFTWARE\\Widcomm\\BtConfig\\Applications\\0001", L"Name", L"generic serial");
    EXPECT_EQ(GetBluetoothComPortForIpaq(), 0);
    CreateKey(L"Drivers\\BuiltIn\\Serial6");
    EXPECT_EQ(GetBluetoothComPortForIpaq(), 6);
    CreateKey(L"Drivers\\BuiltIn\\Serial8");
    EXPECT_EQ(GetBluetoothComPortForIpaq(), 8);
    SetDword(L"SOFTWARE\\Compaq\\BtConfig", L"AutostartRadio", 1);
    EXPECT_EQ(GetBluetoothComPortForIpaq(), 0);
}

TEST_F(Bluetooth, DispatchOnARegFile) {
    const std::string reg = root.path() + "/stacks.reg";
    kiv_test::WriteFileBytes(reg,
                             "REGEDIT4\r\n\r\n"
                             "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\BlueTooth\\Serial\\Ports\\a]\r\n"
                             "\"Port\"=\"COM14\"\r\n\r\n"
                             "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\BlueTooth\\Serial\\Ports\\b]\r\n"
                             "\"Port\"=\"COM13\"\r\n\r\n"
                             "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Socket Communications\\Bluetooth\\Socket BT COM Port 2]\r\n\r\n"
                             "[HKEY_LOCAL_MACHINE\\Drivers\\Active\\12]\r\n"
                             "\"key\"=\"Software\\\\Socket Communications\\\\Bluetooth\\\\Socket BT COM Port 2\"\r\n"
                             "\"Name\"=\"COM10:\"\r\n");
    ASSERT_TRUE(kiv_host::ImportRegistry(reg));
    EXPECT_EQ(GetBluetoothComPort(), 13);
    EXPECT_EQ(GetBluetoothComPort2(), 10);
}

namespace {

std::string Record(const std::string& text) {
    const uint32_t n = static_cast<uint32_t>(text.size());
    std::string bytes{static_cast<char>(n), static_cast<char>(n >> 8), static_cast<char>(n >> 16), static_cast<char>(n >> 24)};
    return bytes + text;
}

std::string ConfigFile(const std::string& device, const std::string& port) {
    return Record(device) + Record("Headset") + std::string("\x02\0\0\0", 4) + Record(port);
}

}  // namespace

TEST_F(Bluetooth, ConfigurationFileOfTheOlderModel) {
    const std::string path = root.path() + "/BtConfig.ini";
    const std::wstring wide(path.begin(), path.end());
    auto portOf = [&](const std::string& bytes) {
        kiv_test::WriteFileBytes(path, bytes);
        return static_cast<int>(GetBtConfigIniPort(wide.c_str()));
    };
    EXPECT_EQ(portOf(ConfigFile("GPS 1", "COM1:")), 1);
    EXPECT_EQ(portOf(ConfigFile("GPS 1", "com2:")), 2);
    EXPECT_EQ(portOf(ConfigFile("GPS 1", "COM3:")), 0);
    EXPECT_EQ(portOf(ConfigFile("n/a", "COM1:")), 0);
    EXPECT_EQ(portOf(ConfigFile("", "COM1:")), 0);
    EXPECT_EQ(portOf(ConfigFile(std::string(5000, 'x'), "COM2:")), 2);
    std::string overlong = ConfigFile("GPS 1", "COM1:");
    overlong[overlong.size() - 9] = '\x06';  // the port record claims one byte more than there is
    EXPECT_EQ(portOf(overlong), 0);
    EXPECT_EQ(portOf(std::string("\xFF\xFF\xFF\x7F", 4)), 0);
    EXPECT_EQ(portOf(""), 0);

    // The dispatch reads "BtConfig.ini" by its relative name on the older model.
    kiv_host::SetModel(EModel::TarvoOld);
    SetUseInternalBT(true);
    kiv_test::WriteFileBytes(path, ConfigFile("GPS 1", "COM2:"));
    char previous[4096];
    ASSERT_NE(::getcwd(previous, sizeof previous), nullptr);
    ASSERT_EQ(::chdir(root.path().c_str()), 0);
    const int port = GetBluetoothComPort();
    const bool available = IsInternalKivBluetoothAvailable();
    ASSERT_EQ(::chdir(previous), 0);
    EXPECT_EQ(port, 2);
    EXPECT_TRUE(available);
}
