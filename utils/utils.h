// Umbrella header of the utils library: every public header of every subsystem.
#pragma once

#include "utils/units/UnitConvertEx.h"
