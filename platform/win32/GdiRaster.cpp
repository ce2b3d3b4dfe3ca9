// Line, polygon and ellipse scan conversion over a surface.
#include "platform/win32/GdiRaster.h"

#include <algorithm>
#include <cmath>

#include "platform/win32/Int128.h"

namespace kiv_win32::detail {
namespace {

// Products of a segment's lengths and offsets need 66 bits or more.
#ifdef __SIZEOF_INT128__
using Wide = __int128;
#else
using Wide = Int128;
#endif

// Dash patterns of one-pixel styled pens, in pixels: on, off, on, off, ...
struct DashPattern {
    const std::uint8_t* runs;
    int count;
    int length;
};

const std::uint8_t kDash[] = {18, 6};
const std::uint8_t kDot[] = {3, 3};
const std::uint8_t kDashDot[] = {9, 6, 3, 6};
const std::uint8_t kDashDotDot[] = {9, 3, 3, 3, 3, 3};

DashPattern PatternOf(int style) {
    switch (style) {
        case PS_DASH: return {kDash, 2, 24};
        case PS_DOT: return {kDot, 2, 6};
        case PS_DASHDOT: return {kDashDot, 4, 24};
        case PS_DASHDOTDOT: return {kDashDotDot, 6, 24};
        default: return {nullptr, 0, 0};
    }
}

bool DashOn(const DashPattern& p, int phase) {
    for (int i = 0; i < p.count; ++i) {
        if (phase < p.runs[i]) return (i & 1) == 0;
        phase -= p.runs[i];
    }
    return false;
}

// Floor division for a positive divisor.
Wide FloorDiv(Wide a, Wide b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }
Wide CeilDiv(Wide a, Wide b) { return -FloorDiv(-a, b); }

// The pixels of the segment a -> b without b: along the major axis one pixel per step;
// the minor offset of step i is floor((2 i m + c) / 2n), i.e. the nearest pixel, a tie
// going to the smaller minor coordinate (y on mostly-horizontal lines, x on mostly-vertical
// ones) whichever way the line runs, as Windows draws them. `visit(i, x, y)` is called for
// the visible steps only, in order.
struct Segment {
    bool xMajor;
    int sMajor, sMinor;
    std::int64_t n, m, c;
    std::int64_t major0, minor0;
    std::int64_t first = 0, last = 0;  // visible steps [first, last)

    Segment(POINT a, POINT b, int width, int height) {
        const std::int64_t dx = std::int64_t(b.x) - a.x, dy = std::int64_t(b.y) - a.y;
        xMajor = std::llabs(dx) >= std::llabs(dy);
        n = xMajor ? std::llabs(dx) : std::llabs(dy);
        m = xMajor ? std::llabs(dy) : std::llabs(dx);
        sMajor = (xMajor ? dx : dy) < 0 ? -1 : 1;
        sMinor = (xMajor ? dy : dx) < 0 ? -1 : 1;
        major0 = xMajor ? a.x : a.y;
        minor0 = xMajor ? a.y : a.x;
        // Running towards the smaller minor coordinate, a tie takes the step.
        c = n - 1 + (sMinor < 0 ? 1 : 0);
        if (n == 0) return;
        const std::int64_t majorSize = xMajor ? width : height, minorSize = xMajor ? height : width;
        // Steps whose major coordinate lies on the surface.
        Wide lo = 0, hi = n;
        if (sMajor > 0) {
            lo = std::max<Wide>(lo, -major0);
            hi = std::min<Wide>(hi, majorSize - major0);
        } else {
            lo = std::max<Wide>(lo, major0 - majorSize + 1);
            hi = std::min<Wide>(hi, major0 + 1);
        }
        // Offsets whose minor coordinate lies on the surface, turned into steps: the
        // offset never decreases with the step, so each bound is one division.
        const Wide offLo = sMinor > 0 ? -minor0 : minor0 - minorSize + 1;
        const Wide offHi = sMinor > 0 ? minorSize - minor0 : minor0 + 1;
        if (m == 0) {
            if (offLo > 0 || offHi <= 0) hi = lo;
        } else {
            lo = std::max(lo, FirstStepReaching(offLo));
            hi = std::min(hi, FirstStepReaching(offHi));
        }
        if (hi > lo) {
            first = static_cast<std::int64_t>(lo);
            last = static_cast<std::int64_t>(hi);
        }
    }

    Wide FirstStepReaching(Wide offset) const {
        return std::max<Wide>(0, CeilDiv(Wide(2) * n * offset - c, Wide(2) * m));
    }

    template <class Visit>
    void Walk(Visit&& visit) const {
        if (first >= last) return;
        const Wide start = Wide(2) * first * m + c;
        std::int64_t offset = static_cast<std::int64_t>(start / (Wide(2) * n));
        std::int64_t acc = static_cast<std::int64_t>(start - Wide(2) * n * offset);
        std::int64_t major = major0 + sMajor * first;
        for (std::int64_t i = first; i < last; ++i) {
            const std::int64_t minor = minor0 + sMinor * offset;
            visit(i, static_cast<int>(xMajor ? major : minor), static_cast<int>(xMajor ? minor : major));
            major += sMajor;
            acc += 2 * m;
            if (acc >= 2 * n) {
                acc -= 2 * n;
                ++offset;
            }
        }
    }

    // The same pixels written straight into a 32-bit surface.
    void Fill32(Surface& s, std::uint32_t value) const {
        if (first >= last) return;
        const Wide start = Wide(2) * first * m + c;
        std::int64_t offset = static_cast<std::int64_t>(start / (Wide(2) * n));
        std::int64_t acc = static_cast<std::int64_t>(start - Wide(2) * n * offset);
        const std::int64_t major = major0 + sMajor * first, minor = minor0 + sMinor * offset;
        const int x = static_cast<int>(xMajor ? major : minor), y = static_cast<int>(xMajor ? minor : major);
        auto* p = reinterpret_cast<std::uint32_t*>(s.Row(y)) + x;
        const std::ptrdiff_t pitch = s.Pitch32();
        const std::ptrdiff_t stepMajor = xMajor ? sMajor : sMajor * pitch;
        const std::ptrdiff_t stepMinor = xMajor ? sMinor * pitch : sMinor;
        const std::int64_t twoM = 2 * m, twoN = 2 * n;
        for (std::int64_t i = last - first; i > 0; --i) {
            *p = value;
            p += stepMajor;
            acc += twoM;
            if (acc >= twoN) {
                acc -= twoN;
                p += stepMinor;
            }
        }
    }
};

void ThinSegment(DeviceContext& dc, Surface& s, POINT a, POINT b, const DashPattern& dash, std::uint32_t pen) {
    Segment seg(a, b, s.width, s.height);
    if (!dash.count) {
        if (s.bitCount == 32)
            seg.Fill32(s, pen);
        else
            seg.Walk([&](std::int64_t, int x, int y) { s.PutNative(x, y, pen); });
    } else {
        // Gaps take the background colour unless the background is transparent.
        const bool opaque = dc.bkMode == OPAQUE;
        const std::uint32_t back = s.Native(dc.bkColour);
        const int phase = dc.dashPhase;
        seg.Walk([&](std::int64_t i, int x, int y) {
            const bool on = DashOn(dash, static_cast<int>((phase + i) % dash.length));
            if (on || opaque) s.PutNative(x, y, on ? pen : back);
        });
        dc.dashPhase = static_cast<int>((phase + seg.n) % dash.length);
    }
}

// A round dab of a wide pen. Odd widths centre on the pixel; even widths on the corner
// above and left of it, so a pen of width w always covers w rows of a horizontal line.
void Dab(Surface& s, double x, double y, int width, std::uint32_t native) {
    const double shift = (width % 2 == 0) ? 0.5 : 0.0;
    const double cx = x - shift, cy = y - shift, r = width / 2.0;
    const int y0 = static_cast<int>(std::max(0.0, std::ceil(cy - r)));
    const int y1 = static_cast<int>(std::min(double(s.height - 1), std::floor(cy + r)));
    for (int row = y0; row <= y1; ++row) {
        const double h = std::sqrt(std::max(0.0, r * r - (row - cy) * (row - cy)));
        const double left = std::max(0.0, std::ceil(cx - h));
        const double right = std::min(double(s.width - 1), std::floor(cx + h));
        if (left <= right) s.FillSpan(row, static_cast<int>(left), static_cast<int>(right) + 1, native);
    }
}

void WideSegment(Surface& s, POINT a, POINT b, int width, std::uint32_t native) {
    const double dx = double(b.x) - a.x, dy = double(b.y) - a.y;
    const double length = std::hypot(dx, dy);
    if (length > 0) {
        const double shift = (width % 2 == 0) ? 0.5 : 0.0;
        const double nx = -dy / length * width / 2.0, ny = dx / length * width / 2.0;
        const double ax = a.x - shift, ay = a.y - shift, bx = b.x - shift, by = b.y - shift;
        FillPolygon(s, {{ax + nx, ay + ny}, {bx + nx, by + ny}, {bx - nx, by - ny}, {ax - nx, ay - ny}}, native, true);
    }
    Dab(s, a.x, a.y, width, native);
    Dab(s, b.x, b.y, width, native);
}

}  // namespace

void StrokePolyline(DeviceContext& dc, const POINT* points, int count, bool closed) {
    if (!dc.pen || count < 2) return;
    const int style = dc.pen->Style();
    if (style == PS_NULL) return;
    Surface& s = dc.Target();
    const std::uint32_t pen = s.Native(dc.pen->pen.lopnColor);
    const int width = dc.pen->Width();
    const int segments = closed ? count : count - 1;
    if (width > 1) {
        for (int i = 0; i < segments; ++i) WideSegment(s, points[i], points[(i + 1) % count], width, pen);
        return;
    }
    const DashPattern dash = PatternOf(style);
    for (int i = 0; i < segments; ++i) ThinSegment(dc, s, points[i], points[(i + 1) % count], dash, pen);
}

void FillPolygon(Surface& s, const std::vector<PointD>& points, std::uint32_t native, bool winding) {
    struct Edge {
        double yTop, yBottom, xAtTop, slope;
        int direction;
    };
    std::vector<Edge> edges;
    edges.reserve(points.size());
    double yMin = HUGE_VAL, yMax = -HUGE_VAL;
    for (std::size_t i = 0; i < points.size(); ++i) {
        PointD a = points[i], b = points[(i + 1) % points.size()];
        if (!std::isfinite(a.x) || !std::isfinite(a.y) || !std::isfinite(b.x) || !std::isfinite(b.y)) return;
        if (a.y == b.y) continue;
        int direction = 1;
        if (a.y > b.y) {
            std::swap(a, b);
            direction = -1;
        }
        edges.push_back({a.y, b.y, a.x, (b.x - a.x) / (b.y - a.y), direction});
        yMin = std::min(yMin, a.y);
        yMax = std::max(yMax, b.y);
    }
    if (edges.empty()) return;
    std::sort(edges.begin(), edges.end(), [](const Edge& l, const Edge& r) { return l.yTop < r.yTop; });
    const int rowFirst = static_cast<int>(std::max(0.0, std::ceil(yMin)));
    const int rowEnd = static_cast<int>(std::min(double(s.height), std::ceil(yMax)));
    std::vector<const Edge*> active;
    std::vector<std::pair<double, int>> crossings;
    std::size_t next = 0;
    for (int y = rowFirst; y < rowEnd; ++y) {
        while (next < edges.size() && edges[next].yTop <= y) active.push_back(&edges[next++]);
        // An edge holds the rows from its top (included) to its bottom (excluded).
        std::erase_if(active, [y](const Edge* e) { return e->yBottom <= y; });
        crossings.clear();
        for (const Edge* e : active) crossings.emplace_back(e->xAtTop + (y - e->yTop) * e->slope, e->direction);
        std::sort(crossings.begin(), crossings.end());
        int inside = 0;
        for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
            inside += winding ? crossings[i].second : 1;
            const bool filled = winding ? inside != 0 : (inside & 1) != 0;
            if (!filled) continue;
            const double x0 = std::max(0.0, std::ceil(crossings[i].first));
            const double x1 = std::min(double(s.width), std::ceil(crossings[i + 1].first));
            if (x0 < x1) s.FillSpan(y, static_cast<int>(x0), static_cast<int>(x1), native);
        }
    }
}

std::vector<Span> EllipseSpans(const Surface& s, int left, int top, int right, int bottom, double inset) {
    std::vector<Span> spans;
    const double cx = (double(left) + right - 1) / 2.0, cy = (double(top) + bottom - 1) / 2.0;
    const double a = (double(right) - left) / 2.0 - inset, b = (double(bottom) - top) / 2.0 - inset;
    if (a <= 0 || b <= 0) return spans;
    const int y0 = static_cast<int>(std::max(0.0, std::ceil(cy - b)));
    const int y1 = static_cast<int>(std::min(double(s.height - 1), std::floor(cy + b)));
    for (int y = y0; y <= y1; ++y) {
        const double t = (y - cy) / b;
        const double h = a * std::sqrt(std::max(0.0, 1.0 - t * t));
        const double x0 = std::ceil(cx - h), x1 = std::floor(cx + h);
        if (x0 > x1) continue;
        spans.push_back({y, static_cast<int>(std::clamp(x0, -1.0, double(s.width))),
                         static_cast<int>(std::clamp(x1, -1.0, double(s.width)))});
    }
    return spans;
}

}  // namespace kiv_win32::detail
