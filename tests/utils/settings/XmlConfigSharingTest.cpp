// Settings files held by more than one handle (assigned handles share one tree and the
// last one out writes; copied handles read and write on their own), files that only the
// tokenizer reads (values of every type, nesting past the depth bound), and the
// stake-out settings' place.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <memory>
#include <string>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"
#include "utils/settings/AppStrPaths.h"
#include "utils/settings/XmlConfigStorage.h"

namespace {

const wchar_t kFile[] = L"\\shared.xml";
const wchar_t kOther[] = L"\\other.xml";

class XmlConfigSharingTest : public ::testing::Test {
protected:
    std::string Text(const wchar_t* file = kFile) const { return kiv_test::ReadFileBytes(root_.HostPath(file)); }
    bool Exists(const wchar_t* file = kFile) const { return GetFileAttributesW(file) != INVALID_FILE_ATTRIBUTES; }
    kiv_test::TempDeviceRoot root_;
};

// A fresh handle's reading of one integer, so that what was written is read from the file.
int ReadBack(const wchar_t* file, const wchar_t* group, const wchar_t* value) {
    CXmlConfigStorage fresh(file);
    return fresh.GetGroup(group).GetIntegerValue(value, -1);
}

TEST_F(XmlConfigSharingTest, AssignedHandlesShareOneTreeAndOnlyTheLastOneOutWrites) {
    auto first = std::make_unique<CXmlConfigStorage>(kFile);
    {
        CXmlConfigStorage second(kOther);
        second.GetGroup(L"Other").SetIntegerValue(L"n", 1);  // its own tree, owed to its own file
        second = *first;
        EXPECT_TRUE(Exists(kOther)) << "the tree it let go of was written as it went";
        EXPECT_EQ(ReadBack(kOther, L"Other", L"n"), 1);
        EXPECT_EQ(second.GetPath(), CKivStringT(kFile));

        second.GetGroup(L"Stake").SetIntegerValue(L"Increment", 5);
        EXPECT_EQ(first->GetGroup(L"Stake").GetIntegerValue(L"Increment", 0), 5) << "one tree";
        second = second;  // self-assignment keeps the tree
        EXPECT_EQ(second.GetGroup(L"Stake").GetIntegerValue(L"Increment", 0), 5);
    }
    EXPECT_FALSE(Exists()) << "the first handle still holds the changed tree";
    first->GetGroup(L"Stake").SetIntegerValue(L"Offset", 2);
    first.reset();
    ASSERT_TRUE(Exists());
    EXPECT_EQ(ReadBack(kFile, L"Stake", L"Increment"), 5);
    EXPECT_EQ(ReadBack(kFile, L"Stake", L"Offset"), 2);
    EXPECT_NE(Text().find("name=\"Increment\""), std::string::npos);
}

TEST_F(XmlConfigSharingTest, ACopiedHandleReadsTheFileAgainAndTheLastOneReleasedWins) {
    {
        CXmlConfigStorage s(kFile);
        s.GetGroup(L"G").SetIntegerValue(L"v", 1);
    }
    auto original = std::make_unique<CXmlConfigStorage>(kFile);
    EXPECT_EQ(original->GetGroup(L"G").GetIntegerValue(L"v", 0), 1);
    original->GetGroup(L"G").SetIntegerValue(L"v", 2);
    auto copy = std::make_unique<CXmlConfigStorage>(*original);
    EXPECT_EQ(copy->GetPath(), CKivStringT(kFile));
    EXPECT_EQ(copy->GetGroup(L"G").GetIntegerValue(L"v", 0), 1) << "a copy has its own tree, read from the file";
    copy->GetGroup(L"G").SetIntegerValue(L"v", 3);
    EXPECT_EQ(original->GetGroup(L"G").GetIntegerValue(L"v", 0), 2);

    original.reset();
    EXPECT_EQ(ReadBack(kFile, L"G", L"v"), 2);
    copy.reset();
    EXPECT_EQ(ReadBack(kFile, L"G", L"v"), 3) << "the last one released wins";
}

TEST_F(XmlConfigSharingTest, StakeoutSettingsLiveInTheUserSettingsFolder) {
    kiv_host::SetBaseFolders(L"\\Program Files\\Zeb", L"\\Storage Card\\Data", L"\\My Documents\\Zeb");
    CreateDirectoryW(L"\\Storage Card", nullptr);
    CXmlConfigStorage stake = CXmlConfigStorage::GetStakeoutSettings();
    EXPECT_EQ(stake.GetPath(), CKivStringT(L"\\Storage Card\\zeb_setup\\StakeoutSettings.xml"));
    stake.GetGroup(L"Stakeout").SetIntegerValue(L"Mode", 4);
    EXPECT_TRUE(stake.Flush());
    EXPECT_EQ(ReadBack(L"\\Storage Card\\zeb_setup\\StakeoutSettings.xml", L"Stakeout", L"Mode"), 4);
}

// A comment is not in the shape the storage writes, so these files go to the tokenizer.
std::string TokenizerDoc(const std::string& body) {
    return "<?xml version=\"1.0\"?>\r\n<!-- written by hand -->\r\n<kiv_config>\r\n" + body + "</kiv_config>\r\n";
}

TEST_F(XmlConfigSharingTest, HandWrittenFilesReadEveryTypeAsTheFormatHasIt) {
    kiv_test::WriteFileBytes(root_.HostPath(kFile),
                             TokenizerDoc("<group name=\"Outer\">\r\n"
                                          "  <group name=\"Inner\">\r\n"
                                          "    <value name=\"d\" type=\"dbl\">2.5e3</value>\r\n"
                                          "    <value name=\"huge\" type=\"dbl\">1e999</value>\r\n"
                                          "    <value name=\"yes\" type=\"bool\">7</value>\r\n"
                                          "    <value name=\"word\" type=\"bool\">true</value>\r\n"
                                          "    <value name=\"big\" type=\"int\">99999999999</value>\r\n"
                                          "    <value name=\"emptyint\" type=\"int\"></value>\r\n"
                                          "    <value name=\"emptydbl\" type=\"dbl\"></value>\r\n"
                                          "    <value name=\"f\" type=\"float\">1</value>\r\n"
                                          "    <value name=\"untyped\">1</value>\r\n"
                                          "    <value type=\"int\">1</value>\r\n"
                                          "  </group>\r\n"
                                          "</group>\r\n"));
    CXmlConfigStorage s(kFile);
    CConfigGroup& inner = s.GetGroup(L"Outer").GetGroup(L"Inner");
    EXPECT_EQ(inner.GetNumberOfValues(), 7u) << "unknown types, missing types and missing names are skipped";
    EXPECT_EQ(inner.GetDoubleValue(L"d", 0.0), 2500.0);
    EXPECT_TRUE(std::isinf(inner.GetDoubleValue(L"huge", 0.0)));
    EXPECT_TRUE(inner.GetBooleanValue(L"yes", false));
    EXPECT_FALSE(inner.GetBooleanValue(L"word", true)) << "only a non-zero number is true";
    EXPECT_EQ(inner.GetIntegerValue(L"big", 0), INT_MAX);
    EXPECT_EQ(inner.GetIntegerValue(L"emptyint", -1), 0);
    EXPECT_EQ(inner.GetDoubleValue(L"emptydbl", -1.0), 0.0);
}

// Groups nested past the bound are skipped by both readers, whichever reads the file.
TEST_F(XmlConfigSharingTest, NestingStopsAtTheSameDepthInBothReaders) {
    constexpr int kLevels = 230;
    std::string body;
    for (int i = 0; i < kLevels; ++i) body += "<group name=\"g" + std::to_string(i) + "\">\r\n";
    for (int i = 0; i < kLevels; ++i) body += "</group>\r\n";
    const std::string ordinary = "<?xml version=\"1.0\"?>\r\n<kiv_config>\r\n" + body + "</kiv_config>\r\n";
    for (const std::string& doc : {ordinary, TokenizerDoc(body)}) {
        kiv_test::WriteFileBytes(root_.HostPath(kFile), doc);
        CXmlConfigStorage s(kFile);
        int depth = 0;
        CConfigGroup* g = nullptr;
        for (unsigned n = s.GetNumberOfGroups(); n > 0; n = g->GetNumberOfGroups()) {
            g = g ? &g->GetGroup(0u) : &s.GetGroup(0u);
            ++depth;
        }
        EXPECT_EQ(depth, 200) << (doc == ordinary ? "quick reader" : "tokenizer");
    }
}

}  // namespace
