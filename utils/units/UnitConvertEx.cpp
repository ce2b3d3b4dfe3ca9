// Base units to display units and back, through the factors of kivmath.
#include "utils/units/UnitConvertEx.h"

#include <algorithm>

#include "platform/kivmath/KivMath.h"
#include "platform/kivutils/KivLog.h"

namespace {
// Miles, kilometres and yards are deliberately not convertible here: callers get 1.0 and
// a log entry, which is what the rest of the application has always been given.
double UnsupportedUnit(int line) {
    kiv_err_log("UnitConvertEx", line, L"");
    return 1.0;
}
}  // namespace

double ToMetersEx(double value, kiv_df::UNITS units) {
    switch (units) {
        case kiv_df::eMeters: return value;
        case kiv_df::eUSFeet:
        case kiv_df::eUSFeetInches: return USFeet2Meter(value);
        case kiv_df::eIntlFeet:
        case kiv_df::eIntlFeetInches: return IFeet2Meter(value);
        case kiv_df::eUSChains: return Chain2Meter(value, true);
        case kiv_df::eIntlChains: return Chain2Meter(value, false);
        default: return UnsupportedUnit(__LINE__);
    }
}

double FromMetersEx(double metres, kiv_df::UNITS units) {
    switch (units) {
        case kiv_df::eMeters: return metres;
        case kiv_df::eUSFeet:
        case kiv_df::eUSFeetInches: return Meter2USFeet(metres);
        case kiv_df::eIntlFeet:
        case kiv_df::eIntlFeetInches: return Meter2IFeet(metres);
        case kiv_df::eUSChains: return Meter2Chain(metres, true);
        case kiv_df::eIntlChains: return Meter2Chain(metres, false);
        default: return UnsupportedUnit(__LINE__);
    }
}

double FromMetersAdaptiveEx(double metres, kiv_df::UNITS& units) {
    const double x = FromMetersEx(metres, units);
    switch (units) {
        case kiv_df::eMeters:
            if (x > 1000.0) {
                units = kiv_df::eKilometers;
                return x / 1000.0;
            }
            return x;
        case kiv_df::eUSFeet:
        case kiv_df::eIntlFeet:
        case kiv_df::eUSFeetInches:
        case kiv_df::eIntlFeetInches:
            // The mile is 5280 of whichever foot the unit had; feet-and-inches form is lost.
            if (x > 5280.0) {
                units = kiv_df::eMiles;
                return x / 5280.0;
            }
            return x;
        default: return x;
    }
}

void ToMetersVec3Ex(double xyz[3], kiv_df::UNITS units) { ToMetersVec3Ex(xyz, xyz, units); }

void ToMetersVec3Ex(const double source[3], double target[3], kiv_df::UNITS units) {
    for (int i = 0; i < 3; ++i) target[i] = ToMetersEx(source[i], units);
}

void FromMetersVec3Ex(double xyz[3], kiv_df::UNITS units) { FromMetersVec3Ex(xyz, xyz, units); }

void FromMetersVec3Ex(const double source[3], double target[3], kiv_df::UNITS units) {
    for (int i = 0; i < 3; ++i) target[i] = FromMetersEx(source[i], units);
}

double ToDegreesEx(double value, kiv_df::ANGLES units) {
    switch (units) {
        case kiv_df::eRadians: return Rad2Deg(value);
        case kiv_df::eGrads: return Grad2Deg(value);
        case kiv_df::eMils: return Mil2Deg(value);
        case kiv_df::eDMS: return DDDMMSS2Deg(value);
        // Deliberately asymmetric with FromDegreesEx: the packed unit is not read back and
        // an unknown unit gives 1.0 without a log entry.
        default: return 1.0;
    }
}

double FromDegreesEx(double degrees, kiv_df::ANGLES units, int precision, bool flag) {
    switch (units) {
        case kiv_df::eRadians: return Deg2Rad(degrees);
        case kiv_df::eGrads: return Deg2Grad(degrees);
        case kiv_df::eMils: return Deg2Mil(degrees);
        // The caller's precision counts decimals of a second; the packed number has four
        // more (minutes and whole seconds).
        case kiv_df::eDMS:
        case kiv_df::eDMSPacked: return Deg2DDDMMSS(degrees, std::clamp(precision, -4, 9) + 4, flag);
        default: return UnsupportedUnit(__LINE__);
    }
}

double ToDegreesHAEx(double value, kiv_df::ANGLES units, bool leftTurning) {
    double d = ToDegreesEx(value, units);
    if (leftTurning) d = HL2HR(d);
    return d;
}

double FromDegreesHAEx(double degrees, kiv_df::ANGLES units, bool leftTurning, int precision) {
    if (leftTurning) degrees = HR2HL(degrees);
    return FromDegreesEx(degrees, units, precision, false);
}

double ToDegreesVAEx(double value, kiv_df::ANGLES units, bool level) {
    double d = ToDegreesEx(value, units);
    if (level) d = Level2Zenith(d);
    return d;
}

double FromDegreesVAEx(double degrees, kiv_df::ANGLES units, bool level, int precision) {
    if (level) degrees = Zenith2Level(degrees);
    return FromDegreesEx(degrees, units, precision, false);
}

double ConvertAreaToAcres(double squareMetres) { return squareMetres * 0.0002471053814671653; }

double ConvertAreaValueToDispUnits(double squareMetres, kiv_df::UNITS units) {
    switch (units) {
        case kiv_df::eUSFeet:
        case kiv_df::eUSFeetInches: return squareMetres * 10.76386736111111;
        case kiv_df::eIntlFeet:
        case kiv_df::eIntlFeetInches: return squareMetres * 10.76391041670972;
        case kiv_df::eUSChains: return SqureMeter2SqureChain(squareMetres, true);
        case kiv_df::eIntlChains: return SqureMeter2SqureChain(squareMetres, false);
        default: return squareMetres;
    }
}

double ConvertVolumeValueToDispUnits(double cubicMetres, kiv_df::UNITS units) {
    switch (units) {
        case kiv_df::eUSFeet:
        case kiv_df::eUSFeetInches: return CubicMeter2CubicFeets(cubicMetres, true);
        case kiv_df::eIntlFeet:
        case kiv_df::eIntlFeetInches: return CubicMeter2CubicFeets(cubicMetres, false);
        case kiv_df::eUSChains: return CubicMeter2CubicChain(cubicMetres, true);
        case kiv_df::eIntlChains: return CubicMeter2CubicChain(cubicMetres, false);
        case kiv_df::eIntlYards: return CubicMeter2CubicYards(cubicMetres, false);
        case kiv_df::eUSYards: return CubicMeter2CubicYards(cubicMetres, true);
        default: return cubicMetres;
    }
}
