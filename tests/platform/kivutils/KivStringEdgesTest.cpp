// The string class at its edges: Windows format lengths and narrow arguments, spans and
// trims over character sets (a null set holds nothing), reversal, inserting single
// characters out of range, and the raw buffer's length rules.
#include <gtest/gtest.h>

#include <cstdint>

#include "platform/kivutils/KivString.h"
#include "tests/support/TestSupport.h"

namespace {

TEST(KivStringEdges, FormatTakesWindowsLengthsAndNarrowArguments) {
    CKivStringT s;
    s.Format(L"%I64d|%I64u|%hs|%hc|%lc", static_cast<long long>(-9007199254740993LL),
             static_cast<unsigned long long>(18446744073709551615ULL), "caf\xC3\xA9", 'n', L'\u00E9');
    EXPECT_EQ(s, L"-9007199254740993|18446744073709551615|caf\u00E9|n|\u00E9");
    // A doubled percent is a percent, and what follows it is plain text.
    s.Format(L"100%%s %%c %%I64d %%%d", 7);
    EXPECT_EQ(s, L"100%s %c %I64d %7");
    // A format cut short, or narrow text that does not decode, keeps what came before it
    // at once, rather than growing the buffer in vain and giving nothing.
    s.Format(L"cut at %");
    EXPECT_EQ(s, L"cut at ");
    s.Format(L"name %S|", "\xff\xfe");
    EXPECT_EQ(s, L"name ");
}

TEST(KivStringEdges, SpansAndTrimsOverCharacterSets) {
    const CKivStringT s(L"0123abc456");
    EXPECT_EQ(s.SpanIncluding(L"0123456789"), L"0123");
    EXPECT_EQ(s.SpanExcluding(L"abc"), L"0123");
    EXPECT_EQ(s.SpanIncluding(L"xyz"), L"");
    EXPECT_EQ(s.SpanExcluding(L"xyz"), s);
    EXPECT_EQ(s.SpanIncluding(nullptr), L"") << "a null set holds nothing";
    EXPECT_EQ(s.SpanExcluding(nullptr), s);

    CKivStringT t(L"--==name==--");
    EXPECT_EQ(CKivStringT(t).TrimLeft(L"-"), L"==name==--");
    EXPECT_EQ(CKivStringT(t).TrimRight(L"-="), L"--==name");
    EXPECT_EQ(CKivStringT(t).Trim(L"=-"), L"name");
    EXPECT_EQ(CKivStringT(t).TrimLeft(L'='), t) << "only leading characters go";
    EXPECT_EQ(CKivStringT(t).TrimRight(L'-'), L"--==name==");
    EXPECT_EQ(CKivStringT(t).Trim(L'-'), L"==name==");
    EXPECT_EQ(CKivStringT(t).Trim(nullptr), t);
    EXPECT_EQ(CKivStringT(L"----").Trim(L'-'), L"");
    EXPECT_EQ(CKivStringT(L"\r\n\t\v\f x \r\n").TrimLeft(), L"x \r\n");
    EXPECT_EQ(CKivStringT(L"\r\n x\t\v\f \r\n").TrimRight(), L"\r\n x");
    EXPECT_EQ(CKivStringT(L" \u00A0x").TrimLeft(), L"\u00A0x") << "only ASCII blanks are trimmed";
}

TEST(KivStringEdges, ReverseAndInsertOneCharacter) {
    CKivStringT s(L"abc\u00E9");
    EXPECT_EQ(s.MakeReverse(), L"\u00E9cba");
    EXPECT_EQ(CKivStringT().MakeReverse(), L"");
    CKivStringT t(L"ac");
    EXPECT_EQ(t.Insert(1, L'b'), 3);
    EXPECT_EQ(t, L"abc");
    EXPECT_EQ(t.Insert(-5, L'<'), 4) << "before the start inserts at the start";
    EXPECT_EQ(t.Insert(99, L'>'), 5) << "past the end appends";
    EXPECT_EQ(t, L"<abc>");
}

TEST(KivStringEdges, RawBufferKeepsItsLengthUntilReleased) {
    CKivStringT s(L"abc");
    wchar_t* b = s.GetBuffer(10);
    EXPECT_EQ(b[0], L'a');
    b[3] = L'd';
    b[4] = 0;
    s.ReleaseBuffer();
    EXPECT_EQ(s, L"abcd") << "the length is where the text's NUL is";

    b = s.GetBuffer(2);  // shorter than the text: the text stays whole
    EXPECT_EQ(s.GetLength(), 4);
    s.ReleaseBuffer(2);
    EXPECT_EQ(s, L"ab");
    s.GetBuffer(0);
    s.ReleaseBuffer(50);
    EXPECT_EQ(s, L"ab") << "a length past the buffer is cut to it";

    b = s.GetBufferSetLength(3);
    b[2] = L'z';
    s.ReleaseBuffer(3);
    EXPECT_EQ(s.GetLength(), 3);
    EXPECT_EQ(s[2], L'z');
    s.GetBufferSetLength(-4);
    EXPECT_TRUE(s.IsEmpty());
}

}  // namespace
