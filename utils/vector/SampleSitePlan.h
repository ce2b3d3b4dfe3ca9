// The built-in sample vector image: a small site plan (boundary, road with kerbs and a
// turning circle, buildings, trees with canopies, manholes, lamps, control points,
// spot heights and their labels), made through the producer. It is the default image
// of the command line and of demonstrations, and always the same bytes.
#pragma once

#include <memory>

#include "utils/vector/VectorBlob.h"

std::shared_ptr<VectorBlob> buildSampleSitePlan();
