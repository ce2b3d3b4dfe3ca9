// transformBBox: two corners, two heights; transformBBoxCorners: all four.
#include "utils/vector/TransformBBox.h"

#include <algorithm>

BoundingBox transformBBox(const BoundingBox& box, const Csx::CCs& from, const Csx::CCs& to) {
    const TCoord3d samples[4] = {from.convert(box.left, box.top, 0.0, to), from.convert(box.right, box.bottom, 0.0, to),
                                 from.convert(box.left, box.top, 1000.0, to),
                                 from.convert(box.right, box.bottom, 1000.0, to)};
    BoundingBox result(samples[0].x, samples[0].y, samples[0].x, samples[0].y);
    for (const TCoord3d& p : samples) {
        result.left = std::min(result.left, p.x);
        result.right = std::max(result.right, p.x);
        result.bottom = std::min(result.bottom, p.y);
        result.top = std::max(result.top, p.y);
    }
    return result;
}

BoundingBox transformBBoxCorners(const BoundingBox& box, const Csx::CCs& from, const Csx::CCs& to) {
    BoundingBox result;
    for (const double x : {box.left, box.right}) {
        for (const double y : {box.bottom, box.top}) {
            const TCoord3d p = from.convert(x, y, 0.0, to);
            result.widen(p.x, p.y);
        }
    }
    return result;
}
