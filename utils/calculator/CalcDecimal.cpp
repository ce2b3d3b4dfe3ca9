// Decimal text of the calculator: rounding to a number of significant digits, the
// display's fixed and scientific forms, and the exact reading of typed or stored text.
// GCC 12 at -O3 reports a false -Wrestrict inside Boost's number formatting (str()).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wrestrict"
#endif
#include "utils/calculator/CalcDecimal.h"

#include <algorithm>
#include <ios>

namespace kiv_calc {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string Scientific(const RoundedDigits& r) {
    std::string out(r.negative ? 1 : 0, '-');
    out += r.digits[0];
    if (r.digits.size() > 1) out.append(1, '.').append(r.digits, 1);
    return out.append(1, 'E').append(std::to_string(r.exponent));
}

std::string Fixed(const RoundedDigits& r) {
    std::string out = r.negative ? "-" : "";
    if (r.exponent < 0) return out + "0." + std::string(static_cast<size_t>(-r.exponent - 1), '0') + r.digits;
    const size_t whole = static_cast<size_t>(r.exponent) + 1;
    if (r.digits.size() <= whole) return out + r.digits + std::string(whole - r.digits.size(), '0');
    return out + r.digits.substr(0, whole) + "." + r.digits.substr(whole);
}

// The smallest first-digit position that fixed notation shows (0.0001).
constexpr int kLowestFixed = -4;

}  // namespace

RoundedDigits RoundToDigits(const Decimal& value, int digits) {
    RoundedDigits r;
    if (value == 0 || digits < 1) return r;
    // All the digits the value holds, as "-d.ddd...e+xx".
    const std::string text = value.str(0, std::ios_base::scientific);
    size_t i = 0;
    if (text[i] == '-') {
        r.negative = true;
        ++i;
    }
    std::string all;
    for (; i < text.size() && (IsDigit(text[i]) || text[i] == '.'); ++i)
        if (text[i] != '.') all += text[i];
    r.exponent = i < text.size() ? std::stoi(text.substr(i + 1)) : 0;
    // A leading zero would only come from an unnormalised form; skip it.
    const size_t first = all.find_first_not_of('0');
    if (first == std::string::npos) return RoundedDigits{};
    r.exponent -= static_cast<int>(first);
    all.erase(0, first);

    const size_t keep = static_cast<size_t>(digits);
    if (all.size() > keep) {
        const bool up = all[keep] >= '5';
        all.resize(keep);
        if (up) {
            size_t k = keep;
            while (k > 0 && all[k - 1] == '9') all[--k] = '0';
            if (k == 0) {
                all.insert(all.begin(), '1');
                all.pop_back();
                ++r.exponent;
            } else {
                ++all[k - 1];
            }
        }
    }
    all.erase(all.find_last_not_of('0') + 1);
    r.digits = std::move(all);
    return r;
}

std::string FormatDisplay(const Decimal& value, int digits) {
    const RoundedDigits r = RoundToDigits(value, digits);
    if (r.digits.empty()) return "0";
    if (r.exponent >= digits || r.exponent < kLowestFixed) return Scientific(r);
    if (r.exponent >= 0) return Fixed(r);
    // The zeros after the point take display positions, so fewer significant digits fit.
    const int fit = digits + r.exponent + 1;
    if (fit < 1) return Scientific(r);
    return Fixed(RoundToDigits(value, fit));
}

std::string FormatFull(const Decimal& value, int digits) {
    const RoundedDigits r = RoundToDigits(value, digits);
    if (r.digits.empty()) return "0";
    if (r.exponent >= digits || r.exponent < kLowestFixed) return Scientific(r);
    return Fixed(r);
}

bool ParseDecimal(std::string_view text, Decimal& value) {
    size_t i = 0;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    int mantissaDigits = 0, significant = 0;
    bool point = false;
    for (; i < text.size(); ++i) {
        if (IsDigit(text[i])) {
            ++mantissaDigits;
            if (significant > 0 || text[i] != '0') ++significant;
        } else if (text[i] == '.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    if (mantissaDigits == 0 || significant > 60) return false;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
        int exponentDigits = 0;
        for (; i < text.size() && IsDigit(text[i]); ++i) ++exponentDigits;
        if (exponentDigits == 0 || exponentDigits > 4) return false;
    }
    if (i != text.size()) return false;
    try {
        value = Decimal(std::string(text));
    } catch (...) {
        return false;
    }
    return true;
}

}  // namespace kiv_calc
