// The switches that every version of the stand-in device library exports, and the call
// record that the tests read through "KivTest_Calls".
#pragma once

#include <string>

#define MIREL_EXPORT extern "C" __attribute__((visibility("default")))

namespace {
std::string calls;
int power = 0, powerOn = 0, standby = 1;

int Record(const char* name, int value, int& state) {
    calls += name;
    calls += "(" + std::to_string(value) + ") ";
    state = value;
    return 1;
}
}  // namespace

MIREL_EXPORT const char* KivTest_Calls() { return calls.c_str(); }
MIREL_EXPORT void KivTest_Clear() { calls.clear(); }
MIREL_EXPORT int Mirel_SetSSPowerState(int v) { return Record("SetSSPowerState", v, power); }
MIREL_EXPORT int Mirel_SetSSPower_ON(int v) { return Record("SetSSPower_ON", v, powerOn); }
MIREL_EXPORT int Mirel_SetSSStandby(int v) { return Record("SetSSStandby", v, standby); }
MIREL_EXPORT int Mirel_GetSSPowerState() { return power; }
MIREL_EXPORT int Mirel_GetSSPower_ON() { return powerOn; }
MIREL_EXPORT int Mirel_GetSSStandby() { return standby; }
MIREL_EXPORT int Mirel_GetSSDsr() { return 1; }
