// The history writer: the bytes of a new document, lazy start tags and indentation,
// the running checksum and its restoring on reopening, and closed-file safety.
#include "utils/settings/XMLWriter.h"

#include <gtest/gtest.h>

#include "platform/host/TextCodec.h"
#include "tests/support/TestSupport.h"
#include "utils/settings/HistoryCheckSum.h"
#include "utils/settings/HistoryVerifier.h"

namespace {

const wchar_t kDoc[] = L"\\job_history.xml";
const std::string kBom = "\xFF\xFE";

std::string U16(const std::wstring& text) { return kiv_text::ToUtf16Le(text); }

std::u16string Units(const std::wstring& text) {
    const std::string b = U16(text);
    std::u16string u(b.size() / 2, u'\0');
    for (size_t i = 0; i < u.size(); ++i)
        u[i] = static_cast<char16_t>(static_cast<unsigned char>(b[2 * i]) | (static_cast<unsigned char>(b[2 * i + 1]) << 8));
    return u;
}

class HistoryWriterTest : public ::testing::Test {
protected:
    std::string Bytes() const { return kiv_test::ReadFileBytes(root_.HostPath(kDoc)); }
    kiv_test::TempDeviceRoot root_;
};

}  // namespace

TEST_F(HistoryWriterTest, NewDocumentHasMarkAndDeclarationAndALazyRoot) {
    CXMLWriter w;
    bool created = false;
    ASSERT_TRUE(w.Open(kDoc, created));
    EXPECT_TRUE(created);
    w.Close();
    EXPECT_EQ(Bytes(), kBom + U16(L"<?xml version=\"1.0\"?>\r\n"));
}

TEST_F(HistoryWriterTest, NestedElementsIndentStartTagsButNotEndTags) {
    CXMLWriterBase w;
    bool created = false;
    ASSERT_TRUE(w.Open(kDoc, created));
    w.WriteStartElement(L"a");
    w.WriteStartElement(L"b");
    w.WriteString(L"x");
    w.WriteEndElement();
    w.WriteEndElement();
    w.WriteStartElement(L"empty");
    w.WriteEndElement();
    w.Close();
    EXPECT_EQ(Bytes(), U16(L"<a>\r\n <b>x</b>\r\n</a>\r\n<empty></empty>\r\n"));
}

TEST_F(HistoryWriterTest, EachCallReachesTheFileBeforeItReturns) {
    CXMLWriter w;
    bool created = false;
    ASSERT_TRUE(w.Open(kDoc, created));
    w.WriteElementString(L"Point", L"P1");
    EXPECT_EQ(Bytes(), kBom + U16(L"<?xml version=\"1.0\"?>\r\n<NurvoJobHistory>\r\n <Point>P1</Point>\r\n"));
    w.Close();
}

TEST_F(HistoryWriterTest, ChecksumFoldsLowBytesIntoFourLanes) {
    int lane = 0;
    EXPECT_EQ(kiv_history::FoldCheckSum(u"AB", 0, lane), 0x4241u);
    EXPECT_EQ(lane, 2);
    EXPECT_EQ(kiv_history::FoldCheckSum(u"", 0x4241, lane), 0x4241u);
    EXPECT_EQ(kiv_history::FoldCheckSum(u"\u0143", 0, lane), 0x430000u);  // only the low byte counts
    EXPECT_EQ(lane, 3);
}

TEST_F(HistoryWriterTest, ChecksumElementHoldsTheValueBeforeIt) {
    CXMLWriter w;
    bool created = false;
    ASSERT_TRUE(w.Open(kDoc, created));
    w.WriteElementString(L"a", L"1");
    const unsigned before = w.GetCheckSum();
    w.WriteCheckSum();
    w.WriteEndElement();
    w.Close();
    CKivStringT element;
    element.Format(L"<CheckSum>%X</CheckSum>\r\n</NurvoJobHistory>\r\n", before);
    const std::string bytes = Bytes();
    const std::string tail = U16(element.str());
    ASSERT_GE(bytes.size(), tail.size());
    EXPECT_EQ(bytes.substr(bytes.size() - tail.size()), tail);
}

TEST_F(HistoryWriterTest, ReopeningRestoresFromAnEightDigitChecksum) {
    const std::wstring head = L"<?xml version=\"1.0\"?>\r\n<NurvoJobHistory>\r\n";
    const std::wstring element = L"<CheckSum>89ABCDEF</CheckSum>\r\n";
    kiv_test::WriteFileBytes(root_.HostPath(kDoc), kBom + U16(head + element + L"</NurvoJobHistory>\r\n"));
    CXMLWriter w;
    bool created = true;
    ASSERT_TRUE(w.Open(kDoc, created));
    EXPECT_FALSE(created);
    const std::int64_t windowPos = 2 + 2 * static_cast<std::int64_t>(head.size());
    int lane = static_cast<int>(windowPos % 4);
    EXPECT_EQ(w.GetCheckSum(), kiv_history::FoldCheckSum(Units(element), 0x89ABCDEF, lane));
    w.WriteElementString(L"e", L"1");
    w.WriteEndElement();
    w.Close();
    EXPECT_EQ(Bytes(), kBom + U16(head + element + L" <e>1</e>\r\n</NurvoJobHistory>\r\n"));
}

TEST_F(HistoryWriterTest, ShortChecksumsDoNotRestore) {
    // Deliberate behaviour of the restore: fewer than eight digits start the window too
    // early, and the number at index 10 does not read.
    auto windowFor = [](const std::wstring& digits) {
        const std::wstring element = L"<CheckSum>" + digits + L"</CheckSum>\r\n";
        return Units(std::wstring(31 - element.size(), L'>') + element);
    };
    for (const std::wstring digits : {L"1A2B", L"1234567", L"ABC"})
        EXPECT_FALSE(kiv_history::RestoreFromWindow(windowFor(digits), 0).ok);
    // With two digits index 10 falls on the tag's own "c", which reads as hex C.
    const auto garbage = kiv_history::RestoreFromWindow(windowFor(L"12"), 0);
    ASSERT_TRUE(garbage.ok);
    int lane = 0;
    EXPECT_EQ(garbage.sum, kiv_history::FoldCheckSum(windowFor(L"12"), 0xC, lane));
    const std::wstring eight = L"<CheckSum>0000ABCD</CheckSum>\r\n";
    const auto restored = kiv_history::RestoreFromWindow(Units(eight), 6);
    EXPECT_TRUE(restored.ok);
    EXPECT_EQ(restored.lane, (2 + 31) % 4);
}

TEST_F(HistoryWriterTest, ClosedWriterIgnoresWritesAndKeepsItsChecksum) {
    CXMLWriter w;
    w.WriteElementString(L"a", L"b");
    w.WriteCheckSum();
    EXPECT_EQ(w.GetCheckSum(), 0u);
    bool created = false;
    ASSERT_TRUE(w.Open(kDoc, created));
    w.Close();
    w.WriteString(L"late");
    EXPECT_EQ(Bytes(), kBom + U16(L"<?xml version=\"1.0\"?>\r\n"));
}

TEST_F(HistoryWriterTest, OpenFailsWhenTheFolderIsMissing) {
    CXMLWriter w;
    bool created = false;
    EXPECT_FALSE(w.Open(L"\\no such folder\\h.xml", created));
}

TEST_F(HistoryWriterTest, TornTailDoesNotStopTheNextOpen) {
    {
        CXMLWriter w;
        bool created = false;
        ASSERT_TRUE(w.Open(kDoc, created));
        w.WriteElementString(L"a", L"1");
        w.WriteCheckSum();
        w.WriteEndElement();
        w.Close();
    }
    std::string bytes = Bytes();
    kiv_test::WriteFileBytes(root_.HostPath(kDoc), bytes.substr(0, bytes.size() - 7));
    CXMLWriter w;
    bool created = true;
    ASSERT_TRUE(w.Open(kDoc, created));
    EXPECT_FALSE(created);
    w.WriteElementString(L"b", L"2");
    w.Close();
    EXPECT_EQ(Bytes().substr(0, bytes.size() - 7), bytes.substr(0, bytes.size() - 7));
}
