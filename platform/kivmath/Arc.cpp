// atan3 and CArc. Arcs keep their start direction and a signed sweep so that every
// question about them (bounds, nearest distance, sample points) is one angle test.
#include "platform/kivmath/Arc.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double kFullTurn = 2.0 * std::numbers::pi;

// The angle brought into 0 <= a < 2 pi.
double normalized(double angle) {
    double a = std::fmod(angle, kFullTurn);
    if (a < 0.0) a += kFullTurn;
    return a >= kFullTurn ? 0.0 : a;
}

}  // namespace

double atan3(double dx, double dy) {
    if (dx == 0.0 && dy == 0.0) return 0.0;
    return normalized(std::atan2(dx, dy));
}

bool CArc::set_start_center_finish(const TCoord2d& start, const TCoord2d& centre, const TCoord2d& finish,
                                   bool clockwise) {
    start_ = start;
    centre_ = centre;
    radius_ = std::hypot(start.x - centre.x, start.y - centre.y);
    const bool finishKnown = std::isfinite(finish.x - centre.x) && std::isfinite(finish.y - centre.y);
    if (!(radius_ > 0.0) || !std::isfinite(radius_) || !finishKnown) {
        radius_ = 0.0;
        startAzimuth_ = sweep_ = 0.0;
        return false;
    }
    startAzimuth_ = atan3(start.x - centre.x, start.y - centre.y);
    const double finishAzimuth = atan3(finish.x - centre.x, finish.y - centre.y);
    // Azimuths grow clockwise, so a clockwise arc sweeps forward from the start.
    double sweep = clockwise ? normalized(finishAzimuth - startAzimuth_) : normalized(startAzimuth_ - finishAzimuth);
    if (sweep == 0.0) sweep = kFullTurn;
    sweep_ = clockwise ? sweep : -sweep;
    return true;
}

double CArc::getLength() const { return radius_ * std::fabs(sweep_); }

TCoord2d CArc::pointAtAzimuth(double azimuth) const {
    return {centre_.x + radius_ * std::sin(azimuth), centre_.y + radius_ * std::cos(azimuth)};
}

TCoord2d CArc::pointAt(double t) const { return pointAtAzimuth(startAzimuth_ + t * sweep_); }

bool CArc::spansAzimuth(double azimuth) const {
    const double from = sweep_ >= 0.0 ? normalized(azimuth - startAzimuth_) : normalized(startAzimuth_ - azimuth);
    return from <= std::fabs(sweep_);
}

void CArc::getBounds(double& left, double& top, double& right, double& bottom) const {
    const TCoord2d finish = getFinish();
    left = std::min(start_.x, finish.x);
    right = std::max(start_.x, finish.x);
    bottom = std::min(start_.y, finish.y);
    top = std::max(start_.y, finish.y);
    // The circle's extreme points count only where the arc passes them.
    if (spansAzimuth(0.0)) top = centre_.y + radius_;
    if (spansAzimuth(kFullTurn / 4)) right = centre_.x + radius_;
    if (spansAzimuth(kFullTurn / 2)) bottom = centre_.y - radius_;
    if (spansAzimuth(3 * kFullTurn / 4)) left = centre_.x - radius_;
}

double CArc::distanceTo(const TCoord2d& p) const {
    const double dx = p.x - centre_.x;
    const double dy = p.y - centre_.y;
    const double fromCentre = std::hypot(dx, dy);
    if (fromCentre > 0.0 && spansAzimuth(atan3(dx, dy))) return std::fabs(fromCentre - radius_);
    const TCoord2d finish = getFinish();
    return std::min(std::hypot(p.x - start_.x, p.y - start_.y), std::hypot(p.x - finish.x, p.y - finish.y));
}
