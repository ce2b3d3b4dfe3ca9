// The names other programs and files rely on, each remembered-folder pair on its own
// record, the file-type tests, and where the user-settings folder lands for roots of
// different depths.
#include <gtest/gtest.h>

#include <functional>

#include "platform/kivutils/IniFile.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"
#include "utils/settings/AppStrPaths.h"

using namespace AppStrPaths;

namespace {

const wchar_t kExe[] = L"\\Program Files\\Zeb";
const wchar_t kRoot[] = L"\\Storage Card\\Data";
const wchar_t kDocs[] = L"\\My Documents\\Zeb";

class AppPathsNamesTest : public ::testing::Test {
protected:
    AppPathsNamesTest() {
        kiv_host::SetBaseFolders(kExe, kRoot, kDocs);
        CreateDirectoryW(L"\\Storage Card", nullptr);
    }
    kiv_test::TempDeviceRoot root_;
};

CKivStringT Join(const wchar_t* base, const wchar_t* tail) { return CKivStringT(base) + tail; }

TEST_F(AppPathsNamesTest, FixedNamesAndFoldersAreTheOnesTheFilesOnTheDeviceCarry) {
    const struct {
        CKivStringT actual;
        CKivStringT expected;
    } names[] = {
        {GetJobExt(), L".tsj"},
        {GetJobExtensionName(), L"tsj"},
        {GetSQLCEJobExt(), L".tsv"},
        {GetInitialJobName(), L"initial.ti0"},
        {GetInitialJobVersionName(), L"job.version"},
        {GetStylesDBName(), L"Styles.tsstyles"},
        {GetSQLCEStylesDbName(), L"Styles.tss"},
        {GetProgramName(), L"Quillmar"},
        {GetProgramNameShort(), L"Zeb"},
        {GetProgramShortcutName(), L"Zeb.lnk"},
        {GetPadrikHelpName(), L"Padrik.htm"},
        {GetCECDUHelpName(), L"CECDU.htm"},
        {GetRootHelpName(), L"Zeb.htm"},
        {GetMainHelpName(), L"tsvMain.htm"},
        {GetGpsHelpName(), L"tsvGps.htm"},
        {GetStakeHelpName(), L"tsvStake.htm"},
        {GetTsHelpName(), L"tsvTs.htm"},
        {GetCogoHelpName(), L"tsvCogo.htm"},
        {GetImportExportHelpName(), L"tsvImportExport.htm"},
        {GetDefaultCodeLibraryFile(), L"NurvoDefCodeLib.xml"},
        {GetTN3Ext(), L".tn3"},
        {GetTN3ExtensionName(), L"tn3"},
        {GetImageExt(), L".jpg"},
        {GetCameraExt(), L".cmr"},
        {GetScanFileExt(), L".dbs"},
        {GetIMCFileExt(), L".imc"},
        {GetLngFilePath(), Join(kExe, L"\\Lng")},
        {GetNewStylesSqlFilePath(), Join(kExe, L"\\nurvo-newstyles.sql")},
        {GetAntennaFilePath(), Join(kExe, L"\\antennas")},
        {GetUserDefinedAntennaFilePath(), Join(kRoot, L"\\antennas\\userdefined")},
        {GetSoundFilePath(), Join(kExe, L"\\sounds")},
        {GetCustomDevicesPath(), Join(kExe, L"\\CustomDevices")},
        {GetKivDataPath(), kExe},
        {GetPredefinedCodeLibraryPath(), Join(kExe, L"\\kivdata")},
        {GetPredefinedGeoidsListPath(), Join(kExe, L"\\Geoids")},
        {AppStrXForm::GetTsUserGeoFolder(), Join(kRoot, L"\\Geo\\")},
        {AppStrXForm::GetTsAplFileName(), Join(kRoot, L"\\Geo\\_apl2_.ini")},
        {GetLogFilePath(), kRoot},
        {GetStylesDBPath(), kRoot},
        {GetSQLCEStylesDbPathName(), Join(kRoot, L"\\Styles.tss")},
        {GetInitialJobPath(), kRoot},
        {GetInitialJobVersionPath(), kRoot},
        {GetSessionSettingsPath(), Join(kRoot, L"\\FileSettings")},
        {GetIESettingsPath(), Join(kRoot, L"\\FileSettings")},
        {GetRowDataPath(), Join(kRoot, L"\\RawData")},
        {GetJobDBPath(), Join(kDocs, L"\\Jobs")},
        {GetPredefinedIEFilePath(), Join(kDocs, L"\\IEFiles")},
        {GetPredefinedTN3FilePath(), Join(kDocs, L"\\DTM")},
        {GetPredefinedImageDataPath(), Join(kDocs, L"\\Images")},
        {GetPredefinedCameraDataPath(), Join(kDocs, L"\\Camera")},
        {GetLastGeoidsPath(), L"\\Storage Card\\zeb_setup\\lastgeoids"},
        {GetPredefinedBackgroundImagesPath(), L"\\Storage Card\\zeb_setup\\lastBkgndImages"},
    };
    for (const auto& n : names) EXPECT_EQ(n.actual, n.expected);
}

// Each remembered folder has its own category in the file and falls back to its own
// predefined folder; a pair wired to another's category would show up here.
TEST_F(AppPathsNamesTest, EveryRememberedFolderKeepsItsOwnRecord) {
    const struct {
        std::function<CKivStringT()> get;
        std::function<bool(const CKivStringT&)> store;
        const wchar_t* category;
        CKivStringT predefined;
    } pairs[] = {
        {GetLastIEFilePath, StoreIEFilePath, L"ImportExportFiles", Join(kDocs, L"\\IEFiles")},
        {GetLastCodeLibraryPath, StoreCodeLibraryPath, L"CodeLibrary", Join(kExe, L"\\kivdata")},
        {GetGeoidsListPath, StoreGeoidsListPath, L"Geoid", Join(kExe, L"\\Geoids")},
        {GetLastBackgroundImagesPath, StoreLastBackgroundImagesPath, L"BackgroundImages",
         L"\\Storage Card\\zeb_setup\\lastBkgndImages"},
        {GetLastTN3FilePath, StoreTN3FilePath, L"DTM", Join(kDocs, L"\\DTM")},
        {GetLastImageDataPath, StoreImageDataPath, L"Image", Join(kDocs, L"\\Images")},
        {GetLastCameraDataPath, StoreCameraDataPath, L"CameraData", Join(kDocs, L"\\Camera")},
    };
    for (const auto& p : pairs) EXPECT_EQ(p.get(), p.predefined) << p.category;

    int n = 0;
    for (const auto& p : pairs) {
        const CKivStringT folder = CKivStringT(L"\\Storage Card\\F") + CKivStringT(std::to_wstring(n++).c_str());
        ASSERT_TRUE(p.store(folder + L"\\picked.file")) << p.category;
    }
    kiv_settings::CThreeTupleStore store;
    kiv_settings::ETextEncoding encoding;
    ASSERT_TRUE(kiv_settings::readSettingsAsIni(Join(kRoot, L"\\FileSettings\\LastSelectedFilePaths.ini"), store, encoding));
    EXPECT_EQ(store.GetKeyCount(0), 7);
    n = 0;
    for (const auto& p : pairs) {
        const CKivStringT folder = CKivStringT(L"\\Storage Card\\F") + CKivStringT(std::to_wstring(n++).c_str());
        EXPECT_EQ(p.get(), folder) << p.category;
        EXPECT_EQ(store.GetValue(L"LAST_SELECTED_FILE_PATH", p.category), folder) << p.category;
    }
}

TEST_F(AppPathsNamesTest, FileTypesGoByTheDottedExtensionWithoutRegardToCase) {
    EXPECT_TRUE(IsSQLiteJobDB(L"\\Jobs\\Site.TSJ"));
    EXPECT_TRUE(IsSQLiteJobDB(L"a.tsj"));
    EXPECT_FALSE(IsSQLiteJobDB(L"\\Jobs\\Site"));
    EXPECT_FALSE(IsSQLiteJobDB(L"\\Jobs\\Site.tsv"));
    EXPECT_FALSE(IsSQLiteJobDB(L"\\Jobs.tsj\\Site"));
    EXPECT_FALSE(IsSQLiteJobDB(nullptr));
    EXPECT_TRUE(IsSQLCEJobDB(L"\\Jobs\\Site.Tsv"));
    EXPECT_FALSE(IsSQLCEJobDB(L"\\Jobs\\Site.tsj"));
    EXPECT_FALSE(IsSQLCEJobDB(nullptr));
    // The styles tests compare with a whole file name, so even the styles file itself
    // does not pass them: kept as the application has always had it.
    EXPECT_FALSE(IsSQLiteSylesDB(L"\\Storage Card\\Data\\Styles.tsstyles"));
    EXPECT_FALSE(IsSQLiteSylesDB(L"x.tsstyles"));
    EXPECT_FALSE(IsSQLCEStylesDB(L"\\Storage Card\\Data\\Styles.tss"));
    EXPECT_FALSE(IsSQLCEStylesDB(nullptr));
}

}  // namespace

// Outside the fixture: each case sets its own root before the folder is first asked for.
TEST(AppPathsUserSettings, TheFolderSitsAtTheTopOfTheRootsVolumeAndIsHidden) {
    const struct {
        const wchar_t* root;
        const wchar_t* expected;
    } cases[] = {
        {L"\\Storage Card\\Data", L"\\Storage Card\\zeb_setup"},
        {L"\\Storage Card\\Data\\Deeper", L"\\Storage Card\\zeb_setup"},
        {L"\\Data", L"\\Data\\zeb_setup"},
    };
    for (const auto& c : cases) {
        kiv_test::TempDeviceRoot root;
        kiv_host::SetBaseFolders(kExe, c.root, kDocs);
        CreateDirectoryW(L"\\Storage Card", nullptr);
        EXPECT_EQ(GetUserSettingsPath(), c.expected) << "root " << CKivStringT(c.root);
        const DWORD attributes = GetFileAttributesW(c.expected);
        ASSERT_NE(attributes, INVALID_FILE_ATTRIBUTES) << "the folder is made";
        EXPECT_TRUE(attributes & FILE_ATTRIBUTE_DIRECTORY);
        if (kiv_test::TempFolderKeepsUserAttributes()) {
            EXPECT_TRUE(attributes & FILE_ATTRIBUTE_HIDDEN);
        }
        // Kept for the life of the process, whatever the root says afterwards.
        kiv_host::SetBaseFolders(kExe, L"\\Elsewhere\\Data", kDocs);
        EXPECT_EQ(GetUserSettingsPath(), c.expected);
    }
}
