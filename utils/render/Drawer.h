// kiv_render::Drawer: the map view's off-screen drawing stage. The scene is drawn into a
// 32-bit map surface the size of the plot rectangle and copied to the window in one
// block transfer when a pass ends; a heads-up pass draws straight onto the target. The
// surfaces (Drawer::Bitmap) carry the drawing state and primitives the map is drawn with.
#pragma once

#include <memory>

#include "platform/kivutils/Heap.h"
#include "platform/mfc/Dc.h"
#include "platform/win32/Win32.h"

namespace kiv_render {

class Drawer : public SharedHeapObject {
public:
    // The dash patterns of drawLine, numbered as the pen styles of vector images.
    enum LineStyle : int { eSolid = 0, eDash = 1, eDot = 2, eDashDot = 3, eDashDotDot = 4, eNone = 5 };

    class Bitmap : public SharedHeapObject {
    public:
        // A memory device context with a bottom-up DIB section of the given size and bit
        // count selected into it; null when either cannot be made.
        static std::shared_ptr<Bitmap> create(int width, int height, int bitsPerPixel);
        // A surface that draws onto `hdc` and owns neither it nor a bitmap.
        static std::shared_ptr<Bitmap> bindToHdc(HDC hdc, int width, int height);
        virtual ~Bitmap();
        Bitmap(const Bitmap&) = delete;
        Bitmap& operator=(const Bitmap&) = delete;

        bool isHdcOnly() const { return dc_ != nullptr && bitmap_ == nullptr; }
        // The pixels: rows bottom-up, each padded to a multiple of 4 bytes. Null for a
        // surface bound to a device context.
        unsigned char* lock() { return bits_; }
        void unlock() {}
        // Sets the fill colour and fills the whole surface with it.
        void clear(COLORREF colour);
        int getWidth() const { return width_; }
        int getHeight() const { return height_; }
        HDC getDC() const { return dc_; }
        HBITMAP getBitmap() const { return bitmap_; }

        void setDrawColor(COLORREF colour) { drawColour_ = colour; }
        COLORREF getDrawColor() const { return drawColour_; }
        void setFillColor(COLORREF colour) { fillColour_ = colour; }
        COLORREF getFillColor() const { return fillColour_; }
        void setTextColor(COLORREF colour) { textColour_ = colour; }
        COLORREF getTextColor() const { return textColour_; }
        // Only stored and returned; drawLine and the outlines use them.
        void setLineStyle(LineStyle style, int width) {
            lineStyle_ = style;
            lineWidth_ = width;
        }
        void getLineStyle(LineStyle& style, int& width) const {
            style = lineStyle_;
            width = lineWidth_;
        }
        // Makes and selects a pen of these three only when one of them differs from the
        // current pen's, so that a scene of one colour makes one pen.
        void setPenStyle(COLORREF colour, int style, int width);
        const LOGPEN& getPen() const { return pen_; }
        HPEN getPenHandle() const { return penHandle_; }

        // The primitives; each does nothing on a surface without a device context.
        void drawPoint(int x, int y);
        // One solid polyline in the draw colour, the line style's width.
        void drawPolyline(const POINT* points, int count);
        // A shaft from (x1, y1) to (x2, y2) with a head of two barbs `size` long at the tip.
        void drawArrowPoints(int x1, int y1, int x2, int y2, int size);
        // A line, or a polyline whose pattern runs on across its vertices, in the draw
        // colour and the line style (pattern and width). The none style draws nothing.
        void drawLine(int x1, int y1, int x2, int y2);
        void drawLines(const POINT* points, int count);
        // Outlines in the draw colour and line style's width, and fills in the fill colour.
        // Rectangles and ellipses take their box as GDI does: right and bottom outside.
        void drawRectangle(int left, int top, int right, int bottom);
        void fillRectangle(int left, int top, int right, int bottom);
        void drawEllipse(int left, int top, int right, int bottom);
        void fillEllipse(int left, int top, int right, int bottom);
        void drawCircle(int cx, int cy, int radius);
        void fillCircle(int cx, int cy, int radius);
        // An arc of a circle, `startDegrees` counter-clockwise from +x as seen on screen,
        // `sweepDegrees` positive counter-clockwise, as chords none of which strays more
        // than half a pixel from it, in the line style.
        void drawArc(double cx, double cy, double radius, double startDegrees, double sweepDegrees);
        // A filled polygon in the fill colour, without outline.
        void fillArea(const POINT* points, int count);
        // The font text is drawn in: a face name, its character height in pixels, a
        // rotation in degrees counter-clockwise. False when it cannot be made.
        bool setFont(const wchar_t* face, int pixelHeight, double rotationDegrees = 0.0, bool bold = false);
        // Text in the text colour on a transparent background, placed by `align`
        // (TA_LEFT, TA_CENTER, TA_RIGHT with TA_TOP, TA_BASELINE, TA_BOTTOM).
        void drawText(int x, int y, const wchar_t* text, UINT align = TA_LEFT | TA_BASELINE);
        SIZE getTextExtent(const wchar_t* text) const;

    private:
        Bitmap() = default;
        // Selects a brush of the fill colour, made only when that colour changed.
        void applyCurrFillBrush();
        void strokeSolid(const POINT* points, int count);

        HBITMAP bitmap_ = nullptr;
        HGDIOBJ previous_ = nullptr;  // what the device context held before the bitmap
        HDC dc_ = nullptr;
        unsigned char* bits_ = nullptr;
        int width_ = 0;
        int height_ = 0;

        LOGPEN pen_{PS_SOLID, {0, 0}, 0};
        HPEN penHandle_ = nullptr;
        HGDIOBJ previousPen_ = nullptr;
        COLORREF drawColour_ = 0;
        COLORREF fillColour_ = 0xFFFFFF;
        COLORREF textColour_ = 0;
        LineStyle lineStyle_ = eSolid;
        int lineWidth_ = 1;
        HBRUSH brush_ = nullptr;
        COLORREF brushColour_ = 0;
        HGDIOBJ previousBrush_ = nullptr;
        HFONT font_ = nullptr;
        HGDIOBJ previousFont_ = nullptr;
    };

    Drawer() = default;
    ~Drawer();
    Drawer(const Drawer&) = delete;
    Drawer& operator=(const Drawer&) = delete;

    bool Create(HWND window, const RECT* plot);
    bool ChangePlotRect(const RECT* plot);
    bool StartRendering(HDC hdc);
    bool EndRendering();
    bool StartHudRendering(HDC hdc);
    bool EndHudRendering();
    bool IsRenderLocked() const { return renderLock_; }
    void ScrollScene(long dx, long dy);
    HDC GetDC() const { return dc_.GetSafeHdc(); }
    Bitmap* getMapSurface() const { return mapSurface_.get(); }
    Bitmap* getHudSurface() const { return hudSurface_.get(); }
    std::shared_ptr<Bitmap> makeMapSurface(RECT& rect);
    std::shared_ptr<Bitmap> setMapSurface(std::shared_ptr<Bitmap> surface);
    std::shared_ptr<Bitmap> getMapSurfaceDump();

private:
    // Releases the surfaces and the memory device context, and lets go of an attached
    // device context.
    void cleanup();

    HDC memoryDc_ = nullptr;
    CDC dc_;
    RECT plot_{0, 0, 0, 0};
    std::shared_ptr<Bitmap> mapSurface_;
    std::shared_ptr<Bitmap> hudSurface_;
    bool renderLock_ = false;
};

}  // namespace kiv_render
