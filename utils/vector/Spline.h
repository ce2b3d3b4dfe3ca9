// Splines of a vector image: a rational B-spline (NURBS) of any degree over its knot
// vector, evaluated by de Boor's algorithm in homogeneous coordinates.
#pragma once

#include <vector>

#include "platform/kivmath/Coord.h"
#include "utils/vector/BoundingBox.h"

struct TSplineCurve {
    int degree = 0;
    bool closed = false;  // the curve's last point joins its first
    std::vector<TCoord3d> controlPoints;
    std::vector<double> weights;  // one per control point, all above 0
    std::vector<double> knots;    // control points + degree + 1, never decreasing

    // Degree 1 or more, at least degree + 1 control points, the knot count to match,
    // every number finite, weights above 0, knots never decreasing and a domain that
    // is not empty.
    bool isValid() const;
    // The point at parameter t, clamped into the domain [knots[degree], knots[n]].
    TCoord3d pointAt(double t) const;
    // `count` + 1 points at even steps of the parameter over the whole domain.
    std::vector<TCoord3d> sample(int count) const;
    // The box of the control points, which holds the curve (weights are positive).
    BoundingBox controlBox() const;
    // The length of the control polygon, which is no shorter than the curve.
    double controlLength() const;
};
