#include "utils/settings/AppStrPaths.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/kivutils/FileFuncs.h"
#include "platform/kivutils/IniFile.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

using namespace AppStrPaths;

namespace {

class AppPathsTest : public ::testing::Test {
protected:
    AppPathsTest() {
        kiv_host::SetBaseFolders(L"\\Program Files\\Zeb", L"\\Storage Card\\Data", L"\\My Documents\\Zeb");
        CreateDirectoryW(L"\\Storage Card", nullptr);  // the card's volume is always there on a device
    }
    kiv_test::TempDeviceRoot root_;
};

}  // namespace

TEST_F(AppPathsTest, ComposedPathsStartFromTheirBaseFolder) {
    EXPECT_EQ(GetPreDefinedAntennaFilePath(), L"\\Program Files\\Zeb\\antennas\\antenna_db.xml");
    EXPECT_EQ(GetStylesDBPathName(), L"\\Storage Card\\Data\\Styles.tsstyles");
    EXPECT_EQ(GetDefaultJobDBPath(), L"\\My Documents\\Zeb\\Jobs\\Default.tsj");
    EXPECT_EQ(AppStrXForm::GetTsGeoFolder(), L"\\Program Files\\Zeb\\Geo\\");
    CKivStringT first, second;
    GetLanguageFileNames(first, second);
    EXPECT_EQ(first, L"Zeb.lng");
    EXPECT_EQ(second, L"unZeb.lng");
}

TEST_F(AppPathsTest, RememberedFoldersFallBackAndStoringOneCategoryKeepsTheOthers) {
    EXPECT_EQ(GetLastImageDataPath(), L"\\My Documents\\Zeb\\Images");
    ASSERT_TRUE(StoreTN3FilePath(L"\\Storage Card\\Surfaces\\site.tn3"));
    ASSERT_TRUE(StoreCameraDataPath(L"\\Storage Card\\Cam\\c.cmr"));
    ASSERT_TRUE(StoreTN3FilePath(L"\\Storage Card\\Other\\b.tn3"));
    EXPECT_EQ(GetLastTN3FilePath(), L"\\Storage Card\\Other");
    EXPECT_EQ(GetLastCameraDataPath(), L"\\Storage Card\\Cam");
    kiv_settings::CThreeTupleStore store;
    kiv_settings::ETextEncoding encoding;
    ASSERT_TRUE(kiv_settings::readSettingsAsIni(L"\\Storage Card\\Data\\FileSettings\\LastSelectedFilePaths.ini", store,
                                                encoding));
    EXPECT_EQ(encoding, kiv_settings::eEncodingUtf16LE);
    EXPECT_EQ(store.GetValue(L"LAST_SELECTED_FILE_PATH", L"DTM"), L"\\Storage Card\\Other");
    EXPECT_EQ(store.GetKeyCount(0), 2);
}

TEST_F(AppPathsTest, UnreadableRememberedFoldersFileIsLeftAlone) {
    ASSERT_TRUE(StoreTN3FilePath(L"\\Storage Card\\Surfaces\\site.tn3"));
    const std::string host = root_.HostPath(L"\\Storage Card\\Data\\FileSettings\\LastSelectedFilePaths.ini");
    const auto tooLarge = static_cast<std::uintmax_t>(kiv_settings::kMaxIniFileBytes) + 1;
    std::filesystem::resize_file(host, tooLarge);
    EXPECT_FALSE(StoreImageDataPath(L"\\Storage Card\\Pics\\a.jpg"));  // exists but is too large to read
    EXPECT_EQ(std::filesystem::file_size(host), tooLarge);
    EXPECT_EQ(GetLastImageDataPath(), L"\\My Documents\\Zeb\\Images");
}
