// Filled shapes of the Win32 subset and the rectangle helpers. A shape's outline is
// drawn with the selected pen and its inside with the selected brush; a rectangle
// [left, right) x [top, bottom) covers neither its right column nor its bottom row.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Win32Types.h"

constexpr int ALTERNATE = 1;
constexpr int WINDING = 2;

int FillRect(HDC dc, const RECT* rect, HBRUSH brush);
BOOL Rectangle(HDC dc, int left, int top, int right, int bottom);
BOOL Ellipse(HDC dc, int left, int top, int right, int bottom);
// Filled with the fill mode's rule, then outlined, closing back to the first point.
BOOL Polygon(HDC dc, const POINT* points, int count);
int SetPolyFillMode(HDC dc, int mode);
int GetPolyFillMode(HDC dc);

BOOL SetRect(LPRECT rect, int left, int top, int right, int bottom);
BOOL SetRectEmpty(LPRECT rect);
BOOL IsRectEmpty(const RECT* rect);
BOOL PtInRect(const RECT* rect, POINT point);
BOOL OffsetRect(LPRECT rect, int dx, int dy);
BOOL InflateRect(LPRECT rect, int dx, int dy);
// FALSE, and an empty result, when the two do not overlap.
BOOL IntersectRect(LPRECT result, const RECT* a, const RECT* b);
BOOL UnionRect(LPRECT result, const RECT* a, const RECT* b);
BOOL EqualRect(const RECT* a, const RECT* b);
BOOL CopyRect(LPRECT to, const RECT* from);
#endif  // _WIN32
