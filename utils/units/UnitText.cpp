// Value text in display units. Number text comes from kiv_formats, so it never depends
// on the process locale; unit suffixes pass through Xlate so a language file may rename them.
#include "utils/units/UnitText.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <iterator>
#include <string_view>

#include "platform/kivmath/KivMath.h"
#include "platform/kivutils/KivFormats.h"
#include "platform/kivutils/KivLog.h"
#include "platform/kivutils/Xlate.h"
#include "utils/units/FeetInches.h"
#include "utils/units/UnitConvertEx.h"

namespace {

const wchar_t* const kDistanceTexts[] = {L"m",   L"USft", L"Ift",   L"USfti", L"Ifti", L"USch",
                                         L"Ich", L"Miles", L"Km", L"Iyds",  L"USyds"};
const wchar_t* const kAngleTexts[] = {L"rad", L"grd", L"mls", L""};

struct TypedSuffix {
    const wchar_t* suffix;
    size_t length;
    kiv_df::UNITS units;
};
// Searched in this order; "ch" before "ich" and "fti" before "ifti" on purpose (see below).
const TypedSuffix kTypedSuffixes[] = {
    {L"m", 1, kiv_df::eMeters},          {L"if", 2, kiv_df::eIntlFeet},   {L"f", 1, kiv_df::eUSFeet},
    {L"fti", 3, kiv_df::eUSFeetInches},  {L"ifti", 4, kiv_df::eIntlFeetInches},
    {L"ch", 2, kiv_df::eUSChains},       {L"ich", 3, kiv_df::eIntlChains}};

// `text` ends in `suffix`, compared from the last character back (plain numbers differ
// there at once).
bool EndsWith(std::wstring_view text, std::wstring_view suffix) {
    if (suffix.size() > text.size()) return false;
    const wchar_t* tail = text.data() + (text.size() - suffix.size());
    for (size_t i = suffix.size(); i > 0; --i)
        if (tail[i - 1] != suffix[i - 1]) return false;
    return true;
}

bool InShowableRange(double v) { return v >= -1e64 && v <= 1e64; }  // false for NaN

// v as "%*.*lf" with width d + 1 and precision d writes it, never as a negative zero
// such as -0.000. As with printf, a negative precision means six decimals and a negative
// width left-justifies; digits beyond kMaxPrecision and padding beyond 64 are not written.
// 5 / 10^(d + 1) for the usual digit counts: each power of ten up to 10^22 is exact, so
// the quotient is the one pow would give, without the call.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

double HalfLastDigit(int d) {
    if (d >= 0 && d < static_cast<int>(std::size(kPowersOfTen)) - 1) return 5.0 / kPowersOfTen[d + 1];
    return 5.0 / std::pow(10.0, static_cast<double>(d) + 1.0);
}

CKivStringT PlainNumberText(double v, int d) {
    if (std::isnan(v)) v = 0;
    if (std::fabs(v) < HalfLastDigit(d)) v = 0;
    CKivStringT text = kiv_formats::DoubleToString(v, d < 0 ? 6 : d);
    const long long width = std::clamp(static_cast<long long>(d) + 1, -64LL, 64LL);
    const long long pad = (width < 0 ? -width : width) - text.GetLength();
    if (pad > 0) {
        const CKivStringT blanks(L' ', static_cast<int>(pad));
        text = width < 0 ? text + blanks : blanks + text;
    }
    return text;
}

}  // namespace

const wchar_t* DispDistUnitsStrShortEx(kiv_df::UNITS units) {
    // A negative unit is no index: it reads as metres like any value beyond the table.
    if (units < 0 || units >= 11) return kDistanceTexts[0];
    return kDistanceTexts[units];
}

const wchar_t* DispAngleUnitsStrShortEx(kiv_df::ANGLES units) {
    if (units < 0 || units > 3) return nullptr;
    return kAngleTexts[units];
}

CKivStringT FromMetersStrEx(double metres, EKivDecimalDigits digits, kiv_df::UNITS& units, bool adaptive) {
    if (!InShowableRange(metres)) return CKivStringT(L"#####");
    const double v = adaptive ? FromMetersAdaptiveEx(metres, units) : FromMetersEx(metres, units);
    if (units == kiv_df::eUSFeetInches || units == kiv_df::eIntlFeetInches) return ToFeetInchesString(v, digits);
    if (units < 0 || units == kiv_df::eIntlYards || units == kiv_df::eUSYards)
        kiv_err_log("UnitConvertEx", __LINE__, L"");  // logged, and still formatted
    return PlainNumberText(v, digits);
}

void FromDispDegStr(CKivStringT& out, double value, kiv_df::ANGLES units, int precision) {
    if (!InShowableRange(value)) {
        out = L"#####";
        return;
    }
    switch (units) {
        case kiv_df::eRadians:
        case kiv_df::eGrads:
        case kiv_df::eMils:
        case kiv_df::eDMSPacked:
            // "%.*lf" takes a negative precision as none given: six decimals.
            out = kiv_formats::DoubleToString(value, precision < 0 ? 6 : precision);
            return;
        case kiv_df::eDMS: out = kiv_formats::DMSToString(value, true, precision); return;
        default: out = L"#####"; return;
    }
}

bool ToDegreesExStr(const CKivStringT& text, double& degrees, kiv_df::ANGLES units) {
    if (units == kiv_df::eDMS) return kiv_formats::StringToDegree(text, degrees);
    double number = 0.0;
    const bool ok = kiv_formats::StringToDouble(text, number);
    switch (units) {
        case kiv_df::eRadians: degrees = Rad2Deg(number); break;
        case kiv_df::eGrads: degrees = Grad2Deg(number); break;
        case kiv_df::eMils: degrees = Mil2Deg(number); break;
        default: degrees = number; break;  // already decimal degrees (units 4 and 5 too)
    }
    return ok;
}

bool ToDegreesHAExStr(const CKivStringT& text, double& degrees, kiv_df::ANGLES units, bool leftTurning) {
    const bool ok = ToDegreesExStr(text, degrees, units);
    if (ok && leftTurning) degrees = HL2HR(degrees);
    return ok;
}

bool ToDegreesVAExStr(const CKivStringT& text, double& degrees, kiv_df::ANGLES units, bool level) {
    const bool ok = ToDegreesExStr(text, degrees, units);
    if (ok && level) degrees = Level2Zenith(degrees);
    return ok;
}

namespace {

// Where a typed suffix starts in `text`, by the rows of the suffix table in order, and
// the unit it names. The text is read lower-cased and without trailing white space.
bool MatchTypedSuffix(std::wstring_view text, kiv_df::UNITS& units, size_t& cut) {
    wchar_t small[64];
    std::wstring large;
    wchar_t* lowered = small;
    if (text.size() > std::size(small)) {
        large.resize(text.size());
        lowered = large.data();
    }
    size_t length = text.size();
    while (length > 0 && kiv_strings::IsBlank(text[length - 1])) --length;
    for (size_t i = 0; i < length; ++i) {
        const wchar_t c = text[i];
        lowered[i] = c < 0x80 ? (c >= L'A' && c <= L'Z' ? c + 32 : c) : kiv_strings::ToLower(c);
    }
    const std::wstring_view copy(lowered, length);
    for (const auto& row : kTypedSuffixes) {
        const wchar_t* translated = Xlate(row.suffix);
        const std::wstring_view suffix(translated, translated == row.suffix ? row.length : std::wcslen(translated));
        // Deliberate: only the first occurrence counts, so "ich" is read as "ch" with a
        // stray "i" left in the number, and a suffix letter earlier in the text makes the
        // row fail. Typed values in stored jobs depend on this reading. A text that does
        // not end in the suffix cannot match, which most plain numbers show at once.
        if (!EndsWith(copy, suffix)) continue;
        const size_t p = copy.find(suffix);
        if (p != std::wstring_view::npos && p + suffix.size() == copy.size()) {
            units = row.units;
            cut = p;
            return true;
        }
    }
    return false;
}

}  // namespace

bool FindUnitsinStr(CKivStringT& text, kiv_df::UNITS& units) {
    size_t cut;
    if (!MatchTypedSuffix(text.view(), units, cut)) return false;
    text = text.Left(static_cast<int>(cut));
    return true;
}

bool GetUnitsAndVal(const CKivStringT& text, double& value, kiv_df::UNITS& units) {
    size_t cut = text.view().size();
    MatchTypedSuffix(text.view(), units, cut);  // without a suffix the caller's unit stands
    if (units == kiv_df::eUSFeetInches || units == kiv_df::eIntlFeetInches) {
        CKivStringT copy = text.Left(static_cast<int>(cut));
        CheckForFeetAndInchesFormat(copy, value, units);
        return kiv_formats::StringToDouble(copy, value);
    }
    return kiv_formats::StringToDoubleView(text.view().substr(0, cut), value);
}

bool StringToLinearValEx(const CKivStringT& text, double& value, kiv_df::UNITS current) {
    // A comma works as a decimal point; most texts have none and need no copy.
    const bool hasComma = text.Find(L',') >= 0;
    const CKivStringT replaced = hasComma ? kiv_formats::ReplaceCommasWithDecPt(text) : CKivStringT();
    kiv_df::UNITS typed = current;
    if (!GetUnitsAndVal(hasComma ? replaced : text, value, typed)) return false;
    return ConvertFromUserEnteredToCurrUnitsEx(value, typed, current);
}

bool ConvertFromUserEnteredToCurrUnitsEx(double& value, kiv_df::UNITS typed, kiv_df::UNITS current) {
    if (typed == current) return true;
    if (typed != kiv_df::eMeters) value = ToMetersEx(value, typed);
    if (current != kiv_df::eMeters) value = FromMetersEx(value, current);
    return true;
}

CKivStringT ConvertDegSecToGradInPrecision(double arcSeconds, EKivDecimalDigits digits) {
    const double cc = DegSec2GradCC(arcSeconds);
    // Deliberate switch of scale: up to three digits the text is in grads, from four on
    // it stays in centesimal seconds with four fewer decimals.
    if (digits <= 3) return kiv_formats::DoubleToString(cc * 0.0001, digits);
    return kiv_formats::DoubleToString(cc, digits - 4);
}
