// Csx: coordinate systems between which vector images and map views convert points.
// Every system converts to and from one common world system, so any two can be
// chained; z is carried along unchanged by the plane systems here.
#pragma once

#include "platform/kivmath/Coord.h"
#include "platform/kivutils/Heap.h"

namespace Csx {

class CCs : public SharedHeapObject {
public:
    virtual ~CCs() = default;
    // The point (x, y, z) of this system, expressed in the system `to`.
    TCoord3d convert(double x, double y, double z, const CCs& to) const { return to.fromWorld(toWorld({x, y, z})); }
    TCoord3d convert(const TCoord3d& p, const CCs& to) const { return convert(p.x, p.y, p.z, to); }

    virtual TCoord3d toWorld(const TCoord3d& p) const = 0;
    virtual TCoord3d fromWorld(const TCoord3d& p) const = 0;
};

// The world system itself.
class CIdentityCs : public CCs {
public:
    TCoord3d toWorld(const TCoord3d& p) const override { return p; }
    TCoord3d fromWorld(const TCoord3d& p) const override { return p; }
};

// world = translation + scale x rotation(p): a rotation counter-clockwise by the given
// degrees, a uniform scale, then a shift; z passes through. A scale of 0 (which no
// inverse could undo) is taken as 1.
class CAffineCs : public CCs {
public:
    CAffineCs(double rotationDegrees, double scale, double shiftX, double shiftY);
    TCoord3d toWorld(const TCoord3d& p) const override;
    TCoord3d fromWorld(const TCoord3d& p) const override;

private:
    double cos_, sin_, scale_, shiftX_, shiftY_;
};

}  // namespace Csx
