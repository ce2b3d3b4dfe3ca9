#include "utils/settings/XmlConfigStorage.h"

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/XmlParser.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

const wchar_t kFile[] = L"\\settings.xml";

class XmlSettingsTest : public ::testing::Test {
protected:
    std::string Host() const { return root_.HostPath(kFile); }
    std::string Text() const { return kiv_test::ReadFileBytes(Host()); }
    void WriteText(const std::string& utf8) { kiv_test::WriteFileBytes(Host(), utf8); }
    kiv_test::TempDeviceRoot root_;
};

#ifndef _WIN32
// Acts as an unprivileged user for its scope when the tests run as the superuser.
class OrdinaryUser {
public:
    OrdinaryUser() : switched_(::geteuid() == 0), ok_(!switched_ || ::seteuid(65534) == 0) {}
    ~OrdinaryUser() {
        if (switched_ && ok_ && ::seteuid(0) != 0) std::abort();
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    bool ok() const { return ok_; }

private:
    bool switched_;
    bool ok_;
};
#endif

std::string Doc(const std::string& body) { return "<?xml version=\"1.0\"?>\r\n<kiv_config>\r\n" + body + "</kiv_config>\r\n"; }

}  // namespace

TEST_F(XmlSettingsTest, EveryTypeRoundTripsThroughSaveAndLoad) {
    {
        CXmlConfigStorage s(kFile);
        CConfigGroup& g = s.GetGroup(L"Stake");
        g.SetStringValue(L"Name", L"Nordfeld Süd \u00e9");
        g.SetIntegerValue(L"Count", -2147483647 - 1);
        g.SetDoubleValue(L"Tolerance", 0.05);
        g.SetBooleanValue(L"Auto", true);
        g.SetBooleanValue(L"Off", false);
        g.GetGroup(L"Inner").SetIntegerValue(L"Depth", 2);
        g.SetDoubleValue(L"pi", 3.14159265);
        g.SetDoubleValue(L"up", INFINITY);
        g.SetDoubleValue(L"down", -INFINITY);
        g.SetDoubleValue(L"none", NAN);
    }
    CXmlConfigStorage s(kFile);
    CConfigGroup& g = s.GetGroup(L"Stake");
    EXPECT_EQ(g.GetStringValue(L"Name"), L"Nordfeld Süd \u00e9");
    EXPECT_EQ(g.GetIntegerValue(L"Count", 0), -2147483647 - 1);
    EXPECT_EQ(g.GetDoubleValue(L"Tolerance", 0), 0.05);
    EXPECT_TRUE(g.GetBooleanValue(L"Auto", false));
    EXPECT_FALSE(g.GetBooleanValue(L"Off", true));
    EXPECT_EQ(g.GetGroup(L"Inner").GetIntegerValue(L"Depth", 0), 2);
    EXPECT_EQ(g.GetValue(L"Tolerance").GetType(), CConfigValue::Double);
    EXPECT_EQ(g.GetDoubleValue(L"pi", 0), 3.141593);  // six decimals are kept
    EXPECT_EQ(g.GetDoubleValue(L"up", 0), INFINITY);
    EXPECT_EQ(g.GetDoubleValue(L"down", 0), -INFINITY);
    EXPECT_TRUE(std::isnan(g.GetDoubleValue(L"none", 0)));
}

TEST_F(XmlSettingsTest, FileHasOneElementALineAndIsWellFormed) {
    {
        CXmlConfigStorage s(kFile);
        s.GetGroup(L"A").SetDoubleValue(L"Tolerance", 0.05);
        s.GetGroup(L"A").GetGroup(L"B").SetStringValue(L"Code", L"TREE");
    }
    EXPECT_EQ(Text(), Doc("<group name=\"A\">\r\n<value name=\"Tolerance\" type=\"dbl\">0.050000</value>\r\n"
                          "<group name=\"B\">\r\n<value name=\"Code\" type=\"str\">TREE</value>\r\n</group>\r\n"
                          "</group>\r\n"));
#ifndef _WIN32  // the independent reader is the Linux host's xmllint; Windows has none
    const std::string command = "xmllint --noout '" + Host() + "' 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << "xmllint rejected " << Text();
#endif
}

TEST_F(XmlSettingsTest, NamelessGroupIsSkippedAndItsEndTagEndsTheEnclosingGroup) {
    WriteText(Doc("<group name=\"A\">\r\n<group>\r\n<value name=\"inner\" type=\"int\">1</value>\r\n</group>\r\n"
                  "<value name=\"late\" type=\"int\">2</value>\r\n</group>\r\n"
                  "<group name=\"B\">\r\n</group>\r\n"));
    CXmlConfigStorage s(kFile);
    ASSERT_EQ(s.GetNumberOfGroups(), 2u);
    CConfigGroup& a = s.GetGroup(0u);
    EXPECT_EQ(a.GetName(), L"A");
    EXPECT_EQ(a.GetNumberOfValues(), 1u);
    EXPECT_EQ(a.GetIntegerValue(L"inner", 0), 1);
    // "late" was read after A ended early, at the top where values are not kept.
    EXPECT_EQ(a.GetIntegerValue(L"late", 0), 0);
    EXPECT_EQ(s.GetGroup(1u).GetName(), L"B");
}

TEST_F(XmlSettingsTest, ReadOnlyFileIsLeftAsItWas) {
    const std::string original = Doc("<group name=\"A\">\r\n</group>\r\n");
    WriteText(original);
    ASSERT_TRUE(SetFileAttributesW(kFile, FILE_ATTRIBUTE_READONLY));
    {
        CXmlConfigStorage s(kFile);
        s.GetGroup(L"A").SetIntegerValue(L"x", 1);
    }
    EXPECT_EQ(Text(), original);
    SetFileAttributesW(kFile, FILE_ATTRIBUTE_NORMAL);
}

// A write-protected card is a folder that takes no new file. A desktop has no folder an
// ordinary test can make so: its read-only attribute does not stop files being made in it.
#ifndef _WIN32
TEST_F(XmlSettingsTest, ReadOnlyMediumIsLeftAsItWas) {
    // A folder that takes no new file, as on a write-protected card. The superuser writes
    // anywhere, so the saves run as an ordinary user.
    const std::wstring file = L"\\card\\settings.xml";
    const std::string original = Doc("<group name=\"A\">\r\n<value name=\"x\" type=\"int\">1</value>\r\n</group>\r\n");
    kiv_test::WriteFileBytes(root_.HostPath(file), original);
    const std::string folder = root_.HostPath(L"\\card");
    ASSERT_EQ(::chmod(root_.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(folder.c_str(), 0555), 0);
    auto s = std::make_unique<CXmlConfigStorage>(file.c_str());
    EXPECT_EQ(s->GetGroup(L"A").GetIntegerValue(L"x", 0), 1);
    s->GetGroup(L"A").SetIntegerValue(L"x", 2);
    s->GetGroup(L"B").SetStringValue(L"y", L"new");
    {
        OrdinaryUser user;
        if (!user.ok()) GTEST_SKIP() << "cannot act as an ordinary user";
        EXPECT_FALSE(s->Flush());
        EXPECT_EQ(s->GetGroup(L"A").GetIntegerValue(L"x", 0), 2);  // the tree keeps the change
        s.reset();  // the last handle's save fails the same way
    }
    ::chmod(folder.c_str(), 0755);
    EXPECT_EQ(kiv_test::ReadFileBytes(root_.HostPath(file)), original);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()), 1);
}
#endif

TEST_F(XmlSettingsTest, FileOverTheReadersCapIsNeverWrittenOver) {
    // The tail is a hole: the file is over the cap without writing 64 MiB.
    WriteText(Doc("<group name=\"A\">\r\n<value name=\"x\" type=\"int\">1</value>\r\n</group>\r\n"));
    const std::uintmax_t size = CXmlParser::kMaxFileBytes + 4096;
    std::filesystem::resize_file(Host(), size);
    const std::string before = kiv_test::ReadFileHead(Host(), 4096);
    kiv_test::LogCapture log;
    {
        CXmlConfigStorage s(kFile);
        EXPECT_EQ(s.GetGroup(L"A").GetIntegerValue(L"x", 7), 7);  // refused, so read as empty
        EXPECT_TRUE(s.IsFileRefused());
        s.GetGroup(L"A").SetIntegerValue(L"y", 2);
        EXPECT_FALSE(s.Flush());
    }
    EXPECT_EQ(std::filesystem::file_size(Host()), size);
    EXPECT_EQ(kiv_test::ReadFileHead(Host(), 4096), before);
    ASSERT_GE(log.count(), 2u);
    EXPECT_EQ(log.entries()[0].level, 1);
    EXPECT_NE(log.entries()[0].text.find(L"not read"), std::wstring::npos);
    EXPECT_NE(log.entries()[1].text.find(L"not written"), std::wstring::npos);
}
