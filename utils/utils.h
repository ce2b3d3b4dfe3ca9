// Umbrella header of the utils library: every public header of every subsystem.
#pragma once

#include "utils/units/UnitConvertEx.h"
#include "utils/vector/Csx.h"
#include "utils/vector/PoolManager.h"
#include "utils/vector/Quadtree.h"
#include "utils/vector/SampleSitePlan.h"
#include "utils/vector/TransformBBox.h"
#include "utils/vector/VectorBlob.h"
#include "utils/vector/VectorImageLibrary.h"
#include "utils/vector/VectorImageProducer.h"
