// The XML helpers: forming, attributes, the lenient tokenizer and files written and read back.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/XmlParser.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

struct Token {
    std::wstring tag, attributes, content;
    bool operator==(const Token&) const = default;
};

std::vector<Token> Tokens(CXmlParser& parser) {
    std::vector<Token> tokens;
    CKivStringT tag, attributes, content;
    while (parser.ReadToken(tag, attributes, content)) tokens.push_back({tag.str(), attributes.str(), content.str()});
    EXPECT_FALSE(parser.ReadToken(tag, attributes, content));  // stays at the end
    return tokens;
}

std::vector<Token> Tokens(const std::wstring& text) {
    CXmlParser parser(text);
    return Tokens(parser);
}

std::vector<std::wstring> Tags(const std::vector<Token>& tokens) {
    std::vector<std::wstring> tags;
    for (const auto& t : tokens) tags.push_back(t.tag);
    return tags;
}

TEST(XmlTokenizer, EndsATagAtTheFirstCloseOutsideQuotes) {
    using V = std::vector<Token>;
    EXPECT_EQ(Tokens(L"<a x=\"1>2\" y='3>'>text</a>"),
              (V{{L"a", L"x=\"1>2\" y='3>'", L"text"}, {L"/a", L"", L""}}));
    EXPECT_EQ(Tokens(L"<a x='1\"2'\r\n\t>t</a >"), (V{{L"a", L"x='1\"2'", L"t"}, {L"/a", L"", L""}}));
    EXPECT_EQ(Tokens(L"<a x=\"1\"y=\"2\"/><\u00E4 k=\"v\" / >"),
              (V{{L"a", L"x=\"1\"y=\"2\"", L""},
                 {L"/a", L"", L""},
                 {L"\u00E4", L"k=\"v\"", L""},
                 {L"/\u00E4", L"", L""}}));
    // The close may fall anywhere among the characters compared together.
    for (size_t run = 0; run < 13; ++run) {
        const std::wstring value = L"x=\"" + std::wstring(run, L'v') + L">" + std::wstring(run % 3, L'w') + L"\"";
        EXPECT_EQ(Tokens(L"<a " + value + std::wstring(run % 4, L' ') + L">c</a>"),
                  (V{{L"a", value, L"c"}, {L"/a", L"", L""}}))
            << run;
    }
}

TEST(XmlTokenizer, ReadsALessThanThatBeginsNoTagAsText) {
    using V = std::vector<Token>;
    // A '<' inside quotes, or an unfinished quote, spoils the tag; the scan goes on at
    // the next '<'.
    EXPECT_EQ(Tokens(L"<a x=\"<b>\">t</a>"), (V{{L"b", L"", L"\">t"}, {L"/a", L"", L""}}));
    EXPECT_EQ(Tokens(L"<a x=\"open><b/>"), (V{{L"b", L"", L""}, {L"/b", L"", L""}}));
    EXPECT_EQ(Tokens(L"<a x='open\"><b>1 < 2</b>"), (V{{L"b", L"", L"1 < 2"}, {L"/b", L"", L""}}));
    EXPECT_EQ(Tokens(L"<a <b>x</b>"), (V{{L"b", L"", L"x"}, {L"/b", L"", L""}}));
    EXPECT_EQ(Tokens(L"x<1 and <a>y<!-- c --><?p?></a>"), (V{{L"a", L"", L"y"}, {L"/a", L"", L""}}));
    EXPECT_TRUE(Tokens(L"<a x=\"1\"").empty());
    // Each unfinished tag is given up at the next '<', so a file of them reads in linear time.
    std::wstring unfinished;
    for (int i = 0; i < 100000; ++i) unfinished += L"<a x=\"1\" ";
    EXPECT_TRUE(Tokens(unfinished).empty());
}

TEST(XmlForming, AnyAttributeValueRoundTrips) {
    const std::wstring values[] = {
        L"Tolerance", L"", L"a\"b'c<d>e&f", L"&amp; stays literal", L"two\r\nlines\tand tab",
        std::wstring(L"ctl\x01\x1F", 5), L"\u00E9\u6E2C\U0001F4CD", L"&#65; &unknown; &", L"  blanks  "};
    for (const auto& value : values) {
        const CKivStringT attributes = CXmlParserBase::FormAttrib(L"name", value.c_str(), false) +
                                       CXmlParserBase::FormAttrib(L"type", L"str", false);
        EXPECT_EQ(CXmlParser::ReadAttrib(attributes, L"name"), value.c_str()) << attributes.GetString();
        EXPECT_EQ(CXmlParser::ReadAttrib(attributes, L"type"), L"str");
        EXPECT_EQ(attributes.FindOneOf(L"\r\n<>"), -1);
    }
}

TEST(XmlAttributes, ReadALongRunOfAmpersandsInLinearTime) {
    // Eight million characters: a reader that looks for each '&''s ';' to the end of the
    // value needs hours here and runs into the test's time limit.
    const std::wstring run(size_t(1) << 23, L'&');
    const CKivStringT attributes(L"v=\"" + run + L"&lt;&#x41;\"");
    const CKivStringT value = CXmlParser::ReadAttrib(attributes, L"v");
    ASSERT_EQ(static_cast<size_t>(value.GetLength()), run.size() + 2);
    EXPECT_EQ(value.view().substr(run.size()), L"<A");
    EXPECT_EQ(value.view().find_first_not_of(L'&'), run.size());
}

class XmlFiles : public ::testing::Test {
protected:
    static std::vector<Token> FileTokens(const wchar_t* path) {
        CXmlParser* parser = nullptr;
        EXPECT_EQ(CXmlParser::Initialize(path, parser), 0);
        if (!parser) return {};
        auto tokens = Tokens(*parser);
        CXmlParser::Destroy(parser);
        EXPECT_EQ(parser, nullptr);
        return tokens;
    }
    // A settings file as the settings storage writes it.
    void WriteSettingsFile(const wchar_t* path) {
        using B = CXmlParserBase;
        FILE* f = _wfopen(path, L"wb+");
        ASSERT_NE(f, nullptr);
        const auto put = [f](const CKivStringT& text) { ASSERT_TRUE(kiv_formats::WriteString(f, text)); };
        put(L"<?xml" + B::FormAttrib(L"version", L"1.0", false) + L"?>\r\n");
        put(B::OpenTag(L"kiv_config", 2));
        for (const wchar_t* group : {L"Stake & Out", L"Stra\u00DFe \u6E2C\u91CF"}) {
            put(B::OpenTag(L"group", B::TagTypeFlag(2)) + B::FormAttrib(L"name", group, false) + L">\r\n");
            put(B::OpenTag(L"value", B::TagTypeFlag(2)) + B::FormAttrib(L"name", L"Tolerance", false) +
                B::FormAttrib(L"type", L"dbl", false) + L">" + L"0.050000" + B::CloseTag(L"value", B::TagTypeFlag(3)));
            put(B::OpenTag(L"value", B::TagTypeFlag(2)) + B::FormAttrib(L"name", L"Code \"A\"", false) +
                B::FormAttrib(L"type", L"str", false) + L">" + L"\u00C5land [1;2]" + B::CloseTag(L"value", B::TagTypeFlag(3)));
            put(B::CloseTag(L"group", 2));
        }
        put(B::CloseTag(L"kiv_config", 2));
        std::fclose(f);
    }
    kiv_test::TempDeviceRoot root;
};

TEST_F(XmlFiles, ReadsAFileWrittenByTheHelpersBackTokenForToken) {
    WriteSettingsFile(L"\\s.xml");
    const std::string bytes = kiv_test::ReadFileBytes(root.path() + "/s.xml");
    EXPECT_EQ(bytes.substr(0, 23), "<?xml version=\"1.0\"?>\r\n");
    EXPECT_TRUE(kiv_text::IsValidUtf8(bytes));
    const auto tokens = FileTokens(L"\\S.XML");
    ASSERT_EQ(tokens.size(), 14u);
    EXPECT_EQ(CXmlParser::ReadAttrib(tokens[1].attributes, L"name"), L"Stake & Out");
    EXPECT_EQ(CXmlParser::ReadAttrib(tokens[4].attributes, L"name"), L"Code \"A\"");
    EXPECT_EQ(tokens[4].content, L"\u00C5land [1;2]");
    EXPECT_EQ(CXmlParser::ReadAttrib(tokens[7].attributes, L"name"), L"Stra\u00DFe \u6E2C\u91CF");
    EXPECT_EQ(tokens[13].tag, L"/kiv_config");
    size_t lines = 0;
    for (char c : bytes) lines += c == '\n';
    EXPECT_EQ(lines, 11u);  // one element a line
}

TEST_F(XmlFiles, AnIndependentReaderFindsTheFileWellFormed) {
    if (std::system("command -v xmllint >/dev/null 2>&1") != 0) GTEST_SKIP() << "xmllint missing";
    WriteSettingsFile(L"\\s.xml");
    const std::string command = "xmllint --noout '" + root.path() + "/s.xml' 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST_F(XmlFiles, TruncatedOrGarbageTextStopsCleanly) {
    WriteSettingsFile(L"\\s.xml");
    const std::wstring full = kiv_text::FromUtf8(kiv_test::ReadFileBytes(root.path() + "/s.xml"));
    const auto all = Tags(Tokens(full));
    for (size_t cut = 0; cut <= full.size(); ++cut) {
        const auto some = Tags(Tokens(full.substr(0, cut)));
        ASSERT_LE(some.size(), all.size()) << cut;
        EXPECT_TRUE(std::equal(some.begin(), some.end(), all.begin())) << cut;
    }
    EXPECT_TRUE(Tokens(L"no markup at all").empty());
    EXPECT_TRUE(Tokens(L"<<<< < <!-- <? <![CDATA[ </ <a \"").empty());
}

}  // namespace
