// The current position, lines and single pixels.
#include "platform/win32/GdiLines.h"

#include "platform/win32/GdiRaster.h"

using namespace kiv_win32::detail;

namespace {

std::shared_ptr<DeviceContext> DC(HDC dc) {
    auto d = FindDC(dc);
    if (!d) SetLastError(ERROR_INVALID_HANDLE);
    return d;
}

}  // namespace

BOOL MoveToEx(HDC dc, int x, int y, LPPOINT previous) {
    auto d = DC(dc);
    if (!d) return FALSE;
    if (previous) *previous = d->position;
    d->position = POINT{x, y};
    d->dashPhase = 0;
    return TRUE;
}

BOOL LineTo(HDC dc, int x, int y) {
    auto d = DC(dc);
    if (!d) return FALSE;
    const POINT points[2] = {d->position, POINT{x, y}};
    // Each line starts its pen's pattern afresh; only a polyline carries it on.
    d->dashPhase = 0;
    StrokePolyline(*d, points, 2, false);
    d->position = points[1];
    return TRUE;
}

BOOL GetCurrentPositionEx(HDC dc, LPPOINT position) {
    auto d = DC(dc);
    if (!d || !position) return FALSE;
    *position = d->position;
    return TRUE;
}

BOOL Polyline(HDC dc, const POINT* points, int count) {
    auto d = DC(dc);
    if (!d || !points || count < 2) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const int phase = d->dashPhase;
    d->dashPhase = 0;
    StrokePolyline(*d, points, count, false);
    d->dashPhase = phase;  // a polyline leaves the current position and its pattern alone
    return TRUE;
}

COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour) {
    auto d = DC(dc);
    if (!d) return CLR_INVALID;
    Surface& s = d->Target();
    if (!s.Contains(x, y)) return CLR_INVALID;
    const std::uint32_t native = s.Native(colour & 0xFFFFFF);
    s.PutNative(x, y, native);
    return s.ColourOf(native);
}

COLORREF GetPixel(HDC dc, int x, int y) {
    auto d = DC(dc);
    if (!d) return CLR_INVALID;
    const Surface& s = d->Target();
    return s.Contains(x, y) ? s.GetColour(x, y) : CLR_INVALID;
}
