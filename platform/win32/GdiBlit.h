// Block transfers of the Win32 subset: copies between device contexts under a raster
// operation, pattern fills, scrolling a device context's pixels in place, and the
// transparent copy that leaves out one colour.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Win32Types.h"

// Raster operations: how source (S), pattern (the selected brush, P) and destination (D)
// combine. Any of the 256 is honoured; these are the named ones.
constexpr DWORD SRCCOPY = 0x00CC0020;
constexpr DWORD SRCPAINT = 0x00EE0086;
constexpr DWORD SRCAND = 0x008800C6;
constexpr DWORD SRCINVERT = 0x00660046;
constexpr DWORD SRCERASE = 0x00440328;
constexpr DWORD NOTSRCCOPY = 0x00330008;
constexpr DWORD NOTSRCERASE = 0x001100A6;
constexpr DWORD MERGECOPY = 0x00C000CA;
constexpr DWORD MERGEPAINT = 0x00BB0226;
constexpr DWORD PATCOPY = 0x00F00021;
constexpr DWORD PATPAINT = 0x00FB0A09;
constexpr DWORD PATINVERT = 0x005A0049;
constexpr DWORD DSTINVERT = 0x00550009;
constexpr DWORD BLACKNESS = 0x00000042;
constexpr DWORD WHITENESS = 0x00FF0062;

// The source must be a device context (FALSE otherwise) unless the operation ignores
// it. Source and destination may be the same surface, overlapping.
BOOL BitBlt(HDC dest, int x, int y, int width, int height, HDC source, int xSrc, int ySrc, DWORD rop);
BOOL StretchBlt(HDC dest, int x, int y, int width, int height, HDC source, int xSrc, int ySrc, int widthSrc,
                int heightSrc, DWORD rop);
BOOL PatBlt(HDC dest, int x, int y, int width, int height, DWORD rop);

// Moves the pixels of `scroll` (the whole surface when null) by (dx, dy); only pixels
// inside `clip` change, and pixels from outside `scroll` are never brought in.
// `update` receives the bounding box of the part of `clip` (or, without a clip, of
// `scroll`) that no scrolled pixel covers: what the caller must paint afresh.
// Regions are not part of this subset: `updateRegion` must be null.
BOOL ScrollDC(HDC dc, int dx, int dy, const RECT* scroll, const RECT* clip, HRGN updateRegion, LPRECT update);

// Copies, stretching as needed, every source pixel that is not `transparent`. The
// source is a device context or a bitmap.
BOOL TransparentImage(HDC dest, LONG x, LONG y, LONG width, LONG height, HANDLE source, LONG xSrc, LONG ySrc,
                      LONG widthSrc, LONG heightSrc, COLORREF transparent);
BOOL TransparentBlt(HDC dest, int x, int y, int width, int height, HDC source, int xSrc, int ySrc, int widthSrc,
                    int heightSrc, UINT transparent);
#endif  // _WIN32
