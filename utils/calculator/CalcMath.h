// The calculator's operations on decimal values, each checked for its domain and for the
// calculator's range, so that no operation throws or returns an infinity or a NaN.
// Angles are reduced exactly in decimal in degree and grad modes, which makes sin 180°,
// cos 90° and tan 45° exact.
#pragma once

#include "utils/calculator/CalcDecimal.h"

namespace kiv_calc {

// |x| of 1E100 and above is an overflow; below 1E-99 it becomes 0.
Outcome InRange(const Decimal& x);

enum class BinaryOp { kAdd, kSubtract, kMultiply, kDivide, kPower, kRoot };
Outcome Apply(const Decimal& left, BinaryOp op, const Decimal& right);

Outcome Square(const Decimal& x);
Outcome SquareRoot(const Decimal& x);
Outcome Reciprocal(const Decimal& x);
Outcome Factorial(const Decimal& x);
Outcome Log10(const Decimal& x);
Outcome NaturalLog(const Decimal& x);
Outcome TenPower(const Decimal& x);
Outcome ExpE(const Decimal& x);

Outcome Sin(const Decimal& angle, ECalcAngleMode mode);
Outcome Cos(const Decimal& angle, ECalcAngleMode mode);
Outcome Tan(const Decimal& angle, ECalcAngleMode mode);
Outcome Asin(const Decimal& x, ECalcAngleMode mode);
Outcome Acos(const Decimal& x, ECalcAngleMode mode);
Outcome Atan(const Decimal& x, ECalcAngleMode mode);

// Packed DDD.MMSSss to decimal degrees; minutes or seconds of 60 or more are a domain error.
Outcome FromPackedDms(const Decimal& packed);
// Degrees, minutes and seconds to decimal degrees, exactly wherever the result terminates.
Decimal FromDmsParts(const Decimal& degrees, const Decimal& minutes, const Decimal& seconds);

const Decimal& Pi();

}  // namespace kiv_calc
