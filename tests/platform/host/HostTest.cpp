#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"
#include "platform/kivutils/KivLog.h"
#include "platform/kivutils/Xlate.h"
#include "tests/support/TestSupport.h"

namespace fs = std::filesystem;

// The device's file system ignores case, in every script: a device path typed in another
// case finds the file that exists, and a new name goes into the folder that exists. (How
// the host path is spelt is the host's business: Linux matches each component, Windows'
// own file system folds case itself.)
TEST(DevicePaths, FindExistingNamesWhateverTheirCase) {
    kiv_test::TempDeviceRoot root;
    kiv_test::WriteFileBytes(root.path() + "/Storage Card/a.txt", "x");
    EXPECT_EQ(kiv_test::ReadFileBytes(kiv_host::ToHostPath(L"\\STORAGE CARD\\a.TXT")), "x");
    kiv_test::WriteFileBytes(kiv_host::ToHostPath(L"\\storage card\\New\\b.txt"), "y");
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/Storage Card/New/b.txt"), "y");
    EXPECT_EQ(kiv_host::ToHostPath(L"/etc/hostname"), "/etc/hostname");
    EXPECT_EQ(kiv_host::ToHostPath(L"relative.txt"), "relative.txt");

    // Про/Αθήνα Ä.txt found as про/ΑΘΉΝΑ ä.TXT
    kiv_test::WriteFileBytes(root.path() + "/\u041F\u0440\u043E/\u0391\u03B8\u03AE\u03BD\u03B1 \u00C4.txt", "z");
    EXPECT_EQ(kiv_test::ReadFileBytes(
                  kiv_host::ToHostPath(L"\\\u043F\u0440\u043E\\\u0391\u0398\u0389\u039D\u0391 \u00E4.TXT")),
              "z");
}

TEST(DevicePaths, BackslashSeparatesHostAndRelativePathsToo) {
    EXPECT_EQ(kiv_host::ToHostPath(L"/data/maps\\site.vec"), "/data/maps/site.vec");
    EXPECT_EQ(kiv_host::ToHostPath(L"/data\\maps\\a\\b.vec"), "/data/maps/a/b.vec");
    EXPECT_EQ(kiv_host::ToHostPath(L"sub\\a.ini"), "sub/a.ini");
}

TEST(DevicePaths, NeverClimbAboveTheDeviceRoot) {
    kiv_test::TempDeviceRoot root;
    EXPECT_EQ(kiv_host::ToHostPath(L"\\..\\..\\etc\\passwd"), root.path() + "/etc/passwd");
    EXPECT_EQ(kiv_host::ToHostPath(L"\\a\\.\\b\\..\\c"), root.path() + "/a/c");
}

TEST(HostKnobs, DefaultsComeFromTheEnvironmentUntilSet) {
    kiv_host::ResetForTesting();
    ::setenv("KIV_DEVICE_ROOT", "/tmp/kiv-env-root", 1);
    ::setenv("KIV_ROOT_DIR", "\\Elsewhere", 1);
    ::setenv("KIV_MODEL", "mirel", 1);
    EXPECT_EQ(kiv_host::GetDeviceRoot(), "/tmp/kiv-env-root");
    EXPECT_EQ(kiv_host::GetRootFolder(), L"\\Elsewhere");
    EXPECT_EQ(kiv_host::GetModel(), kiv_host::EModel::Mirel);
    kiv_host::SetDeviceRoot("/tmp/set");
    kiv_host::SetModel(kiv_host::EModel::Getac);
    EXPECT_EQ(kiv_host::GetDeviceRoot(), "/tmp/set");
    EXPECT_EQ(kiv_host::GetModel(), kiv_host::EModel::Getac);
    ::unsetenv("KIV_DEVICE_ROOT");
    ::unsetenv("KIV_ROOT_DIR");
    ::unsetenv("KIV_MODEL");
    kiv_host::ResetForTesting();
    EXPECT_EQ(kiv_host::GetExeFolder(), L"\\Program Files\\Zeb");
    EXPECT_EQ(kiv_host::GetRootFolder(), L"\\Zeb");
    EXPECT_EQ(kiv_host::GetDocsFolder(), L"\\My Documents\\Zeb");
    EXPECT_EQ(kiv_host::GetModel(), kiv_host::EModel::Unknown);
}


TEST(Logs, ReachTheSinkWithLevelSourceAndLine) {
    kiv_test::LogCapture logs;
    kiv_err_log("UnitConvertEx", 42, L"");
    LOGMESSAGE(1, L"cannot read %s (%d)", L"file.xml", 7);
    KIV_TRACE_DEBUG(L"trace %.1f", 0.5);
    ASSERT_EQ(logs.count(), 3u);
    EXPECT_EQ(logs.entries()[0].level, 0);
    EXPECT_EQ(logs.entries()[0].source, "UnitConvertEx");
    EXPECT_EQ(logs.entries()[0].line, 42);
    EXPECT_EQ(logs.entries()[1].text, L"cannot read file.xml (7)");
    EXPECT_EQ(logs.entries()[1].source, "HostTest");
    EXPECT_EQ(logs.entries()[2].level, kiv_host::kLogDebug);
}

TEST(TextCodec, RoundTripsBeyondTheBasicPlane) {
    const std::wstring text = L"a\u00E9\u20AC\U0001F600z";
    EXPECT_EQ(kiv_text::FromUtf8(kiv_text::ToUtf8(text)), text);
    const std::string utf16 = kiv_text::ToUtf16Le(text);
    EXPECT_EQ(utf16.size(), 2u * 6);  // the emoji takes a surrogate pair
    EXPECT_EQ(kiv_text::FromUtf16Le(utf16), text);
    EXPECT_EQ(kiv_text::FromUtf8("\xC3"), L"\uFFFD");
    EXPECT_EQ(kiv_text::FromUtf16Le(std::string("\x00\xD8", 2)), L"\uFFFD");  // lone surrogate
    kiv_text::Encoding e;
    EXPECT_EQ(kiv_text::DecodeText(std::string("\xFF\xFE" "a\0", 4), &e), L"a");
    EXPECT_EQ(e, kiv_text::Encoding::Utf16LeBom);
    EXPECT_EQ(kiv_text::DecodeText("caf\xE9", &e), L"caf\u00E9");
    EXPECT_EQ(e, kiv_text::Encoding::Latin1);
}

TEST(TextCodec, AStrayByteInUtf8TextSpoilsOnlyItself) {
    kiv_text::Encoding e;
    // UTF-8 "Straße Про" with a Latin-1 "café" added and a sequence cut short at the end.
    EXPECT_EQ(kiv_text::DecodeText("Stra\xC3\x9F" "e \xD0\x9F\xD1\x80\xD0\xBE caf\xE9 \xD0", &e),
              L"Stra\u00DFe \u041F\u0440\u043E caf\u00E9 \u00D0");
    EXPECT_EQ(e, kiv_text::Encoding::Utf8);
    EXPECT_EQ(kiv_text::DecodeText("\xD0\x9F\xFF", &e), L"\u041F\u00FF");  // as many of each
    EXPECT_EQ(e, kiv_text::Encoding::Utf8);
    // Latin-1 text in which one pair happens to be valid UTF-8 stays Latin-1 throughout.
    EXPECT_EQ(kiv_text::DecodeText("\xC4\xB0 K\xF6ln M\xFCnster", &e), L"\u00C4\u00B0 K\u00F6ln M\u00FCnster");
    EXPECT_EQ(e, kiv_text::Encoding::Latin1);
}

TEST(Xlate, TranslatesOnlyAfterALanguageFileIsLoaded) {
    kiv_test::TempDeviceRoot root;
    EXPECT_STREQ(Xlate(L"ch"), L"ch");
    kiv_test::WriteFileBytes(root.HostPath(L"\\lang\\de.txt"),
                             "\xEF\xBB\xBF# units\nch\tkt\nTab\\there\tTab\\tda\n\nf\t\\\\\n");
    ASSERT_TRUE(LoadLanguageFile(L"\\lang\\de.txt"));
    EXPECT_STREQ(Xlate(L"ch"), L"kt");
    EXPECT_STREQ(Xlate(L"Tab\there"), L"Tab\tda");
    EXPECT_STREQ(Xlate(L"f"), L"\\");
    EXPECT_STREQ(Xlate(L"m"), L"m");
    const wchar_t* held = Xlate(L"ch");
    kiv_test::WriteFileBytes(root.HostPath(L"\\lang\\bad.txt"), "ok\tfine\nno tab here\n");
    {
        kiv_test::LogCapture logs;
        EXPECT_FALSE(LoadLanguageFile(L"\\lang\\bad.txt"));
        ASSERT_EQ(logs.count(), 1u);
        EXPECT_NE(logs.entries()[0].text.find(L"line 2"), std::wstring::npos);
    }
    EXPECT_STREQ(Xlate(L"ch"), L"kt");  // the failed load changed nothing
    kiv_test::WriteFileBytes(root.HostPath(L"\\lang\\fr.txt"), std::string("\xFF\xFE" "c\0h\0\t\0x\0", 10));
    ASSERT_TRUE(LoadLanguageFile(L"\\lang\\fr.txt"));
    EXPECT_STREQ(Xlate(L"ch"), L"x");
    EXPECT_STREQ(held, L"kt");  // earlier results stay valid
    UnloadLanguage();
    EXPECT_STREQ(Xlate(L"ch"), L"ch");
}
