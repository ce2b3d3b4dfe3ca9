// The Win32 file family on real files under a temporary device root: path mapping,
// creation dispositions, share modes (in this process and across processes),
// positions, attributes, moving, deleting and _wfopen.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/host/TextCodec.h"
#include "platform/win32/Win32.h"
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

// Runs `attempt` in a child process and returns its result (a Win32 error code).
template <class F>
int InChildProcess(F attempt) {
    const pid_t pid = ::fork();
    if (pid == 0) ::_exit(static_cast<int>(attempt()));
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

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
    EXPECT_FALSE(std::filesystem::exists(root.path() + "/STORAGE CARD"));
    const std::wstring host = kiv_text::FromUtf8(root.path()) + L"/plain.txt";
    Put(host.c_str(), "host");
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/plain.txt"), "host");
    EXPECT_EQ(Get(L"\\plain.txt"), "host");
}

TEST_F(Files, OpenErrorsTellAMissingFileFromAMissingFolderAndBadArguments) {
    EXPECT_EQ(Open(L"\\Storage Card\\none.txt", GENERIC_READ, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(L"\\No Folder\\none.txt", GENERIC_READ, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(Open(L"\\No Folder\\new.txt", GENERIC_WRITE, 0, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(GetFileAttributesW(L"\\No Folder\\x"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
}

TEST_F(Files, ReadsBackslashesOfRelativeNamesAsFoldersAndMakesTheDeviceRootOnFirstUse) {
    const auto previous = std::filesystem::current_path();
    std::filesystem::current_path(root.path() + "/Storage Card");
    ASSERT_TRUE(CreateDirectoryW(L"sub", nullptr));
    Put(L"sub\\rel.txt", "relative");
    std::filesystem::current_path(previous);
    EXPECT_EQ(Get(L"\\Storage Card\\sub\\rel.txt"), "relative");

    kiv_host::SetDeviceRoot(root.path() + "/not/yet");
    EXPECT_TRUE(CreateDirectoryW(L"\\Zeb", nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(root.path() + "/not/yet/Zeb"));
    EXPECT_EQ(Open(nullptr, GENERIC_READ, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Open(L"", GENERIC_READ, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(Open(L"\\x", GENERIC_READ, 0, 9), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

// ---- creation dispositions -----------------------------------------------------------------------

TEST_F(Files, CreationDispositionsKeepTruncateOrRefuse) {
    HANDLE h = Open(L"\\f.txt", GENERIC_WRITE, 0, CREATE_ALWAYS);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    CloseHandle(h);
    Put(L"\\f.txt", "old");
    EXPECT_EQ(Open(L"\\F.TXT", kReadWrite, 0, CREATE_NEW), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
    EXPECT_EQ(Get(L"\\f.txt"), "old");
    h = Open(L"\\f.txt", GENERIC_WRITE, 0, CREATE_ALWAYS);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    CloseHandle(h);
    EXPECT_EQ(Get(L"\\f.txt"), "");
    Put(L"\\f.txt", "keep");
    h = Open(L"\\f.txt", kReadWrite, 0, OPEN_ALWAYS);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    CloseHandle(h);
    EXPECT_EQ(Get(L"\\f.txt"), "keep");
    h = Open(L"\\f.txt", GENERIC_WRITE, 0, TRUNCATE_EXISTING);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    CloseHandle(h);
    EXPECT_EQ(Get(L"\\f.txt"), "");
    EXPECT_EQ(Open(L"\\g.txt", GENERIC_WRITE, 0, TRUNCATE_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(Files, OfOpenersRacingForANewNameExactlyOneCreatesIt) {
    constexpr int kOpeners = 4;
    for (int round = 0; round < 100; ++round) {
        const std::wstring name = L"\\race" + std::to_wstring(round) + L".txt";
        std::atomic<int> ready{0}, creators{0}, failures{0};
        std::vector<std::thread> openers;
        for (int i = 0; i < kOpeners; ++i) {
            openers.emplace_back([&] {
                for (++ready; ready < kOpeners;) std::this_thread::yield();
                HANDLE h = Open(name.c_str(), GENERIC_WRITE, kShareAll, OPEN_ALWAYS);
                if (h == INVALID_HANDLE_VALUE) ++failures;
                else if (GetLastError() == ERROR_SUCCESS) ++creators;
                CloseHandle(h);
            });
        }
        for (auto& t : openers) t.join();
        ASSERT_EQ(failures, 0);
        ASSERT_EQ(creators, 1) << "round " << round;
    }
}

TEST_F(Files, OpenAlwaysNeverMissesAFileThatAnotherThreadDeletes) {
    std::atomic<bool> stop{false};
    std::thread deleter([&stop] {
        while (!stop) DeleteFileW(L"\\gone.txt");
    });
    int failures = 0;
    for (int i = 0; i < 5000; ++i) {
        HANDLE h = Open(L"\\gone.txt", GENERIC_READ, kShareAll, OPEN_ALWAYS);
        if (h == INVALID_HANDLE_VALUE) ++failures;
        CloseHandle(h);
    }
    stop = true;
    deleter.join();
    EXPECT_EQ(failures, 0);
}

TEST_F(Files, RefusesToOpenAFolderAsAFile) {
    for (DWORD how : {OPEN_EXISTING, OPEN_ALWAYS, CREATE_NEW, CREATE_ALWAYS}) {
        EXPECT_EQ(Open(L"\\Storage Card", GENERIC_READ, kShareAll, how), INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED) << how;
    }
    EXPECT_TRUE(std::filesystem::is_directory(root.path() + "/Storage Card"));
}

// ---- reading, writing, positions -----------------------------------------------------------------

TEST_F(Files, HandlesReadAndWriteOnlyWhatTheyWereOpenedForUntilClosed) {
    Put(L"\\f.txt", "abc");
    char buffer[4];
    DWORD n = 99;
    HANDLE w = Open(L"\\f.txt", GENERIC_WRITE, kShareAll, OPEN_EXISTING);
    EXPECT_FALSE(ReadFile(w, buffer, 3, &n, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(n, 0u);
    HANDLE r = Open(L"\\f.txt", GENERIC_READ, kShareAll, OPEN_EXISTING);
    EXPECT_FALSE(WriteFile(r, "x", 1, &n, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    CloseHandle(w);
    char all[8];
    EXPECT_TRUE(ReadFile(r, all, 8, &n, nullptr));  // short at the end, then nothing
    EXPECT_EQ(std::string(all, n), "abc");
    EXPECT_TRUE(ReadFile(r, all, 8, &n, nullptr));
    EXPECT_EQ(n, 0u);
    ASSERT_TRUE(CloseHandle(r));
    EXPECT_FALSE(ReadFile(r, all, 1, &n, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(GetFileSize(r, nullptr), INVALID_FILE_SIZE);
    EXPECT_FALSE(CloseHandle(r));
}

TEST_F(Files, SeeksRefusesNegativePositionsAndCutsAtThePosition) {
    Put(L"\\f.txt", "0123456789");
    HANDLE h = Open(L"\\f.txt", kReadWrite, 0, OPEN_EXISTING);
    EXPECT_EQ(SetFilePointer(h, -3, nullptr, FILE_END), 7u);
    EXPECT_EQ(SetFilePointer(h, -2, nullptr, FILE_CURRENT), 5u);
    char c;
    DWORD n;
    ReadFile(h, &c, 1, &n, nullptr);
    EXPECT_EQ(c, '5');
    EXPECT_EQ(SetFilePointer(h, 2, nullptr, FILE_BEGIN), 2u);
    WriteFile(h, "xy", 2, &n, nullptr);
    EXPECT_EQ(GetFileSize(h, nullptr), 10u);
    EXPECT_EQ(SetFilePointer(h, -5, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
    EXPECT_EQ(SetFilePointer(h, 0, nullptr, FILE_CURRENT), 4u);
    EXPECT_TRUE(SetEndOfFile(h));
    EXPECT_TRUE(FlushFileBuffers(h));
    CloseHandle(h);
    EXPECT_EQ(Get(L"\\f.txt"), "01xy");
}

TEST_F(Files, PositionsBeyondFourGigabytesNeedTheHighWord) {
    Put(L"\\f.txt", "x");
    HANDLE h = Open(L"\\f.txt", GENERIC_READ, 0, OPEN_EXISTING);
    LONG high = 1;
    EXPECT_EQ(SetFilePointer(h, 16, &high, FILE_BEGIN), 16u);
    EXPECT_EQ(high, 1);
    high = 0;
    EXPECT_EQ(SetFilePointer(h, 0, &high, FILE_CURRENT), 16u);
    EXPECT_EQ(high, 1);
    high = 0;
    EXPECT_EQ(SetFilePointer(h, -2, &high, FILE_BEGIN), 0xFFFFFFFEu);  // the low word 0xFFFFFFFE
    EXPECT_EQ(SetFilePointer(h, 0, nullptr, FILE_CURRENT), 0xFFFFFFFEu);
    EXPECT_EQ(GetLastError(), NO_ERROR);
    EXPECT_EQ(SetFilePointer(h, 1, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetFilePointer(h, 18, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(SetFilePointer(h, 0, nullptr, FILE_CURRENT), 0xFFFFFFFEu);
    high = 1;
    EXPECT_EQ(SetFilePointer(h, 16, &high, FILE_BEGIN), 16u);
    EXPECT_EQ(SetFilePointer(h, 0, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    high = 0;
    EXPECT_EQ(SetFilePointer(h, 0, &high, FILE_CURRENT), 16u);  // refusals leave the position
    EXPECT_EQ(high, 1);
    CloseHandle(h);
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

TEST_F(Files, ExclusiveHandleRefusesEveryOtherOpenAndARefusedTruncationKeepsContent) {
    HANDLE first = Open(L"\\f.txt", GENERIC_READ, 0, CREATE_ALWAYS);
    ASSERT_NE(first, INVALID_HANDLE_VALUE);
    EXPECT_EQ(Open(L"\\f.txt", GENERIC_READ, kShareAll, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(Open(L"\\f.txt", GENERIC_WRITE, kShareAll, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    CloseHandle(first);
    Put(L"\\f.txt", "precious");
    HANDLE reader = Open(L"\\f.txt", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_EQ(Open(L"\\f.txt", GENERIC_WRITE, kShareAll, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
    CloseHandle(reader);
    EXPECT_EQ(Get(L"\\f.txt"), "precious");
}

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

TEST_F(Files, OpenFilesCannotBeDeletedOrMovedWithoutDeleteSharing) {
    Put(L"\\f.txt", "x");
    HANDLE h = Open(L"\\f.txt", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_FALSE(DeleteFileW(L"\\f.txt"));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(MoveFileW(L"\\f.txt", L"\\g.txt"));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    CloseHandle(h);
    h = Open(L"\\f.txt", GENERIC_READ, kShareAll, OPEN_EXISTING);
    EXPECT_TRUE(MoveFileW(L"\\f.txt", L"\\g.txt"));
    EXPECT_TRUE(DeleteFileW(L"\\g.txt"));
    CloseHandle(h);
}

TEST_F(Files, StreamsFromWfopenHonourAndTakeShareModes) {
    Put(L"\\f.txt", "x");
    HANDLE h = Open(L"\\f.txt", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_EQ(_wfopen(L"\\f.txt", L"wb"), nullptr);
    EXPECT_EQ(errno, EACCES);
    FILE* reader = _wfopen(L"\\f.txt", L"rb");
    EXPECT_NE(reader, nullptr);
    CloseHandle(h);
    // The stream shares reading and writing, but not deletion.
    EXPECT_FALSE(DeleteFileW(L"\\f.txt"));
    std::fclose(reader);
    EXPECT_TRUE(DeleteFileW(L"\\f.txt"));
}

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

TEST_F(Files, KeepsTheHiddenFlagAndReplacingAFileGivesItTheAttributesAskedFor) {
    if (!kiv_test::TempFolderKeepsUserAttributes()) GTEST_SKIP() << "no user extended attributes here";
    ASSERT_TRUE(SetFileAttributesW(L"\\Storage Card", FILE_ATTRIBUTE_HIDDEN));
    EXPECT_EQ(GetFileAttributesW(L"\\Storage Card"), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN);
    CloseHandle(Open(L"\\f.txt", GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_HIDDEN));
    EXPECT_EQ(GetFileAttributesW(L"\\f.txt"), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN);
    CloseHandle(Open(L"\\f.txt", GENERIC_WRITE, 0, TRUNCATE_EXISTING));
    EXPECT_EQ(GetFileAttributesW(L"\\f.txt"), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN);
    CloseHandle(Open(L"\\f.txt", GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(GetFileAttributesW(L"\\f.txt"), FILE_ATTRIBUTE_ARCHIVE);
    CloseHandle(Open(L"\\f.txt", GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_ATTRIBUTE_HIDDEN));
    EXPECT_EQ(GetFileAttributesW(L"\\f.txt"), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN);
    // A stream opened for writing replaces the file the same way, asking for no attribute.
    std::fclose(_wfopen(L"\\f.txt", L"wb"));
    EXPECT_EQ(GetFileAttributesW(L"\\f.txt"), FILE_ATTRIBUTE_ARCHIVE);
}

TEST_F(Files, ReadOnlyFilesMadeByTheirHandleStayWritableThroughIt) {
    Put(L"\\f.txt", "old content");
    HANDLE h = Open(L"\\f.txt", GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_ATTRIBUTE_READONLY);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    DWORD n = 0;
    EXPECT_TRUE(WriteFile(h, "new", 3, &n, nullptr));
    CloseHandle(h);
    EXPECT_EQ(Get(L"\\f.txt"), "new");
    EXPECT_EQ(GetFileAttributesW(L"\\f.txt"), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(Open(L"\\f.txt", GENERIC_WRITE, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE);
}

TEST_F(Files, FoldersIgnoreTheReadOnlyAttribute) {
    ASSERT_TRUE(SetFileAttributesW(L"\\Storage Card", FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(GetFileAttributesW(L"\\Storage Card"), FILE_ATTRIBUTE_DIRECTORY);
    const auto permissions = std::filesystem::status(root.path() + "/Storage Card").permissions();
    EXPECT_NE(permissions & std::filesystem::perms::owner_write, std::filesystem::perms::none);
    Put(L"\\Storage Card\\in.txt", "x");
    EXPECT_TRUE(DeleteFileW(L"\\Storage Card\\in.txt"));
    HANDLE h = Open(L"\\r.txt", GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_READONLY);
    DWORD n = 0;
    EXPECT_TRUE(WriteFile(h, "ro", 2, &n, nullptr));
    CloseHandle(h);
    EXPECT_EQ(Get(L"\\r.txt"), "ro");
    EXPECT_TRUE(GetFileAttributesW(L"\\r.txt") & FILE_ATTRIBUTE_READONLY);
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
    EXPECT_TRUE(std::filesystem::exists(root.path() + "/A.TXT"));
    EXPECT_FALSE(std::filesystem::exists(root.path() + "/a.txt"));
    EXPECT_FALSE(MoveFileW(L"\\none.txt", L"\\x.txt"));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    Put(L"\\a.txt", "a");
    EXPECT_FALSE(MoveFileW(L"\\a.txt", L"\\No Folder\\x.txt"));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
}

TEST_F(Files, ReplacingIsRefusedForReadOnlyOrOpenTargets) {
    Put(L"\\a.txt", "new");
    Put(L"\\b.txt", "old");
    SetFileAttributesW(L"\\b.txt", FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(MoveFileExW(L"\\a.txt", L"\\b.txt", MOVEFILE_REPLACE_EXISTING));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    SetFileAttributesW(L"\\b.txt", FILE_ATTRIBUTE_NORMAL);
    HANDLE h = Open(L"\\b.txt", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_FALSE(MoveFileExW(L"\\a.txt", L"\\b.txt", MOVEFILE_REPLACE_EXISTING));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    CloseHandle(h);
    EXPECT_EQ(Get(L"\\b.txt"), "old");
}

TEST_F(Files, DeleteAndFolderErrors) {
    EXPECT_FALSE(DeleteFileW(L"\\none.txt"));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(DeleteFileW(L"\\Storage Card"));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(CreateDirectoryW(L"\\STORAGE CARD", nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_FALSE(CreateDirectoryW(L"\\a\\b", nullptr));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    Put(L"\\Storage Card\\f.txt", "x");
    EXPECT_FALSE(RemoveDirectoryW(L"\\Storage Card"));
    EXPECT_EQ(GetLastError(), ERROR_DIR_NOT_EMPTY);
}

// ---- _wfopen ------------------------------------------------------------------------------------------------

TEST_F(Files, WfopenCreatesTruncatesAppendsAndReads) {
    FILE* f = _wfopen(L"\\Storage Card\\s.xml", L"wb+");
    ASSERT_NE(f, nullptr);
    std::fputs("first", f);
    std::fclose(f);
    f = _wfopen(L"\\storage card\\S.XML", L"ab");
    std::fputs("+more", f);
    std::fclose(f);
    EXPECT_EQ(Get(L"\\Storage Card\\s.xml"), "first+more");
    f = _wfopen(L"\\Storage Card\\s.xml", L"wb+");
    std::fclose(f);
    EXPECT_EQ(Get(L"\\Storage Card\\s.xml"), "");
}

TEST_F(Files, WfopenFailsCleanlyOnMissingFilesBadModesAndReadOnlyFiles) {
    errno = 0;
    EXPECT_EQ(_wfopen(L"\\none.txt", L"rb"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(_wfopen(L"\\none.txt", L"q"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(_wfopen(L"\\none.txt", nullptr), nullptr);
    Put(L"\\f.txt", "keep");
    SetFileAttributesW(L"\\f.txt", FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(_wfopen(L"\\f.txt", L"wb+"), nullptr);
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(Get(L"\\f.txt"), "keep");
}

}  // namespace
