#include "utils/settings/HistoryVerifier.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/host/TextCodec.h"
#include "tests/support/TestSupport.h"
#include "utils/settings/XMLWriter.h"

namespace {

const wchar_t kDoc[] = L"\\history.xml";

class HistoryVerifierTest : public ::testing::Test {
protected:
    // One open/close cycle: `appends` elements, each followed by a checksum.
    void Session(int appends, int& counter) {
        CXMLWriter w;
        bool created = false;
        ASSERT_TRUE(w.Open(kDoc, created));
        for (int i = 0; i < appends; ++i, ++counter) {
            w.WriteElementString(L"Entry", CKivStringT(L"entry " + std::to_wstring(counter)));
            w.WriteCheckSum();
        }
        w.WriteEndElement();
        w.Close();
    }
    std::string Bytes() const { return kiv_test::ReadFileBytes(root_.HostPath(kDoc)); }
    kiv_history::THistoryVerdict Verify() const { return kiv_history::VerifyHistory(Bytes()); }

    kiv_test::TempDeviceRoot root_;
};

int LineOf(const std::wstring& text, size_t at) {
    return 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), L'\n'));
}

std::string Encode(const std::wstring& text) { return "\xFF\xFE" + kiv_text::ToUtf16Le(text); }

}  // namespace

TEST_F(HistoryVerifierTest, ThousandAppendsInFiftySessionsPassAndOneChangedCharacterFails) {
    int counter = 0;
    for (int s = 0; s < 50; ++s) Session(20, counter);
    const auto verdict = Verify();
    ASSERT_TRUE(verdict.ok) << "line " << verdict.failLine << ": " << kiv_text::ToUtf8(verdict.problem);
    EXPECT_EQ(verdict.checks.size(), 1000u);
    // Every session's first checksum comes from a reopened writer (restored or restarted).
    for (size_t i = 20; i < verdict.checks.size(); i += 20) EXPECT_NE(verdict.checks[i].basis, kiv_history::eRunning);

    std::wstring text = kiv_text::DecodeText(Bytes());
    const size_t at = text.find(L"entry 517<");
    ASSERT_NE(at, std::wstring::npos);
    text[at + 1] = L'E';
    kiv_test::WriteFileBytes(root_.HostPath(kDoc), Encode(text));
    const auto changed = Verify();
    EXPECT_FALSE(changed.ok);
    EXPECT_EQ(changed.failLine, LineOf(text, text.find(L"<CheckSum>", at)));
    EXPECT_EQ(changed.checks.size(), 517u);
}

TEST_F(HistoryVerifierTest, ChangedCheckSumDigitFailsOnItsOwnLine) {
    int counter = 0;
    Session(5, counter);
    std::wstring text = kiv_text::DecodeText(Bytes());
    size_t at = 0;
    for (int i = 0; i < 3; ++i) at = text.find(L"<CheckSum>", at + 1);
    wchar_t& digit = text[at + 10];
    digit = digit == L'1' ? L'2' : L'1';
    kiv_test::WriteFileBytes(root_.HostPath(kDoc), Encode(text));
    const auto verdict = Verify();
    EXPECT_FALSE(verdict.ok);
    EXPECT_EQ(verdict.failLine, LineOf(text, at));
    EXPECT_EQ(verdict.checks.size(), 2u);
}

TEST_F(HistoryVerifierTest, SessionAfterAShortChecksumRestartsFromZero) {
    // A running checksum of seven hex digits: the next session cannot restore it.
    {
        CXMLWriter w;
        bool created = false;
        ASSERT_TRUE(w.Open(kDoc, created));
        for (int i = 0; i < 20000 && !(w.GetCheckSum() < 0x10000000u && w.GetCheckSum() >= 0x1000000u); ++i)
            w.WriteElementString(L"x", CKivStringT(std::to_wstring(i)));
        ASSERT_LT(w.GetCheckSum(), 0x10000000u);
        w.WriteCheckSum();
        w.WriteEndElement();
        w.Close();
    }
    {
        CXMLWriter w;
        bool created = false;
        ASSERT_TRUE(w.Open(kDoc, created));
        w.WriteElementString(L"after", L"restart");
        w.WriteCheckSum();
        w.WriteEndElement();
        w.Close();
    }
    const auto verdict = Verify();
    ASSERT_TRUE(verdict.ok) << kiv_text::ToUtf8(verdict.problem);
    ASSERT_EQ(verdict.checks.size(), 2u);
    EXPECT_EQ(verdict.checks[1].basis, kiv_history::eRestarted);
}

TEST_F(HistoryVerifierTest, TornAndForeignDocumentsFail) {
    int counter = 0;
    Session(3, counter);
    const std::string bytes = Bytes();
    const std::wstring text = kiv_text::DecodeText(bytes);

    auto torn = kiv_history::VerifyHistory(bytes.substr(0, bytes.size() - 10));
    EXPECT_FALSE(torn.ok);
    EXPECT_EQ(torn.checks.size(), 3u);
    EXPECT_EQ(torn.failLine, LineOf(text, text.size() - 5));

    auto odd = kiv_history::VerifyHistory(bytes + "x");
    EXPECT_FALSE(odd.ok);

    const size_t lastSum = text.rfind(L"<CheckSum>");
    auto insideElement = kiv_history::VerifyHistory(Encode(text.substr(0, lastSum + 13)));
    EXPECT_FALSE(insideElement.ok);
    EXPECT_EQ(insideElement.failLine, LineOf(text, lastSum));

    auto noMark = kiv_history::VerifyHistory(bytes.substr(2));
    EXPECT_FALSE(noMark.ok);
    EXPECT_EQ(noMark.failLine, 1);
    EXPECT_FALSE(kiv_history::VerifyHistory("").ok);
}

TEST_F(HistoryVerifierTest, MalformedCheckSumElementsFail) {
    const std::wstring head = L"<?xml version=\"1.0\"?>\r\n<NurvoJobHistory>\r\n";
    for (const wchar_t* element : {L"<CheckSum></CheckSum>", L"<CheckSum>123456789</CheckSum>", L"<CheckSum>zz</CheckSum>"}) {
        const auto verdict = kiv_history::VerifyHistory(Encode(head + element + L"\r\n</NurvoJobHistory>\r\n"));
        EXPECT_FALSE(verdict.ok);
        EXPECT_EQ(verdict.failLine, 3);
    }
}
