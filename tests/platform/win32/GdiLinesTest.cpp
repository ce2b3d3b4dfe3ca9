// Lines, pens and shapes, pixel by pixel: the last pixel of a segment, exact clipping,
// dash patterns, wide pens, and the edges of filled shapes.
#include <gtest/gtest.h>

#include <random>

#include "platform/win32/Win32.h"
#include "tests/platform/win32/GdiCanvas.h"

using kiv_test::Canvas;

namespace {

const COLORREF kWhite = RGB(255, 255, 255);
const COLORREF kBlack = RGB(0, 0, 0);
const COLORREF kRed = RGB(255, 0, 0);

class Pen {
public:
    Pen(HDC dc, int style, int width, COLORREF colour) : dc_(dc), pen_(CreatePen(style, width, colour)) {
        old_ = SelectObject(dc_, pen_);
    }
    ~Pen() {
        SelectObject(dc_, old_);
        DeleteObject(pen_);
    }

private:
    HDC dc_;
    HPEN pen_;
    HGDIOBJ old_;
};

TEST(GdiLines, APolylineLeavesOutItsLastPixelOnly) {
    Canvas c(12, 8);
    c.Clear(kWhite);
    const POINT path[] = {{1, 1}, {6, 1}, {6, 5}, {2, 5}};
    ASSERT_TRUE(Polyline(c.dc, path, 4));
    std::vector<POINT> expected;
    for (int y = 1; y <= 5; ++y)
        for (int x = 1; x <= 6; ++x)
            if ((y == 1 && x <= 6) || (x == 6 && y <= 5) || (y == 5 && x >= 3)) expected.push_back({x, y});
    EXPECT_EQ(c.Find(kBlack), expected) << "(2,5), the end, is not drawn; each corner once";

    // LineTo goes from the current position, which it moves to its end.
    c.Clear(kWhite);
    POINT previous{};
    MoveToEx(c.dc, 0, 0, &previous);
    LineTo(c.dc, 3, 0);
    LineTo(c.dc, 3, 0);  // a zero-length segment draws nothing
    POINT now{};
    GetCurrentPositionEx(c.dc, &now);
    EXPECT_EQ(now, (POINT{3, 0}));
    EXPECT_EQ(c.Find(kBlack), (std::vector<POINT>{{0, 0}, {1, 0}, {2, 0}}));
}

TEST(GdiLines, SlopedLinesTakeTheNearestPixelOfEachColumnOrRow) {
    Canvas c(10, 10);
    c.Clear(kWhite);
    MoveToEx(c.dc, 0, 0, nullptr);
    LineTo(c.dc, 8, 2);  // y = x / 4: ties at x = 2 and 6 go to the smaller y
    EXPECT_EQ(c.Find(kBlack), (std::vector<POINT>{{0, 0}, {1, 0}, {2, 0}, {3, 1}, {4, 1}, {5, 1}, {6, 1}, {7, 2}}));

    c.Clear(kWhite);
    MoveToEx(c.dc, 0, 0, nullptr);
    LineTo(c.dc, 2, 8);  // x = y / 4: ties at y = 2 and 6 go to the smaller x too
    EXPECT_EQ(c.Find(kBlack), (std::vector<POINT>{{0, 0}, {0, 1}, {0, 2}, {1, 3}, {1, 4}, {1, 5}, {1, 6}, {2, 7}}));
    c.Clear(kWhite);
    MoveToEx(c.dc, 2, 8, nullptr);
    LineTo(c.dc, 0, 0);  // the same line drawn back lights the same pixels but its first
    EXPECT_EQ(c.Find(kBlack), (std::vector<POINT>{{0, 1}, {0, 2}, {1, 3}, {1, 4}, {1, 5}, {1, 6}, {2, 7}, {2, 8}}));

    c.Clear(kWhite);
    MoveToEx(c.dc, 7, 7, nullptr);
    LineTo(c.dc, 2, 2);
    EXPECT_EQ(c.Find(kBlack), (std::vector<POINT>{{3, 3}, {4, 4}, {5, 5}, {6, 6}, {7, 7}}));
}

// Draws the same line on a small surface and, shifted, in the middle of a large one:
// the small surface must show exactly the large one's pixels over the same area.
TEST(GdiLines, ClippingAtEveryEdgeLightsExactlyTheVisiblePixels) {
    std::mt19937 random(18);
    std::uniform_int_distribution<int> coordinate(-40, 60);
    const int kShift = 100;
    for (int bitCount : {32, 8}) {
        std::vector<RGBQUAD> palette{{255, 255, 255, 0}, {0, 0, 0, 0}};
        Canvas small(20, 15, bitCount, bitCount == 8, palette);
        Canvas large(220, 215, bitCount, true, palette);
        for (int width : {1, 3}) {
            Pen a(small.dc, PS_SOLID, width, kBlack), b(large.dc, PS_SOLID, width, kBlack);
            for (int trial = 0; trial < 300; ++trial) {
                small.Clear(kWhite);
                large.Clear(kWhite);
                const POINT p0{coordinate(random), coordinate(random)}, p1{coordinate(random), coordinate(random)};
                MoveToEx(small.dc, p0.x, p0.y, nullptr);
                LineTo(small.dc, p1.x, p1.y);
                MoveToEx(large.dc, p0.x + kShift, p0.y + kShift, nullptr);
                LineTo(large.dc, p1.x + kShift, p1.y + kShift);
                for (int y = 0; y < 15; ++y)
                    for (int x = 0; x < 20; ++x)
                        ASSERT_EQ(GetPixel(small.dc, x, y), GetPixel(large.dc, x + kShift, y + kShift))
                            << "line (" << p0.x << "," << p0.y << ")-(" << p1.x << "," << p1.y << ") width "
                            << width << " at " << x << "," << y;
            }
        }
    }
    // Lines far beyond the surface cost nothing and touch only what they cross.
    Canvas c(16, 16);
    c.Clear(kWhite);
    // (The system's GDI takes coordinates of up to 2^27 in size.)
    MoveToEx(c.dc, -100000000, 7, nullptr);
    LineTo(c.dc, 100000000, 8);
    const auto row = c.Find(kBlack);
    ASSERT_EQ(row.size(), 16u);
    // y is 7.5 exactly at x = 0, where the tie goes to the smaller y, and above it after.
    for (POINT p : row) EXPECT_EQ(p.y, p.x == 0 ? 7 : 8) << p.x;
}

TEST(GdiLines, StyledPensFollowTheirPatternAndFillGapsOnlyWhenOpaque) {
    Canvas c(60, 3);
    c.Clear(kWhite);
    SetBkColor(c.dc, kRed);
    {
        Pen dash(c.dc, PS_DASH, 1, kBlack);
        SetBkMode(c.dc, TRANSPARENT);
        MoveToEx(c.dc, 0, 0, nullptr);
        LineTo(c.dc, 60, 0);
        SetBkMode(c.dc, OPAQUE);
        MoveToEx(c.dc, 0, 1, nullptr);
        LineTo(c.dc, 30, 1);
        LineTo(c.dc, 59, 1);  // each LineTo starts the pattern afresh
    }
    for (int x = 0; x < 60; ++x) {
        const bool on = x % 24 < 18;
        EXPECT_EQ(GetPixel(c.dc, x, 0), on ? kBlack : kWhite) << x;
        if (x < 59) {
            const bool again = (x < 30 ? x : x - 30) % 24 < 18;
            EXPECT_EQ(GetPixel(c.dc, x, 1), again ? kBlack : kRed) << x;
        }
    }
    {
        Pen dot(c.dc, PS_DOT, 1, kBlack);
        SetBkMode(c.dc, TRANSPARENT);
        const POINT path[] = {{0, 2}, {7, 2}, {20, 2}};
        Polyline(c.dc, path, 3);
    }
    for (int x = 0; x < 20; ++x) EXPECT_EQ(GetPixel(c.dc, x, 2), x % 6 < 3 ? kBlack : kWhite) << x;

    // A null pen draws nothing; a wide pen draws its width, ends rounded.
    c.Clear(kWhite);
    {
        Pen none(c.dc, PS_NULL, 1, kBlack);
        MoveToEx(c.dc, 0, 1, nullptr);
        LineTo(c.dc, 50, 1);
    }
    EXPECT_TRUE(c.Find(kBlack).empty());
    Canvas wide(30, 12);
    wide.Clear(kWhite);
    for (int width : {2, 3, 4}) {
        wide.Clear(kWhite);
        Pen pen(wide.dc, PS_SOLID, width, kBlack);
        MoveToEx(wide.dc, 10, 6, nullptr);
        LineTo(wide.dc, 20, 6);
        int rows = 0;
        for (int y = 0; y < 12; ++y) rows += GetPixel(wide.dc, 15, y) == kBlack;
        EXPECT_EQ(rows, width);
        EXPECT_EQ(GetPixel(wide.dc, 20, 6), kBlack) << "a wide pen covers its end point";
    }
}

TEST(GdiShapes, RectanglesEllipsesAndPolygonsStopShortOfTheirRightAndBottomEdges) {
    Canvas c(16, 16);
    c.Clear(kWhite);
    HBRUSH red = CreateSolidBrush(kRed);
    HGDIOBJ oldBrush = SelectObject(c.dc, red);

    Rectangle(c.dc, 2, 3, 8, 9);
    EXPECT_EQ(c.Find(kBlack).size(), 20u) << "a 6 by 6 outline";
    EXPECT_EQ(c.Find(kRed).size(), 16u) << "a 4 by 4 inside";
    EXPECT_EQ(GetPixel(c.dc, 7, 8), kBlack);
    EXPECT_EQ(GetPixel(c.dc, 8, 9), kWhite);

    c.Clear(kWhite);
    HGDIOBJ oldPen = SelectObject(c.dc, GetStockObject(NULL_PEN));
    const POINT square[] = {{2, 2}, {6, 2}, {6, 6}, {2, 6}};
    Polygon(c.dc, square, 4);
    const auto inside = c.Find(kRed);
    ASSERT_EQ(inside.size(), 16u);
    EXPECT_EQ(inside.front(), (POINT{2, 2}));
    EXPECT_EQ(inside.back(), (POINT{5, 5}));

    // A bow tie: even-odd and winding fill the same, a doubled loop differs.
    c.Clear(kWhite);
    const POINT twice[] = {{0, 0}, {8, 0}, {8, 8}, {0, 8}, {0, 0}, {8, 0}, {8, 8}, {0, 8}};
    SetPolyFillMode(c.dc, ALTERNATE);
    Polygon(c.dc, twice, 8);
    EXPECT_TRUE(c.Find(kRed).empty());
    SetPolyFillMode(c.dc, WINDING);
    Polygon(c.dc, twice, 8);
    EXPECT_EQ(c.Find(kRed).size(), 64u);

    // An ellipse fills its box symmetrically and touches each side of it.
    c.Clear(kWhite);
    SelectObject(c.dc, oldPen);
    Ellipse(c.dc, 1, 2, 12, 9);
    int left = 99, right = -1, top = 99, bottom = -1;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const COLORREF p = GetPixel(c.dc, x, y);
            if (p == kWhite) continue;
            left = std::min(left, x), right = std::max(right, x), top = std::min(top, y), bottom = std::max(bottom, y);
            EXPECT_EQ(GetPixel(c.dc, 12 - x, y), p) << "mirror of " << x << "," << y;
            EXPECT_EQ(GetPixel(c.dc, x, 10 - y), p) << "mirror of " << x << "," << y;
        }
    EXPECT_EQ(left, 1);
    EXPECT_EQ(right, 11);
    EXPECT_EQ(top, 2);
    EXPECT_EQ(bottom, 8);
    EXPECT_FALSE(c.Find(kRed).empty());
    EXPECT_EQ(GetPixel(c.dc, 6, 2), kBlack);
    EXPECT_EQ(GetPixel(c.dc, 6, 5), kRed);

    SelectObject(c.dc, oldBrush);
    DeleteObject(red);
}

}  // namespace
