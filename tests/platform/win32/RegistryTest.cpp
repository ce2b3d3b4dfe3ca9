// The registry through the Reg* functions, and its .reg files through kiv_host.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwctype>
#include <filesystem>
#include <vector>

#include "platform/host/TextCodec.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

class Registry : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;

    static HKEY Create(HKEY parent, const wchar_t* path) {
        HKEY key = nullptr;
        EXPECT_EQ(RegCreateKeyExW(parent, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr), ERROR_SUCCESS);
        return key;
    }
    static void SetString(HKEY key, const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ) {
        ASSERT_EQ(RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(text.c_str()),
                                 static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }
    static void SetDword(HKEY key, const wchar_t* name, DWORD value) {
        ASSERT_EQ(RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), 4), ERROR_SUCCESS);
    }
    // The value at root\path\name as the host stores it, or "<missing>".
    static std::wstring ReadString(HKEY root, const wchar_t* path, const wchar_t* name, DWORD* type = nullptr) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(root, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return L"<missing>";
        wchar_t buffer[256] = {};
        DWORD size = sizeof(buffer);
        const LONG status = RegQueryValueExW(key, name, nullptr, type, reinterpret_cast<BYTE*>(buffer), &size);
        RegCloseKey(key);
        if (status != ERROR_SUCCESS) return L"<missing>";
        return std::wstring(buffer, size / sizeof(wchar_t));
    }
    static std::vector<BYTE> ReadBytes(HKEY root, const wchar_t* path, const wchar_t* name, DWORD* type = nullptr) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(root, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return {};
        DWORD size = 0;
        RegQueryValueExW(key, name, nullptr, type, nullptr, &size);
        std::vector<BYTE> bytes(size);
        RegQueryValueExW(key, name, nullptr, type, bytes.data(), &size);
        RegCloseKey(key);
        return bytes;
    }
    static std::vector<std::wstring> SubkeyNames(HKEY root, const wchar_t* path) {
        HKEY key = nullptr;
        std::vector<std::wstring> names;
        if (RegOpenKeyExW(root, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return names;
        wchar_t name[256];
        for (DWORD i = 0;; ++i) {
            DWORD length = 256;
            if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
            names.emplace_back(name, length);
        }
        RegCloseKey(key);
        return names;
    }
    static std::string Utf16File(const std::wstring& text) { return "\xFF\xFE" + kiv_text::ToUtf16Le(text); }
};

}  // namespace

// ---- keys and values --------------------------------------------------------------------------

TEST_F(Registry, QueryFollowsTheSizeProtocol) {
    HKEY key = Create(HKEY_LOCAL_MACHINE, L"Drivers\\Active\\12");
    SetString(key, L"Name", L"COM5:");
    const DWORD needed = 6 * sizeof(wchar_t);

    DWORD size = 0, type = 0;
    EXPECT_EQ(RegQueryValueExW(key, L"Name", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, needed);
    EXPECT_EQ(type, REG_SZ);

    wchar_t small[3] = {L'x', L'x', L'x'};
    size = sizeof(small);
    EXPECT_EQ(RegQueryValueExW(key, L"Name", nullptr, nullptr, reinterpret_cast<BYTE*>(small), &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, needed);

    wchar_t exact[6];
    size = sizeof(exact);
    EXPECT_EQ(RegQueryValueExW(key, L"Name", nullptr, nullptr, reinterpret_cast<BYTE*>(exact), &size), ERROR_SUCCESS);
    EXPECT_STREQ(exact, L"COM5:");
    EXPECT_EQ(RegQueryValueExW(key, L"Port", nullptr, nullptr, nullptr, &size), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegQueryValueExW(key, L"Name", nullptr, nullptr, reinterpret_cast<BYTE*>(exact), nullptr),
              ERROR_INVALID_PARAMETER);

    wchar_t shortName[3];
    DWORD length = 3;
    EXPECT_EQ(RegEnumKeyExW(HKEY_LOCAL_MACHINE, 0, shortName, &length, nullptr, nullptr, nullptr, nullptr),
              ERROR_MORE_DATA);  // "Drivers" needs 8 characters
    RegCloseKey(key);
}

TEST_F(Registry, DeletingAKeyTakesItsSubtreeAndLeavesOpenHandlesFailing) {
    HKEY port = Create(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\BlueTooth\\Serial\\Ports\\0001");
    SetString(port, L"Port", L"COM8");
    EXPECT_EQ(RegDeleteKeyW(HKEY_LOCAL_MACHINE, L"software\\microsoft\\bluetooth"), ERROR_SUCCESS);
    EXPECT_EQ(SubkeyNames(HKEY_LOCAL_MACHINE, L"Software\\Microsoft"), std::vector<std::wstring>{});
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueExW(port, L"Port", nullptr, nullptr, nullptr, &size), ERROR_KEY_DELETED);
    EXPECT_EQ(RegCloseKey(port), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\BlueTooth"), ERROR_FILE_NOT_FOUND);

    HKEY key = Create(HKEY_LOCAL_MACHINE, L"Software");
    SetDword(key, L"Gone", 1);
    EXPECT_EQ(RegDeleteValueW(key, L"GONE"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(key, L"Gone"), ERROR_FILE_NOT_FOUND);
    // A path of no names would be the key itself, which a key does not delete.
    for (HKEY from : {HKEY_LOCAL_MACHINE, key})
        for (const wchar_t* path : {L"\\", L""}) EXPECT_EQ(RegDeleteKeyW(from, path), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SubkeyNames(HKEY_LOCAL_MACHINE, L""), std::vector<std::wstring>{L"Software"});
    RegCloseKey(key);
}

#ifndef _WIN32
// On Windows the depth counts from the hive's own root, above the keys the tests are
// given (see kiv_host::ResetForTesting), so this is pinned on the Linux host only.
TEST_F(Registry, KeysNestAtMostFiveHundredTwelveLevelsBelowTheirRoot) {
    std::wstring path = L"L";
    for (size_t depth = 1; depth < 512; ++depth) path += L"\\L";
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, (path + L"\\L").c_str(), 0, nullptr, 0, 0, nullptr, &key, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SubkeyNames(HKEY_LOCAL_MACHINE, L""), std::vector<std::wstring>{});  // nothing made on the way
    HKEY deepest = Create(HKEY_LOCAL_MACHINE, path.c_str());
    ASSERT_NE(deepest, nullptr);
    SetDword(deepest, L"Depth", 512);
    // The depth counts from the root, not from the handle a path starts at.
    HKEY middle = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.substr(0, 2 * 256 - 1).c_str(), 0, 0, &middle), ERROR_SUCCESS);
    EXPECT_EQ(RegCreateKeyExW(deepest, L"M", 0, nullptr, 0, 0, nullptr, &key, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegCreateKeyExW(middle, (path.substr(0, 2 * 256) + L"M").c_str(), 0, nullptr, 0, 0, nullptr, &key,
                              nullptr),
              ERROR_INVALID_PARAMETER);
    RegCloseKey(Create(middle, path.substr(0, 2 * 256 - 1).c_str()));
    RegCloseKey(middle);
    RegCloseKey(deepest);
}
#endif

// ---- .reg files ---------------------------------------------------------------------------------------

TEST_F(Registry, ExportAndImportRoundTripEveryValueKind) {
    HKEY key = Create(HKEY_LOCAL_MACHINE, L"Software\\KIV\\Bluetooth\\Driver");
    SetString(key, nullptr, L"default");
    SetString(key, L"Quote \"and\" back\\slash", L"C:\\dir\\ \"x\"");
    SetString(key, L"Path", L"%ROOT%\\Zeb", REG_EXPAND_SZ);
    const wchar_t multi[] = L"one\0two\0\0";
    ASSERT_EQ(RegSetValueExW(key, L"List", 0, REG_MULTI_SZ, reinterpret_cast<const BYTE*>(multi), sizeof(multi)),
              ERROR_SUCCESS);
    SetDword(key, L"Count", 0xDEADBEEF);
    std::vector<BYTE> blob(200);
    for (size_t i = 0; i < blob.size(); ++i) blob[i] = static_cast<BYTE>(i * 7);
    ASSERT_EQ(RegSetValueExW(key, L"Blob", 0, REG_BINARY, blob.data(), static_cast<DWORD>(blob.size())), ERROR_SUCCESS);
    SetString(key, L"Ümlaut €", L"Grüße 😀");
    RegCloseKey(key);
    RegCloseKey(Create(HKEY_CURRENT_USER, L"Empty\\Leaf"));

    const std::string file = root.path() + "/saved.reg";
    ASSERT_TRUE(kiv_host::ExportRegistry(file));
    const std::string bytes = kiv_test::ReadFileBytes(file);
    ASSERT_GE(bytes.size(), 2u);
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
    EXPECT_EQ(kiv_text::FromUtf16Le(bytes.substr(2)).rfind(L"Windows Registry Editor Version 5.00\r\n", 0), 0u);

    kiv_host::ResetForTesting();
    kiv_host::SetDeviceRoot(root.path());
    std::wstring error;
    ASSERT_TRUE(kiv_host::ImportRegistry(file, &error)) << kiv_text::ToUtf8(error);
    const wchar_t* path = L"Software\\KIV\\Bluetooth\\Driver";
    EXPECT_EQ(ReadString(HKEY_LOCAL_MACHINE, path, L""), std::wstring(L"default", 8));
    EXPECT_EQ(ReadString(HKEY_LOCAL_MACHINE, path, L"Quote \"and\" back\\slash"), std::wstring(L"C:\\dir\\ \"x\"", 12));
    DWORD type = 0;
    EXPECT_EQ(ReadString(HKEY_LOCAL_MACHINE, path, L"Path", &type), std::wstring(L"%ROOT%\\Zeb", 11));
    EXPECT_EQ(type, REG_EXPAND_SZ);
    EXPECT_EQ(ReadString(HKEY_LOCAL_MACHINE, path, L"List", &type), std::wstring(multi, std::size(multi)));
    EXPECT_EQ(type, REG_MULTI_SZ);
    EXPECT_EQ(ReadBytes(HKEY_LOCAL_MACHINE, path, L"Count", &type), (std::vector<BYTE>{0xEF, 0xBE, 0xAD, 0xDE}));
    EXPECT_EQ(type, REG_DWORD);
    EXPECT_EQ(ReadBytes(HKEY_LOCAL_MACHINE, path, L"Blob", &type), blob);
    EXPECT_EQ(type, REG_BINARY);
    // The emoji is one wide character on Linux and a surrogate pair on Windows.
    EXPECT_EQ(ReadString(HKEY_LOCAL_MACHINE, path, L"ümlaut €"), std::wstring(L"Grüße 😀", std::size(L"Grüße 😀")));
    EXPECT_EQ(SubkeyNames(HKEY_CURRENT_USER, L"Empty"), std::vector<std::wstring>{L"Leaf"});
    // A second export of the imported registry is byte for byte the first.
    ASSERT_TRUE(kiv_host::ExportRegistry(file + "2"));
    EXPECT_EQ(kiv_test::ReadFileBytes(file + "2"), bytes);
}

TEST_F(Registry, ImportsAFileAsTheDesktopRegistryEditorWritesIt) {
    // As the desktop editor exports: UTF-16LE with BOM, CR LF, wrapped hex lists.
    const std::wstring text =
        L"Windows Registry Editor Version 5.00\r\n"
        L"\r\n"
        L"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Widcomm\\BtConfig\\General]\r\n"
        L"\"StackMode\"=dword:00000001\r\n"
        L"\r\n"
        L"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Widcomm\\BtConfig\\Applications\\0001]\r\n"
        L"\"Name\"=\"Generic Serial\"\r\n"
        L"\"ComPortNumber\"=dword:00000008\r\n"
        L"\"Expand\"=hex(2):25,00,52,00,4f,00,4f,00,54,00,25,00,5c,00,78,00,00,00\r\n"
        L"\"Multi\"=hex(7):61,00,00,00,62,00,63,00,00,00,00,00\r\n"
        L"\"Long\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\\\r\n"
        L"  16,17,18,19,1a,1b,1c,1d\r\n"
        L"\r\n"
        L"[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Compaq]\r\n"
        L"\r\n"
        L"[HKEY_CURRENT_USER\\Software\\KIV]\r\n"
        L"\"Gone\"=-\r\n"
        L"@=\"Default\"\r\n";
    RegCloseKey(Create(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Compaq\\BtConfig"));
    HKEY kiv = Create(HKEY_CURRENT_USER, L"Software\\KIV");
    SetDword(kiv, L"Gone", 1);
    RegCloseKey(kiv);
    const std::string file = root.HostPath(L"\\Windows\\bt.reg");
    std::filesystem::create_directories(root.path() + "/Windows");
    kiv_test::WriteFileBytes(file, Utf16File(text));

    std::wstring error;
    ASSERT_TRUE(kiv_host::ImportRegistry("\\windows\\BT.reg", &error)) << kiv_text::ToUtf8(error);
    const wchar_t* app = L"SOFTWARE\\Widcomm\\BtConfig\\Applications\\0001";
    EXPECT_EQ(ReadBytes(HKEY_LOCAL_MACHINE, L"Software\\Widcomm\\BtConfig\\General", L"StackMode"),
              (std::vector<BYTE>{1, 0, 0, 0}));
    EXPECT_EQ(ReadString(HKEY_LOCAL_MACHINE, app, L"Name"), std::wstring(L"Generic Serial", 15));
    EXPECT_EQ(ReadString(HKEY_LOCAL_MACHINE, app, L"Expand"), std::wstring(L"%ROOT%\\x", 9));
    EXPECT_EQ(ReadString(HKEY_LOCAL_MACHINE, app, L"Multi"), std::wstring(L"a\0bc\0\0", 6));
    EXPECT_EQ(ReadBytes(HKEY_LOCAL_MACHINE, app, L"Long").size(), 30u);
    EXPECT_EQ(SubkeyNames(HKEY_LOCAL_MACHINE, L"SOFTWARE"), (std::vector<std::wstring>{L"Widcomm"}));
    EXPECT_EQ(ReadString(HKEY_CURRENT_USER, L"Software\\KIV", L"Gone"), L"<missing>");
    EXPECT_EQ(ReadString(HKEY_CURRENT_USER, L"Software\\KIV", nullptr), std::wstring(L"Default", 8));
}

TEST_F(Registry, MalformedLineIsReportedByNumberAndChangesNothingAndMissingOrUnwritableFilesFail) {
    HKEY key = Create(HKEY_LOCAL_MACHINE, L"Kept");
    SetDword(key, L"Value", 1);
    RegCloseKey(key);
    const std::string file = root.path() + "/bad.reg";
    const struct {
        const wchar_t* text;
        const wchar_t* line;
    } cases[] = {
        {L"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Kept]\r\n\"Value\"=dword:2\r\n"
         L"[HKEY_LOCAL_MACHINE\\New]\r\n\"x\"=dword:123456789\r\n",
         L"line 6:"},
        {L"Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\Kept]\r\n\"Value\"=hex:01,2g\r\n", L"line 3:"},
        {L"Windows Registry Editor Version 5.00\r\n\"Value\"=dword:00000002\r\n", L"line 2:"},
        {L"Windows Registry Editor Version 5.00\r\n[HKEY_NOWHERE\\Kept]\r\n", L"line 2:"},
        {L"Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\Kept]\r\n\"Value\"=\"open\r\n", L"line 3:"},
        {L"Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\Kept]\r\n\"Value\"=hex:01,\\\r\n  zz\r\n", L"line 4:"},
        {L"Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\Kept]\r\n\"Value\"=hex:01, \\\r\n  02,\\\r\n"
         L"\r\n 03,0x\r\n",
         L"line 6:"},
        {L"Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\Kept\r\n", L"line 2:"},
        {L"\r\nRegistry file\r\n", L"line 2:"},
    };
    for (const auto& c : cases) {
        kiv_test::WriteFileBytes(file, Utf16File(c.text));
        std::wstring error;
        kiv_test::LogCapture log;
        EXPECT_FALSE(kiv_host::ImportRegistry(file, &error)) << kiv_text::ToUtf8(c.text);
        EXPECT_EQ(error.rfind(c.line, 0), 0u) << kiv_text::ToUtf8(error);
        EXPECT_EQ(log.count(), 1u);
        EXPECT_EQ(ReadBytes(HKEY_LOCAL_MACHINE, L"Kept", L"Value"), (std::vector<BYTE>{1, 0, 0, 0}));
        EXPECT_EQ(SubkeyNames(HKEY_LOCAL_MACHINE, L""), std::vector<std::wstring>{L"Kept"});
    }
    std::wstring error;
    EXPECT_FALSE(kiv_host::ImportRegistry(root.path() + "/missing.reg", &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(kiv_host::ExportRegistry(root.path() + "/no/such/folder/x.reg"));
}
