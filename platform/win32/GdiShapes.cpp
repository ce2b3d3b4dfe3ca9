// Rectangles, ellipses and polygons, and the plain rectangle arithmetic.
#include "platform/win32/GdiShapes.h"

#include <algorithm>
#include <utility>

#include "platform/win32/GdiRaster.h"

using namespace kiv_win32::detail;

namespace {

std::shared_ptr<DeviceContext> DC(HDC dc) {
    auto d = FindDC(dc);
    if (!d) SetLastError(ERROR_INVALID_HANDLE);
    return d;
}

void FillBox(Surface& s, LONG left, LONG top, LONG right, LONG bottom, std::uint32_t native) {
    const int x0 = std::max<LONG>(0, left), x1 = std::min<LONG>(s.width, right);
    const int y0 = std::max<LONG>(0, top), y1 = std::min<LONG>(s.height, bottom);
    for (int y = y0; y < y1; ++y) s.FillSpan(y, x0, x1, native);
}

bool HasPen(const DeviceContext& d) { return d.pen && d.pen->Style() != PS_NULL; }
bool HasBrush(const DeviceContext& d) { return d.brush && !d.brush->Hollow(); }

void FillSpanClipped(Surface& s, int y, int x0, int x1, std::uint32_t native) {
    s.FillSpan(y, std::max(0, x0), std::min(s.width, x1 + 1), native);
}

}  // namespace

int FillRect(HDC dc, const RECT* rect, HBRUSH brush) {
    auto d = DC(dc);
    COLORREF colour = 0;
    bool hollow = false;
    if (!d || !rect || !BrushColour(brush, colour, hollow)) return 0;
    if (!hollow) FillBox(d->Target(), rect->left, rect->top, rect->right, rect->bottom, d->Target().Native(colour));
    return 1;
}

BOOL Rectangle(HDC dc, int left, int top, int right, int bottom) {
    auto d = DC(dc);
    if (!d) return FALSE;
    if (left > right) std::swap(left, right);
    if (top > bottom) std::swap(top, bottom);
    Surface& s = d->Target();
    // Without a pen the inside grows by the outline it no longer has on the right and
    // bottom, as on the device.
    if (!HasPen(*d)) {
        if (HasBrush(*d)) FillBox(s, left, top, right - 1, bottom - 1, s.Native(d->brush->brush.lbColor));
        return TRUE;
    }
    if (HasBrush(*d)) FillBox(s, left + 1, top + 1, right - 1, bottom - 1, s.Native(d->brush->brush.lbColor));
    if (right - left < 1 || bottom - top < 1) return TRUE;
    const POINT corners[4] = {{left, top}, {right - 1, top}, {right - 1, bottom - 1}, {left, bottom - 1}};
    // Two pixels across or fewer, a one-pixel outline is all there is.
    if ((right - left <= 2 || bottom - top <= 2) && d->pen->Width() <= 1) {
        FillBox(s, left, top, right, bottom, s.Native(d->pen->pen.lopnColor));
        return TRUE;
    }
    const int phase = d->dashPhase;
    d->dashPhase = 0;
    StrokePolyline(*d, corners, 4, true);
    d->dashPhase = phase;
    return TRUE;
}

BOOL Ellipse(HDC dc, int left, int top, int right, int bottom) {
    auto d = DC(dc);
    if (!d) return FALSE;
    if (left > right) std::swap(left, right);
    if (top > bottom) std::swap(top, bottom);
    Surface& s = d->Target();
    const bool pen = HasPen(*d);
    const double penWidth = pen ? std::max(1, d->pen->Width()) : 0.0;
    if (HasBrush(*d)) {
        const std::uint32_t brush = s.Native(d->brush->brush.lbColor);
        for (const Span& span : EllipseSpans(s, left, top, right, bottom, penWidth)) FillSpanClipped(s, span.y, span.x0, span.x1, brush);
    }
    if (!pen) return TRUE;
    // The outline is the ring between the ellipse and the one a pen width inside it.
    const std::uint32_t native = s.Native(d->pen->pen.lopnColor);
    const auto inner = EllipseSpans(s, left, top, right, bottom, penWidth);
    std::size_t j = 0;
    for (const Span& outer : EllipseSpans(s, left, top, right, bottom, 0.0)) {
        while (j < inner.size() && inner[j].y < outer.y) ++j;
        if (j < inner.size() && inner[j].y == outer.y) {
            FillSpanClipped(s, outer.y, outer.x0, inner[j].x0 - 1, native);
            FillSpanClipped(s, outer.y, inner[j].x1 + 1, outer.x1, native);
        } else {
            FillSpanClipped(s, outer.y, outer.x0, outer.x1, native);
        }
    }
    return TRUE;
}

BOOL Polygon(HDC dc, const POINT* points, int count) {
    auto d = DC(dc);
    if (!d || !points || count < 2) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (HasBrush(*d)) {
        std::vector<PointD> shape(count);
        for (int i = 0; i < count; ++i) shape[i] = PointD{double(points[i].x), double(points[i].y)};
        FillPolygon(d->Target(), shape, d->Target().Native(d->brush->brush.lbColor), d->polyFillMode == WINDING);
    }
    const int phase = d->dashPhase;
    d->dashPhase = 0;
    StrokePolyline(*d, points, count, true);
    d->dashPhase = phase;
    return TRUE;
}

int SetPolyFillMode(HDC dc, int mode) {
    auto d = DC(dc);
    if (!d || (mode != ALTERNATE && mode != WINDING)) return 0;
    return std::exchange(d->polyFillMode, mode);
}

int GetPolyFillMode(HDC dc) {
    auto d = DC(dc);
    return d ? d->polyFillMode : 0;
}

// ---- rectangles ---------------------------------------------------------------------------------

BOOL SetRect(LPRECT rect, int left, int top, int right, int bottom) {
    if (!rect) return FALSE;
    *rect = RECT{left, top, right, bottom};
    return TRUE;
}

BOOL SetRectEmpty(LPRECT rect) { return SetRect(rect, 0, 0, 0, 0); }

BOOL IsRectEmpty(const RECT* rect) { return !rect || rect->right <= rect->left || rect->bottom <= rect->top; }

BOOL PtInRect(const RECT* rect, POINT p) {
    return rect && p.x >= rect->left && p.x < rect->right && p.y >= rect->top && p.y < rect->bottom;
}

BOOL OffsetRect(LPRECT rect, int dx, int dy) {
    if (!rect) return FALSE;
    *rect = RECT{rect->left + dx, rect->top + dy, rect->right + dx, rect->bottom + dy};
    return TRUE;
}

BOOL InflateRect(LPRECT rect, int dx, int dy) {
    if (!rect) return FALSE;
    *rect = RECT{rect->left - dx, rect->top - dy, rect->right + dx, rect->bottom + dy};
    return TRUE;
}

BOOL IntersectRect(LPRECT result, const RECT* a, const RECT* b) {
    if (!result || !a || !b) return FALSE;
    const RECT r{std::max(a->left, b->left), std::max(a->top, b->top), std::min(a->right, b->right),
                 std::min(a->bottom, b->bottom)};
    if (IsRectEmpty(&r)) {
        SetRectEmpty(result);
        return FALSE;
    }
    *result = r;
    return TRUE;
}

BOOL UnionRect(LPRECT result, const RECT* a, const RECT* b) {
    // A missing rectangle counts as an empty one, which adds nothing.
    if (!result) return FALSE;
    if (IsRectEmpty(a) || IsRectEmpty(b)) {
        if (IsRectEmpty(a) && IsRectEmpty(b)) *result = RECT{0, 0, 0, 0};
        else *result = IsRectEmpty(a) ? *b : *a;
        return !IsRectEmpty(result);
    }
    *result = RECT{std::min(a->left, b->left), std::min(a->top, b->top), std::max(a->right, b->right),
                   std::max(a->bottom, b->bottom)};
    return TRUE;
}

BOOL EqualRect(const RECT* a, const RECT* b) {
    return a && b && a->left == b->left && a->top == b->top && a->right == b->right && a->bottom == b->bottom;
}

BOOL CopyRect(LPRECT to, const RECT* from) {
    if (!to || !from) return FALSE;
    *to = *from;
    return TRUE;
}
