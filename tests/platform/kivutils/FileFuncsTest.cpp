// FileFuncs on real folders under a temporary device root.
#include <filesystem>

#include <gtest/gtest.h>

#include "platform/kivutils/FileFuncs.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

TEST(FileFuncsChecks, TellFilesFromFoldersAndMissingNames) {
    kiv_test::TempDeviceRoot root;
    kiv_test::WriteFileBytes(root.path() + "/Data/a.txt", "x");
    EXPECT_TRUE(FileFuncs::IsFileExist(L"\\DATA\\A.TXT"));
    EXPECT_FALSE(FileFuncs::IsDirExist(L"\\Data\\a.txt"));
    EXPECT_TRUE(FileFuncs::IsDirExist(L"\\data"));
    EXPECT_FALSE(FileFuncs::IsFileExist(L"\\Data"));
    EXPECT_FALSE(FileFuncs::IsFileExist(L"\\Data\\b.txt"));
    EXPECT_FALSE(FileFuncs::IsDirExist(nullptr));
}

TEST(FileFuncsChecks, CreateDirMakesEveryMissingParent) {
    kiv_test::TempDeviceRoot root;
    EXPECT_TRUE(FileFuncs::CreateDir(L"\\Zeb\\FileSettings\\deep\\"));
    EXPECT_TRUE(std::filesystem::is_directory(root.path() + "/Zeb/FileSettings/deep"));
    EXPECT_TRUE(FileFuncs::CreateDir(L"\\ZEB\\filesettings"));  // already there
    kiv_test::WriteFileBytes(root.path() + "/file", "x");
    EXPECT_FALSE(FileFuncs::CreateDir(L"\\file\\sub"));
    EXPECT_FALSE(FileFuncs::CreateDir(L""));
}

TEST(FileFuncsNames, SplitAPathIntoFolderNameAndExtension) {
    using namespace FileFuncs;
    const wchar_t* path = L"\\Storage Card\\Pics\\a.b.JPG";
    EXPECT_EQ(ExtractFileNameExtFromPathName(path), L"JPG");
    EXPECT_EQ(ExtractFileNameFromPathName(path), L"a.b.JPG");
    EXPECT_EQ(ExtractFileTitleFromPathName(path), L"a.b");
    EXPECT_EQ(ExtractDirNameWithSlashFromPathName(path), L"\\Storage Card\\Pics\\");
    EXPECT_EQ(ExtractDirNameWithoutSlashFromPathName(path), L"\\Storage Card\\Pics");
    // A dot in a folder is no extension; bare names and root files have no folder.
    EXPECT_EQ(ExtractFileNameExtFromPathName(L"\\a.dir\\name"), L"");
    EXPECT_EQ(ExtractFileNameExtFromPathName(L"name."), L"");
    EXPECT_EQ(ExtractFileNameExtFromPathName(L"/host/x.tsj"), L"tsj");
    EXPECT_EQ(ExtractFileNameExtFromPathName(nullptr), L"");
    EXPECT_EQ(ExtractDirNameWithoutSlashFromPathName(L"a.txt"), L"");
    EXPECT_EQ(ExtractDirNameWithoutSlashFromPathName(L"\\a.txt"), L"");
    EXPECT_EQ(ExtractDirNameWithSlashFromPathName(L"\\a.txt"), L"\\");
    EXPECT_EQ(ExtractFileNameFromPathName(L"\\dir\\"), L"");
    EXPECT_EQ(CombinePath(L"\\a\\", L"\\b.ini"), L"\\a\\b.ini");
    EXPECT_EQ(CombinePath(L"\\a", L"b.ini"), L"\\a\\b.ini");
    EXPECT_EQ(CombinePath(L"\\", L"b.ini"), L"\\b.ini");
    EXPECT_EQ(CombinePath(L"", L"b.ini"), L"b.ini");
}

TEST(FileFuncsWholeFile, ReplacesTheContentLeavingNoTemporaryFileButNotReadOnlyFiles) {
    kiv_test::TempDeviceRoot root;
    kiv_test::WriteFileBytes(root.path() + "/Set/a.ini", "old");
    ASSERT_TRUE(FileFuncs::WriteWholeFile(L"\\set\\A.INI", "new content"));
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/Set/a.ini"), "new content");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(root.path() + "/Set"), std::filesystem::directory_iterator()), 1);
    kiv_test::WriteFileBytes(root.path() + "/r.ini", "old");
    SetFileAttributesW(L"\\r.ini", FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(FileFuncs::WriteWholeFile(L"\\r.ini", "new"));
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/r.ini"), "old");
    EXPECT_FALSE(FileFuncs::WriteWholeFile(L"\\No Folder\\x.ini", "new"));
}

TEST(FileFuncsWholeFile, AFailedRenameLeavesTheOldFileIntact) {
    kiv_test::TempDeviceRoot root;
    kiv_test::WriteFileBytes(root.path() + "/a.ini", "old");
    // A reader that does not share deletion makes the final rename fail, after the
    // temporary file has been written: the moment a crash would hit.
    HANDLE reader = CreateFileW(L"\\a.ini", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(FileFuncs::WriteWholeFile(L"\\a.ini", "new"));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    CloseHandle(reader);
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/a.ini"), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(root.path()), std::filesystem::directory_iterator()), 1);
}

TEST(FileFuncsWholeFile, KeepsTheHiddenFlag) {
    if (!kiv_test::TempFolderKeepsUserAttributes()) GTEST_SKIP() << "no user extended attributes here";
    kiv_test::TempDeviceRoot root;
    kiv_test::WriteFileBytes(root.path() + "/h.ini", "old");
    SetFileAttributesW(L"\\h.ini", FILE_ATTRIBUTE_HIDDEN);
    EXPECT_TRUE(FileFuncs::WriteWholeFile(L"\\h.ini", "new"));
    EXPECT_TRUE(GetFileAttributesW(L"\\h.ini") & FILE_ATTRIBUTE_HIDDEN);
}

TEST(BaseFolders, FollowTheHostWithoutTrailingBackslash) {
    kiv_test::TempDeviceRoot root;
    kiv_host::SetBaseFolders(L"\\Windows\\", L"\\Storage Card\\Data\\", L"\\Docs");
    EXPECT_EQ(GetExeDir(), L"\\Windows");
    EXPECT_EQ(GetRootDir(), L"\\Storage Card\\Data");
    EXPECT_EQ(GetDocsDir(), L"\\Docs");
}

}  // namespace
