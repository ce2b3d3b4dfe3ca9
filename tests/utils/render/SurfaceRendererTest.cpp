// The surface renderer: the view mapped to pixels with y down, and every kind of
// feature drawn as its style says.
#include "utils/render/SurfaceRenderer.h"

#include <gtest/gtest.h>

#include <cmath>

#include "utils/vector/Quadtree.h"
#include "utils/vector/VectorImageProducer.h"

using kiv_render::Drawer;
using kiv_render::SurfaceRenderer;

namespace {

constexpr COLORREF kWhite = 0xFFFFFF;

COLORREF at(Drawer::Bitmap& s, int x, int y) { return GetPixel(s.getDC(), x, y); }

int countOf(Drawer::Bitmap& s, COLORREF colour) {
    int n = 0;
    for (int y = 0; y < s.getHeight(); ++y) {
        for (int x = 0; x < s.getWidth(); ++x) n += at(s, x, y) == colour;
    }
    return n;
}

}  // namespace

TEST(SurfaceRenderer, MapsTheViewToPixelsWithYDownAndKeepsTheScaleUniform) {
    auto surface = Drawer::Bitmap::create(100, 50, 32);
    surface->clear(kWhite);
    Csx::CIdentityCs world;
    // Asked for 100 x 100 units on a 100 x 50 surface: two units a pixel, widened in x.
    SurfaceRenderer renderer(*surface, world, BoundingBox(1000, 2100, 1100, 2000));
    EXPECT_EQ(renderer.getPixelSize(), 2.0);
    EXPECT_EQ(renderer.getViewport().left, 950.0);
    EXPECT_EQ(renderer.getViewport().right, 1150.0);
    EXPECT_EQ(renderer.toPixelY(2100.0), 0.0);  // the top of the view is row 0

    renderer.drawPoint({960.0, 2096.0, 0.0}, TPointStyle{0x0000FF, VectorFormat::eSymbolDot, 1});
    EXPECT_EQ(at(*surface, 5, 2), 0x0000FFu);
    const TCoord3d north[2] = {{1000, 2090, 0}, {1000, 2010, 0}};
    renderer.drawPolyline(north, 2, TLineStyle{0x00FF00, 0, 1});
    EXPECT_EQ(at(*surface, 25, 5), 0x00FF00u);   // the northern end near the top
    EXPECT_EQ(at(*surface, 25, 44), 0x00FF00u);
    EXPECT_EQ(at(*surface, 25, 46), kWhite);      // its last pixel is left out
}

TEST(SurfaceRenderer, LinesFollowTheirStyleAndSymbolsTheirKind) {
    auto surface = Drawer::Bitmap::create(60, 60, 32);
    Csx::CIdentityCs world;
    SurfaceRenderer renderer(*surface, world, BoundingBox(0, 60, 60, 0));
    const TCoord3d across[2] = {{0, 50, 0}, {60, 50, 0}};

    surface->clear(kWhite);
    renderer.drawPolyline(across, 2, TLineStyle{0x000000, 0, 3});
    EXPECT_EQ(at(*surface, 30, 9), 0u);
    EXPECT_EQ(at(*surface, 30, 10), 0u);
    EXPECT_EQ(at(*surface, 30, 11), 0u);
    EXPECT_EQ(at(*surface, 30, 13), kWhite);

    surface->clear(kWhite);
    renderer.drawPolyline(across, 2, TLineStyle{0x000000, 5, 1});  // pen style none
    EXPECT_EQ(countOf(*surface, 0), 0);
    renderer.drawPolyline(across, 2, TLineStyle{0x000000, 1, 1});  // dashed
    const int dashed = countOf(*surface, 0);
    EXPECT_GT(dashed, 30);
    EXPECT_LT(dashed, 50);

    // A line from far outside the surface still lands where it should.
    surface->clear(kWhite);
    const TCoord3d distant[2] = {{-1e12, 30, 0}, {1e12, 30, 0}};
    renderer.drawPolyline(distant, 2, TLineStyle{0x0000FF, 0, 1});
    for (int x = 0; x < 60; ++x) ASSERT_EQ(at(*surface, x, 30), 0x0000FFu) << x;

    surface->clear(kWhite);
    renderer.drawPoint({30, 30, 0}, TPointStyle{0xFF0000, VectorFormat::eSymbolCross, 9});
    EXPECT_EQ(at(*surface, 26, 30), 0xFF0000u);
    EXPECT_EQ(at(*surface, 30, 34), 0xFF0000u);
    EXPECT_EQ(at(*surface, 28, 28), kWhite);
    surface->clear(kWhite);
    renderer.drawPoint({30, 30, 0}, TPointStyle{0xFF0000, VectorFormat::eSymbolSquare, 9});
    EXPECT_EQ(at(*surface, 26, 26), 0xFF0000u);
    EXPECT_EQ(at(*surface, 30, 30), kWhite);
    surface->clear(kWhite);
    renderer.drawPoint({30, 30, 0}, TPointStyle{0xFF0000, VectorFormat::eSymbolDot, 9});
    EXPECT_EQ(at(*surface, 30, 30), 0xFF0000u);
    EXPECT_EQ(at(*surface, 32, 32), 0xFF0000u);
}

TEST(SurfaceRenderer, ArcsThroughTheWalkStayOnTheirCircle) {
    VectorImageProducer producer;
    const int pen = producer.addLineStyle(RGB(0, 0, 255));
    producer.addArc({40, 0, 0}, {0, 0, 0}, {0, 40, 0}, false, pen);  // a quarter, counter-clockwise
    auto blob = producer.build();
    auto tree = buildQuadtree(*blob);
    auto surface = Drawer::Bitmap::create(100, 100, 32);
    surface->clear(kWhite);
    Csx::CIdentityCs world;
    SurfaceRenderer renderer(*surface, world, BoundingBox(-5, 45, 45, -5));  // half a unit a pixel
    tree->render(0, world, world, &renderer);

    // How far an inked pixel may lie from the circle: the chords sag at most half a pixel,
    // their ends are rounded to pixels (at most half a diagonal), and GDI lights the pixel
    // nearest each chord, a tie going to the smaller coordinate (half a pixel).
    const double slack = 0.5 + std::sqrt(0.5) + 0.5;
    const double cx = renderer.toPixelX(0), cy = renderer.toPixelY(0);
    int inked = 0;
    double distances = 0;
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 100; ++x) {
            if (at(*surface, x, y) != 0xFF0000u) continue;
            ++inked;
            distances += std::hypot(x - cx, y - cy);
            EXPECT_NEAR(std::hypot(x - cx, y - cy), 80.0, slack) << x << "," << y;
            // Counter-clockwise from east to north: the upper right quarter, y down.
            EXPECT_TRUE(x >= cx - 1 && y <= cy + 1) << x << "," << y;
        }
    }
    EXPECT_GT(inked, 100);  // a quarter of a circle of 80 pixels is some 126 long
    // The roundings go either way, so on average the pixels keep the radius closely: a
    // radius a pixel out would not.
    EXPECT_NEAR(distances / inked, 80.0, 0.25);
}

TEST(SurfaceRenderer, LabelsStartAtTheirAnchorAndTurnWithTheirStyle) {
    auto surface = Drawer::Bitmap::create(200, 200, 32);
    Csx::CIdentityCs world;
    SurfaceRenderer renderer(*surface, world, BoundingBox(0, 200, 200, 0));  // one unit a pixel
    const auto inkBox = [&] {
        BoundingBox box;
        for (int y = 0; y < 200; ++y) {
            for (int x = 0; x < 200; ++x) {
                if (at(*surface, x, y) != kWhite) box.widen(x, y);
            }
        }
        return box;
    };

    surface->clear(kWhite);
    renderer.drawText({20, 100, 0}, CKivStringT(L"HEH"), TTextStyle{0xFF0000, 12.0f, 0.0f});
    BoundingBox ink = inkBox();
    ASSERT_TRUE(ink.isValid());
    EXPECT_NEAR(ink.left, 20, 2);                  // starts at the anchor
    EXPECT_NEAR(ink.bottom, 200 - 100 - 12, 1.5);  // capitals 12 pixels high above the baseline
    EXPECT_NEAR(ink.top, 200 - 100 - 1, 1.5);
    EXPECT_GT(ink.getWidth(), 20);

    surface->clear(kWhite);
    renderer.drawText({100, 20, 0}, CKivStringT(L"HEH"), TTextStyle{0xFF0000, 12.0f, 90.0f});  // reads upwards
    ink = inkBox();
    ASSERT_TRUE(ink.isValid());
    EXPECT_GT(ink.getHeight(), 20);
    EXPECT_LT(ink.getWidth(), 15);
    EXPECT_NEAR(ink.top, 200 - 20, 2);  // the anchor is at the bottom now
    EXPECT_LE(ink.right, 101);          // and the letters stand to its left

    surface->clear(kWhite);
    renderer.drawText({20, 100, 0}, CKivStringT(L"tiny"), TTextStyle{0xFF0000, 2.0f, 0.0f});
    EXPECT_FALSE(inkBox().isValid());  // too small to read: left out
}
