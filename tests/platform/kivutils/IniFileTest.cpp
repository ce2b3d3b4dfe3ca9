// The INI reader and writer, with a round trip checked by Python's configparser.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/IniFile.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

using kiv_settings::CThreeTupleStore;
using kiv_settings::ETextEncoding;

CThreeTupleStore Parse(const std::string& bytes, ETextEncoding* found = nullptr) {
    CThreeTupleStore store;
    ETextEncoding encoding;
    kiv_settings::parseSettingsIni(bytes, store, encoding);
    if (found) *found = encoding;
    return store;
}

TEST(IniReading, IgnoresCommentsAndKeepsValuesExactly) {
    const auto store = Parse(
        "; comment\r\n# another\r\n[Settings]\r\n  EuStyle  =  1\r\nName=a = b ; not a comment  \r\n"
        "  ; indented comment\r\nEmpty=\r\n");
    EXPECT_EQ(store.GetValue(L"Settings", L"EuStyle"), L"1");
    EXPECT_EQ(store.GetValue(L"Settings", L"Name"), L"a = b ; not a comment  ");
    EXPECT_TRUE(store.HasValue(L"Settings", L"Empty"));
    EXPECT_EQ(store.GetKeyCount(0), 3);
}

TEST(IniReading, EndsLinesAtCrLfLfOrALoneCrAndCutsALineAtNul) {
    static const char bytes[] = "[S]\ra=1\nb=2\r\n\r\nc=3\rd=x\0y=z\n\0e=5\ne=6";
    const auto store = Parse(std::string(bytes, sizeof bytes - 1));
    EXPECT_EQ(store.GetValue(L"S", L"a"), L"1");
    EXPECT_EQ(store.GetValue(L"S", L"b"), L"2");
    EXPECT_EQ(store.GetValue(L"S", L"c"), L"3");
    EXPECT_EQ(store.GetValue(L"S", L"d"), L"x");
    EXPECT_FALSE(store.HasValue(L"S", L"y"));
    // The line that starts with a NUL is empty; the first record of a key wins.
    EXPECT_EQ(store.GetValue(L"S", L"e"), L"6");
    EXPECT_EQ(store.GetKeyCount(0), 5);
}

TEST(IniReading, KeepsOnlyRecordsTheWriterCouldWriteAgain) {
    const auto store = Parse(
        "top = before any header\r\n[Unclosed\r\n[ Spaced ] trailing\r\n = no key\r\nno equals\r\n"
        "\tkey\t=\t  tabbed value\t\r\n[spaced]\r\nKEY=second\r\nother=x\r\n[]\r\nk=in empty\r\n");
    ASSERT_EQ(store.GetSectionCount(), 2);
    // Records before the first header, and those under "[]", are in the section "".
    EXPECT_EQ(store.GetSectionName(0), L"");
    EXPECT_EQ(store.GetValue(L"", L"top"), L"before any header");
    EXPECT_EQ(store.GetValue(L"", L"k"), L"in empty");
    // A header that never closes is skipped; blanks inside the brackets are trimmed and
    // a repeated header, in any case, continues the same section.
    EXPECT_EQ(store.GetSectionName(1), L"Spaced");
    EXPECT_EQ(store.GetKeyCount(1), 2);
    EXPECT_EQ(store.GetValue(L"Spaced", L"key"), L"tabbed value\t");
    EXPECT_EQ(store.GetValue(L"Spaced", L"other"), L"x");
    EXPECT_EQ(store.GetKeyCount(0), 2);
}

TEST(IniReading, ReadsUtf8AndLatin1ByWhatTheBytesAre) {
    ETextEncoding found;
    auto store = Parse("[S]\r\nk=\xC3\xA4\xE6\xB8\xAC\r\n", &found);
    EXPECT_EQ(found, kiv_settings::eEncodingUtf8);
    EXPECT_EQ(store.GetValue(L"S", L"K"), L"\u00E4\u6E2C");
    store = Parse("[S]\r\nk=\xE4\xF6\r\n", &found);
    EXPECT_EQ(found, kiv_settings::eEncodingAnsi);
    EXPECT_EQ(store.GetValue(L"s", L"k"), L"\u00E4\u00F6");
    store = Parse("\xEF\xBB\xBF[S]\nk=v", &found);
    EXPECT_EQ(found, kiv_settings::eEncodingUtf8Bom);
    EXPECT_EQ(store.GetValue(L"S", L"k"), L"v");
}

class IniFiles : public ::testing::Test {
protected:
    CThreeTupleStore ReadBack(ETextEncoding* found = nullptr) {
        CThreeTupleStore store;
        ETextEncoding encoding;
        EXPECT_TRUE(kiv_settings::readSettingsAsIni(L"\\a.ini", store, encoding));
        if (found) *found = encoding;
        return store;
    }
    kiv_test::TempDeviceRoot root;
};

TEST_F(IniFiles, ReadsAFileFromAWindowsTool) {
    // As a Windows editor saves "Unicode": FF FE, UTF-16LE, CR LF.
    kiv_test::WriteFileBytes(root.path() + "/Zeb/nurvo.ini",
                             "\xFF\xFE" + kiv_text::ToUtf16Le(L"[Settings]\r\nMenuType=2\r\nUseDefaultMeasurmentAccuracies=1\r\n"
                                                              L"[Bluetooth]\r\nTs=\u00C5land \u6E2C\u91CF\r\n"));
    CThreeTupleStore store;
    ETextEncoding encoding = kiv_settings::eEncodingAnsi;
    ASSERT_TRUE(kiv_settings::readSettingsAsIni(L"\\zeb\\NURVO.INI", store, encoding));
    EXPECT_EQ(encoding, kiv_settings::eEncodingUtf16LE);
    EXPECT_EQ(store.GetValue(L"Settings", L"MenuType"), L"2");
    EXPECT_EQ(store.GetValue(L"Bluetooth", L"Ts"), L"\u00C5land \u6E2C\u91CF");
    // A missing file gives an empty store and the default encoding.
    encoding = kiv_settings::eEncodingAnsi;
    EXPECT_FALSE(kiv_settings::readSettingsAsIni(L"\\none.ini", store, encoding));
    EXPECT_TRUE(store.IsEmpty());
    EXPECT_EQ(encoding, kiv_settings::eEncodingUtf16LE);
}

std::string RunPython(const std::string& script, const std::string& file) {
    const std::string command = "python3 -c '" + script + "' '" + file + "' 2>&1";
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return "<no python3>";
    std::string out;
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
    return ::pclose(pipe) == 0 ? out : "<python3 failed> " + out;
}

TEST_F(IniFiles, WritesUtf16WithMarkAndCrLfAndReadsItBackIdenticallyAsDoesConfigparser) {
    CThreeTupleStore store;
    store.SetValue(L"LAST_SELECTED_FILE_PATH", L"ImportExportFiles", L"\\Storage Card\\IE Files");
    store.SetValue(L"LAST_SELECTED_FILE_PATH", L"Image", L"\\My Documents\\Zeb\\Bilder \u00E4\u00F6\u00FC");
    store.SetValue(L"CHANNEL1", L"SN", L"LX-4471");
    store.SetValue(L"CHANNEL1", L"TransHeight", L"1.500000V");
    store.SetValue(L"CHANNEL1", L"KnownOffset", L"");
    store.SetValue(L"Columns", L"order", L"Name Code Height \u6E2C\u91CF \U0001F4CD");
    ASSERT_TRUE(kiv_settings::writeSettingsAsIni(L"\\a.ini", store, kiv_settings::eEncodingUtf16LE));
    const std::string bytes = kiv_test::ReadFileBytes(root.path() + "/a.ini");
    ASSERT_GE(bytes.size(), 4u);
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
    EXPECT_EQ(bytes.substr(bytes.size() - 4), std::string("\r\0\n\0", 4));
    EXPECT_EQ(kiv_text::FromUtf16Le(bytes.substr(2)).substr(0, 26), L"[LAST_SELECTED_FILE_PATH]\r");
    ETextEncoding encoding;
    EXPECT_TRUE(ReadBack(&encoding) == store);
    EXPECT_EQ(encoding, kiv_settings::eEncodingUtf16LE);

    if (std::system("python3 -c 'import configparser' >/dev/null 2>&1") != 0) GTEST_SKIP() << "python3 missing";
    const std::string script =
        "import configparser, sys\n"
        "p = configparser.RawConfigParser(delimiters=(\"=\",), strict=True)\n"
        "p.optionxform = str\n"
        "p.read(sys.argv[1], encoding=\"utf-16\")\n"
        "for s in p.sections():\n"
        "    for k, v in p.items(s):\n"
        "        sys.stdout.buffer.write((s + \"\\t\" + k + \"\\t\" + v + \"\\n\").encode(\"utf-8\"))\n";
    std::wstring expected;
    for (int s = 0; s < store.GetSectionCount(); ++s)
        for (int k = 0; k < store.GetKeyCount(s); ++k)
            expected += store.GetSectionName(s).str() + L"\t" + store.GetKeyName(s, k).str() + L"\t" +
                        store.GetValueAt(s, k).str() + L"\n";
    EXPECT_EQ(kiv_text::FromUtf8(RunPython(script, root.path() + "/a.ini")), expected);
}

TEST_F(IniFiles, RefusesALineBreakInAValueAndLeavesTheFile) {
    kiv_test::WriteFileBytes(root.path() + "/a.ini", "[S]\r\nk=old\r\n");
    for (const wchar_t* value : {L"two\r\nlines", L"bare\rreturn", L"bare\nnewline"}) {
        CThreeTupleStore store;
        store.SetValue(L"S", L"k", value);
        EXPECT_FALSE(kiv_settings::writeSettingsAsIni(L"\\a.ini", store, kiv_settings::eEncodingUtf16LE)) << value;
    }
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/a.ini"), "[S]\r\nk=old\r\n");
}

TEST_F(IniFiles, TextAnEncodingCannotHoldIsWrittenAsUtf16) {
    // A remembered folder added to a file a Latin-1 editor once saved.
    kiv_test::WriteFileBytes(root.path() + "/a.ini", "[LAST_SELECTED_FILE_PATH]\r\nImage=\\K\xF6ln\r\n");
    ETextEncoding encoding;
    CThreeTupleStore store = ReadBack(&encoding);
    ASSERT_EQ(encoding, kiv_settings::eEncodingAnsi);
    store.SetValue(L"LAST_SELECTED_FILE_PATH", L"DTM", L"\\Storage Card\\\u041F");
    ETextEncoding written = kiv_settings::eEncodingAnsi;
    ASSERT_TRUE(kiv_settings::writeSettingsAsIni(L"\\a.ini", store, encoding, &written));
    EXPECT_EQ(written, kiv_settings::eEncodingUtf16LE);
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/a.ini").substr(0, 2), "\xFF\xFE");
    const CThreeTupleStore back = ReadBack(&encoding);
    EXPECT_EQ(encoding, kiv_settings::eEncodingUtf16LE);
    EXPECT_TRUE(back == store);
    EXPECT_EQ(back.GetValue(L"LAST_SELECTED_FILE_PATH", L"DTM"), L"\\Storage Card\\\u041F");
}

TEST_F(IniFiles, WhateverWasReadCanBeSavedAgain) {
    // Stray returns, an unclosed header and a Latin-1 line in a UTF-8 file.
    kiv_test::WriteFileBytes(root.path() + "/a.ini",
                             "[Columns]\r\norder=Name Code\r\r\n[broken=1\r\nwidth=40\rName=\xD0\x9F\xD1\x80\xD0\xBE "
                             "caf\xE9\r\n");
    ETextEncoding encoding;
    CThreeTupleStore store = ReadBack(&encoding);
    store.SetValue(L"Columns", L"hidden", L"Code");
    ASSERT_TRUE(kiv_settings::writeSettingsAsIni(L"\\a.ini", store, encoding));
    const CThreeTupleStore back = ReadBack(&encoding);
    EXPECT_TRUE(back == store);
    EXPECT_EQ(encoding, kiv_settings::eEncodingUtf8);
    EXPECT_EQ(back.GetValue(L"Columns", L"order"), L"Name Code");
    EXPECT_EQ(back.GetValue(L"Columns", L"Name"), L"\u041F\u0440\u043E caf\u00E9");
    EXPECT_EQ(back.GetKeyCount(0), 4);
}

}  // namespace
