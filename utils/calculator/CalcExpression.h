// Expression text as calculator keys: `kivutil calc` and anything else that evaluates
// typed formulas goes through the same engine as the calculator's buttons. Each token
// becomes its key; prefix functions and unary minus are reordered into the postfix
// order the keys need (sin 30 is 3 0 sin), and right-associative powers get parentheses.
#pragma once

#include <vector>

#include "platform/kivutils/KivString.h"
#include "utils/calculator/Calculator.h"

// Where and why expression text could not be read.
struct TCalcExpressionError {
    int column = 0;  // 1-based, in characters of the text
    CKivStringT reason;
};

// The keys that evaluate `text` on a cleared calculator, the last being "=". False, with
// `error` filled and `keys` unspecified, when the text is not an expression.
bool CalcExpressionToKeys(const wchar_t* text, std::vector<ECalcKey>& keys, TCalcExpressionError& error);

// The keys that type one number or angle: "-12.5", "1.5E-3", "12°30'36"", "12:30:36",
// with ',' read as a decimal point and blanks around. False for anything else.
bool CalcLiteralToKeys(const wchar_t* text, std::vector<ECalcKey>& keys);
