// The Win32 file family on real files under a temporary device root: path mapping,
// creation dispositions, share modes (in this process and across processes),
// positions, attributes, moving, deleting and _wfopen.
#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/host/TextCodec.h"
#include "platform/win32/Win32.h"
#include "tests/platform/win32/UnderWine.h"
#include "tests/support/TestSupport.h"

namespace {

HANDLE Open(const wchar_t* path, DWORD access, DWORD share, DWORD disposition, DWORD attributes = 0) {
    return CreateFileW(path, access, share, nullptr, disposition, attributes, nullptr);
}

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

void Put(const wchar_t* path, const std::string& bytes) {
    HANDLE h = Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
    ASSERT_NE(h, INVALID_HANDLE_VALUE) << GetLastError();
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(h, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    ASSERT_EQ(written, bytes.size());
    CloseHandle(h);
}

std::string Get(const wchar_t* path) {
    HANDLE h = Open(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    if (h == INVALID_HANDLE_VALUE) return "<missing>";
    std::string bytes(GetFileSize(h, nullptr), '\0');
    DWORD read = 0;
    ReadFile(h, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    CloseHandle(h);
    return bytes.substr(0, read);
}

#ifndef _WIN32
// Runs `attempt` in a child process and returns its result (a Win32 error code). Between
// processes on Windows the share modes are the system's own; here they are ours.
template <class F>
int InChildProcess(F attempt) {
    const pid_t pid = ::fork();
    if (pid == 0) ::_exit(static_cast<int>(attempt()));
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
#endif

class Files : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(CreateDirectoryW(L"\\Storage Card", nullptr)); }
    kiv_test::TempDeviceRoot root;
};

// ---- device paths ----------------------------------------------------------------------------

TEST_F(Files, MapsDevicePathsCaseInsensitivelyAndHostPathsAsTheyStand) {
    Put(L"\\Storage Card\\a.txt", "alpha");
    EXPECT_EQ(Get(L"\\STORAGE CARD\\a.TXT"), "alpha");
    EXPECT_EQ(Get(L"\\storage card\\A.txt"), "alpha");
    EXPECT_TRUE(std::filesystem::exists(root.path() + "/Storage Card/a.txt"));
    Put(L"\\STORAGE CARD\\New.Ini", "x");
    EXPECT_TRUE(std::filesystem::exists(root.path() + "/Storage Card/New.Ini"));
    // No second folder: the name typed in another case is the folder that exists.
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(root.path())) names.push_back(e.path().filename().string());
    EXPECT_EQ(names, std::vector<std::string>{"Storage Card"});
    const std::wstring host = kiv_text::FromUtf8(root.path()) + L"/plain.txt";
    Put(host.c_str(), "host");
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/plain.txt"), "host");
    EXPECT_EQ(Get(L"\\plain.txt"), "host");
}

// ---- share modes ----------------------------------------------------------------------------------

TEST_F(Files, DenyWriteRefusesASecondWriterButAdmitsReaders) {
    Put(L"\\f.txt", "x");
    HANDLE first = Open(L"\\f.txt", kReadWrite, FILE_SHARE_READ, OPEN_EXISTING);
    ASSERT_NE(first, INVALID_HANDLE_VALUE);
    EXPECT_EQ(Open(L"\\F.txt", GENERIC_WRITE, kShareAll, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    // A reader must itself allow the writer that is already there.
    EXPECT_EQ(Open(L"\\f.txt", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    HANDLE reader = Open(L"\\f.txt", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
    EXPECT_NE(reader, INVALID_HANDLE_VALUE);
    CloseHandle(reader);
    CloseHandle(first);
    HANDLE again = Open(L"\\f.txt", GENERIC_WRITE, 0, OPEN_EXISTING);
    EXPECT_NE(again, INVALID_HANDLE_VALUE);
    CloseHandle(again);
}

#ifndef _WIN32
TEST_F(Files, ShareModesHoldBetweenProcesses) {
    // The error code a child process gets when it opens the file.
    auto childOpens = [](DWORD access, DWORD share) {
        return InChildProcess([=] {
            HANDLE h = Open(L"\\f.txt", access, share, OPEN_EXISTING);
            return h == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
        });
    };
    Put(L"\\f.txt", "x");
    HANDLE mine = Open(L"\\f.txt", kReadWrite, FILE_SHARE_READ, OPEN_EXISTING);
    ASSERT_NE(mine, INVALID_HANDLE_VALUE);
    EXPECT_EQ(childOpens(GENERIC_WRITE, kShareAll), static_cast<int>(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(childOpens(GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE), static_cast<int>(ERROR_SUCCESS));
    CloseHandle(mine);
    EXPECT_EQ(childOpens(GENERIC_WRITE, 0), static_cast<int>(ERROR_SUCCESS));
}
#endif

// ---- attributes -------------------------------------------------------------------------------------

TEST_F(Files, ReadOnlyFilesRefuseWritingAndDeletingUntilCleared) {
    Put(L"\\Storage Card\\f.txt", "x");
    EXPECT_EQ(GetFileAttributesW(L"\\storage card"), FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(GetFileAttributesW(L"\\Storage Card\\F.TXT"), FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_EQ(GetFileAttributesW(L"\\Storage Card\\g.txt"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    Put(L"\\f.txt", "keep");
    ASSERT_TRUE(SetFileAttributesW(L"\\f.txt", FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(GetFileAttributesW(L"\\f.txt"), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY);
    if (kiv_test::UnderWine()) {
        // Wine keeps the attribute in the host file's permission bits, which the superuser
        // passes; the system itself refuses any writer.
        if (HANDLE writer = Open(L"\\f.txt", GENERIC_WRITE, 0, OPEN_EXISTING); writer != INVALID_HANDLE_VALUE) {
            CloseHandle(writer);
            SetFileAttributesW(L"\\f.txt", FILE_ATTRIBUTE_NORMAL);
            GTEST_SKIP() << "Wine run by the superuser does not enforce the read-only attribute";
        }
    }
    EXPECT_EQ(Open(L"\\f.txt", GENERIC_WRITE, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Open(L"\\f.txt", GENERIC_READ, 0, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(DeleteFileW(L"\\f.txt"));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Get(L"\\f.txt"), "keep");
    ASSERT_TRUE(SetFileAttributesW(L"\\f.txt", FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(GetFileAttributesW(L"\\f.txt"), FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_TRUE(DeleteFileW(L"\\f.txt"));
}

// ---- moving, deleting, folders -------------------------------------------------------------------------

TEST_F(Files, MoveRefusesExistingTargetsChangesCaseAndReportsWhatIsMissing) {
    Put(L"\\a.txt", "a");
    Put(L"\\b.txt", "b");
    EXPECT_FALSE(MoveFileW(L"\\a.txt", L"\\B.TXT"));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(Get(L"\\a.txt"), "a");
    EXPECT_EQ(Get(L"\\b.txt"), "b");
    EXPECT_TRUE(MoveFileExW(L"\\a.txt", L"\\B.TXT", MOVEFILE_REPLACE_EXISTING));
    EXPECT_EQ(Get(L"\\b.txt"), "a");
    EXPECT_EQ(GetFileAttributesW(L"\\a.txt"), INVALID_FILE_ATTRIBUTES);
    Put(L"\\a.txt", "a");
    EXPECT_TRUE(MoveFileW(L"\\a.txt", L"\\A.TXT"));
    // The names as the folder holds them: a lookup by name would ignore case on Windows.
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(root.path())))
        names.push_back(entry.path().filename().string());
    // Wine looks the new name up, finds the old file under it and leaves its spelling.
    if (!kiv_test::UnderWine()) {
        EXPECT_NE(std::find(names.begin(), names.end(), "A.TXT"), names.end());
        EXPECT_EQ(std::find(names.begin(), names.end(), "a.txt"), names.end());
    }
    EXPECT_FALSE(MoveFileW(L"\\none.txt", L"\\x.txt"));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    Put(L"\\a.txt", "a");
    EXPECT_FALSE(MoveFileW(L"\\a.txt", L"\\No Folder\\x.txt"));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
}

}  // namespace
