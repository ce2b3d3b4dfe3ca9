// Arc geometry for the import: the circle through three points and the test that a
// polyline is a chain of chords of one circle.
#include "geodata/GeoArcs.h"

#include <algorithm>
#include <cmath>

namespace kiv_geo {

namespace {

double Cross(const TCoord3d& a, const TCoord3d& b, const TCoord3d& c) {
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

// The centre of the circle through a, b and c; false when they lie on one line.
bool Circumcentre(const TCoord3d& a, const TCoord3d& b, const TCoord3d& c, TCoord3d& centre) {
    const double bx = b.x - a.x, by = b.y - a.y, cx = c.x - a.x, cy = c.y - a.y;
    const double d = 2.0 * (bx * cy - by * cx);
    const double scale = std::max({std::abs(bx), std::abs(by), std::abs(cx), std::abs(cy)});
    if (scale == 0.0 || std::abs(d) <= 1e-12 * scale * scale) return false;
    const double b2 = bx * bx + by * by, c2 = cx * cx + cy * cy;
    centre = {a.x + (cy * b2 - by * c2) / d, a.y + (bx * c2 - cx * b2) / d, a.z};
    return true;
}

bool Same(const TCoord3d& a, const TCoord3d& b) { return a.x == b.x && a.y == b.y; }

}  // namespace

bool addArcThrough(VectorImageProducer& producer, const TCoord3d& a, const TCoord3d& m, const TCoord3d& b,
                   int lineStyle) {
    if (Same(a, b)) {
        if (Same(a, m)) return false;
        const TCoord3d centre{(a.x + m.x) / 2, (a.y + m.y) / 2, a.z};
        const bool first = producer.addArc(a, centre, m, false, lineStyle) >= 0;
        return producer.addArc(m, centre, a, false, lineStyle) >= 0 || first;
    }
    TCoord3d centre;
    if (!Circumcentre(a, m, b, centre)) return producer.addLine(a, b, lineStyle) >= 0;
    return producer.addArc(a, centre, b, Cross(a, m, b) < 0.0, lineStyle) >= 0;
}

bool addRecoveredArc(VectorImageProducer& producer, const std::vector<TCoord3d>& v, int lineStyle) {
    // Fewer chords than this are more likely a drawn polyline than a stroked arc.
    constexpr std::size_t kMinVertices = 5;
    const std::size_t n = v.size();
    if (n < kMinVertices) return false;
    const bool closed = Same(v.front(), v.back());
    TCoord3d centre;
    const bool found = closed ? Circumcentre(v[0], v[n / 3], v[2 * n / 3], centre)
                              : Circumcentre(v[0], v[n / 2], v[n - 1], centre);
    if (!found) return false;
    const double radius = std::hypot(v[0].x - centre.x, v[0].y - centre.y);
    const double tolerance = 1e-7 * std::max(radius, 1.0);
    const double turn = Cross(v[0], v[1], v[2]);
    for (std::size_t i = 0; i < n; ++i) {
        if (std::abs(std::hypot(v[i].x - centre.x, v[i].y - centre.y) - radius) > tolerance) return false;
        if (i + 2 < n && !(Cross(v[i], v[i + 1], v[i + 2]) * turn > 0.0)) return false;
    }
    const bool clockwise = turn < 0.0;
    if (closed) {
        const TCoord3d& half = v[n / 2];
        const bool first = producer.addArc(v[0], centre, half, clockwise, lineStyle) >= 0;
        return producer.addArc(half, centre, v[0], clockwise, lineStyle) >= 0 || first;
    }
    return producer.addArc(v[0], centre, v[n - 1], clockwise, lineStyle) >= 0;
}

}  // namespace kiv_geo
