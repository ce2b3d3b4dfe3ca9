// The unit factors of the family. The US survey foot is defined as 1200/3937 m; the
// international foot as 0.3048 m exactly.
#include "platform/kivmath/KivMath.h"

#include <cmath>
#include <numbers>

namespace {
constexpr double kUsFootMetres = 1200.0 / 3937.0;
constexpr double kIntlFootMetres = 0.3048;
constexpr double kFeetPerChain = 66.0;
constexpr double kFeetPerYard = 3.0;
constexpr double kMilsPerCircle = 6400.0;  // NATO mil

double FootMetres(bool usFoot) { return usFoot ? kUsFootMetres : kIntlFootMetres; }

// a mod 360 in [0, 360).
double Wrap360(double a) {
    double r = std::fmod(a, 360.0);
    if (r < 0) r += 360.0;
    if (r >= 360.0) r -= 360.0;  // -1e-17 + 360 rounds to 360
    return r;
}
}  // namespace

double USFeet2Meter(double feet) { return feet * 1200.0 / 3937.0; }
double Meter2USFeet(double metres) { return metres * 3937.0 / 1200.0; }
double IFeet2Meter(double feet) { return feet * kIntlFootMetres; }
double Meter2IFeet(double metres) { return metres / kIntlFootMetres; }
double Chain2Meter(double chains, bool usFoot) { return chains * kFeetPerChain * FootMetres(usFoot); }
double Meter2Chain(double metres, bool usFoot) { return metres / (kFeetPerChain * FootMetres(usFoot)); }

double Rad2Deg(double radians) { return radians * (180.0 / std::numbers::pi); }
double Deg2Rad(double degrees) { return degrees * (std::numbers::pi / 180.0); }
double Grad2Deg(double grads) { return grads * 0.9; }
double Deg2Grad(double degrees) { return degrees / 0.9; }
double Mil2Deg(double mils) { return mils * (360.0 / kMilsPerCircle); }
double Deg2Mil(double degrees) { return degrees * (kMilsPerCircle / 360.0); }

double DDDMMSS2Deg(double packed) {
    const double sign = packed < 0 ? -1.0 : 1.0;
    const double a = std::fabs(packed);
    double deg = std::floor(a);
    // The minutes and seconds digits are read with a guard against the binary error of
    // the decimal fraction (12.30 is 12.2999... in binary and still means 30 minutes).
    const double mmss = (a - deg) * 100.0;
    double minutes = std::floor(mmss + 1e-9);
    double seconds = (mmss - minutes) * 100.0;
    if (seconds < 0) seconds = 0;
    return sign * (deg + minutes / 60.0 + seconds / 3600.0);
}

double Deg2DDDMMSS(double degrees, int decimals, bool normalize) {
    if (!std::isfinite(degrees)) return degrees;
    if (normalize) degrees = Wrap360(degrees);
    const double sign = degrees < 0 ? -1.0 : 1.0;
    const double a = std::fabs(degrees);
    if (decimals < 0) decimals = 0;
    if (decimals > 12) decimals = 12;
    // Round in the smallest unit the decimals reach (seconds, minutes or degrees), then
    // split with integer arithmetic so every carry is exact.
    double unitsPerDegree;
    int fracDigits;
    if (decimals >= 4) {
        fracDigits = decimals - 4;
        unitsPerDegree = 3600.0;
    } else if (decimals >= 2) {
        fracDigits = decimals - 2;
        unitsPerDegree = 60.0;
    } else {
        fracDigits = decimals;
        unitsPerDegree = 1.0;
    }
    const double scale = std::pow(10.0, fracDigits);
    const double total = std::round(a * unitsPerDegree * scale);
    if (total > 9.0e15) return sign * a;  // beyond exact integers: nothing left to round
    const auto t = static_cast<long long>(total);
    const auto perUnit = static_cast<long long>(scale);
    long long deg, min = 0;
    double sec = 0;
    if (unitsPerDegree == 3600.0) {
        const long long wholeSeconds = t / perUnit;
        deg = wholeSeconds / 3600;
        min = (wholeSeconds / 60) % 60;
        sec = static_cast<double>(wholeSeconds % 60) + static_cast<double>(t % perUnit) / scale;
        return sign * (static_cast<double>(deg) + static_cast<double>(min) / 100.0 + sec / 10000.0);
    }
    if (unitsPerDegree == 60.0) {
        const long long wholeMinutes = t / perUnit;
        deg = wholeMinutes / 60;
        const double minutes = static_cast<double>(wholeMinutes % 60) + static_cast<double>(t % perUnit) / scale;
        return sign * (static_cast<double>(deg) + minutes / 100.0);
    }
    return sign * (total / scale);
}

double HL2HR(double degrees) { return Wrap360(360.0 - degrees); }
double HR2HL(double degrees) { return Wrap360(360.0 - degrees); }

double Level2Zenith(double level) { return Wrap360(90.0 - level); }
double Zenith2Level(double zenith) {
    double l = Wrap360(90.0 - zenith);
    if (l > 180.0) l -= 360.0;
    return l;
}

double SqureMeter2SqureChain(double squareMetres, bool usFoot) {
    const double chain = kFeetPerChain * FootMetres(usFoot);
    return squareMetres / (chain * chain);
}

double CubicMeter2CubicFeets(double cubicMetres, bool usFoot) {
    const double f = FootMetres(usFoot);
    return cubicMetres / (f * f * f);
}

double CubicMeter2CubicChain(double cubicMetres, bool usFoot) {
    const double chain = kFeetPerChain * FootMetres(usFoot);
    return cubicMetres / (chain * chain * chain);
}

double CubicMeter2CubicYards(double cubicMetres, bool usFoot) {
    const double yard = kFeetPerYard * FootMetres(usFoot);
    return cubicMetres / (yard * yard * yard);
}

double dNearInt(double value) { return std::round(value); }

double DegSec2GradCC(double arcSeconds) { return arcSeconds * (10000.0 / 3240.0); }
