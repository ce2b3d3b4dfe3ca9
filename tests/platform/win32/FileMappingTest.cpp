// File mappings through their Win32 functions: views at offsets, views that outlive their
// handles, the access a mapping allows, and named memory shared between views.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

class FileMapping : public ::testing::Test {
protected:
    HANDLE Open(DWORD access) {
        return CreateFileW(L"\\map.bin", access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    }
    kiv_test::TempDeviceRoot root;
};

// Views start at the allocation granularity (64 KiB), not at the page size.
DWORD Granularity() {
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return info.dwAllocationGranularity;
}

TEST_F(FileMapping, ViewsStartAtGranulesAndOutliveTheirHandles) {
    const DWORD granule = Granularity();
    EXPECT_EQ(granule, 0x10000u);
    std::string bytes(3 * granule, '\0');
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i / granule + 'A');
    kiv_test::WriteFileBytes(root.HostPath(L"\\map.bin"), bytes);
    HANDLE file = Open(GENERIC_READ);
    HANDLE mapping = CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
    ASSERT_NE(mapping, nullptr);

    EXPECT_EQ(MapViewOfFile(mapping, FILE_MAP_READ, 0, 4096, 0), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MAPPED_ALIGNMENT);
    EXPECT_EQ(MapViewOfFile(mapping, FILE_MAP_READ, 0, granule, 2 * granule + 1),
              nullptr)
        << "a view beyond the mapping";
    EXPECT_EQ(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED) << "a read-only mapping gives no writable view";

    auto* second = static_cast<const char*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, granule, 0));
    ASSERT_NE(second, nullptr);
    CloseHandle(mapping);
    CloseHandle(file);
    EXPECT_EQ(second[0], 'B');
    EXPECT_EQ(second[2 * granule - 1], 'C');
    EXPECT_TRUE(UnmapViewOfFile(second + granule)) << "any address inside names the whole view";
    EXPECT_FALSE(UnmapViewOfFile(second)) << "a view is unmapped once";
}

TEST_F(FileMapping, AccessFollowsTheFileHandleAndTheMapping) {
    kiv_test::WriteFileBytes(root.HostPath(L"\\map.bin"), "0123456789");
    HANDLE reader = Open(GENERIC_READ);
    EXPECT_EQ(CreateFileMappingW(reader, nullptr, PAGE_READWRITE, 0, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(CreateFileMappingW(reader, nullptr, PAGE_READONLY, 0, 100, nullptr), nullptr)
        << "only a read-write mapping may make the file longer";
    CloseHandle(reader);

    HANDLE writer = Open(GENERIC_READ | GENERIC_WRITE);
    HANDLE mapping = CreateFileMappingW(writer, nullptr, PAGE_READWRITE, 0, 0, nullptr);
    auto* a = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, 0));
    auto* b = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0));
    auto* c = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_COPY, 0, 0, 0));
    ASSERT_TRUE(a && b && c);
    c[1] = 'c';  // before a's write: the page is c's own from here on
    a[0] = 'a';
    EXPECT_EQ(b[0], 'a') << "views of one mapping share their pages";
    EXPECT_EQ(c[1], 'c');
    EXPECT_TRUE(FlushViewOfFile(a + 1, 0));
    EXPECT_EQ(kiv_test::ReadFileBytes(root.HostPath(L"\\map.bin")), "a123456789");
    for (void* view : {a, b, c}) UnmapViewOfFile(view);
    CloseHandle(mapping);
    CloseHandle(writer);
}

TEST_F(FileMapping, NamedMemoryIsSharedByName) {
    HANDLE first = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, L"positions");
    ASSERT_NE(first, nullptr);
    HANDLE again = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 8192, L"positions");
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    HANDLE opened = OpenFileMappingW(FILE_MAP_READ, FALSE, L"positions");
    auto* writer = static_cast<char*>(MapViewOfFile(again, FILE_MAP_WRITE, 0, 0, 0));
    auto* reader = static_cast<const char*>(MapViewOfFile(opened, FILE_MAP_READ, 0, 0, 0));
    ASSERT_TRUE(writer && reader);
    std::strcpy(writer, "N 5000.0");
    EXPECT_STREQ(reader, "N 5000.0");
    EXPECT_EQ(reader[4095], 0) << "fresh memory is zeroed";
    for (HANDLE h : {first, again, opened}) CloseHandle(h);
    EXPECT_STREQ(reader, "N 5000.0") << "views keep the memory";
    UnmapViewOfFile(writer);
    UnmapViewOfFile(reader);
    EXPECT_EQ(OpenFileMappingW(FILE_MAP_READ, FALSE, L"positions"), nullptr) << "the name goes with the last view";
    EXPECT_EQ(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 0, nullptr), nullptr);
}

}  // namespace
