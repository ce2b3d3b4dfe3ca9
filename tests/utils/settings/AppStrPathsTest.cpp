// Application names and folders: composed paths over the base folders, the hidden
// user-settings folder at the top of the data root's volume, the remembered folders in
// "LastSelectedFilePaths.ini", and the file-kind tests.
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
    EXPECT_EQ(GetLngFilePath(), L"\\Program Files\\Zeb\\Lng");
    EXPECT_EQ(GetPreDefinedAntennaFilePath(), L"\\Program Files\\Zeb\\antennas\\antenna_db.xml");
    EXPECT_EQ(GetUserDefinedAntennaFilePath(), L"\\Storage Card\\Data\\antennas\\userdefined");
    EXPECT_EQ(GetKivDataPath(), L"\\Program Files\\Zeb");
    EXPECT_EQ(GetStylesDBPathName(), L"\\Storage Card\\Data\\Styles.tsstyles");
    EXPECT_EQ(GetSQLCEStylesDbPathName(), L"\\Storage Card\\Data\\Styles.tss");
    EXPECT_EQ(GetIESettingsPath(), L"\\Storage Card\\Data\\FileSettings");
    EXPECT_EQ(GetDefaultJobDBPath(), L"\\My Documents\\Zeb\\Jobs\\Default.tsj");
    EXPECT_EQ(AppStrXForm::GetTsGeoFolder(), L"\\Program Files\\Zeb\\Geo\\");
    EXPECT_EQ(AppStrXForm::GetTsAplFileName(), L"\\Storage Card\\Data\\Geo\\_apl2_.ini");
    CKivStringT first, second;
    GetLanguageFileNames(first, second);
    EXPECT_EQ(first, L"Zeb.lng");
    EXPECT_EQ(second, L"unZeb.lng");
}

TEST_F(AppPathsTest, UserSettingsFolderIsAHiddenSiblingOfTheDataRoot) {
    EXPECT_EQ(GetUserSettingsPath(), L"\\Storage Card\\zeb_setup");
    const DWORD attributes = GetFileAttributesW(L"\\Storage Card\\zeb_setup");
    ASSERT_NE(attributes, INVALID_FILE_ATTRIBUTES);
    EXPECT_TRUE(attributes & FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_TRUE(FileFuncs::IsDirExist(L"\\Storage Card\\Data"));
    EXPECT_EQ(GetLastGeoidsPath(), L"\\Storage Card\\zeb_setup\\lastgeoids");
}

TEST_F(AppPathsTest, UserSettingsFolderOfATopLevelRootGoesBesideIt) {
    kiv_host::SetBaseFolders(L"", L"\\Zeb", L"");
    EXPECT_EQ(GetUserSettingsPath(), L"\\Zeb\\zeb_setup");
}

TEST_F(AppPathsTest, RememberedFoldersFallBackToPredefinedOnes) {
    EXPECT_EQ(GetLastImageDataPath(), L"\\My Documents\\Zeb\\Images");
    ASSERT_TRUE(StoreImageDataPath(L"\\Storage Card\\Pics\\a.jpg"));
    EXPECT_EQ(GetLastImageDataPath(), L"\\Storage Card\\Pics");
    EXPECT_EQ(GetLastIEFilePath(), L"\\My Documents\\Zeb\\IEFiles");
}

TEST_F(AppPathsTest, StoringOneCategoryKeepsTheOthers) {
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
    // Larger than the INI reader takes: the file exists but does not read.
    ASSERT_TRUE(StoreTN3FilePath(L"\\Storage Card\\Surfaces\\site.tn3"));
    const std::string host = root_.HostPath(L"\\Storage Card\\Data\\FileSettings\\LastSelectedFilePaths.ini");
    const auto tooLarge = static_cast<std::uintmax_t>(kiv_settings::kMaxIniFileBytes) + 1;
    std::filesystem::resize_file(host, tooLarge);
    EXPECT_FALSE(StoreImageDataPath(L"\\Storage Card\\Pics\\a.jpg"));
    EXPECT_EQ(std::filesystem::file_size(host), tooLarge);
    EXPECT_EQ(GetLastImageDataPath(), L"\\My Documents\\Zeb\\Images");
}

TEST_F(AppPathsTest, FileKindsCompareDottedExtensionsIgnoringCase) {
    EXPECT_TRUE(IsSQLiteJobDB(L"\\Jobs\\Site.TSJ"));
    EXPECT_FALSE(IsSQLiteJobDB(L"\\Jobs\\Site"));
    EXPECT_FALSE(IsSQLiteJobDB(nullptr));
    EXPECT_TRUE(IsSQLCEJobDB(L"a.tsv"));
    // Deliberate: the styles tests compare the dotted extension with a whole file name,
    // which no dotted extension can equal.
    for (const wchar_t* path : {L"\\Data\\Styles.tsstyles", L"\\Data\\x.Styles.tsstyles", L"Styles.tss", L".tss"}) {
        EXPECT_FALSE(IsSQLiteSylesDB(path));
        EXPECT_FALSE(IsSQLCEStylesDB(path));
    }
}
