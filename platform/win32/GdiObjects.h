// The objects behind GDI handles: pixel surfaces, bitmaps, pens, brushes, fonts and
// device contexts. Every drawing family works on these; callers only see handles.
// A device context and what is selected into it are used by one thread at a time, as
// on the device; the handle table itself is shared safely.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/win32/Gdi.h"
#include "platform/win32/Handles.h"

namespace kiv_win32::detail {

// The largest surface side and pixel count we agree to make: far above any screen or
// map, low enough that a hostile picture file cannot ask for gigabytes.
constexpr int kMaxSurfaceSide = 32768;
constexpr std::int64_t kMaxSurfacePixels = 1 << 27;

// 0x00RRGGBB, the in-memory order of a 32-bit pixel (blue in the lowest byte).
constexpr std::uint32_t ToPixel(COLORREF c) {
    return ((c & 0xFF) << 16) | (c & 0xFF00) | ((c >> 16) & 0xFF);
}
constexpr COLORREF FromPixel(std::uint32_t p) {
    return ((p >> 16) & 0xFF) | (p & 0xFF00) | ((p & 0xFF) << 16);
}

// Pixels of 1, 8, 24 or 32 bits, rows padded to whole 32-bit words, bottom-up or top-down.
struct Surface {
    int width = 0;
    int height = 0;
    int bitCount = 32;
    bool topDown = false;
    int stride = 0;  // bytes per row
    std::uint8_t* bits = nullptr;
    std::vector<RGBQUAD> palette;  // 1 and 8 bits
    // A compatible monochrome bitmap: blits map it through the device contexts' text and
    // background colours instead of a colour table.
    bool monochromeDevice = false;
    std::unique_ptr<std::uint8_t[]> storage;

    std::uint8_t* Row(int y) const { return bits + static_cast<std::ptrdiff_t>(topDown ? y : height - 1 - y) * stride; }
    // Distance in 32-bit pixels from a row to the one below it (negative when bottom-up).
    std::ptrdiff_t Pitch32() const { return (topDown ? stride : -stride) / 4; }
    bool Contains(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }

    // The raw value a colour is stored as: a pixel, a 24-bit triple or a colour table index.
    std::uint32_t Native(COLORREF colour) const;
    COLORREF ColourOf(std::uint32_t native) const;
    std::uint32_t GetNative(int x, int y) const;
    void PutNative(int x, int y, std::uint32_t native);
    COLORREF GetColour(int x, int y) const { return ColourOf(GetNative(x, y)); }
    void PutColour(int x, int y, COLORREF c) { PutNative(x, y, Native(c)); }
    // Fills [x0, x1) of row y (already clipped) with a native value.
    void FillSpan(int y, int x0, int x1, std::uint32_t native);
};

// Null (with ERROR_NOT_ENOUGH_MEMORY or ERROR_INVALID_PARAMETER) when the size is out of
// bounds or memory runs out. The pixels start zeroed.
std::shared_ptr<Surface> MakeSurface(int width, int height, int bitCount, bool topDown);

class GdiObject : public HandleObject {
public:
    bool IsDrawingObject() const override { return true; }
    virtual DWORD ObjectType() const = 0;
    // GetObjectW's answer: bytes written, or needed when `buffer` is null.
    virtual int Describe(int size, void* buffer) const = 0;
    bool stock = false;
};

class BitmapObject : public GdiObject {
public:
    DWORD ObjectType() const override { return OBJ_BITMAP; }
    int Describe(int size, void* buffer) const override;
    std::shared_ptr<Surface> surface;
    bool dibSection = false;
    bool selected = false;  // into some device context (stock bitmaps are never marked)
};

class PenObject : public GdiObject {
public:
    DWORD ObjectType() const override { return OBJ_PEN; }
    int Describe(int size, void* buffer) const override;
    LOGPEN pen{};
    int Style() const { return static_cast<int>(pen.lopnStyle & PS_STYLE_MASK); }
    int Width() const { return pen.lopnWidth.x; }
};

class BrushObject : public GdiObject {
public:
    DWORD ObjectType() const override { return OBJ_BRUSH; }
    int Describe(int size, void* buffer) const override;
    LOGBRUSH brush{};
    bool Hollow() const { return brush.lbStyle == BS_NULL; }
};

class FontFace;  // the loaded typeface at the font's size (text family)

class FontObject : public GdiObject {
public:
    DWORD ObjectType() const override { return OBJ_FONT; }
    int Describe(int size, void* buffer) const override;
    LOGFONTW font{};
    std::shared_ptr<FontFace> face;  // loaded on first use
};

class DeviceContext : public GdiObject {
public:
    DWORD ObjectType() const override { return memory ? OBJ_MEMDC : OBJ_DC; }
    int Describe(int, void*) const override { return 0; }

    // Where drawing lands: the selected bitmap of a memory device context, else the
    // window's (or the screen's) surface.
    Surface& Target() const { return memory ? *bitmap->surface : *windowSurface; }

    bool memory = false;
    HWND window = nullptr;
    std::shared_ptr<Surface> windowSurface;

    HGDIOBJ bitmapHandle = nullptr;
    std::shared_ptr<BitmapObject> bitmap;
    HGDIOBJ penHandle = nullptr;
    std::shared_ptr<PenObject> pen;
    HGDIOBJ brushHandle = nullptr;
    std::shared_ptr<BrushObject> brush;
    HGDIOBJ fontHandle = nullptr;
    std::shared_ptr<FontObject> font;

    COLORREF textColour = 0x000000;
    COLORREF bkColour = 0xFFFFFF;
    int bkMode = OPAQUE;
    UINT textAlign = 0;
    int polyFillMode = 1;  // ALTERNATE
    POINT position{0, 0};
    // Where a styled pen is in its dash pattern; a polyline carries it across its
    // segments, MoveToEx starts it again.
    int dashPhase = 0;
};

std::shared_ptr<DeviceContext> FindDC(HDC dc);
template <class T>
std::shared_ptr<T> FindGdi(HGDIOBJ object) {
    return FindHandleAs<T>(object);
}

// The surface a window draws into, made or resized to its client area on demand (in
// the windows family, which owns the window table); null when there is no such window.
std::shared_ptr<Surface> WindowSurface(HWND window);

// Colours of the system palette by COLOR_ index; also what (HBRUSH)(index + 1) paints.
COLORREF SystemColour(int index);
// A brush handle as FillRect takes it: a real brush or a system colour index plus one.
// False for something that is neither.
bool BrushColour(HBRUSH brush, COLORREF& colour, bool& hollow);

}  // namespace kiv_win32::detail
