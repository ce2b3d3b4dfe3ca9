#include <gtest/gtest.h>

#include "platform/kivutils/IniFile.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"
#include "utils/settings/AppStrPaths.h"
#include "utils/settings/SettingsStore.h"

namespace {

class NurvoIniTest : public ::testing::Test {
protected:
    NurvoIniTest() {
        kiv_host::SetBaseFolders(L"", L"\\Storage Card\\Data", L"");
        CreateDirectoryW(L"\\Storage Card", nullptr);
    }
    kiv_test::TempDeviceRoot root_;
};

}  // namespace

TEST_F(NurvoIniTest, EveryTypeRoundTripsThroughTheFile) {
    ITICGlobalSettings* s = GetTICGlobalSettings();
    ASSERT_TRUE(s->WriteInt(11, -42));
    ASSERT_TRUE(s->WriteDouble(2017, 0.1 + 0.2));
    ASSERT_TRUE(s->WriteString(2026, L"10 20 300 400"));
    ASSERT_TRUE(s->WriteBool(4, true));
    EXPECT_EQ(s->ReadInt(11, 0), -42);
    EXPECT_EQ(s->ReadDouble(2017, 0), 0.1 + 0.2);
    EXPECT_EQ(s->ReadString(2026, L""), L"10 20 300 400");
    EXPECT_TRUE(s->ReadBool(4, false));
    kiv_settings::CThreeTupleStore store;
    kiv_settings::ETextEncoding encoding;
    ASSERT_TRUE(kiv_settings::readSettingsAsIni(s->GetFilePath(), store, encoding));
    EXPECT_EQ(store.GetValue(L"Settings", L"StakeIncPtBy"), L"-42");
    EXPECT_EQ(store.GetValue(L"Settings", L"EuStyle"), L"1");
}
