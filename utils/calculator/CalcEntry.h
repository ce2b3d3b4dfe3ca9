// The number the user is typing: its digits as typed, an optional power-of-ten exponent,
// or up to three sexagesimal parts (degrees, minutes, seconds). It refuses keys that
// would make text no value can come from, so it always shows something readable.
#pragma once

#include <string>

#include "utils/calculator/CalcDecimal.h"

namespace kiv_calc {

class CalcEntry {
public:
    // Each returns false when the key did nothing (the text stays as it was).
    bool Digit(int digit);
    bool Point();
    bool Sign();
    bool Exponent();
    bool DmsMark();
    bool Backspace();

    bool IsDms() const { return part_ > 0; }
    // What the display shows while typing: "0", "-12.50", "1.5E-3", "12°30'36"".
    std::wstring Text() const;
    // The typed value: decimal degrees for an angle. Values out of the calculator's
    // range come back as an error, as if computed.
    Outcome Value() const;

private:
    int SignificantDigits() const;

    bool negative_ = false;
    // parts_[0] is the number (or the degrees); [1] minutes and [2] seconds of an angle.
    std::string parts_[3];
    int part_ = 0;
    bool inExponent_ = false;
    bool exponentNegative_ = false;
    std::string exponent_;
};

}  // namespace kiv_calc
