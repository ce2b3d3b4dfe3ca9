// Pixel surfaces and the descriptions GetObjectW gives of each kind of drawing object.
#include "platform/win32/GdiObjects.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace kiv_win32::detail {

std::shared_ptr<Surface> MakeSurface(int width, int height, int bitCount, bool topDown) {
    if (width <= 0 || height <= 0 || width > kMaxSurfaceSide || height > kMaxSurfaceSide ||
        static_cast<std::int64_t>(width) * height > kMaxSurfacePixels ||
        (bitCount != 1 && bitCount != 8 && bitCount != 24 && bitCount != 32)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto s = std::shared_ptr<Surface>(new (std::nothrow) Surface);
    const int stride = ((width * bitCount + 31) / 32) * 4;
    const std::size_t bytes = static_cast<std::size_t>(stride) * height;
    std::unique_ptr<std::uint8_t[]> storage(new (std::nothrow) std::uint8_t[bytes]);
    if (!s || !storage) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    std::memset(storage.get(), 0, bytes);
    s->width = width;
    s->height = height;
    s->bitCount = bitCount;
    s->topDown = topDown;
    s->stride = stride;
    s->bits = storage.get();
    s->storage = std::move(storage);
    if (bitCount == 1) s->palette = {RGBQUAD{0, 0, 0, 0}, RGBQUAD{255, 255, 255, 0}};
    return s;
}

std::uint32_t Surface::Native(COLORREF c) const {
    if (bitCount >= 24) return ToPixel(c);
    // Nearest entry of the colour table, by squared distance; an empty table maps to 0.
    std::uint32_t best = 0;
    long bestDistance = -1;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const long dr = long(palette[i].rgbRed) - GetRValue(c);
        const long dg = long(palette[i].rgbGreen) - GetGValue(c);
        const long db = long(palette[i].rgbBlue) - GetBValue(c);
        const long d = dr * dr + dg * dg + db * db;
        if (bestDistance < 0 || d < bestDistance) {
            bestDistance = d;
            best = static_cast<std::uint32_t>(i);
        }
    }
    return best;
}

COLORREF Surface::ColourOf(std::uint32_t native) const {
    if (bitCount >= 24) return FromPixel(native);
    if (native >= palette.size()) return 0;
    const RGBQUAD& q = palette[native];
    return RGB(q.rgbRed, q.rgbGreen, q.rgbBlue);
}

std::uint32_t Surface::GetNative(int x, int y) const {
    const std::uint8_t* row = Row(y);
    switch (bitCount) {
        case 32: {
            std::uint32_t p;
            std::memcpy(&p, row + 4 * x, 4);
            return p & 0xFFFFFF;
        }
        case 24: return row[3 * x] | (row[3 * x + 1] << 8) | (row[3 * x + 2] << 16);
        case 8: return row[x];
        default: return (row[x >> 3] >> (7 - (x & 7))) & 1;
    }
}

void Surface::PutNative(int x, int y, std::uint32_t v) {
    std::uint8_t* row = Row(y);
    switch (bitCount) {
        case 32: std::memcpy(row + 4 * x, &v, 4); break;
        case 24:
            row[3 * x] = static_cast<std::uint8_t>(v);
            row[3 * x + 1] = static_cast<std::uint8_t>(v >> 8);
            row[3 * x + 2] = static_cast<std::uint8_t>(v >> 16);
            break;
        case 8: row[x] = static_cast<std::uint8_t>(v); break;
        default: {
            const std::uint8_t mask = static_cast<std::uint8_t>(0x80 >> (x & 7));
            row[x >> 3] = (v & 1) ? (row[x >> 3] | mask) : (row[x >> 3] & ~mask);
        }
    }
}

void Surface::FillSpan(int y, int x0, int x1, std::uint32_t v) {
    if (x0 >= x1) return;
    std::uint8_t* row = Row(y);
    if (bitCount == 32) {
        std::fill(reinterpret_cast<std::uint32_t*>(row) + x0, reinterpret_cast<std::uint32_t*>(row) + x1, v);
    } else if (bitCount == 8) {
        std::memset(row + x0, static_cast<int>(v), x1 - x0);
    } else {
        for (int x = x0; x < x1; ++x) PutNative(x, y, v);
    }
}

namespace {

int Copy(const void* what, int whatSize, int size, void* buffer) {
    if (!buffer) return whatSize;
    if (size < whatSize) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::memcpy(buffer, what, whatSize);
    return whatSize;
}

}  // namespace

int BitmapObject::Describe(int size, void* buffer) const {
    const Surface& s = *surface;
    DIBSECTION d{};
    d.dsBm.bmType = 0;
    d.dsBm.bmWidth = s.width;
    d.dsBm.bmHeight = s.height;
    d.dsBm.bmWidthBytes = dibSection ? s.stride : ((s.width * s.bitCount + 15) / 16) * 2;
    d.dsBm.bmPlanes = 1;
    d.dsBm.bmBitsPixel = static_cast<WORD>(s.bitCount);
    d.dsBm.bmBits = dibSection ? s.bits : nullptr;
    // Only a DIB section has a DIBSECTION to give; asking with its size still gets a BITMAP
    // for other bitmaps, as on the device.
    if (dibSection && (!buffer || size >= static_cast<int>(sizeof(DIBSECTION)))) {
        d.dsBmih.biSize = sizeof(BITMAPINFOHEADER);
        d.dsBmih.biWidth = s.width;
        // The row order is the creator's to remember: the system reports the height alone.
        d.dsBmih.biHeight = s.height;
        d.dsBmih.biPlanes = 1;
        d.dsBmih.biBitCount = static_cast<WORD>(s.bitCount);
        d.dsBmih.biCompression = BI_RGB;
        d.dsBmih.biSizeImage = static_cast<DWORD>(s.stride) * s.height;
        d.dsBmih.biClrUsed = static_cast<DWORD>(s.palette.size());
        return Copy(&d, sizeof d, size, buffer);
    }
    return Copy(&d.dsBm, sizeof d.dsBm, size, buffer);
}

int PenObject::Describe(int size, void* buffer) const { return Copy(&pen, sizeof pen, size, buffer); }
int BrushObject::Describe(int size, void* buffer) const { return Copy(&brush, sizeof brush, size, buffer); }
int FontObject::Describe(int size, void* buffer) const { return Copy(&font, sizeof font, size, buffer); }

std::shared_ptr<DeviceContext> FindDC(HDC dc) { return FindHandleAs<DeviceContext>(dc); }

COLORREF SystemColour(int index) {
    // A light scheme close to the handheld's own.
    static const COLORREF colours[] = {
        RGB(200, 200, 200), RGB(0, 128, 128),   RGB(0, 0, 128),     RGB(128, 128, 128), RGB(240, 240, 240),
        RGB(255, 255, 255), RGB(0, 0, 0),       RGB(0, 0, 0),       RGB(0, 0, 0),       RGB(255, 255, 255),
        RGB(200, 200, 200), RGB(200, 200, 200), RGB(128, 128, 128), RGB(0, 0, 128),     RGB(255, 255, 255),
        RGB(212, 208, 200), RGB(128, 128, 128), RGB(128, 128, 128), RGB(0, 0, 0),       RGB(200, 200, 200),
        RGB(255, 255, 255), RGB(64, 64, 64),    RGB(224, 224, 224), RGB(0, 0, 0),       RGB(255, 255, 225),
        RGB(212, 208, 200), RGB(0, 0, 0),       RGB(16, 132, 208),  RGB(181, 181, 181),
    };
    if (index < 0 || index >= static_cast<int>(sizeof colours / sizeof colours[0])) return 0;
    return colours[index];
}

bool BrushColour(HBRUSH brush, COLORREF& colour, bool& hollow) {
    const auto value = reinterpret_cast<std::uintptr_t>(brush);
    if (value >= 1 && value <= 29) {
        colour = SystemColour(static_cast<int>(value) - 1);
        hollow = false;
        return true;
    }
    auto b = FindGdi<BrushObject>(brush);
    if (!b) return false;
    colour = b->brush.lbColor;
    hollow = b->Hollow();
    return true;
}

}  // namespace kiv_win32::detail
