// Scan conversion shared by the drawing families: one-pixel lines with their dash
// patterns, wide pens, polygon and ellipse fills. Everything clips to the surface
// before it touches a pixel.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/win32/GdiObjects.h"

namespace kiv_win32::detail {

struct PointD {
    double x;
    double y;
};

// Strokes a polyline with the device context's pen: one-pixel pens (width 0 or 1) with
// their dash pattern, which runs on from segment to segment; wider pens as solid
// strokes with round ends and joins. Closing joins the last point back to the first.
void StrokePolyline(DeviceContext& dc, const POINT* points, int count, bool closed);

// Fills a polygon: a pixel is inside when its centre is; edges on the left and top
// belong to the polygon, those on the right and bottom do not. `winding` picks the
// non-zero rule, otherwise the even-odd one.
void FillPolygon(Surface& s, const std::vector<PointD>& points, std::uint32_t native, bool winding);

// The pixels of an ellipse whose bounding box is [left, right) x [top, bottom), as rows
// of spans [x0, x1] (inclusive); `inset` shrinks both radii (for the ring a pen draws).
struct Span {
    int y;
    int x0;
    int x1;
};
std::vector<Span> EllipseSpans(const Surface& s, int left, int top, int right, int bottom, double inset);

}  // namespace kiv_win32::detail
