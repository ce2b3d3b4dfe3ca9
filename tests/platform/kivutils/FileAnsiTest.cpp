// CFileAnsi on real files: the encodings and line ends met in the field.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/FileAnsi.h"
#include "tests/support/TestSupport.h"

namespace {

using Lines = std::vector<std::wstring>;

class FileAnsi : public ::testing::Test {
protected:
    Lines NonBlankLines(const std::string& bytes) {
        kiv_test::WriteFileBytes(root.path() + "/f.txt", bytes);
        CFileAnsi file;
        EXPECT_TRUE(file.Open(L"\\f.txt"));
        Lines lines;
        CKivStringT line;
        int n;
        while ((n = file.ReadNextNonBlankWCLine(line)) > 0) {
            EXPECT_EQ(n, line.GetLength());
            lines.push_back(line.str());
        }
        EXPECT_EQ(n, 0);
        return lines;
    }
    kiv_test::TempDeviceRoot root;
};

TEST_F(FileAnsi, ReadsEveryEncodingAndSkipsBlankLines) {
    const struct { std::string bytes; Lines lines; } cases[] = {
        {"Name: K\xF6ln\r\nCountry: Espa\xF1" "a\r\n", {L"Name: K\u00F6ln", L"Country: Espa\u00F1a"}},  // ANSI as Latin-1
        {"K\xC3\xB6ln\n\xE2\x82\xAC", {L"K\u00F6ln", L"\u20AC"}},
        {"\xEF\xBB\xBFK\xC3\xB6ln\r\n", {L"K\u00F6ln"}},
        {"\xFF\xFE" + kiv_text::ToUtf16Le(L"<BR><B>Ri\u00E9ga</B>\r\n\r\nStatus: \U0001F4E1 ok\r\n"),
         {L"<BR><B>Ri\u00E9ga</B>", L"Status: \U0001F4E1 ok"}},
        {"\n  \t\r\n  a  \r\n\r\n\nb", {L"  a  ", L"b"}},
        // A truncated UTF-16 file keeps its whole characters.
        {"\xFF\xFE" + kiv_text::ToUtf16Le(L"ab") + "c", {L"ab"}},
        {"\xFF\xFE", {}}};
    for (const auto& c : cases) EXPECT_EQ(NonBlankLines(c.bytes), c.lines) << c.bytes;
}

}  // namespace
