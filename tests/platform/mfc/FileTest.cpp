// CFile on real files: MFC's open flags (as the checksummed history writer combines
// them), sharing between two CFile objects, reading, writing, seeking and lengths.
#include <gtest/gtest.h>

#include <string>

#include "platform/mfc/File.h"
#include "tests/support/TestSupport.h"

namespace {

constexpr UINT kHistoryFlags =
    CFile::modeReadWrite | CFile::modeCreate | CFile::modeNoTruncate | CFile::shareDenyWrite | CFile::typeBinary;

class MfcFile : public ::testing::Test {
protected:
    std::string Bytes(const char* name) { return kiv_test::ReadFileBytes(root.path() + "/" + name); }
    kiv_test::TempDeviceRoot root;
};

TEST_F(MfcFile, SeeksReadsAndCutsAndAClosedFileIgnoresEverything) {
    kiv_test::WriteFileBytes(root.path() + "/f.bin", "0123456789");
    CFile file;
    ASSERT_TRUE(file.Open(L"\\f.bin", CFile::modeRead | CFile::shareDenyNone));
    EXPECT_EQ(file.Seek(-4, CFile::end), 6);
    char buffer[8] = {};
    EXPECT_EQ(file.Read(buffer, 8), 4u);
    EXPECT_EQ(std::string(buffer, 4), "6789");
    EXPECT_EQ(file.GetPosition(), 10u);
    EXPECT_EQ(file.Seek(-11, CFile::current), -1);
    EXPECT_EQ(file.GetPosition(), 10u);
    EXPECT_EQ(file.Seek(2, CFile::begin), 2);
    EXPECT_EQ(file.Read(buffer, 2), 2u);
    EXPECT_EQ(std::string(buffer, 2), "23");
    file.Close();
    ASSERT_TRUE(file.Open(L"\\f.bin", CFile::modeReadWrite));
    file.SeekToEnd();
    file.SetLength(3);  // a position beyond the new end comes back to it
    EXPECT_EQ(file.GetLength(), 3u);
    EXPECT_EQ(file.GetPosition(), 3u);
    file.Close();
    file.Write("x", 1);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    char c;
    EXPECT_EQ(file.Read(&c, 1), 0u);
    EXPECT_EQ(file.Seek(0, CFile::begin), -1);
    EXPECT_EQ(file.GetLength(), 0u);
    EXPECT_EQ(Bytes("f.bin"), "012");
}

}  // namespace
