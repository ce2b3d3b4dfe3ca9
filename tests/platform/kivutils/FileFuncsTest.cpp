// FileFuncs on real folders under a temporary device root.
#include <filesystem>

#include <gtest/gtest.h>

#include "platform/kivutils/FileFuncs.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

TEST(FileFuncsChecks, CreateDirMakesEveryMissingParent) {
    kiv_test::TempDeviceRoot root;
    EXPECT_TRUE(FileFuncs::CreateDir(L"\\Zeb\\FileSettings\\deep\\"));
    EXPECT_TRUE(std::filesystem::is_directory(root.path() + "/Zeb/FileSettings/deep"));
    EXPECT_TRUE(FileFuncs::CreateDir(L"\\ZEB\\filesettings"));  // already there
    kiv_test::WriteFileBytes(root.path() + "/file", "x");
    EXPECT_FALSE(FileFuncs::CreateDir(L"\\file\\sub"));
    EXPECT_FALSE(FileFuncs::CreateDir(L""));
}

TEST(FileFuncsWholeFile, AFailedRenameLeavesTheOldFileIntact) {
    kiv_test::TempDeviceRoot root;
    kiv_test::WriteFileBytes(root.path() + "/a.ini", "old");
    // A reader that does not share deletion makes the final rename fail, after the
    // temporary file has been written: the moment a crash would hit.
    HANDLE reader = CreateFileW(L"\\a.ini", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(FileFuncs::WriteWholeFile(L"\\a.ini", "new"));
    // Replacing a file held open is refused as access denied, not as a sharing violation.
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    CloseHandle(reader);
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/a.ini"), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(root.path()), std::filesystem::directory_iterator()), 1);
}

}  // namespace
