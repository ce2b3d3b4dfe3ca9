#include "utils/calculator/Calculator.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/support/TestSupport.h"
#include "utils/settings/SettingsStore.h"

namespace {

// Key names as printed on the calculator's buttons, so a sequence reads like the keys pressed.
ECalcKey Key(const std::string& name) {
    static const std::map<std::string, ECalcKey> keys = {
        {".", eCalcKeyPoint}, {"+/-", eCalcKeySign}, {"EE", eCalcKeyExponent}, {"DMS", eCalcKeyDms},
        {"+", eCalcKeyAdd}, {"-", eCalcKeySubtract}, {"*", eCalcKeyMultiply}, {"/", eCalcKeyDivide},
        {"^", eCalcKeyPower}, {"root", eCalcKeyRoot}, {"(", eCalcKeyOpenParen}, {")", eCalcKeyCloseParen},
        {"=", eCalcKeyEquals}, {"%", eCalcKeyPercent}, {"C", eCalcKeyClear}, {"CE", eCalcKeyClearEntry},
        {"BS", eCalcKeyBackspace}, {"MS", eCalcKeyMemoryStore}, {"MR", eCalcKeyMemoryRecall},
        {"M+", eCalcKeyMemoryAdd}, {"MC", eCalcKeyMemoryClear}, {"x2", eCalcKeySquare}, {"sqrt", eCalcKeySqrt},
        {"1/x", eCalcKeyReciprocal}, {"!", eCalcKeyFactorial}, {"log", eCalcKeyLog}, {"ln", eCalcKeyLn},
        {"10x", eCalcKeyTenPower}, {"ex", eCalcKeyExp}, {"pi", eCalcKeyPi}, {"ans", eCalcKeyLastResult},
        {"sin", eCalcKeySin}, {"cos", eCalcKeyCos}, {"tan", eCalcKeyTan}, {"asin", eCalcKeyAsin},
        {"acos", eCalcKeyAcos}, {"atan", eCalcKeyAtan}, {">DMS", eCalcKeyToDms}, {"DMS>", eCalcKeyFromDms},
        {"deg", eCalcKeyDegrees}, {"grad", eCalcKeyGrads}, {"rad", eCalcKeyRadians}};
    if (name.size() == 1 && name[0] >= '0' && name[0] <= '9') return static_cast<ECalcKey>(name[0] - '0');
    return keys.at(name);
}

// Presses a blank-separated key sequence; digits may be run together ("12.5" is 1 2 . 5).
void Press(CCalculator& calc, const std::string& sequence) {
    size_t i = 0;
    while (i < sequence.size()) {
        if (sequence[i] == ' ') {
            ++i;
            continue;
        }
        size_t end = sequence.find(' ', i);
        if (end == std::string::npos) end = sequence.size();
        const std::string word = sequence.substr(i, end - i);
        if (word.find_first_not_of("0123456789.") == std::string::npos)
            for (char c : word) calc.PressKey(Key(std::string(1, c)));
        else
            calc.PressKey(Key(word));
        i = end;
    }
}

std::wstring Display(const std::string& sequence, ECalcAngleMode mode = eCalcDegrees) {
    CCalculator calc;
    calc.SetAngleMode(mode);
    Press(calc, "C " + sequence);
    return calc.GetDisplay().str();
}

std::wstring ValueText(const std::string& sequence, ECalcAngleMode mode = eCalcDegrees) {
    CCalculator calc;
    calc.SetAngleMode(mode);
    Press(calc, "C " + sequence);
    return calc.GetValueText().str();
}

class CalculatorTest : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root_;  // fresh global settings for each test
};

struct Step {
    const char* key;
    const wchar_t* display;
};

}  // namespace

TEST_F(CalculatorTest, KeySequencesShowWhatTheButtonsPromiseAfterEveryKey) {
    const std::vector<std::pair<const char*, std::vector<Step>>> scenarios = {
        {"clear", {{"1", L"1"}, {"2", L"12"}, {"+", L"12"}, {"3", L"3"}, {"C", L"0"}, {"=", L"0"}}},
        {"chained operations",
         {{"7", L"7"}, {"-", L"7"}, {"2", L"2"}, {"-", L"5"}, {"1", L"1"}, {"+", L"4"}, {"8", L"8"}, {"/", L"8"},
          {"2", L"2"}, {"=", L"8"}}},
        {"precedence", {{"2", L"2"}, {"+", L"2"}, {"3", L"3"}, {"*", L"3"}, {"4", L"4"}, {"=", L"14"}}},
        {"operator replaced",
         {{"2", L"2"}, {"+", L"2"}, {"3", L"3"}, {"*", L"3"}, {"+", L"5"}, {"1", L"1"}, {"=", L"6"}}},
        {"parentheses",
         {{"(", L"0"}, {"2", L"2"}, {"+", L"2"}, {"3", L"3"}, {")", L"5"}, {"*", L"5"}, {"4", L"4"}, {"=", L"20"}}},
        {"number before parenthesis multiplies",
         {{"2", L"2"}, {"(", L"2"}, {"3", L"3"}, {"+", L"3"}, {"4", L"4"}, {")", L"7"}, {"=", L"14"}}},
        {"equals closes open parentheses", {{"(", L"0"}, {"(", L"0"}, {"1", L"1"}, {"+", L"1"}, {"2", L"2"}, {"=", L"3"}}},
        {"percent of the left operand",
         {{"200", L"200"}, {"+", L"200"}, {"10", L"10"}, {"%", L"20"}, {"=", L"220"}}},
        {"percent as a factor", {{"50", L"50"}, {"*", L"50"}, {"8", L"8"}, {"%", L"0.08"}, {"=", L"4"}}},
        {"memory",
         {{"5", L"5"}, {"MS", L"5"}, {"C", L"0"}, {"3", L"3"}, {"M+", L"3"}, {"MR", L"8"}, {"*", L"8"},
          {"MR", L"8"}, {"=", L"64"}, {"MC", L"64"}, {"MR", L"0"}}},
        {"repeated equals",
         {{"2", L"2"}, {"+", L"2"}, {"3", L"3"}, {"=", L"5"}, {"=", L"8"}, {"=", L"11"}, {"*", L"11"},
          {"2", L"2"}, {"=", L"22"}, {"=", L"44"}}},
        {"equals after a new number does not repeat", {{"2", L"2"}, {"*", L"2"}, {"3", L"3"}, {"=", L"6"}, {"4", L"4"}, {"=", L"4"}}},
        {"backspace",
         {{"12.5", L"12.5"}, {"BS", L"12."}, {"BS", L"12"}, {"BS", L"1"}, {"BS", L"0"}, {"BS", L"0"}, {"7", L"7"},
          {"+", L"7"}, {"BS", L"7"}, {"1", L"1"}, {"=", L"8"}, {"BS", L"8"}}},
        {"clear entry keeps the pending operation",
         {{"2", L"2"}, {"+", L"2"}, {"9", L"9"}, {"CE", L"0"}, {"3", L"3"}, {"=", L"5"}}},
        {"sign and exponent while typing",
         {{"1.5", L"1.5"}, {"EE", L"1.5E"}, {"3", L"1.5E3"}, {"+/-", L"1.5E-3"}, {"4", L"1.5E-34"},
          {"5", L"1.5E-34"}, {"BS", L"1.5E-3"}, {"*", L"0.0015"}, {"+/-", L"-0"}, {"2", L"-2"}, {"=", L"-0.003"}}},
        {"backspace out of the exponent", {{"2", L"2"}, {"EE", L"2E"}, {"+/-", L"2E-"}, {"BS", L"2"}, {"5", L"25"}}},
        {"error and recovery",
         {{"1", L"1"}, {"/", L"1"}, {"0", L"0"}, {"=", L"Error"}, {"5", L"Error"}, {"+", L"Error"}, {"=", L"Error"},
          {"C", L"0"}, {"4", L"4"}, {"sqrt", L"2"}}},
        {"clear entry leaves an error", {{"4", L"4"}, {"+/-", L"-4"}, {"sqrt", L"Error"}, {"CE", L"0"}, {"9", L"9"}}},
    };
    for (const auto& [name, steps] : scenarios) {
        CCalculator calc;
        calc.PressKey(eCalcKeyClear);
        std::string pressed;
        for (const auto& step : steps) {
            Press(calc, step.key);
            pressed += std::string(" ") + step.key;
            EXPECT_EQ(calc.GetDisplay().str(), step.display) << name << ", after" << pressed;
        }
    }
}

TEST_F(CalculatorTest, DecimalArithmeticHasNoBinaryArtefacts) {
    EXPECT_EQ(ValueText("0.1 + 0.2 ="), L"0.3");
    EXPECT_EQ(ValueText("1.1 * 1.1 ="), L"1.21");
    EXPECT_EQ(ValueText("0.3 - 0.1 - 0.2 ="), L"0");
    EXPECT_EQ(Display("1 / 3 * 3 ="), L"1");
    EXPECT_EQ(Display("2 / 3 ="), L"0.666666666667");
    // 2^0.5 to 34 digits, computed with Python's decimal module at 34 digits of precision:
    // getcontext().prec = 34; Decimal(2) ** Decimal("0.5")
    EXPECT_EQ(ValueText("2 ^ 0.5 ="), L"1.414213562373095048801688724209698");
    EXPECT_EQ(ValueText("8 root 3 ="), L"2");
    EXPECT_EQ(ValueText("1000 log"), L"3");
    EXPECT_EQ(ValueText("0.001 log"), L"-3");
    EXPECT_EQ(ValueText("5 ex ln"), L"5");
    EXPECT_EQ(Display("5 ex ln"), L"5");
    EXPECT_EQ(ValueText("20 !"), L"2432902008176640000");
    EXPECT_EQ(ValueText("2 +/- ^ 3 ="), L"-8");
    EXPECT_EQ(ValueText("27 +/- root 3 ="), L"-3");
}

TEST_F(CalculatorTest, DegreeAndGradAnglesAreReducedExactlyBeforeTheFunction) {
    const std::vector<std::tuple<const char*, ECalcAngleMode, const wchar_t*>> exact = {
        {"30 sin", eCalcDegrees, L"0.5"},    {"180 sin", eCalcDegrees, L"0"},   {"90 cos", eCalcDegrees, L"0"},
        {"45 tan", eCalcDegrees, L"1"},      {"135 tan", eCalcDegrees, L"-1"},  {"540 sin", eCalcDegrees, L"0"},
        {"720 +/- cos", eCalcDegrees, L"1"}, {"210 sin", eCalcDegrees, L"-0.5"}, {"60 cos", eCalcDegrees, L"0.5"},
        {"200 sin", eCalcGrads, L"0"},       {"50 tan", eCalcGrads, L"1"},      {"100 cos", eCalcGrads, L"0"},
        {"0.5 asin", eCalcDegrees, L"30"},   {"1 asin", eCalcGrads, L"100"},    {"1 +/- acos", eCalcDegrees, L"180"},
        {"1 atan", eCalcDegrees, L"45"},     {"1 atan", eCalcGrads, L"50"},
    };
    for (const auto& [keys, mode, value] : exact) EXPECT_EQ(ValueText(keys, mode), value) << keys << " mode " << mode;

    EXPECT_EQ(Display("33.33333333333333 sin", eCalcGrads), L"0.5");
    EXPECT_EQ(Display("pi sin", eCalcRadians), L"0");
    EXPECT_EQ(Display("1 asin", eCalcRadians), L"1.57079632679");
    EXPECT_EQ(Display("1 rad asin deg", eCalcDegrees), L"1.57079632679");  // mode keys do not convert
    EXPECT_EQ(Display("10 sin"), L"0.173648177667");
}

TEST_F(CalculatorTest, FunctionsAgreeWithPublishedValuesToTheDisplayWidth) {
    const std::vector<std::tuple<const char*, ECalcAngleMode, const wchar_t*>> cases = {
        {"1 sin", eCalcRadians, L"0.841470984808"},   {"2 atan", eCalcRadians, L"1.10714871779"},
        {"2 ln", eCalcDegrees, L"0.69314718056"},     {"1 ex", eCalcDegrees, L"2.71828182846"},
        {"2 log", eCalcDegrees, L"0.301029995664"},   {"0.5 10x", eCalcDegrees, L"3.16227766017"},
        {"69 !", eCalcDegrees, L"1.71122452428E98"},  {"0 !", eCalcDegrees, L"1"},
        {"0.5 acos", eCalcGrads, L"66.6666666667"},   {"pi / 4 = tan", eCalcRadians, L"1"},
        {"2 ^ 2 +/- =", eCalcDegrees, L"0.25"},       {"0 ^ 0 =", eCalcDegrees, L"1"},
        {"2 root 0.5 =", eCalcDegrees, L"4"},         {"pi", eCalcDegrees, L"3.14159265359"},
    };
    for (const auto& [keys, mode, shown] : cases) EXPECT_EQ(Display(keys, mode), shown) << keys;
    EXPECT_EQ(ValueText("1.1 ^ 10 ="), L"2.5937424601");  // integer powers stay exact
    EXPECT_EQ(ValueText("pi"), L"3.141592653589793238462643383279503");
}

TEST_F(CalculatorTest, OperandsComeFromWhereTheKeysSayTheyDo) {
    const std::vector<std::pair<const char*, const wchar_t*>> cases = {
        {"2 * +/- 3 =", L"-6"},             // +/- right after an operator begins a negative number
        {"200 + ( 10 ) % =", L"220"},       // percent of the operand before the parenthesis
        {"( 2 + 3 ) * 2 = =", L"20"},       // repeats the outermost operation
        {"2 + 3 = 4 =", L"4"},              // a new number ends the repetition
        {"2 + 3 = * 4 =", L"20"},           // a result continues the chain
        {"2 ^ 3 ^ 2 =", L"64"},             // keys associate to the left
        {"5 - ) =", L"5"},                  // a stray ")" is ignored
        {"5 + =", L"5"},                    // a dangling operator is withdrawn
        {"9 sqrt x2 1/x 1/x", L"9"},
        {"12 DMS 30 CE 4 =", L"4"},
        {"12 DMS 3 BS BS BS 5", L"15"},     // backspace crosses the degree mark
    };
    for (const auto& [keys, shown] : cases) EXPECT_EQ(Display(keys), shown) << keys;

    // A field's text typed into a pending calculation is its right operand.
    CCalculator calc;
    Press(calc, "C 2 +");
    ASSERT_TRUE(calc.SetValueText(L"3.5"));
    EXPECT_TRUE(calc.HasPendingOperation());
    Press(calc, "=");
    EXPECT_EQ(calc.GetDisplay().str(), L"5.5");
    EXPECT_FALSE(calc.HasPendingOperation());
    // A DMS view that the width cannot hold says so rather than cutting digits.
    calc.SetDisplayDigits(6);
    Press(calc, "C 123 >DMS");
    EXPECT_EQ(calc.GetDisplay().str(), L"#####");
    calc.SetDisplayDigits(12);
    EXPECT_EQ(calc.GetDisplay().str(), L"123\u00B000'00\"");
}

TEST_F(CalculatorTest, DomainErrorsShowErrorWithTheirReason) {
    const std::vector<std::pair<const char*, ECalcError>> cases = {
        {"1 / 0 =", eCalcDivisionByZero}, {"0 1/x", eCalcDivisionByZero},  {"0 ^ 1 +/- =", eCalcDivisionByZero},
        {"4 +/- sqrt", eCalcDomain},      {"90 tan", eCalcDomain},         {"270 tan", eCalcDomain},
        {"2 asin", eCalcDomain},          {"2.5 !", eCalcDomain},          {"0 log", eCalcDomain},
        {"1 +/- ln", eCalcDomain},        {"8 +/- root 2 =", eCalcDomain}, {"2 +/- ^ 0.5 =", eCalcDomain},
        {"12.6 DMS>", eCalcDomain},       {"1 EE 30 sin", eCalcDomain},    {"70 !", eCalcOverflow},
        {"1 EE 99 * 10 =", eCalcOverflow}, {"10 ^ 200 =", eCalcOverflow},  {"231 ex x2", eCalcOverflow},
        {"9 EE 99 M+ M+", eCalcOverflow},
    };
    for (const auto& [keys, error] : cases) {
        CCalculator calc;
        Press(calc, std::string("C ") + keys);
        EXPECT_EQ(calc.GetDisplay().str(), L"Error") << keys;
        EXPECT_EQ(calc.GetError(), error) << keys;
        EXPECT_TRUE(calc.GetValueText().IsEmpty()) << keys;
    }
    EXPECT_EQ(Display("1 EE 99 +/- / 10 ="), L"0");  // below 1E-99 is zero, not an error
    EXPECT_EQ(Display("10 ^ 200 +/- ="), L"0");
}

TEST_F(CalculatorTest, DmsEntryAndViewKeepAnglesExact) {
    CCalculator calc;
    const std::vector<Step> steps = {
        {"C", L"0"},          {"12", L"12"},          {"DMS", L"12\u00B0"},         {"3", L"12\u00B03"},
        {"0", L"12\u00B030"}, {"DMS", L"12\u00B030'"}, {"36", L"12\u00B030'36\""},  {"+", L"12.51"},
        {"0", L"0"},          {"DMS", L"0\u00B0"},     {"29", L"0\u00B029"},         {"DMS", L"0\u00B029'"},
        {"24", L"0\u00B029'24\""}, {"=", L"13"},       {">DMS", L"13\u00B000'00\""}, {">DMS", L"13"},
    };
    for (const auto& step : steps) {
        Press(calc, step.key);
        EXPECT_EQ(calc.GetDisplay().str(), step.display) << "after " << step.key;
    }
    EXPECT_EQ(calc.GetValueText().str(), L"13");

    EXPECT_EQ(Display("12.51 >DMS"), L"12\u00B030'36\"");
    EXPECT_EQ(Display("0.5 +/- >DMS"), L"-0\u00B030'00\"");
    EXPECT_EQ(Display("10 / 3 = >DMS"), L"3\u00B020'00\"");
    EXPECT_EQ(Display("1 / 7200 = >DMS"), L"0\u00B000'00.5\"");
    // Minutes and seconds stay below 60, a fraction closes the angle, seconds end the entry.
    EXPECT_EQ(Display("1 DMS 6 7 DMS 5 9 9"), L"1\u00B06'59\"");
    EXPECT_EQ(Display("1 DMS 59 DMS 7 0"), L"1\u00B059'7\"");
    EXPECT_EQ(Display("1 DMS 2.5 DMS 3"), L"1\u00B02.53");
    EXPECT_EQ(ValueText("1 DMS 30.5"), L"1.508333333333333333333333333333333");
    EXPECT_EQ(ValueText("1 DMS 2 DMS 3 DMS"), ValueText("1 DMS 2 DMS 3"));
    // Angles whose decimal degrees terminate are held exactly, not as a sum of rounded parts.
    EXPECT_EQ(ValueText("0 DMS 29 DMS 24 - 0.49 ="), L"0");
    EXPECT_EQ(ValueText("1 DMS 1 DMS 1.2 - 1.017 ="), L"0");
    EXPECT_EQ(ValueText("12 DMS 30 DMS 36 + 0 DMS 29 DMS 24 - 13 ="), L"0");
    // DMS> reads a plain value as packed DDD.MMSS; on a DMS view it only returns to decimal.
    EXPECT_EQ(ValueText("12.3036 DMS>"), L"12.51");
    EXPECT_EQ(ValueText("12.51 >DMS DMS>"), L"12.51");
    EXPECT_EQ(ValueText("12 DMS 30 DMS 36 DMS>"), L"12.51");
    EXPECT_EQ(ValueText("12 DMS 30 DMS 36 +/-"), L"-12.51");
}

TEST_F(CalculatorTest, DisplayRoundsToItsWidthAndSwitchesToScientific) {
    const std::vector<std::pair<const char*, const wchar_t*>> shown = {
        {"123456789012 * 10 =", L"1.23456789012E12"}, {"999999999999 + 0.5 =", L"1E12"},
        {"99999999999.95 + 0 =", L"100000000000"},    {"0.0001 * 1 =", L"0.0001"},
        {"0.00001 * 1 =", L"1E-5"},                   {"2 / 3 / 1000 =", L"0.000666666667"},
        {"1 / 3 +/- =", L"-0.333333333333"},          {"1 EE 99 =", L"1E99"},
        {"1.5 EE 7 +/- * 1 =", L"1.5E-7"},            {"0.1 + 0.2 - 0.3 =", L"0"},
    };
    for (const auto& [keys, display] : shown) EXPECT_EQ(Display(keys), display) << keys;

    CCalculator calc;
    calc.SetDisplayDigits(5);
    Press(calc, "C 2 / 3 =");
    EXPECT_EQ(calc.GetDisplay().str(), L"0.66667");
    Press(calc, "* 1000000 =");
    EXPECT_EQ(calc.GetDisplay().str(), L"6.6667E5");
    calc.SetDisplayDigits(0);
    EXPECT_EQ(calc.GetDisplayDigits(), kCalcMinDigits);
    calc.SetDisplayDigits(99);
    EXPECT_EQ(calc.GetDisplayDigits(), kCalcMaxDigits);
}

TEST_F(CalculatorTest, LastResultIsKeptInTheGlobalSettingsAndRecalledAtStart) {
    {
        CCalculator calc;
        EXPECT_EQ(calc.GetDisplay().str(), L"0");
        Press(calc, "C 1 / 3 =");
    }
    EXPECT_EQ(GetLastCalcValue().str(), L"0." + std::wstring(40, L'3'));
    CCalculator next;
    EXPECT_EQ(next.GetDisplay().str(), L"0.333333333333");
    Press(next, "* 3 =");
    EXPECT_EQ(next.GetValueText().str(), L"1");
    Press(next, "5 + ans =");
    EXPECT_EQ(next.GetDisplay().str(), L"6");

    SetLastCalcValue(CKivStringT(L"not a number"));
    EXPECT_EQ(CCalculator().GetDisplay().str(), L"0");
    SetLastCalcValue(CKivStringT(L"1E400"));
    EXPECT_EQ(CCalculator().GetDisplay().str(), L"0");
}

TEST_F(CalculatorTest, TypingStopsAtItsLimitsInsteadOfGrowing) {
    CCalculator calc;
    Press(calc, "C");
    for (int i = 0; i < 50; ++i) calc.PressKey(eCalcKey7);
    EXPECT_EQ(calc.GetDisplay().GetLength(), kCalcMaxEntryDigits);
    Press(calc, "C . ");
    for (int i = 0; i < 100; ++i) calc.PressKey(eCalcKey0);
    EXPECT_LE(calc.GetDisplay().GetLength(), 50);
    Press(calc, "C 1 EE 1 2 3");
    EXPECT_EQ(calc.GetDisplay().str(), L"1E12");
    Press(calc, "C");
    for (int i = 0; i < 40; ++i) calc.PressKey(eCalcKeyOpenParen);
    EXPECT_EQ(calc.GetOpenParens(), kCalcMaxParens);
    Press(calc, "1 + 1 =");
    EXPECT_EQ(calc.GetDisplay().str(), L"2");
    EXPECT_EQ(calc.GetOpenParens(), 0);
    calc.PressKey(static_cast<ECalcKey>(-1));
    calc.PressKey(static_cast<ECalcKey>(1000));
    EXPECT_EQ(calc.GetDisplay().str(), L"2");
}

TEST_F(CalculatorTest, TextTypedIntoTheCalculatorReadsAsNumbersAndAngles) {
    CCalculator calc;
    EXPECT_TRUE(calc.SetValueText(L" 12\u00B030'36\" "));
    EXPECT_EQ(calc.GetValueText().str(), L"12.51");
    EXPECT_TRUE(calc.SetValueText(L"-1,5"));
    EXPECT_EQ(calc.GetValueText().str(), L"-1.5");
    EXPECT_TRUE(calc.SetValueText(L"2.5E-3"));
    EXPECT_DOUBLE_EQ(calc.GetValue(), 0.0025);
    for (const wchar_t* bad : std::vector<const wchar_t*>{L"", L"abc", L"1+2", L"12\u00B075'", L"1e999", nullptr})
        EXPECT_FALSE(calc.SetValueText(bad)) << (bad ? bad : L"(null)");
    EXPECT_DOUBLE_EQ(calc.GetValue(), 0.0025);

    EXPECT_EQ(CalcAngleModeFromUnits(kiv_df::eGrads), eCalcGrads);
    EXPECT_EQ(CalcAngleModeFromUnits(kiv_df::eRadians), eCalcRadians);
    EXPECT_EQ(CalcAngleModeFromUnits(kiv_df::eDMS), eCalcDegrees);
    ECalcKey key;
    EXPECT_TRUE(CalcKeyFromChar(L',', key));
    EXPECT_EQ(key, eCalcKeyPoint);
    EXPECT_FALSE(CalcKeyFromChar(L'x', key));
}

TEST_F(CalculatorTest, NumberTextIgnoresTheProcessLocale) {
    kiv_test::ScopedLocale german("de_DE.UTF-8");
    if (!german.ok()) GTEST_SKIP() << "de_DE.UTF-8 is not installed";
    EXPECT_EQ(Display("0.1 + 0.2 ="), L"0.3");
    EXPECT_EQ(Display("1 / 7200 = >DMS"), L"0\u00B000'00.5\"");
    CCalculator calc;
    ASSERT_TRUE(calc.SetValueText(L"1.25"));
    EXPECT_EQ(calc.GetValueText().str(), L"1.25");
}
