// The unit factors of the family. The US survey foot is defined as 1200/3937 m; the
// international foot as 0.3048 m exactly.
#include "platform/kivmath/KivMath.h"

#include <cfloat>
#include <cmath>
#include <numbers>

// The family's values and the library's number text repeat the device's arithmetic step
// by step, and each step must round to double as it does there: a compiler that keeps
// intermediates wider (the x87 unit, which i386 uses unless told -mfpmath=sse) moves
// values that sit on a rounding boundary, such as 31/64" shown to 1/32".
static_assert(FLT_EVAL_METHOD == 0, "double arithmetic must round every operation to double");

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

TSexagesimal SplitDegrees(double magnitude, int packedDecimals) {
    if (packedDecimals < 0) packedDecimals = 0;
    if (packedDecimals > 13) packedDecimals = 13;
    TSexagesimal out{};
    out.degrees = std::floor(magnitude);
    out.fractionDigits = packedDecimals > 4 ? packedDecimals - 4 : 0;
    long long perSecond = 1;
    for (int k = 0; k < out.fractionDigits; ++k) perSecond *= 10;
    // The rounding quantum in units of 1/perSecond of a second.
    static const long long kCoarseQuanta[] = {3600, 600, 60, 10};
    const long long quantum = packedDecimals < 4 ? kCoarseQuanta[packedDecimals] : 1;
    const long long full = 3600 * perSecond;
    const double scaled = (magnitude - out.degrees) * 3600.0 * static_cast<double>(perSecond);
    long long units = std::llround(scaled / static_cast<double>(quantum)) * quantum;
    if (units >= full) {
        out.degrees += 1.0;
        units -= full;
    }
    const long long wholeSeconds = units / perSecond;
    out.minutes = static_cast<int>(wholeSeconds / 60);
    out.seconds = static_cast<int>(wholeSeconds % 60);
    out.fraction = units % perSecond;
    return out;
}

double Deg2DDDMMSS(double degrees, int decimals, bool normalize) {
    if (!std::isfinite(degrees)) return degrees;
    if (normalize) degrees = Wrap360(degrees);
    const double sign = degrees < 0 ? -1.0 : 1.0;
    const TSexagesimal p = SplitDegrees(std::fabs(degrees), decimals > 12 ? 12 : decimals);
    const double seconds = p.seconds + static_cast<double>(p.fraction) / std::pow(10.0, p.fractionDigits);
    return sign * (p.degrees + p.minutes / 100.0 + seconds / 10000.0);
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
