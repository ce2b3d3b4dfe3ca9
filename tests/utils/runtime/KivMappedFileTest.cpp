// Mapped files through real files: written through a view and read back with read(),
// copy-on-write and read-only views that leave the file alone, and the mapping's hold
// on the file.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "tests/support/TestSupport.h"
#include "utils/runtime/KivMappedFile.h"

namespace {

class KivMappedFileTest : public ::testing::Test {
protected:
    // The file's bytes as the host's read() sees them, past any cache of ours.
    std::string ReadWithRead(const std::wstring& devicePath) {
        const int fd = ::open(root.HostPath(devicePath).c_str(), O_RDONLY);
        std::string bytes;
        char buffer[65536];
        for (ssize_t n; fd >= 0 && (n = ::read(fd, buffer, sizeof buffer)) > 0;) bytes.append(buffer, n);
        if (fd >= 0) ::close(fd);
        return bytes;
    }
    kiv_test::TempDeviceRoot root;
};

TEST_F(KivMappedFileTest, WritesThroughAViewReachTheFileAndGrowIt) {
    const std::wstring path = L"\\Data\\points.bin";
    ASSERT_TRUE(CreateDirectoryW(L"\\Data", nullptr));
    kiv_test::WriteFileBytes(root.HostPath(path), "HEAD");
    const std::size_t size = 3 * 65536 + 100;  // beyond the first view granule, not page-aligned
    CKivMappedFile file;
    ASSERT_TRUE(file.Open(path.c_str(), CKivMappedFile::eReadWrite, size));
    ASSERT_EQ(file.GetSize(), size);
    EXPECT_EQ(std::memcmp(file.GetData(), "HEAD", 4), 0);
    EXPECT_EQ(file.GetData()[size - 1], 0) << "the grown part reads as zeros";
    for (std::size_t i = 4; i < size; ++i) file.GetData()[i] = static_cast<unsigned char>('a' + i % 26);
    ASSERT_TRUE(file.Flush());

    const std::string onDisk = ReadWithRead(path);
    ASSERT_EQ(onDisk.size(), size);
    EXPECT_EQ(onDisk.substr(0, 4), "HEAD");
    for (std::size_t i = 4; i < size; ++i) ASSERT_EQ(onDisk[i], static_cast<char>('a' + i % 26)) << i;
    EXPECT_TRUE(file.Flush(size - 1, 1));
    EXPECT_FALSE(file.Flush(size, 1));
}

TEST_F(KivMappedFileTest, CopyOnWriteChangesStayInMemoryAndReadersKeepWritersOff) {
    const std::wstring path = L"\\image.bin";
    kiv_test::WriteFileBytes(root.HostPath(path), std::string(10000, 'f'));
    CKivMappedFile copy, reader;
    ASSERT_TRUE(copy.Open(path.c_str(), CKivMappedFile::eCopyOnWrite));
    ASSERT_TRUE(reader.Open(path.c_str(), CKivMappedFile::eReadOnly)) << "readers share the file";
    copy.GetData()[0] = 'X';
    EXPECT_TRUE(copy.Flush()) << "nothing to write";
    EXPECT_EQ(reader.GetData()[0], 'f');
    EXPECT_EQ(ReadWithRead(path), std::string(10000, 'f'));

    // Nobody may write (or cut short) the file under the views.
    EXPECT_EQ(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                          nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    CKivMappedFile writer;
    EXPECT_FALSE(writer.Open(path.c_str(), CKivMappedFile::eReadWrite));
    copy.Close();
    reader.Close();
    EXPECT_TRUE(writer.Open(path.c_str(), CKivMappedFile::eReadWrite)) << "closing lets the writers in";
}

}  // namespace
