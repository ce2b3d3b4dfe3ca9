// Drawing of the title-bar bitmaps: a rounded tile in the button's colour with a white
// symbol stroked over it, on the title bar's own colour so that the tile's corners blend.
#include "utils/ui/UiBitmaps.h"

#include <cmath>
#include <string_view>

namespace {

constexpr int S = kTitlebarBitmapSize;

struct Canvas {
    HDC dc = nullptr;
    HBITMAP bitmap = nullptr;
    HGDIOBJ old = nullptr;
    Canvas() {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        info.bmiHeader.biWidth = S;
        info.bmiHeader.biHeight = -S;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        dc = CreateCompatibleDC(nullptr);
        old = SelectObject(dc, bitmap);
        RECT all{0, 0, S, S};
        HBRUSH back = CreateSolidBrush(kTitlebarColour);
        FillRect(dc, &all, back);
        DeleteObject(back);
    }
    HBITMAP Release() {
        SelectObject(dc, old);
        DeleteDC(dc);
        return bitmap;
    }
    void Tile(COLORREF colour) {
        HBRUSH b = CreateSolidBrush(colour);
        HPEN p = CreatePen(PS_SOLID, 1, colour);
        HGDIOBJ ob = SelectObject(dc, b), op = SelectObject(dc, p);
        // A rounded square: an octagon with the corners cut by two pixels.
        const POINT tile[8] = {{3, 1}, {S - 4, 1}, {S - 2, 3}, {S - 2, S - 4}, {S - 4, S - 2}, {3, S - 2}, {1, S - 4}, {1, 3}};
        Polygon(dc, tile, 8);
        SelectObject(dc, ob);
        SelectObject(dc, op);
        DeleteObject(b);
        DeleteObject(p);
    }
    void Stroke(const POINT* points, int count, int width, COLORREF colour = RGB(255, 255, 255)) {
        HPEN p = CreatePen(PS_SOLID, width, colour);
        HGDIOBJ op = SelectObject(dc, p);
        Polyline(dc, points, count);
        SelectObject(dc, op);
        DeleteObject(p);
    }
    void Disc(int cx, int cy, int r, COLORREF fill, COLORREF edge, int width) {
        HBRUSH b = CreateSolidBrush(fill);
        HPEN p = CreatePen(PS_SOLID, width, edge);
        HGDIOBJ ob = SelectObject(dc, b), op = SelectObject(dc, p);
        Ellipse(dc, cx - r, cy - r, cx + r + 1, cy + r + 1);
        SelectObject(dc, ob);
        SelectObject(dc, op);
        DeleteObject(b);
        DeleteObject(p);
    }
};

constexpr COLORREF kWhite = RGB(255, 255, 255);

void Cross(Canvas& c) {
    const POINT a[2] = {{7, 7}, {S - 7, S - 7}}, b[2] = {{S - 8, 7}, {6, S - 7}};
    c.Stroke(a, 2, 3);
    c.Stroke(b, 2, 3);
}

void Tick(Canvas& c, COLORREF colour) {
    const POINT t[3] = {{6, 12}, {10, 17}, {18, 7}};
    c.Stroke(t, 3, 3, colour);
}

}  // namespace

namespace kiv_ui {

HBITMAP LoadUiBitmap(UINT id) {
    if (id < IDB_TBAR_OK || id > IDB_TBAR_MENU) return nullptr;
    Canvas c;
    switch (id) {
        case IDB_TBAR_OK:
            c.Tile(RGB(40, 150, 60));
            Tick(c, kWhite);
            break;
        case IDB_TBAR_CLOSE:
            c.Tile(RGB(96, 108, 124));
            Cross(c);
            break;
        case IDB_TBAR_CANCEL:
            c.Tile(RGB(200, 48, 40));
            Cross(c);
            break;
        case IDB_TBAR_SETTINGS: {
            c.Tile(RGB(96, 108, 124));
            // A gear: eight teeth round a ring with a hole.
            for (int i = 0; i < 8; ++i) {
                const double a = i * 3.14159265358979 / 4;
                const POINT tooth[2] = {{12 + static_cast<LONG>(std::lround(5 * std::cos(a))), 12 + static_cast<LONG>(std::lround(5 * std::sin(a)))},
                                        {12 + static_cast<LONG>(std::lround(8 * std::cos(a))), 12 + static_cast<LONG>(std::lround(8 * std::sin(a)))}};
                c.Stroke(tooth, 2, 3);
            }
            c.Disc(12, 12, 6, kWhite, kWhite, 1);
            c.Disc(12, 12, 2, RGB(96, 108, 124), RGB(96, 108, 124), 1);
            break;
        }
        case IDB_TBAR_EDM: {
            c.Tile(RGB(220, 120, 20));
            // The distance meter: a target with a beam running into it.
            c.Disc(14, 12, 6, RGB(220, 120, 20), kWhite, 2);
            c.Disc(14, 12, 1, kWhite, kWhite, 1);
            const POINT beam[2] = {{3, 12}, {8, 12}};
            c.Stroke(beam, 2, 2);
            break;
        }
        case IDB_TBAR_CHECK: {
            c.Tile(RGB(30, 110, 200));
            HBRUSH box = CreateSolidBrush(kWhite);
            RECT r{5, 5, S - 5, S - 5};
            FillRect(c.dc, &r, box);
            DeleteObject(box);
            Tick(c, RGB(30, 110, 200));
            break;
        }
        case IDB_TBAR_MENU:
            c.Tile(RGB(70, 90, 120));
            for (int y : {7, 12, 17}) {
                const POINT bar[2] = {{6, y}, {S - 6, y}};
                c.Stroke(bar, 2, 2);
            }
            break;
        default: break;
    }
    return c.Release();
}

HBITMAP LoadUiBitmap(LPCWSTR name) {
    if (!name) return nullptr;
    const std::wstring_view n(name);
    if (n == L"IDB_TITLEBAR_EMPTY") return Canvas().Release();
    if (n != L"IDB_ALPHAKEY") return nullptr;
    Canvas c;
    c.Tile(RGB(240, 190, 30));
    // The letter "A" as strokes, so it needs no font.
    const POINT a[3] = {{6, 19}, {12, 5}, {18, 19}}, bar[2] = {{9, 14}, {16, 14}};
    c.Stroke(a, 3, 3, RGB(20, 20, 20));
    c.Stroke(bar, 2, 2, RGB(20, 20, 20));
    return c.Release();
}

}  // namespace kiv_ui
