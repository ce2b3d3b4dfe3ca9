// getViewportBBox and highlightStakeableEntity: a renderer wrapped so that whatever the
// tree draws for one entity comes out emphasised.
#include "utils/vector/Viewport.h"

#include <algorithm>

#include "utils/vector/TransformBBox.h"

namespace {

class HighlightRenderer : public IRenderer {
public:
    explicit HighlightRenderer(IRenderer& target) : target_(target) {}

    BoundingBox getViewport() const override { return target_.getViewport(); }
    const Csx::CCs& getViewCs() const override { return target_.getViewCs(); }
    double getPixelSize() const override { return target_.getPixelSize(); }

    void drawPoint(const TCoord3d& at, const TPointStyle& style) override {
        TPointStyle emphasised = style;
        emphasised.colour = kHighlightColour;
        emphasised.symbol = VectorFormat::eSymbolCircle;
        emphasised.size = std::max<std::uint32_t>(8, std::min<std::uint32_t>(style.size, 1024) * 2);
        target_.drawPoint(at, emphasised);
    }
    void drawPolyline(const TCoord3d* points, int count, const TLineStyle& style) override {
        TLineStyle emphasised = style;
        emphasised.colour = kHighlightColour;
        emphasised.penStyle = 0;
        emphasised.width = std::clamp(style.width, 1, 64) + 3;
        target_.drawPolyline(points, count, emphasised);
    }
    void drawText(const TCoord3d& at, const CKivStringT& text, const TTextStyle& style) override {
        target_.drawText(at, text, style);
    }

private:
    IRenderer& target_;
};

}  // namespace

BoundingBox getViewportBBox(IRenderer* renderer, const Csx::CCs& image) {
    if (renderer == nullptr) return BoundingBox();
    return transformBBoxCorners(renderer->getViewport(), renderer->getViewCs(), image);
}

bool highlightStakeableEntity(IRenderer* renderer, const Csx::CCs& image, std::shared_ptr<IRenderTree> tree,
                              const TPickResult& entity) {
    if (renderer == nullptr || tree == nullptr || entity.index < 0) return false;
    const VectorBlob* blob = tree->getBlob();
    if (blob == nullptr) return false;
    const auto index = static_cast<std::uint32_t>(entity.index);
    if (entity.kind == TPickResult::ePoint ? index >= blob->getPointCount()
                                           : entity.kind != TPickResult::eLine || index >= blob->getPolyLineCount()) {
        return false;
    }
    HighlightRenderer highlight(*renderer);
    tree->renderEntity(entity, image, renderer->getViewCs(), &highlight);
    return true;
}
