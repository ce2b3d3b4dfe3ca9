// kivmath's circular arcs: atan3, the direction of a vector as a surveyor reads it, and
// CArc, an arc of a circle given by its start, centre and finish, which the vector
// images use for their arcs (bounds, distance for picking, points for drawing).
#pragma once

#include "platform/kivmath/Coord.h"
#include "platform/kivutils/Heap.h"

// The direction of (dx, dy) in radians, 0 <= a < 2 pi, counted from +y (north)
// clockwise towards +x (east): sin a runs along x and cos a along y. atan3(0, 0) is 0.
double atan3(double dx, double dy);

class CArc : public SharedHeapObject {
public:
    CArc() = default;

    // Sets the arc that leaves `start` around `centre` towards the direction of
    // `finish`, turning clockwise (as seen on a map, north up) when `clockwise` is true.
    // The radius is the distance from the centre to the start; the finish gives only the
    // direction where the arc ends. A finish in the start's direction makes a full
    // circle. False, with an empty arc, when the start coincides with the centre or a
    // position is not finite.
    bool set_start_center_finish(const TCoord2d& start, const TCoord2d& centre, const TCoord2d& finish,
                                 bool clockwise);

    const TCoord2d& getStart() const { return start_; }
    const TCoord2d& getCenter() const { return centre_; }
    TCoord2d getFinish() const { return pointAtAzimuth(startAzimuth_ + sweep_); }
    double getRadius() const { return radius_; }
    bool isClockwise() const { return sweep_ > 0.0; }
    bool isEmpty() const { return radius_ <= 0.0; }
    // The azimuth of the start (radians) and the signed angle swept from it: positive
    // clockwise, negative counter-clockwise, never more than a full turn.
    double getStartAzimuth() const { return startAzimuth_; }
    double getSweep() const { return sweep_; }
    double getLength() const;

    // The point a fraction t (0 at the start, 1 at the finish) along the arc.
    TCoord2d pointAt(double t) const;
    // The smallest axis-parallel box that holds the arc.
    void getBounds(double& left, double& top, double& right, double& bottom) const;
    // The shortest distance from p to the arc (not to the full circle).
    double distanceTo(const TCoord2d& p) const;
    // True when the direction `azimuth` from the centre falls within the swept angle.
    bool spansAzimuth(double azimuth) const;

private:
    TCoord2d pointAtAzimuth(double azimuth) const;

    TCoord2d start_;
    TCoord2d centre_;
    double radius_ = 0.0;
    double startAzimuth_ = 0.0;
    double sweep_ = 0.0;
};
