// Domain-checked decimal operations of the calculator. Every function answers with a
// value inside the calculator's range or with the reason there is none; the Boost
// functions are only called with arguments they handle, so they return no infinity.
#include "utils/calculator/CalcMath.h"

#include <boost/math/constants/constants.hpp>
#include <cmath>

namespace kiv_calc {
namespace {

const Decimal& Limit() {
    static const Decimal limit("1e100");
    return limit;
}
const Decimal& Smallest() {
    static const Decimal smallest("1e-99");
    return smallest;
}
const Decimal& Ln10() {
    static const Decimal ln10 = log(Decimal(10));
    return ln10;
}
// Angles this large have no digits left below a full turn, so no direction is meant.
const Decimal& LargestAngle() {
    static const Decimal largest("1e30");
    return largest;
}
// What a sine or cosine of a whole number of half turns in radians leaves at 40 digits.
const Decimal& TrigNoise() {
    static const Decimal noise("1e-36");
    return noise;
}

Outcome Fail(ECalcError error) { return Outcome{Decimal(0), error}; }

bool IsInteger(const Decimal& x) { return x == trunc(x); }
bool IsOdd(const Decimal& x) { return IsInteger(x) && !IsInteger(x / 2); }

// |x|^n by squaring, so that integer powers of exact values stay exact. The caller has
// checked that the magnitude of the result stays within a few hundred decades.
Decimal IntegerPower(Decimal base, unsigned long long n) {
    Decimal result(1);
    while (n) {
        if (n & 1) result *= base;
        n >>= 1;
        if (n) base *= base;
    }
    return result;
}

// Decades of |y|^x, estimated in double: enough to refuse results far outside the range
// before spending a long series on them.
double Decades(const Decimal& y, const Decimal& x) {
    return std::log10(std::fabs(y.convert_to<double>())) * x.convert_to<double>();
}

Outcome Power(const Decimal& y, const Decimal& x) {
    if (y == 0) {
        if (x > 0) return Outcome{Decimal(0)};
        if (x == 0) return Outcome{Decimal(1)};
        return Fail(eCalcDivisionByZero);
    }
    const double decades = Decades(y, x);
    if (decades > 101) return Fail(eCalcOverflow);
    if (decades < -101) return Outcome{Decimal(0)};
    if (IsInteger(x)) {
        static const Decimal squaringLimit("1e18");
        const Decimal n = abs(x);
        Decimal r = n < squaringLimit ? IntegerPower(abs(y), n.convert_to<unsigned long long>()) : pow(abs(y), n);
        if (x < 0) r = 1 / r;
        if (y < 0 && IsOdd(x)) r = -r;
        return InRange(r);
    }
    if (y < 0) return Fail(eCalcDomain);  // a negative base has no real non-integer power
    if (x == Decimal("0.5")) return SquareRoot(y);
    return InRange(pow(y, x));
}

// The x-th root of y. Odd integer roots of negative values are real; a root that is a
// whole number (8 root 3) is returned exactly rather than as 1.999...
Outcome Root(const Decimal& y, const Decimal& x) {
    if (x == 0) return Fail(eCalcDomain);
    if (y == 0) return x > 0 ? Outcome{Decimal(0)} : Fail(eCalcDivisionByZero);
    const bool integer = IsInteger(x);
    if (y < 0 && !IsOdd(x)) return Fail(eCalcDomain);
    const double decades = std::log10(std::fabs(y.convert_to<double>())) / x.convert_to<double>();
    if (decades > 101) return Fail(eCalcOverflow);
    if (decades < -101) return Outcome{Decimal(0)};
    Decimal r = pow(abs(y), 1 / x);
    if (integer && x > 0 && x <= 64) {
        const Decimal whole = round(r);
        if (whole != 0 && IntegerPower(whole, x.convert_to<unsigned long long>()) == abs(y)) r = whole;
    }
    return InRange(y < 0 ? -r : r);
}

// Degrees of an angle in the given mode, exactly: a grad is nine tenths of a degree.
Decimal AngleToDegrees(const Decimal& angle, ECalcAngleMode mode) {
    return mode == eCalcGrads ? angle * 9 / 10 : angle;
}

Outcome DegreesToMode(const Decimal& degrees, ECalcAngleMode mode) {
    switch (mode) {
        case eCalcGrads: return InRange(degrees * 10 / 9);
        case eCalcRadians: return InRange(degrees * Pi() / 180);
        default: return Outcome{degrees};
    }
}

Outcome RadiansToMode(const Decimal& radians, ECalcAngleMode mode) {
    switch (mode) {
        case eCalcGrads: return InRange(radians * 200 / Pi());
        case eCalcRadians: return InRange(radians);
        default: return InRange(radians * 180 / Pi());
    }
}

// The angle brought into [0, 360) by whole turns, exactly.
Decimal ReduceDegrees(const Decimal& degrees) {
    Decimal r = degrees - floor(degrees / 360) * 360;
    while (r < 0) r += 360;
    while (r >= 360) r -= 360;
    return r;
}

// Sine of a reduced angle in [0, 360), folded into the first quadrant so that the angles
// with terminating sines (0, 30, 90 and their mirrors) come out exact.
Decimal SinReduced(Decimal r) {
    bool negative = false;
    if (r >= 180) {
        r -= 180;
        negative = true;
    }
    if (r > 90) r = 180 - r;
    Decimal v;
    if (r == 0) v = 0;
    else if (r == 30) v = Decimal("0.5");
    else if (r == 90) v = 1;
    else v = sin(r * Pi() / 180);
    return negative ? -v : v;
}

Decimal SnapTrigNoise(const Decimal& v, const Decimal& radians) {
    const Decimal size = abs(radians);
    return size >= 1 && abs(v) < TrigNoise() * size ? Decimal(0) : v;
}

enum class Trig { kSin, kCos, kTan };

Outcome Trigonometric(const Decimal& angle, ECalcAngleMode mode, Trig f) {
    if (abs(angle) >= LargestAngle()) return Fail(eCalcDomain);
    if (mode == eCalcRadians) {
        const Decimal s = SnapTrigNoise(sin(angle), angle);
        const Decimal c = SnapTrigNoise(cos(angle), angle);
        if (f == Trig::kSin) return Outcome{s};
        if (f == Trig::kCos) return Outcome{c};
        if (c == 0) return Fail(eCalcDomain);
        return InRange(s / c);
    }
    const Decimal degrees = AngleToDegrees(angle, mode);
    if (f == Trig::kSin) return Outcome{SinReduced(ReduceDegrees(degrees))};
    if (f == Trig::kCos) return Outcome{SinReduced(ReduceDegrees(degrees + 90))};
    Decimal r = ReduceDegrees(degrees);
    if (r >= 180) r -= 180;
    bool negative = false;
    if (r > 90) {
        r = 180 - r;
        negative = true;
    }
    if (r == 90) return Fail(eCalcDomain);
    Decimal v;
    if (r == 0) v = 0;
    else if (r == 45) v = 1;
    else {
        const Decimal radians = r * Pi() / 180;
        v = sin(radians) / cos(radians);
    }
    return InRange(negative ? -v : v);
}

// Inverse functions: the arguments whose angles are whole degrees are answered from
// the table so that asin 0.5 is 30° exactly; the rest through the series in radians.
struct ExactAngle {
    const char* x;
    int degrees;
};

Outcome Inverse(const Decimal& x, ECalcAngleMode mode, const ExactAngle* table, size_t count,
                Decimal (*f)(const Decimal&)) {
    for (size_t i = 0; i < count; ++i)
        if (x == Decimal(table[i].x)) return DegreesToMode(Decimal(table[i].degrees), mode);
    return RadiansToMode(f(x), mode);
}

Decimal AsinRadians(const Decimal& x) { return asin(x); }
Decimal AcosRadians(const Decimal& x) { return acos(x); }
Decimal AtanRadians(const Decimal& x) { return atan(x); }

}  // namespace

const Decimal& Pi() {
    static const Decimal pi = boost::math::constants::pi<Decimal>();
    return pi;
}

Outcome InRange(const Decimal& x) {
    if (isnan(x)) return Fail(eCalcDomain);
    if (isinf(x)) return Fail(eCalcOverflow);
    const Decimal size = abs(x);
    if (size >= Limit()) return Fail(eCalcOverflow);
    if (size < Smallest()) return Outcome{Decimal(0)};
    return Outcome{x};
}

Outcome Apply(const Decimal& left, BinaryOp op, const Decimal& right) {
    switch (op) {
        case BinaryOp::kAdd: return InRange(left + right);
        case BinaryOp::kSubtract: return InRange(left - right);
        case BinaryOp::kMultiply: return InRange(left * right);
        case BinaryOp::kDivide:
            if (right == 0) return Fail(eCalcDivisionByZero);
            return InRange(left / right);
        case BinaryOp::kPower: return Power(left, right);
        case BinaryOp::kRoot: return Root(left, right);
    }
    return Fail(eCalcDomain);
}

Outcome Square(const Decimal& x) { return InRange(x * x); }

Outcome SquareRoot(const Decimal& x) {
    if (x < 0) return Fail(eCalcDomain);
    return InRange(sqrt(x));
}

Outcome Reciprocal(const Decimal& x) {
    if (x == 0) return Fail(eCalcDivisionByZero);
    return InRange(1 / x);
}

Outcome Factorial(const Decimal& x) {
    if (x < 0 || !IsInteger(x)) return Fail(eCalcDomain);
    if (x > 69) return Fail(eCalcOverflow);  // 70! is beyond 1E100
    Decimal r(1);
    for (int k = 2, n = x.convert_to<int>(); k <= n; ++k) r *= k;
    return InRange(r);
}

Outcome Log10(const Decimal& x) {
    if (x <= 0) return Fail(eCalcDomain);
    // Whole powers of ten answer with their exponent exactly.
    const long long order = x.backend().order();
    const Decimal decade = IntegerPower(Decimal(10), static_cast<unsigned long long>(order < 0 ? -order : order));
    if (x == (order < 0 ? 1 / decade : decade)) return Outcome{Decimal(order)};
    return InRange(log(x) / Ln10());
}

Outcome NaturalLog(const Decimal& x) {
    if (x <= 0) return Fail(eCalcDomain);
    if (x == 1) return Outcome{Decimal(0)};
    return InRange(log(x));
}

Outcome TenPower(const Decimal& x) {
    if (x >= 100) return Fail(eCalcOverflow);
    if (x < -100) return Outcome{Decimal(0)};
    return Power(Decimal(10), x);
}

Outcome ExpE(const Decimal& x) {
    if (x > 231) return Fail(eCalcOverflow);
    if (x < -231) return Outcome{Decimal(0)};
    if (x == 0) return Outcome{Decimal(1)};
    return InRange(exp(x));
}

Outcome Sin(const Decimal& angle, ECalcAngleMode mode) { return Trigonometric(angle, mode, Trig::kSin); }
Outcome Cos(const Decimal& angle, ECalcAngleMode mode) { return Trigonometric(angle, mode, Trig::kCos); }
Outcome Tan(const Decimal& angle, ECalcAngleMode mode) { return Trigonometric(angle, mode, Trig::kTan); }

Outcome Asin(const Decimal& x, ECalcAngleMode mode) {
    if (abs(x) > 1) return Fail(eCalcDomain);
    static const ExactAngle table[] = {{"0", 0}, {"0.5", 30}, {"-0.5", -30}, {"1", 90}, {"-1", -90}};
    return Inverse(x, mode, table, std::size(table), AsinRadians);
}

Outcome Acos(const Decimal& x, ECalcAngleMode mode) {
    if (abs(x) > 1) return Fail(eCalcDomain);
    static const ExactAngle table[] = {{"1", 0}, {"0.5", 60}, {"0", 90}, {"-0.5", 120}, {"-1", 180}};
    return Inverse(x, mode, table, std::size(table), AcosRadians);
}

Outcome Atan(const Decimal& x, ECalcAngleMode mode) {
    static const ExactAngle table[] = {{"0", 0}, {"1", 45}, {"-1", -45}};
    return Inverse(x, mode, table, std::size(table), AtanRadians);
}

// One division of the whole angle in seconds: 0°29'24" is 1764/3600, exactly 0.49, where
// 29/60 + 24/3600 would add two rounded repeating fractions.
Decimal FromDmsParts(const Decimal& degrees, const Decimal& minutes, const Decimal& seconds) {
    return (degrees * 3600 + minutes * 60 + seconds) / 3600;
}

Outcome FromPackedDms(const Decimal& packed) {
    const Decimal size = abs(packed);
    const Decimal degrees = floor(size);
    const Decimal rest = (size - degrees) * 100;
    const Decimal minutes = floor(rest);
    const Decimal seconds = (rest - minutes) * 100;
    if (minutes >= 60 || seconds >= 60) return Fail(eCalcDomain);
    const Decimal v = FromDmsParts(degrees, minutes, seconds);
    return InRange(packed < 0 ? -v : v);
}

}  // namespace kiv_calc
