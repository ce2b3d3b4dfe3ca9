// transformBBox: a box of one coordinate system carried into another.
#pragma once

#include "utils/vector/BoundingBox.h"
#include "utils/vector/Csx.h"

// The box of the four converted samples (left, top) and (right, bottom), each at heights
// 0 and 1000. The other two corners are deliberately not sampled: under a rotation the
// result can be smaller than the rotated box, and callers have always lived with that.
BoundingBox transformBBox(const BoundingBox& box, const Csx::CCs& from, const Csx::CCs& to);

// The box of all four corners of `box`, converted at height 0: under a rotation it holds
// the whole rotated box. This is the one to cull with.
BoundingBox transformBBoxCorners(const BoundingBox& box, const Csx::CCs& from, const Csx::CCs& to);
