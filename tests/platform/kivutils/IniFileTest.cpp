// The INI store, reader and writer, with a round trip checked by Python's configparser.
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

TEST(ThreeTupleStore, FindsSectionsAndKeysWhateverTheirCase) {
    CThreeTupleStore store;
    store.SetValue(L"LAST_SELECTED_FILE_PATH", L"Image", L"\\Storage Card\\Pics");
    EXPECT_EQ(store.GetValue(L"last_selected_file_path", L"IMAGE"), L"\\Storage Card\\Pics");
    EXPECT_EQ(store.GetValue(L"LAST_SELECTED_FILE_PATH", L"DTM", L"none"), L"none");
    EXPECT_EQ(store.GetValue(L"Other", L"Image", L"none"), L"none");
    EXPECT_EQ(store.GetValue(L"Other", L"Image"), L"");
}

TEST(ThreeTupleStore, SetReplacesInPlaceAndKeepsTheFirstSpelling) {
    CThreeTupleStore store;
    store.SetValue(L"S", L"a", L"1");
    store.SetValue(L"S", L"b", L"2");
    store.SetValue(L"s", L"A", L"3");
    ASSERT_EQ(store.GetSectionCount(), 1);
    EXPECT_EQ(store.GetSectionName(0), L"S");
    ASSERT_EQ(store.GetKeyCount(0), 2);
    EXPECT_EQ(store.GetKeyName(0, 0), L"a");
    EXPECT_EQ(store.GetValueAt(0, 0), L"3");
    EXPECT_FALSE(store.AddValue(L"S", L"B", L"x"));
    EXPECT_EQ(store.GetValue(L"S", L"b"), L"2");
}

TEST(ThreeTupleStore, KeepsInsertionOrderThroughRemovals) {
    CThreeTupleStore store;
    for (const wchar_t* s : {L"C", L"A", L"B"}) store.SetValue(s, L"k", s);
    store.SetValue(L"A", L"x", L"1");
    store.SetValue(L"A", L"y", L"2");
    EXPECT_TRUE(store.RemoveSection(L"a"));
    EXPECT_FALSE(store.RemoveSection(L"a"));
    EXPECT_EQ(store.GetSectionName(1), L"B");
    EXPECT_EQ(store.GetValue(L"B", L"k"), L"B");
    store.SetValue(L"C", L"z", L"3");
    EXPECT_TRUE(store.RemoveValue(L"C", L"K"));
    EXPECT_EQ(store.GetKeyName(0, 0), L"z");
    EXPECT_EQ(store.GetValue(L"C", L"z"), L"3");
    EXPECT_EQ(store.GetKeyName(7, 0), L"");
    EXPECT_EQ(store.GetKeyName(0, -1), L"");
}

CThreeTupleStore Parse(const std::string& bytes, ETextEncoding* found = nullptr) {
    CThreeTupleStore store;
    ETextEncoding encoding;
    kiv_settings::parseSettingsIni(bytes, store, encoding);
    if (found) *found = encoding;
    return store;
}

TEST(IniReading, KeepsValuesExactlyAndRecordsOutsideSectionsAndMergesSections) {
    const auto store = Parse(
        "; comment\r\n# another\r\n[Settings]\r\n  EuStyle  =  1\r\nName=a = b ; not a comment  \r\n"
        "  ; indented comment\r\nEmpty=\r\n");
    EXPECT_EQ(store.GetValue(L"Settings", L"EuStyle"), L"1");
    EXPECT_EQ(store.GetValue(L"Settings", L"Name"), L"a = b ; not a comment  ");
    EXPECT_TRUE(store.HasValue(L"Settings", L"Empty"));
    EXPECT_EQ(store.GetKeyCount(0), 3);
    const auto merged = Parse("[A]\nk=1\nk=2\n[B]\nj=3\n[a]\nK=4\nm=5\n");
    EXPECT_EQ(merged.GetValue(L"A", L"k"), L"1");  // the first of duplicate keys
    EXPECT_EQ(merged.GetValue(L"A", L"m"), L"5");
    EXPECT_EQ(merged.GetSectionCount(), 2);
    const auto loose = Parse("top=1\n[ Empty ]\n[Full]\nx=2\nnot a record\n=no key\n");
    EXPECT_EQ(loose.GetValue(L"", L"top"), L"1");
    EXPECT_TRUE(loose.HasSection(L"Empty"));
    EXPECT_EQ(loose.GetKeyCount(2), 1);
}

TEST(IniReading, ReportsTheEncodingItFound) {
    const struct { std::string bytes; ETextEncoding encoding; const wchar_t* k; } cases[] = {
        {"\xFF\xFE" + kiv_text::ToUtf16Le(L"[S]\r\nk=\u00E9\r\n"), kiv_settings::eEncodingUtf16LE, L"\u00E9"},
        {"[S]\nk=\xC3\xA9\n", kiv_settings::eEncodingUtf8, L"\u00E9"},
        {"\xEF\xBB\xBF[S]\nk=v\n", kiv_settings::eEncodingUtf8Bom, L"v"},
        {"[S]\nk=\xE9\n", kiv_settings::eEncodingAnsi, L"\u00E9"},
        // A UTF-8 file with a line from a Latin-1 editor: UTF-8, the stray byte as Latin-1.
        {"[S]\nk=\xD0\x9F\xD1\x80\xD0\xBE\nm=caf\xE9\n", kiv_settings::eEncodingUtf8, L"\u041F\u0440\u043E"}};
    for (const auto& c : cases) {
        ETextEncoding found;
        const auto store = Parse(c.bytes, &found);
        EXPECT_EQ(found, c.encoding) << c.bytes;
        EXPECT_EQ(store.GetValue(L"S", L"k"), c.k);
    }
    EXPECT_EQ(Parse(cases[4].bytes).GetValue(L"S", L"m"), L"caf\u00E9");
}

TEST(IniReading, EndsLinesAtLoneReturnsAndSkipsUnclosedHeaders) {
    using namespace std::string_literals;
    const auto store = Parse("[S]\r\nk=v\r\r\n[broken=1\r\na=1\rb=2\r[T]\rc=3\nz \0=x\nq=1\0 2\r\n"s);
    ASSERT_EQ(store.GetSectionCount(), 2);
    ASSERT_EQ(store.GetKeyCount(0), 3);
    EXPECT_EQ(store.GetValue(L"S", L"k"), L"v");
    EXPECT_EQ(store.GetValue(L"S", L"a"), L"1");
    EXPECT_EQ(store.GetValue(L"S", L"b"), L"2");
    ASSERT_EQ(store.GetKeyCount(1), 2);
    EXPECT_EQ(store.GetValue(L"T", L"c"), L"3");
    EXPECT_EQ(store.GetValue(L"T", L"q"), L"1");  // the rest of a line after a NUL is ignored
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

TEST_F(IniFiles, WritesAndReadsBackAnsiAndUtf8AndLooseRecords) {
    CThreeTupleStore store;
    store.SetValue(L"S", L"k", L"K\u00F6ln  ");
    for (ETextEncoding e : {kiv_settings::eEncodingAnsi, kiv_settings::eEncodingUtf8, kiv_settings::eEncodingUtf8Bom}) {
        ASSERT_TRUE(kiv_settings::writeSettingsAsIni(L"\\a.ini", store, e));
        ETextEncoding found;
        EXPECT_TRUE(ReadBack(&found) == store);
        EXPECT_EQ(found, e);
    }
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/a.ini"), "\xEF\xBB\xBF[S]\r\nk=K\xC3\xB6ln  \r\n");
    // Records without a section and empty sections survive a round trip.
    const CThreeTupleStore loose = Parse("top=1\n[Empty]\n[]\nlate=2\n");
    ASSERT_TRUE(kiv_settings::writeSettingsAsIni(L"\\a.ini", loose, kiv_settings::eEncodingUtf8));
    const CThreeTupleStore back = ReadBack();
    EXPECT_TRUE(back == loose);
    EXPECT_EQ(back.GetValue(L"", L"late"), L"2");
    // A value's leading blanks are written but not read back.
    CThreeTupleStore blanks;
    blanks.SetValue(L"S", L"k", L"  lead and trail  ");
    ASSERT_TRUE(kiv_settings::writeSettingsAsIni(L"\\a.ini", blanks, kiv_settings::eEncodingUtf8));
    EXPECT_EQ(ReadBack().GetValue(L"S", L"k"), L"lead and trail  ");
}

TEST_F(IniFiles, RefusesWhatCannotBeReadBackAndLeavesTheFile) {
    kiv_test::WriteFileBytes(root.path() + "/a.ini", "[S]\r\nk=old\r\n");
    const auto refuses = [](const wchar_t* section, const wchar_t* key, const wchar_t* value,
                            ETextEncoding e = kiv_settings::eEncodingUtf16LE) {
        CThreeTupleStore store;
        store.SetValue(section, key, value);
        return !kiv_settings::writeSettingsAsIni(L"\\a.ini", store, e);
    };
    const struct { const wchar_t *section, *key, *value; } bad[] = {
        {L"S", L"k", L"two\r\nlines"}, {L"S", L"k", L"bare\rreturn"}, {L"S", L"k=v", L"x"}, {L"S", L";k", L"x"},
        {L"S", L"[k]", L"x"}, {L"S", L" k", L"x"}, {L"S", L"", L"x"}, {L"a]b", L"k", L"x"}};
    for (const auto& b : bad) EXPECT_TRUE(refuses(b.section, b.key, b.value)) << b.section << L"/" << b.key;
    EXPECT_TRUE(refuses(L"S", L"k", L"lone \xD800 surrogate", kiv_settings::eEncodingUtf8));
    EXPECT_TRUE(refuses(L"S", L"k", L"x", static_cast<ETextEncoding>(9)));
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

    // Also ANSI bytes that are valid UTF-8 and a leading U+FEFF that would read as a mark.
    const auto writtenAs = [](const wchar_t* key, const wchar_t* value, ETextEncoding asked) {
        CThreeTupleStore one;
        one.SetValue(L"", key, value);
        std::string bytes;
        ETextEncoding used = asked;
        EXPECT_TRUE(kiv_settings::formatSettingsIni(one, asked, bytes, &used));
        return used;
    };
    EXPECT_EQ(writtenAs(L"k", L"\u00C3\u00A9", kiv_settings::eEncodingAnsi), kiv_settings::eEncodingUtf16LE);
    EXPECT_EQ(writtenAs(L"\uFEFFk", L"x", kiv_settings::eEncodingUtf8), kiv_settings::eEncodingUtf16LE);
    EXPECT_EQ(writtenAs(L"k", L"K\u00F6ln", kiv_settings::eEncodingAnsi), kiv_settings::eEncodingAnsi);
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
