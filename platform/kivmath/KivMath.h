// kivmath: the family's unit and angle primitives. Lengths in metres, angles in decimal
// degrees. Where a function takes a bool, true selects the US survey foot (1200/3937 m)
// and false the international foot (0.3048 m).
#pragma once

// Lengths.
double USFeet2Meter(double feet);
double Meter2USFeet(double metres);
double IFeet2Meter(double feet);
double Meter2IFeet(double metres);
// The surveyor's chain: 66 feet of the selected foot.
double Chain2Meter(double chains, bool usFoot);
double Meter2Chain(double metres, bool usFoot);

// Angles. The mil is the NATO mil, 6400 to the full circle.
double Rad2Deg(double radians);
double Deg2Rad(double degrees);
double Grad2Deg(double grads);
double Deg2Grad(double degrees);
double Mil2Deg(double mils);
double Deg2Mil(double degrees);

// The packed sexagesimal form DDD.MMSSss: degrees, then two digits of minutes, two of
// whole seconds and the decimals of the second. The sign applies to the whole angle.
double DDDMMSS2Deg(double packed);
// Decimal degrees to the packed form rounded to `decimals` places of the packed number
// (4 + the decimals of a second, as callers pass them). Seconds that round to 60 carry
// into the minutes and minutes into the degrees, so 59.99995" never packs as .5960.
// With `normalize` the angle is first brought into 0 <= a < 360 (a direction); without
// it the sign is kept.
double Deg2DDDMMSS(double degrees, int decimals, bool normalize);

// The magnitude of an angle split for sexagesimal text, rounded once where the packed
// form's `packedDecimals` (0 to 13) end: 0 at whole degrees, 1 at tens of minutes, 2 at
// minutes, 3 at tens of seconds, 4 and more at the (packedDecimals - 4)th decimal of a
// second. Carries are exact; the degrees stay a double, so any finite angle splits.
struct TSexagesimal {
    double degrees;
    int minutes;
    int seconds;
    long long fraction;  // of a second, in units of 10^-fractionDigits
    int fractionDigits;
};
TSexagesimal SplitDegrees(double magnitude, int packedDecimals);

// Horizontal angles turning left and right, both in 0 <= a < 360.
double HL2HR(double degrees);
double HR2HL(double degrees);
// Vertical angles: from the horizon (level, -90..90 for face one) and from the zenith
// (0..360 with face two beyond 180). Level2Zenith gives 0 <= z < 360 and Zenith2Level
// -180 < l <= 180.
double Level2Zenith(double level);
double Zenith2Level(double zenith);

// Areas and volumes from square or cubic metres.
double SqureMeter2SqureChain(double squareMetres, bool usFoot);
double CubicMeter2CubicFeets(double cubicMetres, bool usFoot);
double CubicMeter2CubicChain(double cubicMetres, bool usFoot);
double CubicMeter2CubicYards(double cubicMetres, bool usFoot);

// The nearest integer, halves away from zero, as a double.
double dNearInt(double value);
// Seconds of arc to centesimal seconds (10000 to the grad).
double DegSec2GradCC(double arcSeconds);
