// Mapping the view to pixels, point symbols, clipped and styled lines, labels.
#include "utils/render/SurfaceRenderer.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace kiv_render {

namespace {

// How far beyond the surface a line may still reach in pixels: far enough that nothing
// cut here shows, near enough that every coordinate fits an int with room to spare.
constexpr double kGuard = 4096.0;
// The capital height of DejaVu Sans as a share of its character height.
constexpr double kCapitalShare = 0.73;

// Liang-Barsky: cuts the segment to the box; false when nothing of it is inside.
bool clipSegment(double& x1, double& y1, double& x2, double& y2, double left, double top, double right,
                 double bottom) {
    double t0 = 0.0, t1 = 1.0;
    const double dx = x2 - x1, dy = y2 - y1;
    const double p[4] = {-dx, dx, -dy, dy};
    const double q[4] = {x1 - left, right - x1, y1 - top, bottom - y1};
    for (int i = 0; i < 4; ++i) {
        if (p[i] == 0.0) {
            if (q[i] < 0.0) return false;
            continue;
        }
        const double t = q[i] / p[i];
        if (p[i] < 0.0) {
            t0 = std::max(t0, t);
        } else {
            t1 = std::min(t1, t);
        }
        if (t0 > t1) return false;
    }
    const double ox = x1, oy = y1;
    x1 = ox + t0 * dx;
    y1 = oy + t0 * dy;
    x2 = ox + t1 * dx;
    y2 = oy + t1 * dy;
    return true;
}

// Rounds half away from zero, as lround does, without a library call: every value
// reaching here lies within the guard.
LONG nearest(double v) { return static_cast<LONG>(v >= 0.0 ? v + 0.5 : v - 0.5); }
POINT pixel(double x, double y) { return {nearest(x), nearest(y)}; }

bool inside(double x, double y, double left, double top, double right, double bottom) {
    return x >= left && x <= right && y >= top && y <= bottom;
}

}  // namespace

SurfaceRenderer::SurfaceRenderer(Drawer::Bitmap& surface, const Csx::CCs& viewCs, const BoundingBox& viewport)
    : surface_(surface), viewCs_(viewCs), viewport_(viewport) {
    const double width = std::max(1, surface.getWidth()), height = std::max(1, surface.getHeight());
    const double wanted = std::max(viewport.getWidth() / width, viewport.getHeight() / height);
    pixel_ = wanted > 0.0 && std::isfinite(wanted) ? wanted : 1.0;
    const double cx = (viewport.left + viewport.right) / 2, cy = (viewport.bottom + viewport.top) / 2;
    viewport_ = {cx - width * pixel_ / 2, cy + height * pixel_ / 2, cx + width * pixel_ / 2, cy - height * pixel_ / 2};
}

void SurfaceRenderer::drawPoint(const TCoord3d& at, const TPointStyle& style) {
    const double x = toPixelX(at.x), y = toPixelY(at.y);
    if (!(x > -kGuard && x < surface_.getWidth() + kGuard && y > -kGuard && y < surface_.getHeight() + kGuard)) return;
    const POINT p = pixel(x, y);
    const int size = static_cast<int>(std::min<std::uint32_t>(style.size, 256));
    const int r = size / 2;
    surface_.setDrawColor(style.colour);
    surface_.setFillColor(style.colour);
    surface_.setLineStyle(Drawer::eSolid, 1);
    if (size <= 1) {
        surface_.drawPoint(p.x, p.y);
        return;
    }
    switch (style.symbol) {
        case VectorFormat::eSymbolCross:
            surface_.drawLine(p.x - r, p.y, p.x + r + 1, p.y);
            surface_.drawLine(p.x, p.y - r, p.x, p.y + r + 1);
            break;
        case VectorFormat::eSymbolCircle: surface_.drawCircle(p.x, p.y, r); break;
        case VectorFormat::eSymbolSquare: surface_.drawRectangle(p.x - r, p.y - r, p.x + r + 1, p.y + r + 1); break;
        default: surface_.fillCircle(p.x, p.y, r); break;
    }
}

void SurfaceRenderer::drawPolyline(const TCoord3d* points, int count, const TLineStyle& style) {
    if (points == nullptr || count < 2 || style.penStyle == Drawer::eNone) return;
    const Drawer::LineStyle pattern = style.penStyle >= Drawer::eSolid && style.penStyle <= Drawer::eDashDotDot
                                          ? static_cast<Drawer::LineStyle>(style.penStyle)
                                          : Drawer::eSolid;
    surface_.setDrawColor(style.colour);
    surface_.setLineStyle(pattern, std::clamp(style.width, 1, 64));
    const double left = -kGuard, top = -kGuard, right = surface_.getWidth() + kGuard,
                 bottom = surface_.getHeight() + kGuard;
    // Runs of segments that stay within the guard are drawn as one polyline, so that
    // dashes run on across their vertices.
    std::vector<POINT>& run = run_;
    run.clear();
    const auto flush = [&] {
        if (run.size() >= 2) surface_.drawLines(run.data(), static_cast<int>(run.size()));
        run.clear();
    };
    for (int i = 1; i < count; ++i) {
        double x1 = toPixelX(points[i - 1].x), y1 = toPixelY(points[i - 1].y);
        double x2 = toPixelX(points[i].x), y2 = toPixelY(points[i].y);
        const double sx = x2, sy = y2;
        const bool within = inside(x1, y1, left, top, right, bottom) && inside(x2, y2, left, top, right, bottom);
        if (!within && (!(std::isfinite(x1) && std::isfinite(y1) && std::isfinite(x2) && std::isfinite(y2)) ||
                        !clipSegment(x1, y1, x2, y2, left, top, right, bottom))) {
            flush();
            continue;
        }
        const POINT a = pixel(x1, y1), b = pixel(x2, y2);
        if (run.empty() || run.back().x != a.x || run.back().y != a.y) {
            flush();
            run.push_back(a);
        }
        run.push_back(b);
        if (x2 != sx || y2 != sy) flush();  // cut at its end: the next segment starts afresh
    }
    flush();
}

void SurfaceRenderer::drawText(const TCoord3d& at, const CKivStringT& text, const TTextStyle& style) {
    const double capital = style.height / pixel_;
    const double x = toPixelX(at.x), y = toPixelY(at.y);
    if (!(capital >= 3.0) || capital > 2048.0 || text.IsEmpty()) return;
    if (!(x > -kGuard && x < surface_.getWidth() + kGuard && y > -kGuard && y < surface_.getHeight() + kGuard)) return;
    if (!surface_.setFont(L"DejaVu Sans", static_cast<int>(std::lround(capital / kCapitalShare)), style.rotation)) return;
    surface_.setTextColor(style.colour);
    const POINT p = pixel(x, y);
    surface_.drawText(p.x, p.y, text.GetString(), TA_LEFT | TA_BASELINE);
}

}  // namespace kiv_render
