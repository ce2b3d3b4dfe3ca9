// Raster images onto a device context, whatever the caller holds: a device context or
// a bitmap. With the bitmap file size reader, the library's image blits.
#pragma once

#include "platform/win32/Win32.h"
#include "utils/render/BitmapFile.h"

// A transparent copy: pixels of the colour `transparent` are left out. The source is a
// device context, a memory device context or a bitmap; anything else (a pen, a brush,
// null) draws nothing and gives 0. Otherwise the copy's own result.
int DrawTransparentImage(HDC dest, long x, long y, long width, long height, void* source, long xSrc, long ySrc,
                         long widthSrc, long heightSrc, COLORREF transparent);
// A plain block copy (source copy) from the same kinds of source.
int DrawOpaqueImage(HDC dest, long x, long y, long width, long height, void* source, long xSrc, long ySrc);
