// The render walk: a full render of a 1,000,000-line image at a viewport showing a tenth
// of it, through the index and the surface renderer, against drawing only the segments
// that are visible straight onto the same surface (found beforehand, not timed).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "utils/render/Drawer.h"
#include "utils/render/SurfaceRenderer.h"
#include "utils/vector/Quadtree.h"
#include "utils/vector/VectorImageProducer.h"

namespace {

using kiv_render::Drawer;

constexpr double kSide = 10000.0;
constexpr int kWidth = 1920, kHeight = 1080;

// 10,000 random walks of 100 segments each, 5 to 25 units long, over a square site.
struct Scene {
    std::shared_ptr<VectorBlob> blob;
    std::shared_ptr<IRenderTree> tree;
    std::shared_ptr<Drawer::Bitmap> surface;
    Csx::CIdentityCs world;
    BoundingBox viewport;  // a tenth of the site's area, shaped as the surface
    std::vector<POINT> visible;  // pairs of pixel ends of the segments that meet the view

    POINT toPixel(double x, double y, double pixel) const {
        return {static_cast<LONG>(std::lround((x - viewport.left) / pixel)),
                static_cast<LONG>(std::lround((viewport.top - y) / pixel))};
    }

    Scene() {
        VectorImageProducer producer;
        const int pen = producer.addLineStyle(RGB(0, 0, 0));
        std::uint64_t state = 99;
        auto uniform = [&state] {
            state = state * 6364136223846793005ull + 1442695040888963407ull;
            return static_cast<double>(state >> 11) / static_cast<double>(1ull << 53);
        };
        for (int walk = 0; walk < 10000; ++walk) {
            std::vector<TCoord3d> vertices{{uniform() * kSide, uniform() * kSide, 0.0}};
            for (int i = 0; i < 100; ++i) {
                const double a = uniform() * 2 * 3.141592653589793, r = 5 + 20 * uniform();
                const TCoord3d& p = vertices.back();
                vertices.push_back({std::clamp(p.x + r * std::cos(a), 0.0, kSide),
                                    std::clamp(p.y + r * std::sin(a), 0.0, kSide), 0.0});
            }
            producer.addPolyline(vertices, pen);
        }
        blob = producer.build();
        tree = buildQuadtree(*blob);
        surface = Drawer::Bitmap::create(kWidth, kHeight, 32);
        const double area = kSide * kSide / 10;
        const double h = std::sqrt(area * kHeight / kWidth), w = area / h;
        viewport = {kSide / 2 - w / 2, kSide / 2 + h / 2, kSide / 2 + w / 2, kSide / 2 - h / 2};
        const double pixel = w / kWidth;
        const VectorFormat::LinesList* lines = blob->getLinesList();
        for (std::uint32_t i = 0; i < lines->getCount(); ++i) {
            const TCoord3d a = lines->getStart(i), b = lines->getEnd(i);
            const BoundingBox box(std::min(a.x, b.x), std::max(a.y, b.y), std::max(a.x, b.x), std::min(a.y, b.y));
            if (!box.intersects(viewport)) continue;
            visible.push_back(toPixel(a.x, a.y, pixel));
            visible.push_back(toPixel(b.x, b.y, pixel));
        }
    }
};

Scene& scene() {
    static Scene s;
    return s;
}

void BM_RenderWalk(benchmark::State& state) {
    Scene& s = scene();
    kiv_render::SurfaceRenderer renderer(*s.surface, s.world, s.viewport);
    int pass = 0;
    for (auto _ : state) {
        s.surface->clear(0xFFFFFF);
        s.tree->render(pass++, s.world, s.world, &renderer);
    }
    const TRenderStats stats = s.tree->getRenderStats();
    state.counters["lines"] = static_cast<double>(s.blob->getLineCount());
    state.counters["visited"] = static_cast<double>(stats.featuresVisited);
    state.counters["visited_share"] = static_cast<double>(stats.featuresVisited) / s.blob->getLineCount();
    state.counters["drawn"] = static_cast<double>(stats.featuresDrawn);
    state.counters["nodes"] = stats.nodesVisited;
}
BENCHMARK(BM_RenderWalk)->Unit(benchmark::kMillisecond);

// Baseline: the visible segments alone, already in pixels, drawn one by one.
void BM_DrawVisibleSegmentsDirectly(benchmark::State& state) {
    Scene& s = scene();
    for (auto _ : state) {
        s.surface->clear(0xFFFFFF);
        s.surface->setDrawColor(RGB(0, 0, 0));
        s.surface->setLineStyle(Drawer::eSolid, 1);
        for (std::size_t i = 0; i < s.visible.size(); i += 2) s.surface->drawPolyline(&s.visible[i], 2);
    }
    state.counters["drawn"] = static_cast<double>(s.visible.size() / 2);
}
BENCHMARK(BM_DrawVisibleSegmentsDirectly)->Unit(benchmark::kMillisecond);

}  // namespace
