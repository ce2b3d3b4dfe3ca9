// A shared object standing in for the handheld's device library: every power switch,
// exported with C linkage by its device name, and a record of the calls in order.
#include "MirelCalls.h"

namespace {
int init = 0;
}

MIREL_EXPORT int Mirel_SetSSInit(int v) { return Record("SetSSInit", v, init); }
MIREL_EXPORT int Mirel_GetSSInit() { return init; }
