// De Boor's algorithm over weighted control points.
#include "utils/vector/Spline.h"

#include <algorithm>
#include <cmath>

bool TSplineCurve::isValid() const {
    const std::size_t n = controlPoints.size();
    if (degree < 1 || n < static_cast<std::size_t>(degree) + 1) return false;
    if (weights.size() != n || knots.size() != n + static_cast<std::size_t>(degree) + 1) return false;
    for (std::size_t i = 0; i < n; ++i) {
        const TCoord3d& p = controlPoints[i];
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return false;
        if (!(weights[i] > 0.0) || !std::isfinite(weights[i])) return false;
    }
    for (std::size_t i = 0; i < knots.size(); ++i) {
        if (!std::isfinite(knots[i]) || (i > 0 && knots[i] < knots[i - 1])) return false;
    }
    return knots[static_cast<std::size_t>(degree)] < knots[n];
}

TCoord3d TSplineCurve::pointAt(double t) const {
    const std::size_t p = static_cast<std::size_t>(degree);
    const std::size_t n = controlPoints.size();
    t = std::clamp(t, knots[p], knots[n]);
    // The knot span [knots[k], knots[k + 1]) holding t; the domain's end uses the last span.
    const auto after = std::upper_bound(knots.begin() + static_cast<std::ptrdiff_t>(p) + 1,
                                        knots.begin() + static_cast<std::ptrdiff_t>(n), t);
    const std::size_t k = static_cast<std::size_t>(after - knots.begin()) - 1;
    struct H {
        double x, y, z, w;
    };
    std::vector<H> d(p + 1);
    for (std::size_t j = 0; j <= p; ++j) {
        const std::size_t i = k - p + j;
        const double w = weights[i];
        d[j] = {controlPoints[i].x * w, controlPoints[i].y * w, controlPoints[i].z * w, w};
    }
    for (std::size_t r = 1; r <= p; ++r) {
        for (std::size_t j = p; j >= r; --j) {
            const std::size_t i = k - p + j;
            const double span = knots[i + p + 1 - r] - knots[i];
            const double a = span > 0.0 ? (t - knots[i]) / span : 0.0;
            d[j] = {(1 - a) * d[j - 1].x + a * d[j].x, (1 - a) * d[j - 1].y + a * d[j].y,
                    (1 - a) * d[j - 1].z + a * d[j].z, (1 - a) * d[j - 1].w + a * d[j].w};
        }
    }
    return {d[p].x / d[p].w, d[p].y / d[p].w, d[p].z / d[p].w};
}

std::vector<TCoord3d> TSplineCurve::sample(int count) const {
    count = std::max(count, 1);
    const double t0 = knots[static_cast<std::size_t>(degree)], t1 = knots[controlPoints.size()];
    std::vector<TCoord3d> points(static_cast<std::size_t>(count) + 1);
    for (int i = 0; i <= count; ++i) points[static_cast<std::size_t>(i)] = pointAt(t0 + (t1 - t0) * i / count);
    return points;
}

BoundingBox TSplineCurve::controlBox() const {
    BoundingBox box;
    for (const TCoord3d& p : controlPoints) box.widen(p.x, p.y);
    return box;
}

double TSplineCurve::controlLength() const {
    double length = 0.0;
    for (std::size_t i = 1; i < controlPoints.size(); ++i) {
        length += std::hypot(controlPoints[i].x - controlPoints[i - 1].x, controlPoints[i].y - controlPoints[i - 1].y);
    }
    return length;
}
