// Reading saved settings files: the quick reader and the tokenizer give the same values
// for numbers and names of every length around the reader's word sizes, and lookups by
// name answer with the first value of a name whatever order they come in.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "tests/support/TestSupport.h"
#include "utils/settings/XmlConfigStorage.h"

namespace {

const wchar_t kFile[] = L"\\reading.xml";

class XmlConfigReadingTest : public ::testing::Test {
protected:
    void Write(const std::string& text) { kiv_test::WriteFileBytes(root_.HostPath(kFile), text); }
    kiv_test::TempDeviceRoot root_;
};

std::string Value(const std::string& name, const std::string& type, const std::string& text) {
    return "<value name=\"" + name + "\" type=\"" + type + "\">" + text + "</value>\r\n";
}

// As the storage saves it (the quick reader's shape), or with a comment, which only the
// tokenizer reads. `tail` ends the file, so that the last values sit at its very end.
std::string Saved(const std::string& values, const std::string& tail = "\r\n") {
    return "<?xml version=\"1.0\"?>\r\n<kiv_config>\r\n<group name=\"G\">\r\n" + values + "</group>\r\n</kiv_config>" +
           tail;
}
std::string HandWritten(const std::string& values) {
    return "<?xml version=\"1.0\"?>\r\n<!-- by hand -->\r\n<kiv_config>\r\n<group name=\"G\">\r\n" + values +
           "</group>\r\n</kiv_config>\r\n";
}

TEST_F(XmlConfigReadingTest, NumbersAndNamesOfEveryLengthReadAlikeInBothReaders) {
    // Digit runs from none to twelve (beyond eight they are read another way), leading
    // zeros, both ends of the 32-bit range and past them, flags of many zeros, a sign and
    // blanks (not bare digits), and names from one character to twenty.
    const std::vector<std::string> numbers = {"",         "0",          "7",           "12",        "00000012",
                                              "12345678", "99999999",   "123456789",   "100000000", "2147483647",
                                              "2147483648", "4294967296", "99999999999", "-17",      " 5",
                                              "+8",       "000000000",  "3x"};
    std::string values;
    std::string name;
    for (size_t i = 0; i < numbers.size(); ++i) {
        name += static_cast<char>('a' + i % 26);
        values += Value(name, "int", numbers[i]) + Value(name + "_b", "bool", numbers[i]);
    }
    values += Value("s", "str", "it's \"quoted\"") + Value("d", "dbl", "2.5");
    // A value close to the very end of the file, which ends without a line break.
    const std::string last = Value("z", "int", "1234567");
    std::vector<std::vector<int>> reads;
    for (const std::string& text : {Saved(values + last, ""), HandWritten(values + last)}) {
        Write(text);
        CXmlConfigStorage s(kFile);
        CConfigGroup& g = s.GetGroup(L"G");
        std::vector<int> read;
        std::wstring wide;
        for (size_t i = 0; i < numbers.size(); ++i) {
            wide += static_cast<wchar_t>(L'a' + i % 26);
            read.push_back(g.GetIntegerValue(CKivStringT(wide), -1));
            read.push_back(g.GetBooleanValue(CKivStringT(wide + L"_b"), false) ? 1 : 0);
        }
        read.push_back(g.GetIntegerValue(L"z", -1));
        EXPECT_EQ(g.GetStringValue(L"s"), CKivStringT(L"it's \"quoted\""));
        EXPECT_EQ(g.GetDoubleValue(L"d", 0.0), 2.5);
        reads.push_back(read);
    }
    EXPECT_EQ(reads[0], reads[1]);
    const std::vector<int>& r = reads[0];
    EXPECT_EQ(r[0], 0) << "an empty whole number reads 0";
    EXPECT_EQ(r[1], 0) << "an empty flag is false";
    EXPECT_EQ(r[2 * 4], 12);
    EXPECT_EQ(r[2 * 5], 12345678);
    EXPECT_EQ(r[2 * 7], 123456789);
    EXPECT_EQ(r[2 * 9], INT_MAX);
    EXPECT_EQ(r[2 * 10], INT_MAX);
    EXPECT_EQ(r[2 * 12], INT_MAX);
    EXPECT_EQ(r[2 * 13], -17);
    EXPECT_EQ(r[2 * 17], 3);
    EXPECT_EQ(r[2 * 16 + 1], 0) << "nine zeros are false";
    EXPECT_EQ(r[2 * 8 + 1], 1);
    EXPECT_EQ(r.back(), 1234567);
}

TEST_F(XmlConfigReadingTest, LookupsAnswerWithTheFirstValueOfANameInAnyOrder) {
    // Twelve values, so that the group looks names up through its table; "dup" twice.
    const auto isDup = [](int i) { return i == 5 || i == 9; };
    std::string values;
    for (int i = 0; i < 12; ++i) values += Value(isDup(i) ? "dup" : "v" + std::to_string(i), "int", std::to_string(i));
    Write(Saved(values));
    CXmlConfigStorage s(kFile);
    CConfigGroup& g = s.GetGroup(L"G");
    // In file order: the second "dup" answers with the first.
    for (int i = 0; i < 12; ++i) {
        const CKivStringT name = isDup(i) ? CKivStringT(L"dup") : CKivStringT(L"v" + std::to_wstring(i));
        EXPECT_EQ(g.GetIntegerValue(name, -1), i == 9 ? 5 : i) << i;
    }
    // Backwards, then in file order again after the first "dup" is gone.
    for (int i = 11; i >= 0; --i)
        if (!isDup(i)) {
            EXPECT_EQ(g.GetIntegerValue(CKivStringT(L"v" + std::to_wstring(i)), -1), i);
        }
    g.GetValue(L"dup").Delete();
    EXPECT_EQ(g.GetIntegerValue(L"dup", -1), 9);
    g.SetIntegerValue(L"new", 40);
    for (int i = 0; i < 12; ++i)
        if (!isDup(i)) {
            EXPECT_EQ(g.GetIntegerValue(CKivStringT(L"v" + std::to_wstring(i)), -1), i);
        }
    EXPECT_EQ(g.GetIntegerValue(L"new", -1), 40);
    EXPECT_EQ(g.GetNumberOfValues(), 12u);
}

}  // namespace
