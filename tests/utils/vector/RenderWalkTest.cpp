// The render walk, checked against a brute-force test of every feature of the sample
// plan; picking and highlighting of what the walk shows.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numbers>
#include <tuple>
#include <vector>

#include "utils/vector/Quadtree.h"
#include "utils/vector/SampleSitePlan.h"
#include "utils/vector/TransformBBox.h"
#include "utils/vector/VectorImageProducer.h"
#include "utils/vector/Viewport.h"

namespace {

using Key = std::tuple<long long, long long, long long, long long>;

long long grid(double v) { return std::llround(v * 1000.0); }
Key keyOf(const TCoord3d& a, const TCoord3d& b) { return {grid(a.x), grid(a.y), grid(b.x), grid(b.y)}; }

// Remembers every call, keyed by where it drew.
class RecordingRenderer : public IRenderer {
public:
    RecordingRenderer(BoundingBox viewport, const Csx::CCs& cs, double pixel = 0.1)
        : viewport_(viewport), cs_(cs), pixel_(pixel) {}
    BoundingBox getViewport() const override { return viewport_; }
    const Csx::CCs& getViewCs() const override { return cs_; }
    double getPixelSize() const override { return pixel_; }
    void drawPoint(const TCoord3d& at, const TPointStyle& style) override {
        ++drawn[keyOf(at, at)];
        pointStyles.push_back(style);
    }
    void drawPolyline(const TCoord3d* points, int count, const TLineStyle& style) override {
        ++drawn[keyOf(points[0], points[count - 1])];
        polylines.emplace_back(points, points + count);
        lineStyles.push_back(style);
    }
    void drawText(const TCoord3d& at, const CKivStringT& text, const TTextStyle& style) override {
        ++drawn[keyOf(at, at)];
        texts.push_back(text);
        textStyles.push_back(style);
    }

    std::map<Key, int> drawn;
    std::vector<std::vector<TCoord3d>> polylines;
    std::vector<TPointStyle> pointStyles;
    std::vector<TLineStyle> lineStyles;
    std::vector<CKivStringT> texts;
    std::vector<TTextStyle> textStyles;

private:
    BoundingBox viewport_;
    const Csx::CCs& cs_;
    double pixel_;
};

// Every feature of the blob, with its key and its geometry in the view, finely sampled.
struct BruteFeature {
    Key key;
    std::vector<TCoord3d> samples;
};

std::vector<BruteFeature> everyFeature(const VectorBlob& blob, const Csx::CCs& image, const Csx::CCs& view) {
    std::vector<BruteFeature> all;
    for (std::uint32_t i = 0; i < blob.getPointCount(); ++i) {
        const TCoord3d p = image.convert(blob.getPointsList()->getPosition(i), view);
        all.push_back({keyOf(p, p), {p}});
    }
    for (std::uint32_t i = 0; i < blob.getLineCount(); ++i) {
        const TCoord3d a = image.convert(blob.getLinesList()->getStart(i), view);
        const TCoord3d b = image.convert(blob.getLinesList()->getEnd(i), view);
        BruteFeature f{keyOf(a, b), {}};
        for (int s = 0; s <= 100; ++s) {
            const double t = s / 100.0;
            f.samples.push_back({a.x + t * (b.x - a.x), a.y + t * (b.y - a.y), 0.0});
        }
        all.push_back(f);
    }
    for (std::uint32_t i = 0; i < blob.getArcCount(); ++i) {
        CArc arc;
        if (!blob.getArcsList()->getArc(i, arc)) continue;
        const double z = blob.getArcsList()->getStart(i).z;
        BruteFeature f;
        for (int s = 0; s <= 360; ++s) {
            const TCoord2d p = arc.pointAt(s / 360.0);
            f.samples.push_back(image.convert(p.x, p.y, z, view));
        }
        f.key = keyOf(f.samples.front(), f.samples.back());
        all.push_back(f);
    }
    for (std::uint32_t i = 0; i < blob.getSplineCount(); ++i) {
        TSpline spline;
        if (!blob.getSpline(i, spline)) continue;
        BruteFeature f;
        for (const TCoord3d& p : spline.curve.sample(2000)) f.samples.push_back(image.convert(p, view));
        f.key = keyOf(f.samples.front(), spline.curve.closed ? f.samples.front() : f.samples.back());
        all.push_back(f);
    }
    for (std::uint32_t i = 0; i < blob.getLabelCount(); ++i) {
        TLabel label;
        if (!blob.getLabel(i, label)) continue;
        const TCoord3d p = image.convert(label.position, view);
        all.push_back({keyOf(p, p), {p}});
    }
    return all;
}

bool anyInside(const std::vector<TCoord3d>& samples, const BoundingBox& box) {
    for (const TCoord3d& p : samples) {
        if (box.contains(p.x, p.y)) return true;
    }
    return false;
}

int nodesMeeting(const QuadtreeNode& node, const BoundingBox& box) {
    if (!node.getBBox().intersects(box)) return 0;
    int count = 1;
    if (!node.isLeaf()) {
        for (int q = 0; q < 4; ++q) count += nodesMeeting(*node.getChild(q), box);
    }
    return count;
}

}  // namespace

// A view turned about the site's middle: at 30 and 45 degrees culling by two corners of
// the viewport dropped a third and more of what is shown.
class RenderWalkRotated : public testing::TestWithParam<double> {};

TEST_P(RenderWalkRotated, DrawsEveryFeatureInTheViewOnceAndNothingFarOutside) {
    auto blob = buildSampleSitePlan();
    auto tree = buildQuadtree(*blob);
    Csx::CIdentityCs image;
    const Csx::CAffineCs view(GetParam(), 1.0, 5100.0, 8070.0);
    const BoundingBox viewport(-60.0, 35.0, 60.0, -35.0);
    RecordingRenderer renderer(viewport, view);

    tree->render(1, image, view, &renderer);

    const BoundingBox inner = viewport.inflated(-0.5), outer = viewport.inflated(30.0);
    std::map<Key, int> shown, nearby;
    for (const BruteFeature& f : everyFeature(*blob, image, view)) {
        if (anyInside(f.samples, inner)) ++shown[f.key];
        if (anyInside(f.samples, outer)) ++nearby[f.key];
    }
    ASSERT_GT(shown.size(), 60u);
    for (const auto& [key, count] : shown) {
        ASSERT_TRUE(renderer.drawn.count(key)) << "a feature in the view was not drawn";
        EXPECT_EQ(renderer.drawn[key], count) << "a feature was drawn more than once";
    }
    for (const auto& [key, count] : renderer.drawn) EXPECT_TRUE(nearby.count(key)) << "drawn far outside the view";

    const TRenderStats stats = tree->getRenderStats();
    EXPECT_EQ(stats.nodesVisited, nodesMeeting(*tree->getRoot(), transformBBoxCorners(viewport, view, image)));
    long long calls = 0;
    for (const auto& entry : renderer.drawn) calls += entry.second;
    EXPECT_EQ(stats.featuresDrawn, calls);
}

INSTANTIATE_TEST_SUITE_P(Rotations, RenderWalkRotated, testing::Values(0.0, 30.0, 45.0, 90.0));

TEST(RenderWalk, PassNumberDrawsEachFeatureOncePerFrame) {
    // Lines across the whole width go whole to the quadrants on both sides of the middle.
    VectorImageProducer producer;
    const int pen = producer.addLineStyle(RGB(0, 0, 0));
    for (int i = 0; i < 200; ++i) producer.addLine({0, i * 0.5, 0}, {100, 10 + i * 0.4, 0}, pen);
    auto blob = producer.build();
    auto tree = buildQuadtree(*blob);
    ASSERT_FALSE(tree->getRoot()->isLeaf());
    Csx::CIdentityCs world;
    RecordingRenderer renderer(BoundingBox(0, 100, 100, 0), world);

    tree->render(0, world, world, &renderer);
    EXPECT_EQ(renderer.polylines.size(), 200u);
    EXPECT_GT(tree->getRenderStats().featuresVisited, 200);  // held by several buffers, drawn once
    tree->render(0, world, world, &renderer);
    EXPECT_EQ(renderer.polylines.size(), 200u);
    tree->render(1, world, world, &renderer);
    EXPECT_EQ(renderer.polylines.size(), 400u);
}

TEST(RenderWalk, ArcChordsStayWithinHalfAPixelAndLabelsTurnWithTheView) {
    VectorImageProducer producer;
    const int pen = producer.addLineStyle(RGB(0, 0, 0));
    producer.addArc({100, 0, 0}, {0, 0, 0}, {0, 100, 0}, false, pen);
    producer.addLabel({10, 10, 0}, L"North", producer.addTextStyle(RGB(0, 0, 0), 2.0, 90.0));
    auto blob = producer.build();
    auto tree = buildQuadtree(*blob);
    Csx::CIdentityCs image;
    const Csx::CAffineCs view(30.0, 0.5, 0.0, 0.0);  // one view unit is half an image unit
    const double pixel = 0.05;                        // the arc's radius is 4000 pixels
    RecordingRenderer renderer(BoundingBox(-1000, 1000, 1000, -1000), view, pixel);

    tree->render(0, image, view, &renderer);

    ASSERT_EQ(renderer.polylines.size(), 1u);
    const std::vector<TCoord3d>& chords = renderer.polylines[0];
    const TCoord3d centre = image.convert(0, 0, 0, view);
    for (std::size_t i = 0; i + 1 < chords.size(); ++i) {
        const double mx = (chords[i].x + chords[i + 1].x) / 2, my = (chords[i].y + chords[i + 1].y) / 2;
        EXPECT_LE(200.0 - std::hypot(mx - centre.x, my - centre.y), 0.5 * pixel);
    }
    ASSERT_EQ(renderer.texts.size(), 1u);
    EXPECT_EQ(renderer.texts[0], CKivStringT(L"North"));
    EXPECT_NEAR(renderer.textStyles[0].height, 4.0, 1e-4);
    EXPECT_NEAR(renderer.textStyles[0].rotation, 60.0, 1e-4);
}

TEST(RenderWalkPick, NeverNamesALineOfNoPolylineNorAMissingEntity) {
    auto blob = buildSampleSitePlan();
    // The first line now names no polyline, as a damaged or foreign file may.
    VectorFormat::writeU32(blob->getLinesList()->record(0) + VectorFormat::kLinePolyLineField, 0x7FFFFFFFu);
    ASSERT_EQ(blob->getLinePolyLineIndex(0), -1);
    auto tree = buildQuadtree(*blob);
    Csx::CIdentityCs world;
    const TCoord3d a = blob->getLinesList()->getStart(0), b = blob->getLinesList()->getEnd(0);
    const StakeableEntities both{eStakeablePoint, eStakeableLine};
    TPickResult result;

    TCoord2d onIt{(a.x + b.x) / 2, (a.y + b.y) / 2};
    EXPECT_FALSE(tree->pick(onIt, world, world, 0.01, {eStakeableLine}, result));

    for (double x = 4990; x <= 5210; x += 1.7) {
        for (double y = 7990; y <= 8150; y += 1.3) {
            TCoord2d at{x, y};
            if (!tree->pick(at, world, world, 3.0, both, result)) continue;
            ASSERT_GE(result.index, 0);
            const std::uint32_t count =
                result.kind == TPickResult::ePoint ? blob->getPointCount() : blob->getPolyLineCount();
            ASSERT_LT(static_cast<std::uint32_t>(result.index), count);
        }
    }
}

TEST(Viewport, BoxHoldsEveryCornerOfATurnedViewAndHighlightDrawsOnlyWhatExists) {
    auto blob = buildSampleSitePlan();
    std::shared_ptr<IRenderTree> tree = buildQuadtree(*blob);
    Csx::CIdentityCs image;
    const Csx::CAffineCs view(45.0, 1.0, 5100.0, 8070.0);
    RecordingRenderer renderer(BoundingBox(-10, 10, 10, -10), view);

    const BoundingBox box = getViewportBBox(&renderer, image);
    const double half = 10.0 * std::numbers::sqrt2;
    EXPECT_NEAR(box.left, 5100.0 - half, 1e-9);
    EXPECT_NEAR(box.right, 5100.0 + half, 1e-9);
    EXPECT_NEAR(box.bottom, 8070.0 - half, 1e-9);
    EXPECT_NEAR(box.top, 8070.0 + half, 1e-9);
    EXPECT_FALSE(getViewportBBox(nullptr, image).isValid());

    RecordingRenderer wide(BoundingBox(-200, 200, 200, -200), view);
    TPickResult boundary{TPickResult::eLine, 0, 0.0, {}};  // the site boundary, four lines
    ASSERT_TRUE(highlightStakeableEntity(&wide, image, tree, boundary));
    ASSERT_EQ(wide.lineStyles.size(), 4u);
    for (const TLineStyle& style : wide.lineStyles) {
        EXPECT_EQ(style.colour, kHighlightColour);
        EXPECT_EQ(style.penStyle, 0);
        EXPECT_EQ(style.width, 2 + 3);
    }
    TPickResult point{TPickResult::ePoint, 3, 0.0, {}};
    ASSERT_TRUE(highlightStakeableEntity(&wide, image, tree, point));
    ASSERT_EQ(wide.pointStyles.size(), 1u);
    EXPECT_EQ(wide.pointStyles[0].colour, kHighlightColour);
    EXPECT_GE(wide.pointStyles[0].size, 8u);

    TPickResult missing{TPickResult::ePoint, static_cast<int>(blob->getPointCount()), 0.0, {}};
    EXPECT_FALSE(highlightStakeableEntity(&wide, image, tree, missing));
    missing = {TPickResult::eLine, static_cast<int>(blob->getPolyLineCount()), 0.0, {}};
    EXPECT_FALSE(highlightStakeableEntity(&wide, image, tree, missing));
    EXPECT_FALSE(highlightStakeableEntity(&wide, image, nullptr, point));
    EXPECT_EQ(wide.drawn.size(), 5u);
}
