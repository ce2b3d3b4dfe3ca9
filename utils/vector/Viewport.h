// The map view's side of the image library: where the view lies in an image, and
// how a picked entity is shown picked.
#pragma once

#include <memory>

#include "utils/vector/BoundingBox.h"
#include "utils/vector/Csx.h"
#include "utils/vector/IRenderer.h"
#include "utils/vector/Quadtree.h"

// The renderer's viewport as a box in the image's system `image`: the smallest box that
// holds all four corners of the viewport carried from the renderer's own system
// (`IRenderer::getViewCs`). Under a rotated view it is larger than the view, never
// smaller. An invalid (empty) box when there is no renderer.
BoundingBox getViewportBBox(IRenderer* renderer, const Csx::CCs& image);

// Draws a picked entity again on top of the map so that it stands out: in the highlight
// colour (magenta, 0xFF00FF), a line or arc of a polyline (every element of it) three
// pixels wider than its own style and solid, a point as a circle twice its symbol's
// size and at least 8 pixels. Nothing else changes. False, drawing nothing, when any
// of the three is missing or the entity names no point or polyline of the image.
bool highlightStakeableEntity(IRenderer* renderer, const Csx::CCs& image, std::shared_ptr<IRenderTree> tree,
                              const TPickResult& entity);

// The colour a highlighted entity is drawn in.
constexpr COLORREF kHighlightColour = 0xFF00FF;
