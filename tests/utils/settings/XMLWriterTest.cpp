#include "utils/settings/XMLWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

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

TEST_F(HistoryWriterTest, TornTailDoesNotStopTheNextOpen) {
    // One session: an element, an eight-digit CheckSum (so it restores), the root's end tag.
    auto session = [this](const wchar_t* name, const wchar_t* text, bool& created) {
        CXMLWriter w;
        created = false;
        ASSERT_TRUE(w.Open(kDoc, created));
        w.WriteElementString(name, text);
        w.WriteCheckSum();
        w.WriteEndElement();
        w.Close();
    };
    bool created = false;
    session(L"Point", L"P17", created);
    const std::string whole = Bytes();
    const std::string endLine = U16(L"</NurvoJobHistory>\r\n");
    const std::string sumLine = U16(L"<CheckSum>4C284B15</CheckSum>\r\n");
    ASSERT_EQ(whole.substr(whole.size() - endLine.size() - sumLine.size()), sumLine + endLine);
    const size_t afterSum = whole.size() - endLine.size();
    const size_t afterPoint = afterSum - sumLine.size();
    const size_t header = 2 + U16(L"<?xml version=\"1.0\"?>\r\n").size();
    std::remove(root_.HostPath(kDoc).c_str());
    session(L"b", L"2", created);
    const std::string fresh = Bytes();

    enum Verdict { eVerifies, eMismatch, eUnchecked };
    struct Cut {
        size_t length;    // what the crash left of the first session
        size_t kept;      // where the next session continues
        Verdict verdict;  // eMismatch where the cut took the CheckSum the restore needs
    };
    const Cut cuts[] = {
        {whole.size() - 1, afterSum, eVerifies},          // half of the last line feed
        {whole.size() - 2, afterSum, eVerifies},          // the end tag without CR LF
        {whole.size() - 7, afterSum, eVerifies},          // inside the end tag, odd
        {whole.size() - 8, afterSum, eVerifies},          // inside the end tag, even
        {afterSum, afterSum, eVerifies},                  // the end tag never written
        {afterSum - 1, afterSum - 2, eMismatch},          // half of the CheckSum's line feed
        {afterSum - 21, afterPoint, eMismatch},           // inside the CheckSum element, odd
        {afterPoint + 4, afterPoint, eMismatch},          // inside the CheckSum element, even
        {afterPoint - 3, afterPoint - 4, eMismatch},      // an element whole but its line end
        {header + 10, header, eUnchecked},                // torn in the root's start tag
        {header, header, eUnchecked},                     // the declaration alone
        {header - 1, header - 2, eUnchecked},             // the declaration but half its LF
        {1, 0, eUnchecked},                               // shorter than the end tag
        {0, 0, eUnchecked},                               // an empty file
    };
    const size_t endTagBytes = U16(L"</NurvoJobHistory>").size();
    for (const Cut& cut : cuts) {
        SCOPED_TRACE("cut to " + std::to_string(cut.length) + " bytes");
        kiv_test::WriteFileBytes(root_.HostPath(kDoc), whole.substr(0, cut.length));
        session(L"b", L"2", created);
        EXPECT_FALSE(created);
        const std::string bytes = Bytes();
        EXPECT_EQ(bytes.size() % 2, 0u);
        ASSERT_GE(bytes.size(), cut.kept);
        EXPECT_EQ(bytes.substr(0, cut.kept), whole.substr(0, cut.kept));
        // The new session reads as whole characters right after the kept bytes; a file
        // too short for the end tag had no root to reopen, so nothing is nested in it.
        const bool rooted = cut.length >= endTagBytes;
        const std::string added = bytes.substr(cut.kept);
        const std::string element = U16(rooted ? L" <b>2</b>\r\n<CheckSum>" : L"<b>2</b>\r\n<CheckSum>");
        EXPECT_EQ(added.substr(0, element.size()), element);
        const std::string last = rooted ? endLine : U16(L"</CheckSum>\r\n");
        EXPECT_EQ(added.substr(added.size() - last.size()), last);
        const auto verdict = kiv_history::VerifyHistory(bytes);
        if (cut.verdict == eVerifies) {
            EXPECT_TRUE(verdict.ok) << kiv_text::FromUtf16Le(bytes.substr(2));
            ASSERT_EQ(verdict.checks.size(), 2u);
            EXPECT_EQ(verdict.checks[1].basis, kiv_history::eRestored);
        } else if (cut.verdict == eMismatch) {
            // The writer restarted from zero where no CheckSum precedes the kept bytes;
            // that session's CheckSum cannot be matched, and the verifier says so.
            EXPECT_FALSE(verdict.ok);
            EXPECT_NE(verdict.problem.find(L"does not match"), std::wstring::npos) << verdict.problem;
        }
    }
}

TEST_F(HistoryWriterTest, OpeningAndClosingWithNothingWrittenChangesNoByte) {
    const std::string decl = kBom + U16(L"<?xml version=\"1.0\"?>\r\n");
    const std::string files[] = {
        "",                                                             // empty
        "hello",                                                        // none of ours, odd
        decl,                                                           // the declaration alone
        decl + U16(L"<NurvoJobHistory>\r\n<Other>x</Other>"),             // complete, no last CR LF
        decl + U16(L"<NurvoJobHistory>\r\n <a>1</a>\r\n <b>2</b"),        // torn inside a tag
        decl + U16(L"<NurvoJobHistory>\r\n <a>1</a>\r\n</NurvoJobHistory>\r\n"),
    };
    for (const std::string& file : files) {
        SCOPED_TRACE(testing::PrintToString(file));
        kiv_test::WriteFileBytes(root_.HostPath(kDoc), file);
        CXMLWriter w;
        bool created = true;
        ASSERT_TRUE(w.Open(kDoc, created));
        EXPECT_FALSE(created);
        w.Close();
        EXPECT_EQ(Bytes(), file);
    }
}

TEST_F(HistoryWriterTest, ContentWithoutTheEndTagIsKeptAndAppendedTo) {
    const std::string decl = kBom + U16(L"<?xml version=\"1.0\"?>\r\n");
    const auto append = [this](const std::string& file) {
        kiv_test::WriteFileBytes(root_.HostPath(kDoc), file);
        CXMLWriter w;
        bool created = true;
        EXPECT_TRUE(w.Open(kDoc, created));
        EXPECT_FALSE(created);
        w.WriteElementString(L"e", L"1");
        w.Close();
        return Bytes();
    };
    // A complete last line without its CR LF is content, not a torn tail.
    const std::string other = decl + U16(L"<NurvoJobHistory>\r\n<Other>x</Other>");
    EXPECT_EQ(append(other), other + U16(L" <e>1</e>\r\n"));
    // Files that are none of ours keep their bytes; the writer continues at their end.
    EXPECT_EQ(append("hello!"), "hello!" + U16(L"<e>1</e>\r\n"));
    EXPECT_EQ(append(""), U16(L"<e>1</e>\r\n"));
    // A line cut inside a tag is replaced by the new content, and only then.
    const std::string kept = decl + U16(L"<NurvoJobHistory>\r\n <a>1</a>\r\n");
    EXPECT_EQ(append(kept + U16(L" <b>22222222</b")), kept + U16(L" <e>1</e>\r\n"));
}
