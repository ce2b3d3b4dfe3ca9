// The calculator's number: a decimal floating-point value of 40 significant digits
// (Boost.Multiprecision's cpp_dec_float), so that decimal fractions such as 0.1 are held
// exactly and sums of typed values carry no binary rounding. Internal to the calculator.
#pragma once

#include <boost/multiprecision/cpp_dec_float.hpp>
#include <string>
#include <string_view>

#include "utils/calculator/Calculator.h"

namespace kiv_calc {

using Decimal = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<40>,
                                              boost::multiprecision::et_off>;

// A result or the reason there is none.
struct Outcome {
    Decimal value;
    ECalcError error = eCalcNoError;
};

// Digits of the value text that GetValueText returns, and of the last result kept in the
// global settings: all the digits held, so a recalled 1/3 times 3 is still 1.
constexpr int kFullDigits = 34;
constexpr int kStoredDigits = 40;

// A value's decimal digits rounded (half away from zero) to `digits` significant
// digits: value = ±0.d1d2d3... × 10^(exponent + 1), trailing zeros removed.
struct RoundedDigits {
    bool negative = false;
    std::string digits;  // empty for zero
    int exponent = 0;    // power of ten of the first digit
};
RoundedDigits RoundToDigits(const Decimal& value, int digits);

// The value as the display shows it: fixed notation while the digits fit the width (the
// zeros after the point of 0.00123 count) and the first digit is no further than 1E-4,
// else scientific "d.dddE-7"; "-" for negatives.
std::string FormatDisplay(const Decimal& value, int digits);
// The value to `digits` significant digits in text that ParseDecimal reads back: fixed
// from 1E-4 up to `digits` integer digits, scientific beyond.
std::string FormatFull(const Decimal& value, int digits = kFullDigits);

// Reads plain decimal text: an optional sign, digits with an optional '.', an optional
// exponent (E or e). False for anything else or more than 60 significant digits.
bool ParseDecimal(std::string_view text, Decimal& value);

}  // namespace kiv_calc
