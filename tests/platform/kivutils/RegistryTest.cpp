// kiv_registry's helpers over a registry populated through the Win32 functions.
#include <gtest/gtest.h>

#include "platform/kivutils/Registry.h"
#include "tests/support/TestSupport.h"

namespace {
class RegistryHelpers : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;
};
const wchar_t* const kPorts = L"Software\\Microsoft\\BlueTooth\\Serial\\Ports";
}  // namespace

TEST_F(RegistryHelpers, ReadStringValueTakesStringsOnlyAndDropsTheTerminator) {
    const std::wstring path = std::wstring(kPorts) + L"\\0001";
    ASSERT_TRUE(kiv_registry::WriteStringValue(HKEY_LOCAL_MACHINE, path.c_str(), L"Port", L"COM8"));
    ASSERT_TRUE(kiv_registry::WriteDwordValue(HKEY_LOCAL_MACHINE, path.c_str(), L"Number", 8));
    CKivStringT text;
    ASSERT_TRUE(kiv_registry::ReadStringValue(HKEY_LOCAL_MACHINE, path.c_str(), L"port", text));
    EXPECT_EQ(text, CKivStringT(L"COM8"));
    EXPECT_EQ(text.GetLength(), 4);
    EXPECT_FALSE(kiv_registry::ReadStringValue(HKEY_LOCAL_MACHINE, path.c_str(), L"Number", text));
    EXPECT_FALSE(kiv_registry::ReadStringValue(HKEY_LOCAL_MACHINE, path.c_str(), L"Missing", text));
    DWORD number = 0;
    EXPECT_TRUE(kiv_registry::ReadDwordValue(HKEY_LOCAL_MACHINE, path.c_str(), L"Number", number));
    EXPECT_EQ(number, 8u);
    EXPECT_FALSE(kiv_registry::ReadDwordValue(HKEY_LOCAL_MACHINE, path.c_str(), L"Port", number));
}
