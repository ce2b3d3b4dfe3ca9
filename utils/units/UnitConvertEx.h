// Conversion of lengths, areas, volumes and angles between the base units (metres,
// square and cubic metres, decimal degrees) and the user's display units; the text of
// such values is declared in UnitText.h and FeetInches.h, included here.
#pragma once

#include "utils/units/UnitTypes.h"

double ToMetersEx(double value, kiv_df::UNITS units);
double FromMetersEx(double metres, kiv_df::UNITS units);
double FromMetersAdaptiveEx(double metres, kiv_df::UNITS& units);
void ToMetersVec3Ex(double xyz[3], kiv_df::UNITS units);
void ToMetersVec3Ex(const double source[3], double target[3], kiv_df::UNITS units);
void FromMetersVec3Ex(double xyz[3], kiv_df::UNITS units);
void FromMetersVec3Ex(const double source[3], double target[3], kiv_df::UNITS units);

double ToDegreesEx(double value, kiv_df::ANGLES units);
double FromDegreesEx(double degrees, kiv_df::ANGLES units, int precision, bool flag);
double ToDegreesHAEx(double value, kiv_df::ANGLES units, bool leftTurning);
double FromDegreesHAEx(double degrees, kiv_df::ANGLES units, bool leftTurning, int precision);
double ToDegreesVAEx(double value, kiv_df::ANGLES units, bool level);
double FromDegreesVAEx(double degrees, kiv_df::ANGLES units, bool level, int precision);

double ConvertAreaToAcres(double squareMetres);
double ConvertAreaValueToDispUnits(double squareMetres, kiv_df::UNITS units);
double ConvertVolumeValueToDispUnits(double cubicMetres, kiv_df::UNITS units);

#include "utils/units/FeetInches.h"
#include "utils/units/UnitText.h"
