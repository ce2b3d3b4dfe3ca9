// IRenderer: what the quadtree's render walk draws on. A map view implements it over
// its drawing surface; coordinates arrive in the view's own system.
#pragma once

#include "platform/kivmath/Coord.h"
#include "utils/vector/BoundingBox.h"
#include "utils/vector/VectorBlob.h"

class IRenderer {
public:
    virtual ~IRenderer() = default;
    // The area the renderer shows, in its own system; features outside it are skipped.
    virtual BoundingBox getViewport() const = 0;
    virtual void drawPoint(const TCoord3d& at, const TPointStyle& style) = 0;
    // An open polyline through `count` points (a line is two, an arc is sampled).
    virtual void drawPolyline(const TCoord3d* points, int count, const TLineStyle& style) = 0;
};
