// A DIB section selected into its own memory device context, for the GDI tests.
#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

#include "platform/win32/Win32.h"

namespace kiv_test {

class Canvas {
public:
    Canvas(int width, int height, int bitCount = 32, bool topDown = true, std::vector<RGBQUAD> palette = {})
        : width_(width), height_(height) {
        std::vector<std::uint8_t> info(sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD));
        auto* header = reinterpret_cast<BITMAPINFOHEADER*>(info.data());
        header->biSize = sizeof(BITMAPINFOHEADER);
        header->biWidth = width;
        header->biHeight = topDown ? -height : height;
        header->biPlanes = 1;
        header->biBitCount = static_cast<WORD>(bitCount);
        header->biCompression = BI_RGB;
        header->biClrUsed = static_cast<DWORD>(palette.size());
        std::copy(palette.begin(), palette.end(), reinterpret_cast<RGBQUAD*>(info.data() + sizeof(BITMAPINFOHEADER)));
        dc = CreateCompatibleDC(nullptr);
        bitmap = CreateDIBSection(dc, reinterpret_cast<BITMAPINFO*>(info.data()), DIB_RGB_COLORS, &bits, nullptr, 0);
        old = SelectObject(dc, bitmap);
    }
    ~Canvas() {
        SelectObject(dc, old);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    void Clear(COLORREF colour) {
        HBRUSH brush = CreateSolidBrush(colour);
        const RECT all{0, 0, width_, height_};
        FillRect(dc, &all, brush);
        DeleteObject(brush);
    }
    // Every pixel, row by row, as COLORREFs.
    std::vector<COLORREF> Pixels() const {
        std::vector<COLORREF> out;
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) out.push_back(GetPixel(dc, x, y));
        return out;
    }
    // The pixels of the given colour, as "x,y" pairs in row order.
    std::vector<POINT> Find(COLORREF colour) const {
        std::vector<POINT> out;
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x)
                if (GetPixel(dc, x, y) == colour) out.push_back(POINT{x, y});
        return out;
    }
    int width() const { return width_; }
    int height() const { return height_; }

    HDC dc = nullptr;
    HBITMAP bitmap = nullptr;
    void* bits = nullptr;
    HGDIOBJ old = nullptr;

private:
    int width_;
    int height_;
};

}  // namespace kiv_test

inline bool operator==(POINT a, POINT b) { return a.x == b.x && a.y == b.y; }
inline void PrintTo(POINT p, std::ostream* out) { *out << "(" << p.x << "," << p.y << ")"; }
inline bool operator==(RECT a, RECT b) { return EqualRect(&a, &b) != 0; }
inline void PrintTo(RECT r, std::ostream* out) {
    *out << "{" << r.left << "," << r.top << "," << r.right << "," << r.bottom << "}";
}
