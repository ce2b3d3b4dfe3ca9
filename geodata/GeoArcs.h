// Circular arcs as GIS sources give them: three points on the arc, or a run of chords
// along a circle; made into the producer's arcs.
#pragma once

#include <vector>

#include "utils/vector/VectorImageProducer.h"

namespace kiv_geo {

// The arc from a through m to b. A closed arc (a = b) is the full circle with a and m
// at the ends of a diameter, drawn counter-clockwise in two halves. Three points on
// one line make the straight line a-b. True when something was added.
bool addArcThrough(VectorImageProducer& producer, const TCoord3d& a, const TCoord3d& m, const TCoord3d& b,
                   int lineStyle);

// When every vertex lies on one circle and the run turns one way only, the arc (or the
// full circle) it approximates is added and true returned; else nothing is added.
bool addRecoveredArc(VectorImageProducer& producer, const std::vector<TCoord3d>& vertices, int lineStyle);

}  // namespace kiv_geo
