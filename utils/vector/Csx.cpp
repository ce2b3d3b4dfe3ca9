// The affine coordinate system.
#include "utils/vector/Csx.h"

#include <cmath>
#include <numbers>

namespace Csx {

CAffineCs::CAffineCs(double rotationDegrees, double scale, double shiftX, double shiftY)
    : cos_(std::cos(rotationDegrees * std::numbers::pi / 180.0)),
      sin_(std::sin(rotationDegrees * std::numbers::pi / 180.0)),
      scale_(scale == 0.0 ? 1.0 : scale),
      shiftX_(shiftX),
      shiftY_(shiftY) {
    // Whole quarter turns are kept exact, so that a 90-degree system maps integers to integers.
    if (std::fabs(cos_) < 1e-15) cos_ = 0.0;
    if (std::fabs(sin_) < 1e-15) sin_ = 0.0;
}

TCoord3d CAffineCs::toWorld(const TCoord3d& p) const {
    return {shiftX_ + scale_ * (cos_ * p.x - sin_ * p.y), shiftY_ + scale_ * (sin_ * p.x + cos_ * p.y), p.z};
}

TCoord3d CAffineCs::fromWorld(const TCoord3d& p) const {
    const double x = (p.x - shiftX_) / scale_;
    const double y = (p.y - shiftY_) / scale_;
    return {cos_ * x + sin_ * y, -sin_ * x + cos_ * y, p.z};
}

}  // namespace Csx
