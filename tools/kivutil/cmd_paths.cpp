// kivutil paths: every folder and file name of the application as resolved on this
// host, and the folders remembered in "LastSelectedFilePaths.ini".
#include <cstdio>
#include <utility>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"
#include "tools/kivutil/Command.h"
#include "utils/settings/AppStrPaths.h"

namespace {

using namespace AppStrPaths;
using Getter = CKivStringT (*)();

void Print(const char* label, const CKivStringT& value, bool withHost) {
    const std::string text = kiv_text::ToUtf8(value.view());
    if (withHost && !value.IsEmpty() && value[0] == L'\\')
        std::printf("%-34s %s  ->  %s\n", label, text.c_str(), kiv_host::ToHostPath(value.view()).c_str());
    else std::printf("%-34s %s\n", label, text.c_str());
}

int RunPaths() {
    static const std::pair<const char*, Getter> names[] = {
        {"GetJobExt", GetJobExt}, {"GetJobExtensionName", GetJobExtensionName}, {"GetSQLCEJobExt", GetSQLCEJobExt},
        {"GetInitialJobName", GetInitialJobName}, {"GetInitialJobVersionName", GetInitialJobVersionName},
        {"GetStylesDBName", GetStylesDBName}, {"GetSQLCEStylesDbName", GetSQLCEStylesDbName},
        {"GetProgramName", GetProgramName}, {"GetProgramNameShort", GetProgramNameShort},
        {"GetProgramShortcutName", GetProgramShortcutName}, {"GetPadrikHelpName", GetPadrikHelpName},
        {"GetCECDUHelpName", GetCECDUHelpName}, {"GetRootHelpName", GetRootHelpName}, {"GetMainHelpName", GetMainHelpName},
        {"GetGpsHelpName", GetGpsHelpName}, {"GetStakeHelpName", GetStakeHelpName}, {"GetTsHelpName", GetTsHelpName},
        {"GetCogoHelpName", GetCogoHelpName}, {"GetImportExportHelpName", GetImportExportHelpName},
        {"GetDefaultCodeLibraryFile", GetDefaultCodeLibraryFile}, {"GetTN3Ext", GetTN3Ext},
        {"GetTN3ExtensionName", GetTN3ExtensionName}, {"GetImageExt", GetImageExt}, {"GetCameraExt", GetCameraExt},
        {"GetScanFileExt", GetScanFileExt}, {"GetIMCFileExt", GetIMCFileExt},
    };
    static const std::pair<const char*, Getter> folders[] = {
        {"GetLngFilePath", GetLngFilePath}, {"GetNewStylesSqlFilePath", GetNewStylesSqlFilePath},
        {"GetAntennaFilePath", GetAntennaFilePath}, {"GetPreDefinedAntennaFilePath", GetPreDefinedAntennaFilePath},
        {"GetUserDefinedAntennaFilePath", GetUserDefinedAntennaFilePath}, {"GetSoundFilePath", GetSoundFilePath},
        {"GetCustomDevicesPath", GetCustomDevicesPath}, {"GetKivDataPath", GetKivDataPath},
        {"GetPredefinedCodeLibraryPath", GetPredefinedCodeLibraryPath},
        {"GetPredefinedGeoidsListPath", GetPredefinedGeoidsListPath},
        {"AppStrXForm::GetTsGeoFolder", AppStrXForm::GetTsGeoFolder},
        {"AppStrXForm::GetTsUserGeoFolder", AppStrXForm::GetTsUserGeoFolder},
        {"AppStrXForm::GetTsAplFileName", AppStrXForm::GetTsAplFileName}, {"GetLogFilePath", GetLogFilePath},
        {"GetStylesDBPath", GetStylesDBPath}, {"GetStylesDBPathName", GetStylesDBPathName},
        {"GetSQLCEStylesDbPathName", GetSQLCEStylesDbPathName}, {"GetInitialJobPath", GetInitialJobPath},
        {"GetInitialJobVersionPath", GetInitialJobVersionPath}, {"GetSessionSettingsPath", GetSessionSettingsPath},
        {"GetIESettingsPath", GetIESettingsPath}, {"GetRowDataPath", GetRowDataPath}, {"GetJobDBPath", GetJobDBPath},
        {"GetDefaultJobDBPath", GetDefaultJobDBPath}, {"GetPredefinedIEFilePath", GetPredefinedIEFilePath},
        {"GetPredefinedTN3FilePath", GetPredefinedTN3FilePath}, {"GetPredefinedImageDataPath", GetPredefinedImageDataPath},
        {"GetPredefinedCameraDataPath", GetPredefinedCameraDataPath}, {"GetUserSettingsPath", GetUserSettingsPath},
        {"GetLastGeoidsPath", GetLastGeoidsPath}, {"GetPredefinedBackgroundImagesPath", GetPredefinedBackgroundImagesPath},
    };
    static const std::pair<const char*, Getter> remembered[] = {
        {"GetLastIEFilePath", GetLastIEFilePath}, {"GetLastCodeLibraryPath", GetLastCodeLibraryPath},
        {"GetGeoidsListPath", GetGeoidsListPath}, {"GetLastBackgroundImagesPath", GetLastBackgroundImagesPath},
        {"GetLastTN3FilePath", GetLastTN3FilePath}, {"GetLastImageDataPath", GetLastImageDataPath},
        {"GetLastCameraDataPath", GetLastCameraDataPath},
    };
    std::printf("device root: %s\n\n== names\n", kiv_host::GetDeviceRoot().c_str());
    for (auto& [label, get] : names) Print(label, get(), false);
    CKivStringT first, second;
    GetLanguageFileNames(first, second);
    Print("GetLanguageFileNames", first + L", " + second, false);
    std::printf("\n== folders and files (device path -> host path)\n");
    for (auto& [label, get] : folders) Print(label, get(), true);
    std::printf("\n== remembered folders (predefined when none is remembered)\n");
    for (auto& [label, get] : remembered) Print(label, get(), true);
    return kivutil::kExitOk;
}

kivutil::Registration reg(35, [](CLI::App& app, std::function<int()>& run) {
    auto* sub = app.add_subcommand("paths", "The application's folders and file names as resolved on this host");
    sub->callback([&run] { run = [] { return RunPaths(); }; });
});

}  // namespace
