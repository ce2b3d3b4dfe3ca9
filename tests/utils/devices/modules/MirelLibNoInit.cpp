// The device library of an older firmware, which has no "Mirel_SetSSInit" nor
// "Mirel_GetSSInit".
#include "MirelCalls.h"
