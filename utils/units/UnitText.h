// Lengths and angles as the text shown in fields and lists, and typed text (with an
// optional unit suffix such as 12.5f or 3ch) read back into display or base units.
#pragma once

#include "platform/kivutils/KivString.h"
#include "utils/units/UnitTypes.h"

const wchar_t* DispDistUnitsStrShortEx(kiv_df::UNITS units);
const wchar_t* DispAngleUnitsStrShortEx(kiv_df::ANGLES units);  // null for units without text

CKivStringT FromMetersStrEx(double metres, EKivDecimalDigits digits, kiv_df::UNITS& units, bool adaptive);
void FromDispDegStr(CKivStringT& out, double value, kiv_df::ANGLES units, int precision);

bool ToDegreesExStr(const CKivStringT& text, double& degrees, kiv_df::ANGLES units);
bool ToDegreesHAExStr(const CKivStringT& text, double& degrees, kiv_df::ANGLES units, bool leftTurning);
bool ToDegreesVAExStr(const CKivStringT& text, double& degrees, kiv_df::ANGLES units, bool level);

bool StringToLinearValEx(const CKivStringT& text, double& value, kiv_df::UNITS current);
bool GetUnitsAndVal(const CKivStringT& text, double& value, kiv_df::UNITS& units);
bool FindUnitsinStr(CKivStringT& text, kiv_df::UNITS& units);
bool ConvertFromUserEnteredToCurrUnitsEx(double& value, kiv_df::UNITS typed, kiv_df::UNITS current);

CKivStringT ConvertDegSecToGradInPrecision(double arcSeconds, EKivDecimalDigits digits);
