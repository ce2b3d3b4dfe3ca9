#include <gtest/gtest.h>

#include "platform/kivutils/KivString.h"

TEST(KivString, ClampsOutOfRangeSubstrings) {
    const CKivStringT s(L"abcdef");
    EXPECT_EQ(s.Left(-1), L"");
    EXPECT_EQ(s.Left(99), L"abcdef");
    EXPECT_EQ(s.Mid(4), L"ef");
    EXPECT_EQ(s.Mid(9), L"");
    EXPECT_EQ(s.Mid(-3, 2), L"ab");
    EXPECT_EQ(s.Right(2), L"ef");
    EXPECT_EQ(s.Right(10), L"abcdef");
}

TEST(KivString, FindsAndReportsMinusOneWhenAbsent) {
    const CKivStringT s(L"a.b.c");
    EXPECT_EQ(s.Find(L'.'), 1);
    EXPECT_EQ(s.Find(L'.', 2), 3);
    EXPECT_EQ(s.Find(L'x'), -1);
    EXPECT_EQ(s.Find(L"b.c"), 2);
    EXPECT_EQ(s.Find(L"", 5), 5);
    EXPECT_EQ(s.Find(L'.', 99), -1);
    EXPECT_EQ(s.ReverseFind(L'.'), 3);
    EXPECT_EQ(s.FindOneOf(L"cb"), 2);
}

TEST(KivString, EditsInPlace) {
    CKivStringT s(L"  Hello World \t");
    s.Trim();
    EXPECT_EQ(s, L"Hello World");
    EXPECT_EQ(s.Replace(L"o", L"0"), 2);
    EXPECT_EQ(s, L"Hell0 W0rld");
    s.MakeUpper();
    EXPECT_EQ(s, L"HELL0 W0RLD");
    s.MakeLower();
    EXPECT_EQ(s.Remove(L'l'), 3);
    EXPECT_EQ(s, L"he0 w0rd");
    s.Insert(0, L">");
    s.Delete(1, 3);
    EXPECT_EQ(s, L"> w0rd");
    CKivStringT umlaut(L"ÄÖÜ");
    EXPECT_EQ(umlaut.MakeLower(), L"äöü");
    EXPECT_EQ(CKivStringT(L"Straße").CompareNoCase(L"STRASSE") != 0, true);
    EXPECT_EQ(CKivStringT(L"Abc").CompareNoCase(L"aBC"), 0);
    EXPECT_LT(CKivStringT(L"abc").Compare(L"abd"), 0);
}

TEST(KivString, TokenizesLikeCString) {
    const CKivStringT s(L",,a,b;;c,");
    int pos = 0;
    EXPECT_EQ(s.Tokenize(L",;", pos), L"a");
    EXPECT_EQ(s.Tokenize(L",;", pos), L"b");
    EXPECT_EQ(s.Tokenize(L",;", pos), L"c");
    EXPECT_EQ(s.Tokenize(L",;", pos), L"");
    EXPECT_EQ(pos, -1);
}

TEST(KivString, FormatsWideArgumentsWithPercentS) {
    CKivStringT s;
    s.Format(L"%s=%d (%c) %S", L"x\u00E9", 42, L'\u00E9', "narrow");
    EXPECT_EQ(s, L"x\u00E9=42 (\u00E9) narrow");
    s.AppendFormat(L" %5.1f|%-3ls|%%", 2.25, L"y");
    EXPECT_EQ(s, L"x\u00E9=42 (\u00E9) narrow   2.2|y  |%");
    CKivStringT big;
    big.Format(L"%s", std::wstring(5000, L'z').c_str());
    EXPECT_EQ(big.GetLength(), 5000);
}


