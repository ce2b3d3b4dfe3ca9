// The application's names and folders, the user-settings folder cached on first use,
// and the remembered folders kept as records of "LastSelectedFilePaths.ini".
#include "utils/settings/AppStrPaths.h"

#include "platform/host/Host.h"
#include "platform/kivutils/FileFuncs.h"
#include "platform/kivutils/IniFile.h"
#include "platform/win32/Win32.h"

namespace AppStrPaths {

namespace {

const wchar_t kLastPathSection[] = L"LAST_SELECTED_FILE_PATH";

CKivStringT& CachedUserSettingsPath() {
    static CKivStringT* cached = [] {
        kiv_host::AddResetHook("utils.settings.usersettingspath", [] { CachedUserSettingsPath().Empty(); });
        return new CKivStringT;
    }();
    return *cached;
}

CKivStringT LastPathsFile() { return GetIESettingsPath() + L"\\LastSelectedFilePaths.ini"; }

CKivStringT GetLastPath(const wchar_t* category, const CKivStringT& predefined) {
    kiv_settings::CThreeTupleStore store;
    kiv_settings::ETextEncoding encoding = kiv_settings::eEncodingUtf16LE;
    CKivStringT folder;
    if (kiv_settings::readSettingsAsIni(LastPathsFile(), store, encoding))
        folder = store.GetValue(kLastPathSection, category, L"");
    return folder.IsEmpty() ? predefined : folder;
}

bool StoreLastPath(const wchar_t* category, const CKivStringT& filePath) {
    const CKivStringT settingsFolder = GetIESettingsPath();
    if (!FileFuncs::IsDirExist(settingsFolder)) FileFuncs::CreateDir(settingsFolder);
    const CKivStringT folder = FileFuncs::ExtractDirNameWithoutSlashFromPathName(filePath);
    kiv_settings::CThreeTupleStore store;
    // A missing file reads as an empty store and UTF-16LE, the encoding of a new file; a
    // file that exists but does not read is left alone rather than replaced by one record.
    kiv_settings::ETextEncoding encoding = kiv_settings::eEncodingUtf16LE;
    if (!kiv_settings::readSettingsAsIni(LastPathsFile(), store, encoding) && FileFuncs::IsFileExist(LastPathsFile()))
        return false;
    store.SetValue(kLastPathSection, category, folder);
    return kiv_settings::writeSettingsAsIni(LastPathsFile(), store, encoding);
}

bool HasExtension(const wchar_t* path, const CKivStringT& reference) {
    if (path == nullptr) return false;
    const CKivStringT dotted = L"." + FileFuncs::ExtractFileNameExtFromPathName(path);
    return dotted.CompareNoCase(reference) == 0;
}

}  // namespace

CKivStringT GetJobExt() { return L".tsj"; }
CKivStringT GetJobExtensionName() { return L"tsj"; }
CKivStringT GetSQLCEJobExt() { return L".tsv"; }
CKivStringT GetInitialJobName() { return L"initial.ti0"; }
CKivStringT GetInitialJobVersionName() { return L"job.version"; }
CKivStringT GetStylesDBName() { return L"Styles.tsstyles"; }
CKivStringT GetSQLCEStylesDbName() { return L"Styles.tss"; }
CKivStringT GetProgramName() { return L"Quillmar"; }
CKivStringT GetProgramNameShort() { return L"Zeb"; }
CKivStringT GetProgramShortcutName() { return L"Zeb.lnk"; }
void GetLanguageFileNames(CKivStringT& first, CKivStringT& second) {
    first = L"Zeb.lng";
    second = L"unZeb.lng";
}
CKivStringT GetPadrikHelpName() { return L"Padrik.htm"; }
CKivStringT GetCECDUHelpName() { return L"CECDU.htm"; }
CKivStringT GetRootHelpName() { return L"Zeb.htm"; }
CKivStringT GetMainHelpName() { return L"tsvMain.htm"; }
CKivStringT GetGpsHelpName() { return L"tsvGps.htm"; }
CKivStringT GetStakeHelpName() { return L"tsvStake.htm"; }
CKivStringT GetTsHelpName() { return L"tsvTs.htm"; }
CKivStringT GetCogoHelpName() { return L"tsvCogo.htm"; }
CKivStringT GetImportExportHelpName() { return L"tsvImportExport.htm"; }
CKivStringT GetDefaultCodeLibraryFile() { return L"NurvoDefCodeLib.xml"; }
CKivStringT GetTN3Ext() { return L".tn3"; }
CKivStringT GetTN3ExtensionName() { return L"tn3"; }
CKivStringT GetImageExt() { return L".jpg"; }
CKivStringT GetCameraExt() { return L".cmr"; }
CKivStringT GetScanFileExt() { return L".dbs"; }
CKivStringT GetIMCFileExt() { return L".imc"; }

CKivStringT GetLngFilePath() { return GetExeDir() + L"\\Lng"; }
CKivStringT GetNewStylesSqlFilePath() { return GetExeDir() + L"\\nurvo-newstyles.sql"; }
CKivStringT GetAntennaFilePath() { return GetExeDir() + L"\\antennas"; }
CKivStringT GetPreDefinedAntennaFilePath() { return GetExeDir() + L"\\antennas\\antenna_db.xml"; }
CKivStringT GetUserDefinedAntennaFilePath() { return GetRootDir() + L"\\antennas\\userdefined"; }
CKivStringT GetSoundFilePath() { return GetExeDir() + L"\\sounds"; }
CKivStringT GetCustomDevicesPath() { return GetExeDir() + L"\\CustomDevices"; }
CKivStringT GetKivDataPath() { return GetExeDir(); }
CKivStringT GetPredefinedCodeLibraryPath() { return GetExeDir() + L"\\kivdata"; }
CKivStringT GetPredefinedGeoidsListPath() { return GetExeDir() + L"\\Geoids"; }
CKivStringT GetLogFilePath() { return GetRootDir(); }
CKivStringT GetStylesDBPath() { return GetRootDir(); }
CKivStringT GetStylesDBPathName() { return GetStylesDBPath() + L"\\" + GetStylesDBName(); }
CKivStringT GetSQLCEStylesDbPathName() { return GetStylesDBPath() + L"\\" + GetSQLCEStylesDbName(); }
CKivStringT GetInitialJobPath() { return GetRootDir(); }
CKivStringT GetInitialJobVersionPath() { return GetRootDir(); }
CKivStringT GetSessionSettingsPath() { return GetRootDir() + L"\\FileSettings"; }
CKivStringT GetIESettingsPath() { return GetRootDir() + L"\\FileSettings"; }
CKivStringT GetRowDataPath() { return GetRootDir() + L"\\RawData"; }
CKivStringT GetJobDBPath() { return GetDocsDir() + L"\\Jobs"; }
CKivStringT GetDefaultJobDBPath() { return GetJobDBPath() + L"\\Default" + GetJobExt(); }
CKivStringT GetPredefinedIEFilePath() { return GetDocsDir() + L"\\IEFiles"; }
CKivStringT GetPredefinedTN3FilePath() { return GetDocsDir() + L"\\DTM"; }
CKivStringT GetPredefinedImageDataPath() { return GetDocsDir() + L"\\Images"; }
CKivStringT GetPredefinedCameraDataPath() { return GetDocsDir() + L"\\Camera"; }

CKivStringT GetUserSettingsPath() {
    CKivStringT& cached = CachedUserSettingsPath();
    if (!cached.IsEmpty()) return cached;
    CKivStringT s = GetRootDir();
    CreateDirectoryW(s, nullptr);
    // The settings live at the top of the data root's volume: \Storage Card\Data gives
    // \Storage Card\zeb_setup, a sibling of the data root.
    const int first = s.Find(L'\\');
    if (first >= 0) {
        const int next = s.Find(L'\\', first + 1);
        if (next >= 1) s = s.Left(next + 1);
        else if (s.GetLength() > 0) s += L"\\";
    } else {
        s += L"\\";
    }
    s += L"zeb_setup";
    CreateDirectoryW(s, nullptr);
    SetFileAttributesW(s, FILE_ATTRIBUTE_HIDDEN);
    cached = s;
    return cached;
}

CKivStringT GetLastGeoidsPath() { return GetUserSettingsPath() + L"\\lastgeoids"; }
CKivStringT GetPredefinedBackgroundImagesPath() { return GetUserSettingsPath() + L"\\lastBkgndImages"; }

CKivStringT GetLastIEFilePath() { return GetLastPath(L"ImportExportFiles", GetPredefinedIEFilePath()); }
bool StoreIEFilePath(const CKivStringT& filePath) { return StoreLastPath(L"ImportExportFiles", filePath); }
CKivStringT GetLastCodeLibraryPath() { return GetLastPath(L"CodeLibrary", GetPredefinedCodeLibraryPath()); }
bool StoreCodeLibraryPath(const CKivStringT& filePath) { return StoreLastPath(L"CodeLibrary", filePath); }
CKivStringT GetGeoidsListPath() { return GetLastPath(L"Geoid", GetPredefinedGeoidsListPath()); }
bool StoreGeoidsListPath(const CKivStringT& filePath) { return StoreLastPath(L"Geoid", filePath); }
CKivStringT GetLastBackgroundImagesPath() {
    return GetLastPath(L"BackgroundImages", GetPredefinedBackgroundImagesPath());
}
bool StoreLastBackgroundImagesPath(const CKivStringT& filePath) { return StoreLastPath(L"BackgroundImages", filePath); }
CKivStringT GetLastTN3FilePath() { return GetLastPath(L"DTM", GetPredefinedTN3FilePath()); }
bool StoreTN3FilePath(const CKivStringT& filePath) { return StoreLastPath(L"DTM", filePath); }
CKivStringT GetLastImageDataPath() { return GetLastPath(L"Image", GetPredefinedImageDataPath()); }
bool StoreImageDataPath(const CKivStringT& filePath) { return StoreLastPath(L"Image", filePath); }
CKivStringT GetLastCameraDataPath() { return GetLastPath(L"CameraData", GetPredefinedCameraDataPath()); }
bool StoreCameraDataPath(const CKivStringT& filePath) { return StoreLastPath(L"CameraData", filePath); }

bool IsSQLiteJobDB(const wchar_t* path) { return HasExtension(path, GetJobExt()); }
bool IsSQLCEJobDB(const wchar_t* path) { return HasExtension(path, GetSQLCEJobExt()); }
// Deliberate: the styles tests compare the dotted extension with a whole file name, so
// only a path whose extension is that whole text passes.
bool IsSQLiteSylesDB(const wchar_t* path) { return HasExtension(path, GetStylesDBName()); }
bool IsSQLCEStylesDB(const wchar_t* path) { return HasExtension(path, GetSQLCEStylesDbName()); }

namespace AppStrXForm {
CKivStringT GetTsGeoFolder() { return GetExeDir() + L"\\Geo\\"; }
CKivStringT GetTsUserGeoFolder() { return GetRootDir() + L"\\Geo\\"; }
CKivStringT GetTsAplFileName() { return GetTsUserGeoFolder() + L"_apl2_.ini"; }
}  // namespace AppStrXForm

}  // namespace AppStrPaths
