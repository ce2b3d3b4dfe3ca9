// Feet-and-inches text: a length in decimal feet written as feet, inches and a
// power-of-two fraction of an inch (5'6"3/8), and typed text in the dotted (5.6.3.8) or
// marked (5'6"3/8, 5 6 3/8) notation read back into a plain decimal number of feet.
#pragma once

#include "platform/kivutils/KivString.h"
#include "utils/units/UnitTypes.h"

CKivStringT ToFeetInchesString(double feet, EKivDecimalDigits digits);
bool CheckForFeetAndInchesFormat(CKivStringT& text, double value, kiv_df::UNITS& units);
bool ConvertFeetInchesToNormalDoubleString(CKivStringT& text);
bool StrFeetInchesFormat1ToNormalDoubleStr(CKivStringT& text);
bool StrFeetInchesFormat2ToNormalDoubleStr(CKivStringT& text);
