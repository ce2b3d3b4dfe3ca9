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
