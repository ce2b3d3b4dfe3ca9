// AppStrPaths: every fixed file name, extension and folder of the application, and the
// folders in which the user last picked a file of each kind. Nothing else spells these
// names; folders are device paths without a trailing backslash unless they say otherwise.
#pragma once

#include "platform/kivutils/KivString.h"

namespace AppStrPaths {

// ---- fixed names and extensions ----------------------------------------------------------
CKivStringT GetJobExt();
CKivStringT GetJobExtensionName();
CKivStringT GetSQLCEJobExt();
CKivStringT GetInitialJobName();
CKivStringT GetInitialJobVersionName();
CKivStringT GetStylesDBName();
CKivStringT GetSQLCEStylesDbName();
CKivStringT GetProgramName();
CKivStringT GetProgramNameShort();
CKivStringT GetProgramShortcutName();
void GetLanguageFileNames(CKivStringT& first, CKivStringT& second);
CKivStringT GetPadrikHelpName();
CKivStringT GetCECDUHelpName();
CKivStringT GetRootHelpName();
CKivStringT GetMainHelpName();
CKivStringT GetGpsHelpName();
CKivStringT GetStakeHelpName();
CKivStringT GetTsHelpName();
CKivStringT GetCogoHelpName();
CKivStringT GetImportExportHelpName();
CKivStringT GetDefaultCodeLibraryFile();
CKivStringT GetTN3Ext();
CKivStringT GetTN3ExtensionName();
CKivStringT GetImageExt();
CKivStringT GetCameraExt();
CKivStringT GetScanFileExt();
CKivStringT GetIMCFileExt();

// ---- folders and files -------------------------------------------------------------------
CKivStringT GetLngFilePath();
CKivStringT GetNewStylesSqlFilePath();
CKivStringT GetAntennaFilePath();
CKivStringT GetPreDefinedAntennaFilePath();
CKivStringT GetUserDefinedAntennaFilePath();
CKivStringT GetSoundFilePath();
CKivStringT GetCustomDevicesPath();
CKivStringT GetKivDataPath();
CKivStringT GetPredefinedCodeLibraryPath();
CKivStringT GetPredefinedGeoidsListPath();
CKivStringT GetLogFilePath();
CKivStringT GetStylesDBPath();
CKivStringT GetStylesDBPathName();
CKivStringT GetSQLCEStylesDbPathName();
CKivStringT GetInitialJobPath();
CKivStringT GetInitialJobVersionPath();
CKivStringT GetSessionSettingsPath();
CKivStringT GetIESettingsPath();
CKivStringT GetRowDataPath();
CKivStringT GetJobDBPath();
CKivStringT GetDefaultJobDBPath();
CKivStringT GetPredefinedIEFilePath();
CKivStringT GetPredefinedTN3FilePath();
CKivStringT GetPredefinedImageDataPath();
CKivStringT GetPredefinedCameraDataPath();
// The hidden folder "zeb_setup" at the top of the data root's volume; made on first use.
CKivStringT GetUserSettingsPath();
CKivStringT GetLastGeoidsPath();
CKivStringT GetPredefinedBackgroundImagesPath();

// ---- remembered folders ("LastSelectedFilePaths.ini") --------------------------------------
// Each getter returns the remembered folder, or the predefined one when none is
// remembered; each store takes a file's path and remembers its folder (true when the
// file was written).
CKivStringT GetLastIEFilePath();
bool StoreIEFilePath(const CKivStringT& filePath);
CKivStringT GetLastCodeLibraryPath();
bool StoreCodeLibraryPath(const CKivStringT& filePath);
CKivStringT GetGeoidsListPath();
bool StoreGeoidsListPath(const CKivStringT& filePath);
CKivStringT GetLastBackgroundImagesPath();
bool StoreLastBackgroundImagesPath(const CKivStringT& filePath);
CKivStringT GetLastTN3FilePath();
bool StoreTN3FilePath(const CKivStringT& filePath);
CKivStringT GetLastImageDataPath();
bool StoreImageDataPath(const CKivStringT& filePath);
CKivStringT GetLastCameraDataPath();
bool StoreCameraDataPath(const CKivStringT& filePath);

// ---- file kinds by extension ------------------------------------------------------------------
bool IsSQLiteJobDB(const wchar_t* path);
bool IsSQLCEJobDB(const wchar_t* path);
bool IsSQLiteSylesDB(const wchar_t* path);
bool IsSQLCEStylesDB(const wchar_t* path);

// The names used by coordinate transformations.
namespace AppStrXForm {
CKivStringT GetTsGeoFolder();      // with a trailing backslash
CKivStringT GetTsUserGeoFolder();  // with a trailing backslash
CKivStringT GetTsAplFileName();
}  // namespace AppStrXForm

}  // namespace AppStrPaths
