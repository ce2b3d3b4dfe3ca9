// File checks over device paths, compared with what the standard library's file system
// calls say of the same host files.
#include <gtest/gtest.h>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#endif

#include <filesystem>
#include <iterator>

#include "tests/support/TestSupport.h"
#include "utils/runtime/FileChecks.h"

namespace {

class FileChecksTest : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;
};

TEST_F(FileChecksTest, TellsFilesFromFoldersThroughTheDevicePathMapping) {
    ASSERT_TRUE(CreateDirectoryW(L"\\Storage Card", nullptr));
    kiv_test::WriteFileBytes(root.HostPath(L"\\Storage Card\\job.xml"), "<job/>");
    // The device's file system ignores case.
    EXPECT_TRUE(FileChecks::Exists(L"\\STORAGE CARD\\Job.XML"));
    EXPECT_TRUE(FileChecks::IsFile(L"\\Storage Card\\job.xml"));
    EXPECT_FALSE(FileChecks::IsFolder(L"\\Storage Card\\job.xml"));
    EXPECT_TRUE(FileChecks::IsFolder(L"\\storage card"));
    EXPECT_FALSE(FileChecks::IsFile(L"\\storage card"));
    EXPECT_FALSE(FileChecks::Exists(L"\\Storage Card\\none.xml"));
    EXPECT_FALSE(FileChecks::Exists(nullptr));
    EXPECT_FALSE(FileChecks::Exists(L""));
}

TEST_F(FileChecksTest, WritableMeansAWriteWouldSucceedNow) {
    ASSERT_TRUE(CreateDirectoryW(L"\\Jobs", nullptr));
    kiv_test::WriteFileBytes(root.HostPath(L"\\Jobs\\a.job"), "a");
    EXPECT_TRUE(FileChecks::IsWritable(L"\\Jobs\\a.job"));
    EXPECT_TRUE(FileChecks::IsWritable(L"\\Jobs"));
    EXPECT_TRUE(FileChecks::IsWritable(L"\\Jobs\\new.job")) << "a new name in a writable folder";
    EXPECT_FALSE(FileChecks::IsWritable(L"\\NoFolder\\new.job"));
    EXPECT_FALSE(FileChecks::Exists(L"\\Jobs\\new.job")) << "asking makes nothing";

    // A reader that denies writing holds the file against every writer.
    HANDLE reader = CreateFileW(L"\\Jobs\\a.job", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(FileChecks::IsWritable(L"\\Jobs\\a.job"));
    CloseHandle(reader);
    ASSERT_TRUE(SetFileAttributesW(L"\\Jobs\\a.job", FILE_ATTRIBUTE_READONLY));
    EXPECT_FALSE(FileChecks::IsWritable(L"\\Jobs\\a.job"));
    const auto entries = std::distance(std::filesystem::directory_iterator(root.HostPath(L"\\Jobs")),
                                       std::filesystem::directory_iterator());
    EXPECT_EQ(entries, 1) << "the folder's probe file is gone again";
}

TEST_F(FileChecksTest, FreeSpaceMatchesWhatTheFileSystemSaysOfTheSameVolume) {
    std::uint64_t freeBytes = 0, totalBytes = 0;
    // Others write to the volume meanwhile: a reading that the file system confirms before
    // and after is the one compared.
    bool compared = false;
    for (int attempt = 0; attempt < 50 && !compared; ++attempt) {
        const auto before = std::filesystem::space(root.path());
        ASSERT_TRUE(FileChecks::GetFreeSpace(L"\\", freeBytes, &totalBytes));
        const auto after = std::filesystem::space(root.path());
        if (before.available != after.available) continue;
        EXPECT_EQ(freeBytes, before.available);
        EXPECT_EQ(totalBytes, before.capacity);
        compared = true;
    }
    EXPECT_TRUE(compared) << "the volume never held still for two readings";
    EXPECT_GT(totalBytes, freeBytes);
    EXPECT_FALSE(FileChecks::GetFreeSpace(L"\\No Such Card\\x", freeBytes));
}

TEST_F(FileChecksTest, SizeAndTimeMatchTheFileSystemAndTheFileTimeEpoch) {
    const std::string host = root.HostPath(L"\\big.bin");
    kiv_test::WriteFileBytes(host, std::string(70000, 'x'));
    std::filesystem::resize_file(host, 5'000'000'123ULL);  // a size beyond 32 bits, sparse
    // 2001-09-09 01:46:40 UTC, one billion seconds after 1970: FILETIME 126444736000000000.
#ifdef _WIN32
    HANDLE file = CreateFileW(std::filesystem::path(host).c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    const FILETIME stamp{static_cast<DWORD>(126444736000000005ULL), static_cast<DWORD>(126444736000000005ULL >> 32)};
    ASSERT_TRUE(SetFileTime(file, nullptr, nullptr, &stamp));
    CloseHandle(file);
#else
    const struct timespec times[2] = {{1000000000, 0}, {1000000000, 500}};
    ASSERT_EQ(::utimensat(AT_FDCWD, host.c_str(), times, 0), 0);
#endif

    std::uint64_t size = 0;
    FILETIME written{};
    ASSERT_TRUE(FileChecks::GetSizeAndTime(L"\\BIG.bin", size, written));
    EXPECT_EQ(size, std::filesystem::file_size(host));
    EXPECT_EQ(size, 5'000'000'123ull);
    const std::uint64_t ticks = (std::uint64_t{written.dwHighDateTime} << 32) | written.dwLowDateTime;
    EXPECT_EQ(ticks, 126444736000000005ull);

    EXPECT_FALSE(FileChecks::GetSizeAndTime(L"\\", size, written)) << "a folder has no size of its own";
    EXPECT_FALSE(FileChecks::GetSize(L"\\none.bin", size));
}

}  // namespace
