#include "utils/calculator/CalcExpression.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/TestSupport.h"

namespace {

std::wstring Evaluate(const wchar_t* text, ECalcAngleMode mode = eCalcDegrees) {
    std::vector<ECalcKey> keys;
    TCalcExpressionError error;
    if (!CalcExpressionToKeys(text, keys, error)) return L"refused at " + std::to_wstring(error.column);
    CCalculator calc;
    calc.SetAngleMode(mode);
    calc.PressKey(eCalcKeyClear);
    for (ECalcKey k : keys) calc.PressKey(k);
    return calc.GetDisplay().str();
}

class CalcExpressionTest : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root_;
};

}  // namespace

TEST_F(CalcExpressionTest, ExpressionsEvaluateWithUsualPrecedenceThroughTheKeys) {
    const std::vector<std::pair<const wchar_t*, const wchar_t*>> cases = {
        {L"2+3*4", L"14"},          {L"(2+3)*4", L"20"},          {L"2*3+4*5", L"26"},
        {L"10-4-3", L"3"},          {L"2^3^2", L"512"},           {L"-2^2", L"-4"},
        {L"2^-1", L"0.5"},          {L"-(2+3)*2", L"-10"},        {L"2*-3", L"-6"},
        {L"3 - -3", L"6"},          {L"+5", L"5"},                {L"27 root 3", L"3"},
        {L"sin 30 + cos 60", L"1"}, {L"sin(10+20)", L"0.5"},      {L"sqrt -4", L"Error"},
        {L"-sin 30", L"-0.5"},      {L"sin -30", L"-0.5"},        {L"2*sin 30", L"1"},
        {L"3!+2\u00B2", L"10"},     {L"200+10%", L"220"},         {L"\u221A16 \u00D7 2 \u00F7 4", L"2"},
        {L"1.5e3+1E-2", L"1500.01"}, {L"pi*2", L"6.28318530718"}, {L"SIN 30", L"0.5"},
        {L"12\u00B030'36\" + 0\u00B029'24\"", L"13"}, {L"12:30:36 + 0:29:24", L"13"},
        {L"todms 12.51", L"12\u00B030'36\""}, {L"fromdms 12.3036", L"12.51"}, {L"12.5\u00B0", L"12.5"},
        {L"12\u00B0 + 30", L"42"},  {L"pow10 2 + exp 0 + ln 1 + log 10", L"102"},
    };
    for (const auto& [text, shown] : cases) EXPECT_EQ(Evaluate(text), shown) << text;
    EXPECT_EQ(Evaluate(L"sin 33.33333333333333", eCalcGrads), L"0.5");
}

TEST_F(CalcExpressionTest, BadTextIsRefusedAtTheColumnWhereReadingFailed) {
    const std::vector<std::pair<const wchar_t*, int>> cases = {
        {L"", 1},           {L"2+*3", 3},        {L"sin(30", 7},      {L"(1+2))", 6},
        {L"2 3", 3},        {L"foo 3", 1},       {L"2+", 3},          {L".", 1},
        {L"1e123", 3},      {L"12\u00B075'", 4}, {L"12:5.5:3", 7},    {L"12\u00B030", 6},
        {L"2(3)", 2},       {L"1#", 2},
        {L"12345678901234567890123456789012345", 1},
    };
    for (const auto& [text, column] : cases) {
        std::vector<ECalcKey> keys;
        TCalcExpressionError error;
        EXPECT_FALSE(CalcExpressionToKeys(text, keys, error)) << text;
        EXPECT_EQ(error.column, column) << text << ": " << error.reason;
        EXPECT_FALSE(error.reason.IsEmpty()) << text;
    }
}

TEST_F(CalcExpressionTest, NestingIsBoundedByTheEnginesParentheses) {
    std::wstring deep;
    for (int i = 0; i < kCalcMaxParens; ++i) deep += L"(";
    deep += L"1";
    for (int i = 0; i < kCalcMaxParens; ++i) deep += L")";
    EXPECT_EQ(Evaluate(deep.c_str()), L"1");
    EXPECT_EQ(Evaluate((L"(" + deep + L")").c_str()), L"refused at 25");
    // A long run of signs or powers is refused before the reader's recursion grows.
    EXPECT_EQ(Evaluate((std::wstring(100000, L'-') + L"1").c_str()).rfind(L"refused", 0), 0u);
    std::wstring powers = L"2";
    for (int i = 0; i < 30; ++i) powers += L"^1";
    EXPECT_EQ(Evaluate(powers.c_str()).rfind(L"refused", 0), 0u);
}
