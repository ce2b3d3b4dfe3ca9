// kiv_formats: number text of the family, independent of the process locale. Decimal
// numbers are read and written with '.' whatever the locale says; sexagesimal angles are
// read as surveyors type them and written with or without their marks.
#pragma once

#include <string_view>

#include "platform/kivutils/KivArray.h"
#include "platform/kivutils/KivString.h"

namespace kiv_formats {

// The precision of the one-argument DoubleToString: six decimals, as printf's %f.
constexpr int kDefaultPrecision = 6;

// Reads a decimal number: optional blanks, an optional sign, digits with an optional
// '.' fraction (".5" and "5." included), an optional exponent, optional blanks. Anything
// else, an empty text, infinities, NaN and numbers beyond the double range give false;
// value is then left as it was.
bool StringToDouble(const wchar_t* text, double& value);
// The same reading of a text that need not end in a null character.
bool StringToDoubleView(std::wstring_view text, double& value);

// Reads a sexagesimal angle into decimal degrees. Accepted: degrees, minutes, seconds,
// each followed by its mark (degrees by U+00B0, U+00BA, 'd' or 'D'; minutes by ', U+2032
// or U+2019; seconds by ", U+2033 or U+201D) or separated by blanks or a colon; a sign, or
// a hemisphere letter N/E/S/W before or after the angle (S and W negative); a fraction
// on the last component only; minutes and seconds below 60. A single number is decimal
// degrees. With `end`, reading stops after the angle and *end points past it; without,
// nothing but blanks may follow. On false, degrees is left as it was.
bool StringToDegree(const wchar_t* text, double& degrees, const wchar_t** end = nullptr);

// The most decimals DoubleToString writes; a larger precision writes this many.
constexpr int kMaxPrecision = 30;

// The value in fixed notation with `precision` decimals (0 to kMaxPrecision; a negative
// precision writes none), '.' as decimal point. Infinities and NaN give "#####".
CKivStringT DoubleToString(double value, int precision);
CKivStringT DoubleToString(double value);

// Decimal degrees as degrees, two-digit minutes and two-digit seconds with `precision`
// decimals (0 to 9), rounded once at the last printed digit with the carries that follow
// (59.99995" never prints as 60"). With symbols: -12°05'03.123"; without: -12 05 03.123.
// Infinities and NaN give "#####".
CKivStringT DMSToString(double degrees, bool symbols, int precision);

// The text with every ',' replaced by '.'.
CKivStringT ReplaceCommasWithDecPt(const wchar_t* text);

// Cuts `text` at every character of `delimiters` and stores the non-empty fields in
// order (adjacent delimiters yield no empty field); returns their count.
int ParseDelimitersValues(const wchar_t* text, const wchar_t* delimiters, CKivArray<CKivStringT>& fields);

// Reads an integer as atoi does: leading blanks, a sign, digits up to the first other
// character; 0 when there are none; saturated at the int range.
int StringToInt(const wchar_t* text);
CKivStringT IntToString(int value);

}  // namespace kiv_formats
