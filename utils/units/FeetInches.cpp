// Feet-and-inches text in both directions. The arithmetic follows the application's
// long-standing steps exactly, odd corners included, because stored and shown values
// must not change between versions.
#include "utils/units/FeetInches.h"

#include <climits>
#include <cmath>

#include "platform/kivmath/KivMath.h"
#include "platform/kivutils/KivFormats.h"

using kiv_formats::DoubleToString;
using kiv_formats::IntToString;
using kiv_formats::StringToInt;

namespace {

constexpr double kTwelfth = 0.08333333333333333;

int FinestFraction(int digits) {
    switch (digits) {
        case 0: return 1;
        case 1: return 8;
        case 2: return 16;
        case 3: return 32;
        case 4: return 64;
        case 5: return 128;
        default: return 256;
    }
}

bool IsPowerOfTwoDenominator(int den) {
    for (int d = 2; d <= 256; d *= 2)
        if (den == d) return true;
    return false;
}

// n/d of a marked fraction field rewritten as the dotted n.d.
CKivStringT DottedFraction(const CKivStringT& field) {
    CKivArray<CKivStringT> parts;
    switch (kiv_formats::ParseDelimitersValues(field, L" /", parts)) {
        case 0: return L"0.0";
        case 1: return parts[0] + L".0";
        case 2: return parts[0] + L"." + parts[1];
        default: return CKivStringT();
    }
}

bool HasSlash(const CKivStringT& s) { return s.Find(L'/') >= 0; }

}  // namespace

CKivStringT ToFeetInchesString(double value, EKivDecimalDigits digits) {
    CKivStringT text;
    if (value < 0) text = L"-";
    const double magnitude = std::fabs(value);
    const int D = FinestFraction(digits);
    const double a = magnitude + 1.0 / (24.0 * D);
    // Feet beyond the int range (or not a number) cannot be written as feet and inches.
    if (!(a < 2147483647.0)) return CKivStringT(L"#####");
    const int feet = static_cast<int>(a);
    const double r = a - feet;
    // Scaled up by 10^7 and down again before the inches are taken, as always done.
    const double inchValue = r * 10000000.0 * 0.0000001 * 12.0;
    int inches = static_cast<int>(inchValue);
    text += IntToString(feet);
    text += L'\'';
    if (digits == 0) {
        text += IntToString(inches);
        text += L'"';
        return text;
    }
    const double f = dNearInt((inchValue - inches) * 1000000.0) * 0.000001;

    int numerator = 0;
    int denominator = D;
    bool exact = false;
    int foundAt = 0;
    for (int d = 2; d <= D; d *= 2) {
        const int n = static_cast<int>(f * d);
        if (std::fabs(f * d - n) < 1e-12) {
            // Deliberate: the exact case keeps the finest denominator even when the
            // numerator was found at a coarser one (31/64" with D = 32 reads 1/32).
            exact = true;
            numerator = n;
            foundAt = d;
            break;
        }
    }
    if (!exact) {
        numerator = static_cast<int>(f * D);
        while (denominator >= 2 && numerator % 2 == 0) {
            numerator /= 2;
            denominator /= 2;
        }
    }
    bool showFraction = numerator != 0;
    if (exact && numerator == foundAt) {
        // Rounded up to a whole inch; the feet already written stay, so 12" can show.
        ++inches;
        showFraction = false;
    }
    text += IntToString(inches);
    text += L'"';
    if (showFraction) {
        text += IntToString(numerator);
        text += L'/';
        text += IntToString(denominator);
    }
    return text;
}

bool CheckForFeetAndInchesFormat(CKivStringT& text, double /*value*/, kiv_df::UNITS& units) {
    if (units != kiv_df::eUSFeetInches && units != kiv_df::eIntlFeetInches) return false;
    return ConvertFeetInchesToNormalDoubleString(text);
}

bool ConvertFeetInchesToNormalDoubleString(CKivStringT& text) {
    if (text.Find(L'.') >= 0) return StrFeetInchesFormat1ToNormalDoubleStr(text);
    return StrFeetInchesFormat2ToNormalDoubleStr(text);
}

bool StrFeetInchesFormat1ToNormalDoubleStr(CKivStringT& text) {
    CKivArray<CKivStringT> fields;
    const int count = kiv_formats::ParseDelimitersValues(text, L".", fields);
    if (count == 0) return false;
    if (count == 1) {
        text = fields[0];
        return true;
    }
    if (count != 2 && count != 4) return false;

    double feet = StringToInt(fields[0]);
    double sign = feet < 0 ? -1.0 : 1.0;
    if (std::fabs(feet) < 1e-12) sign = fields[0].Find(L'-') >= 0 ? -1.0 : 1.0;  // "-0.6" is minus six inches
    feet = std::fabs(feet);

    int inches = StringToInt(fields[1]);
    if (inches < 0 || inches > 11) {
        if (inches < 0) {
            sign = -1.0;
            inches = inches == INT_MIN ? INT_MAX : -inches;
        }
        const int k = inches / 12;
        feet += k;
        inches -= 12 * k;
    }
    const double v = inches * kTwelfth + feet;
    if (count == 2) {
        text = DoubleToString(sign * v, 15);
        return true;
    }

    int num = StringToInt(fields[2]);
    const int den = StringToInt(fields[3]);
    if (!IsPowerOfTwoDenominator(den)) {
        text = DoubleToString(sign * v, 15);
    } else if (num >= den) {
        // Deliberate: an improper fraction is dropped and the default precision used.
        text = DoubleToString(sign * v);
    } else {
        // Deliberate: a numerator of 0 counts as negative, so 5.6.0.8 reads as minus.
        if (num <= 0) {
            sign = -1.0;
            num = num == INT_MIN ? INT_MAX : -num;
        }
        text = DoubleToString(sign * (static_cast<double>(num) / den / 12.0 + v), 15);
    }
    return true;
}

bool StrFeetInchesFormat2ToNormalDoubleStr(CKivStringT& text) {
    CKivArray<CKivStringT> f;
    const int count = kiv_formats::ParseDelimitersValues(text, L" '\"", f);
    CKivStringT dotted;
    switch (count) {
        case 0: return false;
        case 1:
            if (HasSlash(f[0])) {
                dotted = L"0.0." + DottedFraction(f[0]);
            } else if (text.Find(L'"', 1) >= 0) {
                dotted = L"0." + f[0];
            } else {
                text = f[0];  // decimal feet, taken as they stand
                return true;
            }
            break;
        case 2:
            dotted = HasSlash(f[1]) ? L"0." + f[0] + L"." + DottedFraction(f[1]) : f[0] + L"." + f[1];
            break;
        case 3:
            dotted = HasSlash(f[2]) ? f[0] + L"." + f[1] + L"." + DottedFraction(f[2])
                                    : L"0." + f[0] + L"." + f[1] + L"." + f[2];
            break;
        case 4: dotted = f[0] + L"." + f[1] + L"." + f[2] + L"." + f[3]; break;
        default: return false;
    }
    if (!StrFeetInchesFormat1ToNormalDoubleStr(dotted)) return false;
    text = dotted;
    return true;
}
