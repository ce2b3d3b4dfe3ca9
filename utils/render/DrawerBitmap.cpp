// Drawer::Bitmap: the surfaces, their drawing state and the primitives a map is drawn
// with.
#include <algorithm>
#include <cmath>
#include <cwchar>
#include <numbers>
#include <vector>

#include "platform/kivmath/Arc.h"
#include "utils/render/Drawer.h"

namespace kiv_render {

namespace {

// On and off runs of each dash pattern, in multiples of the line's width.
struct Pattern {
    const int* runs;
    int count;
};
constexpr int kDash[] = {6, 3};
constexpr int kDot[] = {1, 2};
constexpr int kDashDot[] = {6, 2, 1, 2};
constexpr int kDashDotDot[] = {6, 2, 1, 2, 1, 2};

Pattern patternOf(Drawer::LineStyle style) {
    switch (style) {
        case Drawer::eDash: return {kDash, 2};
        case Drawer::eDot: return {kDot, 2};
        case Drawer::eDashDot: return {kDashDot, 4};
        case Drawer::eDashDotDot: return {kDashDotDot, 6};
        default: return {nullptr, 0};
    }
}

POINT rounded(double x, double y) { return {static_cast<LONG>(std::lround(x)), static_cast<LONG>(std::lround(y))}; }

}  // namespace

std::shared_ptr<Drawer::Bitmap> Drawer::Bitmap::create(int width, int height, int bitsPerPixel) {
    HDC dc = CreateCompatibleDC(nullptr);
    if (dc == nullptr) return nullptr;
    BITMAPINFO info{};
    info.bmiHeader.biSize = 40;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = std::abs(height);  // positive: rows bottom-up
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = static_cast<WORD>(bitsPerPixel);
    info.bmiHeader.biCompression = BI_RGB;
    info.bmiHeader.biSizeImage =
        static_cast<DWORD>((static_cast<long long>(width) * bitsPerPixel + 31) / 32 * 4 * std::abs(height));
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap == nullptr) {
        DeleteDC(dc);
        return nullptr;
    }
    std::shared_ptr<Bitmap> surface(new (std::nothrow) Bitmap());
    if (!surface) {
        DeleteObject(bitmap);
        DeleteDC(dc);
        return nullptr;
    }
    surface->previous_ = SelectObject(dc, bitmap);
    surface->bitmap_ = bitmap;
    surface->dc_ = dc;
    surface->bits_ = static_cast<unsigned char*>(bits);
    surface->width_ = width;
    surface->height_ = std::abs(height);
    return surface;
}

std::shared_ptr<Drawer::Bitmap> Drawer::Bitmap::bindToHdc(HDC hdc, int width, int height) {
    std::shared_ptr<Bitmap> surface(new (std::nothrow) Bitmap());
    if (!surface) return nullptr;
    surface->dc_ = hdc;
    surface->width_ = width;
    surface->height_ = height;
    return surface;
}

Drawer::Bitmap::~Bitmap() {
    // Give the device context back what it held, then free what we made; a foreign
    // device context is left as it was found.
    if (dc_ != nullptr) {
        if (previousFont_ != nullptr) SelectObject(dc_, previousFont_);
        if (previousBrush_ != nullptr) SelectObject(dc_, previousBrush_);
        if (previousPen_ != nullptr) SelectObject(dc_, previousPen_);
        if (bitmap_ != nullptr && previous_ != nullptr) SelectObject(dc_, previous_);
    }
    if (font_ != nullptr) DeleteObject(font_);
    if (brush_ != nullptr) DeleteObject(brush_);
    if (penHandle_ != nullptr) DeleteObject(penHandle_);
    if (bitmap_ != nullptr) {
        DeleteObject(bitmap_);
        if (dc_ != nullptr) DeleteDC(dc_);
    }
}

void Drawer::Bitmap::clear(COLORREF colour) {
    setFillColor(colour);
    fillRectangle(0, 0, width_, height_);
}

void Drawer::Bitmap::setPenStyle(COLORREF colour, int style, int width) {
    if (static_cast<int>(pen_.lopnStyle) == style && pen_.lopnWidth.x == width && pen_.lopnColor == colour) return;
    HPEN old = penHandle_;
    pen_ = LOGPEN{static_cast<UINT>(style), {width, 0}, colour};
    penHandle_ = CreatePenIndirect(&pen_);
    if (dc_ != nullptr && penHandle_ != nullptr) {
        HGDIOBJ replaced = SelectObject(dc_, penHandle_);
        if (previousPen_ == nullptr) previousPen_ = replaced;
    }
    if (old != nullptr) DeleteObject(old);
}

void Drawer::Bitmap::applyCurrFillBrush() {
    if (brush_ == nullptr || brushColour_ != fillColour_) {
        HBRUSH old = brush_;
        brush_ = CreateSolidBrush(fillColour_);
        brushColour_ = fillColour_;
        if (dc_ != nullptr && brush_ != nullptr) {
            HGDIOBJ replaced = SelectObject(dc_, brush_);
            if (previousBrush_ == nullptr) previousBrush_ = replaced;
        }
        if (old != nullptr) DeleteObject(old);
    } else if (dc_ != nullptr) {
        SelectObject(dc_, brush_);
    }
}

void Drawer::Bitmap::drawPoint(int x, int y) {
    if (dc_ == nullptr) return;
    SetPixel(dc_, x, y, drawColour_);
}

void Drawer::Bitmap::strokeSolid(const POINT* points, int count) {
    setPenStyle(drawColour_, PS_SOLID, lineWidth_);
    Polyline(dc_, points, count);
}

void Drawer::Bitmap::drawPolyline(const POINT* points, int count) {
    if (dc_ == nullptr || points == nullptr || count < 2) return;
    strokeSolid(points, count);
}

void Drawer::Bitmap::drawArrowPoints(int x1, int y1, int x2, int y2, int size) {
    if (dc_ == nullptr) return;
    if (x1 == x2 && y1 == y2) {
        drawPoint(x1, y1);
        return;
    }
    setPenStyle(drawColour_, PS_SOLID, lineWidth_);
    // atan3 gives the angle whose sine runs along x and cosine along y, so barbs at 150
    // degrees either side of it fall back along the shaft.
    double a = atan3(x2 - x1, y2 - y1) * 180.0 / std::numbers::pi;
    if (a < 0) a += 360.0;
    POINT barbs[2];
    const double sides[2] = {a - 150.0, a + 150.0};
    for (int i = 0; i < 2; ++i) {
        const double b = sides[i] * std::numbers::pi / 180.0;
        barbs[i] = {x2 + static_cast<LONG>(std::trunc(size * std::sin(b))),
                    y2 + static_cast<LONG>(std::trunc(size * std::cos(b)))};
    }
    const POINT shaft[2] = {{x1, y1}, {x2, y2}};
    Polyline(dc_, shaft, 2);
    const POINT head[3] = {barbs[0], {x2, y2}, barbs[1]};
    Polyline(dc_, head, 3);
}

void Drawer::Bitmap::drawLine(int x1, int y1, int x2, int y2) {
    const POINT ends[2] = {{x1, y1}, {x2, y2}};
    drawLines(ends, 2);
}

void Drawer::Bitmap::drawLines(const POINT* points, int count) {
    if (dc_ == nullptr || points == nullptr || count < 2 || lineStyle_ == eNone) return;
    const Pattern pattern = patternOf(lineStyle_);
    if (pattern.runs == nullptr) {
        strokeSolid(points, count);
        return;
    }
    setPenStyle(drawColour_, PS_SOLID, lineWidth_);
    const double unit = std::max(1, lineWidth_);
    // Walk the polyline, carrying the position within the pattern across vertices, and
    // draw each "on" run as one solid polyline (bends included).
    int run = 0;
    double left = pattern.runs[0] * unit;  // of the current run
    std::vector<POINT> dash{points[0]};
    for (int i = 1; i < count; ++i) {
        double x = points[i - 1].x, y = points[i - 1].y;
        const double dx = points[i].x - x, dy = points[i].y - y;
        double remaining = std::hypot(dx, dy);
        const double ux = remaining > 0 ? dx / remaining : 0, uy = remaining > 0 ? dy / remaining : 0;
        while (remaining > 0) {
            const double step = std::min(left, remaining);
            x += ux * step;
            y += uy * step;
            remaining -= step;
            left -= step;
            if (run % 2 == 0) dash.push_back(rounded(x, y));
            if (left <= 0) {
                // The dash's last pixel is left out, as GDI leaves out a line's: a dash of
                // six units covers six pixels.
                if (run % 2 == 0 && dash.size() >= 2) Polyline(dc_, dash.data(), static_cast<int>(dash.size()));
                run = (run + 1) % pattern.count;
                left = pattern.runs[run] * unit;
                dash.assign(1, rounded(x, y));
            }
        }
    }
    if (run % 2 == 0 && dash.size() >= 2) Polyline(dc_, dash.data(), static_cast<int>(dash.size()));
}

void Drawer::Bitmap::drawRectangle(int left, int top, int right, int bottom) {
    if (dc_ == nullptr) return;
    setPenStyle(drawColour_, PS_SOLID, lineWidth_);
    HGDIOBJ brush = SelectObject(dc_, GetStockObject(NULL_BRUSH));
    Rectangle(dc_, left, top, right, bottom);
    SelectObject(dc_, brush);
}

void Drawer::Bitmap::fillRectangle(int left, int top, int right, int bottom) {
    if (dc_ == nullptr) return;
    applyCurrFillBrush();
    const RECT box{left, top, right, bottom};
    FillRect(dc_, &box, brush_);
}

void Drawer::Bitmap::drawEllipse(int left, int top, int right, int bottom) {
    if (dc_ == nullptr) return;
    setPenStyle(drawColour_, PS_SOLID, lineWidth_);
    HGDIOBJ brush = SelectObject(dc_, GetStockObject(NULL_BRUSH));
    Ellipse(dc_, left, top, right, bottom);
    SelectObject(dc_, brush);
}

void Drawer::Bitmap::fillEllipse(int left, int top, int right, int bottom) {
    if (dc_ == nullptr) return;
    applyCurrFillBrush();
    HGDIOBJ pen = SelectObject(dc_, GetStockObject(NULL_PEN));
    // A null pen leaves the right and bottom edge out, so the box grows by one.
    Ellipse(dc_, left, top, right + 1, bottom + 1);
    SelectObject(dc_, pen);
}

void Drawer::Bitmap::drawCircle(int cx, int cy, int radius) {
    drawEllipse(cx - radius, cy - radius, cx + radius + 1, cy + radius + 1);
}

void Drawer::Bitmap::fillCircle(int cx, int cy, int radius) {
    fillEllipse(cx - radius, cy - radius, cx + radius + 1, cy + radius + 1);
}

void Drawer::Bitmap::drawArc(double cx, double cy, double radius, double startDegrees, double sweepDegrees) {
    if (dc_ == nullptr || !(radius > 0) || !std::isfinite(radius) || !std::isfinite(sweepDegrees)) return;
    const double sweep = std::clamp(sweepDegrees, -360.0, 360.0) * std::numbers::pi / 180.0;
    const double start = startDegrees * std::numbers::pi / 180.0;
    // A chord of angle c strays r (1 - cos c/2) from the arc: at most half a pixel.
    const double chord = radius > 0.5 ? 2.0 * std::acos(1.0 - 0.5 / radius) : std::numbers::pi;
    const int chords = static_cast<int>(std::clamp(std::ceil(std::fabs(sweep) / chord), 1.0, 65536.0));
    std::vector<POINT> points;
    points.reserve(static_cast<std::size_t>(chords) + 1);
    for (int i = 0; i <= chords; ++i) {
        const double a = start + sweep * i / chords;
        points.push_back(rounded(cx + radius * std::cos(a), cy - radius * std::sin(a)));  // y grows downwards
    }
    drawLines(points.data(), static_cast<int>(points.size()));
}

void Drawer::Bitmap::fillArea(const POINT* points, int count) {
    if (dc_ == nullptr || points == nullptr || count < 3) return;
    applyCurrFillBrush();
    HGDIOBJ pen = SelectObject(dc_, GetStockObject(NULL_PEN));
    Polygon(dc_, points, count);
    SelectObject(dc_, pen);
}

bool Drawer::Bitmap::setFont(const wchar_t* face, int pixelHeight, double rotationDegrees, bool bold) {
    if (dc_ == nullptr || face == nullptr) return false;
    LOGFONTW description{};
    description.lfHeight = -std::abs(pixelHeight);  // the character height, without leading
    description.lfEscapement = static_cast<LONG>(std::lround(rotationDegrees * 10.0));
    description.lfOrientation = description.lfEscapement;
    description.lfWeight = bold ? FW_BOLD : FW_NORMAL;
    description.lfQuality = ANTIALIASED_QUALITY;
    std::wcsncpy(description.lfFaceName, face, LF_FACESIZE - 1);
    HFONT font = CreateFontIndirectW(&description);
    if (font == nullptr) return false;
    HGDIOBJ replaced = SelectObject(dc_, font);
    if (previousFont_ == nullptr) previousFont_ = replaced;
    if (font_ != nullptr) DeleteObject(font_);
    font_ = font;
    return true;
}

void Drawer::Bitmap::drawText(int x, int y, const wchar_t* text, UINT align) {
    if (dc_ == nullptr || text == nullptr) return;
    SetTextColor(dc_, textColour_);
    SetBkMode(dc_, TRANSPARENT);
    SetTextAlign(dc_, align);
    ExtTextOutW(dc_, x, y, 0, nullptr, text, static_cast<UINT>(std::wcslen(text)), nullptr);
}

SIZE Drawer::Bitmap::getTextExtent(const wchar_t* text) const {
    SIZE size{0, 0};
    if (dc_ != nullptr && text != nullptr) GetTextExtentPoint32W(dc_, text, static_cast<int>(std::wcslen(text)), &size);
    return size;
}

}  // namespace kiv_render
