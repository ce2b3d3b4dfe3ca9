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

TEST_F(MfcFile, CreateKeepsAnExistingDocumentOnlyWithNoTruncateAndOpenNeedsTheFile) {
    kiv_test::WriteFileBytes(root.path() + "/h.xml", "history");
    CFile file;
    ASSERT_TRUE(file.Open(L"\\H.XML", kHistoryFlags));
    EXPECT_EQ(file.GetLength(), 7u);
    EXPECT_EQ(file.SeekToEnd(), 7u);
    file.Write("+", 1);
    file.Close();
    EXPECT_EQ(Bytes("h.xml"), "history+");
    ASSERT_TRUE(file.Open(L"\\new.xml", kHistoryFlags));
    EXPECT_EQ(file.GetLength(), 0u);
    file.Close();
    ASSERT_TRUE(file.Open(L"\\h.xml", CFile::modeWrite | CFile::modeCreate));
    file.Close();
    EXPECT_EQ(Bytes("h.xml"), "");
    CFileException error;
    EXPECT_FALSE(file.Open(L"\\none.xml", CFile::modeRead, &error));
    EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
    EXPECT_EQ(error.m_lOsError, static_cast<LONG>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(error.m_strFileName, L"\\none.xml");
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(MfcFile, DenyWriteKeepsOtherWritersOutButLetsReadersIn) {
    CFile writer;
    ASSERT_TRUE(writer.Open(L"\\h.xml", kHistoryFlags));
    CFile other;
    CFileException error;
    EXPECT_FALSE(other.Open(L"\\h.xml", CFile::modeWrite | CFile::shareDenyNone, &error));
    EXPECT_EQ(error.m_cause, CFileException::sharingViolation);
    EXPECT_TRUE(other.Open(L"\\h.xml", CFile::modeRead | CFile::shareDenyNone));
    other.Close();
    // shareCompat is exclusive, as in MFC, so it cannot join the writer.
    EXPECT_FALSE(other.Open(L"\\h.xml", CFile::modeRead));
}

TEST_F(MfcFile, ReopeningWriteOnlyContinuesWhereTheDocumentEnded) {
    CFile file;
    ASSERT_TRUE(file.Open(L"\\h.xml", kHistoryFlags));
    file.Write("<a></a>", 7);
    const LONG position = file.Seek(-4, CFile::current);
    EXPECT_EQ(position, 3);
    file.Close();
    ASSERT_TRUE(file.Open(L"\\h.xml", CFile::modeWrite | CFile::modeCreate | CFile::modeNoTruncate |
                                            CFile::shareDenyWrite | CFile::typeBinary));
    EXPECT_EQ(file.Seek(position, CFile::begin), 3);
    file.Write("<b/></a>", 8);
    char c;
    EXPECT_EQ(file.Read(&c, 1), 0u);  // write-only
    file.Close();
    EXPECT_EQ(Bytes("h.xml"), "<a><b/></a>");
}

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

TEST_F(MfcFile, TheDestructorClosesWhatOpenOpenedAndInvalidFlagsAreRefused) {
    {
        CFile file;
        ASSERT_TRUE(file.Open(L"\\f.bin", CFile::modeWrite | CFile::modeCreate | CFile::shareExclusive));
    }
    CFile again;
    EXPECT_TRUE(again.Open(L"\\f.bin", CFile::modeWrite | CFile::shareExclusive));
    CFileException error;
    EXPECT_FALSE(CFile().Open(L"\\f.bin", 3 | CFile::modeCreate, &error));
    EXPECT_EQ(error.m_lOsError, static_cast<LONG>(ERROR_INVALID_PARAMETER));
}

}  // namespace
