// Lines and single pixels of the Win32 subset. A segment covers the pixels from its
// first point up to, and not including, its last one; a polyline's inner points are
// therefore drawn once, by the segment they start. Clipping to the surface is exact: a
// clipped line lights the same pixels as the part of the whole line that is visible.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Win32Types.h"

BOOL MoveToEx(HDC dc, int x, int y, LPPOINT previous);
BOOL LineTo(HDC dc, int x, int y);
BOOL GetCurrentPositionEx(HDC dc, LPPOINT position);
BOOL Polyline(HDC dc, const POINT* points, int count);

// The colour actually set, or -1 (CLR_INVALID) outside the surface.
COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour);
// CLR_INVALID outside the surface.
COLORREF GetPixel(HDC dc, int x, int y);
#endif  // _WIN32
