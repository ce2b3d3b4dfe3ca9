// IRenderer: what the quadtree's render walk draws on. A map view implements it over
// its drawing surface; coordinates arrive in the view's own system.
#pragma once

#include "platform/kivmath/Coord.h"
#include "platform/kivutils/KivString.h"
#include "utils/vector/BoundingBox.h"
#include "utils/vector/Csx.h"
#include "utils/vector/VectorBlob.h"

class IRenderer {
public:
    virtual ~IRenderer() = default;
    // The area the renderer shows, in its own system; features outside it are skipped.
    virtual BoundingBox getViewport() const = 0;
    // The view's own system, for callers that carry the viewport into an image's system
    // (getViewportBBox, highlightStakeableEntity). A renderer that does not say shows
    // the world system.
    virtual const Csx::CCs& getViewCs() const {
        static const Csx::CIdentityCs world;
        return world;
    }
    // The length of one pixel in the view's system. Arcs are cut into chords that stray
    // at most half of it from the true arc.
    virtual double getPixelSize() const { return 1.0; }

    virtual void drawPoint(const TCoord3d& at, const TPointStyle& style) = 0;
    // An open polyline through `count` points (a line is two, an arc its chords).
    virtual void drawPolyline(const TCoord3d* points, int count, const TLineStyle& style) = 0;
    // A label: `at` is the left end of the text's baseline; the style's height (of a
    // capital) and rotation (degrees counter-clockwise from +x) are already carried into
    // the view's system.
    virtual void drawText(const TCoord3d& at, const CKivStringT& text, const TTextStyle& style) = 0;
};
