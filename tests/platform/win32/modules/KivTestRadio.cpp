// A shared object standing in for a handheld's device library: the power switch of a
// radio, exported by name with C linkage as the device library exports it.
namespace {
int powerState = 0;
}

extern "C" __attribute__((visibility("default"))) int Mirel_SetSSPowerState(int on) {
    powerState = on;
    return 1;
}

extern "C" __attribute__((visibility("default"))) int Mirel_GetSSPowerState() { return powerState; }
