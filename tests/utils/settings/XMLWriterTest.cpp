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

    struct Cut {
        size_t length;       // what the crash left of the first session
        size_t kept;         // where the next session continues; 0: begun anew
        bool verifies;       // false where the cut took the CheckSum the restore needs
    };
    const Cut cuts[] = {
        {whole.size() - 1, afterSum, true},                   // half of the last line feed
        {whole.size() - 2, afterSum, true},                   // the end tag without CR LF
        {whole.size() - 7, afterSum, true},                   // inside the end tag, odd
        {whole.size() - 8, afterSum, true},                   // inside the end tag, even
        {afterSum, afterSum, true},                           // the end tag never written
        {afterSum - 1, afterPoint, false},                    // half of the CheckSum's line feed
        {afterSum - 21, afterPoint, false},                   // inside the CheckSum element, odd
        {afterPoint + 4, afterPoint, false},                  // inside the CheckSum element, even
        {afterPoint - 3, header + U16(L"<NurvoJobHistory>\r\n").size(), false},  // inside the element
        {header + 10, 0, true},                               // torn in the root's start tag
        {header, 0, true},                                    // the declaration alone
        {header - 1, 0, true},                                // shorter than the declaration
        {1, 0, true},
        {0, 0, true},                                         // an empty file
    };
    for (const Cut& cut : cuts) {
        SCOPED_TRACE("cut to " + std::to_string(cut.length) + " bytes");
        kiv_test::WriteFileBytes(root_.HostPath(kDoc), whole.substr(0, cut.length));
        session(L"b", L"2", created);
        const std::string bytes = Bytes();
        EXPECT_EQ(bytes.size() % 2, 0u);
        if (cut.kept == 0) {
            EXPECT_TRUE(created);
            EXPECT_EQ(bytes, fresh);
            continue;
        }
        EXPECT_FALSE(created);
        ASSERT_GE(bytes.size(), cut.kept);
        EXPECT_EQ(bytes.substr(0, cut.kept), whole.substr(0, cut.kept));
        // The new session reads as whole characters right after the kept lines.
        const std::string added = bytes.substr(cut.kept);
        const std::string element = U16(L" <b>2</b>\r\n<CheckSum>");
        EXPECT_EQ(added.substr(0, element.size()), element);
        EXPECT_EQ(added.substr(added.size() - endLine.size()), endLine);
        const auto verdict = kiv_history::VerifyHistory(bytes);
        if (cut.verifies) {
            EXPECT_TRUE(verdict.ok) << kiv_text::FromUtf16Le(bytes.substr(2));
            ASSERT_EQ(verdict.checks.size(), 2u);
            EXPECT_EQ(verdict.checks[1].basis, kiv_history::eRestored);
        } else {
            // The writer restarted from zero where no CheckSum precedes the kept lines;
            // that session's CheckSum cannot be matched, and the verifier says so there.
            EXPECT_FALSE(verdict.ok);
            const auto keptLines = std::count(bytes.begin(), bytes.begin() + static_cast<long>(cut.kept), '\n');
            EXPECT_EQ(verdict.failLine, static_cast<int>(keptLines) + 2);  // the line after the new element
            EXPECT_NE(verdict.problem.find(L"does not match"), std::wstring::npos) << verdict.problem;
        }
    }
}
