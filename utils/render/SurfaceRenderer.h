// SurfaceRenderer: the IRenderer of a map view over a Drawer::Bitmap. The view's system
// maps to pixels at one uniform scale with y pointing down; a requested viewport is
// widened on one side so that it fills the surface without distortion.
#pragma once

#include <vector>

#include "platform/kivutils/Heap.h"
#include "utils/render/Drawer.h"
#include "utils/vector/IRenderer.h"

namespace kiv_render {

class SurfaceRenderer : public IRenderer, public SharedHeapObject {
public:
    // Shows `viewport` (in the view system `viewCs`) on the whole of `surface`, centred.
    SurfaceRenderer(Drawer::Bitmap& surface, const Csx::CCs& viewCs, const BoundingBox& viewport);

    BoundingBox getViewport() const override { return viewport_; }
    const Csx::CCs& getViewCs() const override { return viewCs_; }
    double getPixelSize() const override { return pixel_; }

    // Points: a dot is a filled disc of the style's size, a cross two strokes, a circle
    // and a square outlines; sizes are pixels (a size of 0 or 1 is one pixel).
    void drawPoint(const TCoord3d& at, const TPointStyle& style) override;
    // Lines in the style's colour, width and pen style (0 solid, 1 dash, 2 dot, 3
    // dash-dot, 4 dash-dot-dot, 5 none; others solid), the dash pattern running on
    // across vertices. Parts far outside the surface are cut off before they reach
    // pixels, so no coordinate overflows.
    void drawPolyline(const TCoord3d* points, int count, const TLineStyle& style) override;
    // Labels in DejaVu Sans, the style's height taken as the height of a capital; text
    // under 3 pixels is not drawn, since nobody could read it.
    void drawText(const TCoord3d& at, const CKivStringT& text, const TTextStyle& style) override;

    // Pixel position of a point of the view system.
    double toPixelX(double x) const { return (x - viewport_.left) / pixel_; }
    double toPixelY(double y) const { return (viewport_.top - y) / pixel_; }

private:
    Drawer::Bitmap& surface_;
    const Csx::CCs& viewCs_;
    BoundingBox viewport_;
    double pixel_ = 1.0;
    std::vector<POINT> run_;  // kept between calls, so that a line costs no allocation
};

}  // namespace kiv_render
