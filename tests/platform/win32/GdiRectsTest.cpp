// Rectangle arithmetic at its edges (exclusive right and bottom, empty results, null
// arguments), rectangles drawn without a pen or too thin for an outline, and the
// refusals of the polygon calls.
#include <gtest/gtest.h>

#include "platform/win32/Win32.h"
#include "tests/platform/win32/GdiCanvas.h"

namespace {

bool Same(const RECT& a, const RECT& b) { return EqualRect(&a, &b) != FALSE; }

TEST(GdiRects, PointsOnTheRightOrBottomEdgeAreOutside) {
    RECT r{};
    ASSERT_TRUE(SetRect(&r, 10, 20, 30, 40));
    EXPECT_TRUE(PtInRect(&r, POINT{10, 20}));
    EXPECT_TRUE(PtInRect(&r, POINT{29, 39}));
    EXPECT_FALSE(PtInRect(&r, POINT{30, 25}));
    EXPECT_FALSE(PtInRect(&r, POINT{15, 40}));
    EXPECT_FALSE(PtInRect(&r, POINT{9, 25}));
    EXPECT_FALSE(PtInRect(nullptr, POINT{0, 0}));

    EXPECT_FALSE(IsRectEmpty(&r));
    EXPECT_TRUE(IsRectEmpty(nullptr));
    const RECT flat{5, 5, 9, 5}, inverted{9, 0, 5, 4};
    EXPECT_TRUE(IsRectEmpty(&flat));
    EXPECT_TRUE(IsRectEmpty(&inverted));
    ASSERT_TRUE(SetRectEmpty(&r));
    EXPECT_TRUE(Same(r, RECT{0, 0, 0, 0}));
    EXPECT_FALSE(SetRect(nullptr, 1, 2, 3, 4));
    EXPECT_FALSE(SetRectEmpty(nullptr));
}

TEST(GdiRects, MovingGrowingAndCopying) {
    RECT r{10, 20, 30, 40};
    ASSERT_TRUE(OffsetRect(&r, -5, 7));
    EXPECT_TRUE(Same(r, RECT{5, 27, 25, 47}));
    ASSERT_TRUE(InflateRect(&r, 2, -3));
    EXPECT_TRUE(Same(r, RECT{3, 30, 27, 44}));
    RECT copy{};
    ASSERT_TRUE(CopyRect(&copy, &r));
    EXPECT_TRUE(Same(copy, r));
    EXPECT_FALSE(OffsetRect(nullptr, 1, 1));
    EXPECT_FALSE(InflateRect(nullptr, 1, 1));
    EXPECT_FALSE(CopyRect(nullptr, &r));
    EXPECT_FALSE(CopyRect(&copy, nullptr));
    EXPECT_FALSE(EqualRect(&r, nullptr));
    EXPECT_FALSE(EqualRect(nullptr, nullptr));
    const RECT other{3, 30, 27, 45};
    EXPECT_FALSE(EqualRect(&r, &other));
}

TEST(GdiRects, IntersectionOfRectanglesThatOnlyTouchIsEmpty) {
    const RECT a{0, 0, 10, 10}, b{5, 5, 20, 20}, touching{10, 0, 20, 10}, apart{50, 50, 60, 60};
    RECT out{1, 2, 3, 4};
    EXPECT_TRUE(IntersectRect(&out, &a, &b));
    EXPECT_TRUE(Same(out, RECT{5, 5, 10, 10}));
    out = RECT{1, 2, 3, 4};
    EXPECT_FALSE(IntersectRect(&out, &a, &touching));
    EXPECT_TRUE(Same(out, RECT{0, 0, 0, 0})) << "an empty intersection clears the result";
    out = RECT{1, 2, 3, 4};
    EXPECT_FALSE(IntersectRect(&out, &a, &apart));
    EXPECT_TRUE(IsRectEmpty(&out));
    EXPECT_FALSE(IntersectRect(nullptr, &a, &b));
    EXPECT_FALSE(IntersectRect(&out, nullptr, &b));
    EXPECT_FALSE(IntersectRect(&out, &a, nullptr));
}

TEST(GdiRects, UnionLeavesEmptyRectanglesOut) {
    const RECT a{0, 0, 10, 10}, b{20, -5, 30, 5}, empty{100, 100, 100, 200};
    RECT out{};
    EXPECT_TRUE(UnionRect(&out, &a, &b));
    EXPECT_TRUE(Same(out, RECT{0, -5, 30, 10}));
    EXPECT_TRUE(UnionRect(&out, &empty, &a));
    EXPECT_TRUE(Same(out, a)) << "an empty rectangle adds nothing, wherever it lies";
    EXPECT_TRUE(UnionRect(&out, &b, &empty));
    EXPECT_TRUE(Same(out, b));
    EXPECT_FALSE(UnionRect(&out, &empty, &empty));
    EXPECT_TRUE(IsRectEmpty(&out));
    EXPECT_FALSE(UnionRect(nullptr, &a, &b));
    EXPECT_TRUE(UnionRect(&out, nullptr, &b)) << "a missing rectangle counts as empty";
    EXPECT_TRUE(Same(out, b));
}

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);

TEST(GdiShapes, RectangleWithoutAPenFillsOnlyUpToTheRightAndBottomEdge) {
    kiv_test::Canvas c(12, 12);
    c.Clear(kWhite);
    HBRUSH brush = CreateSolidBrush(kRed);
    HGDIOBJ oldBrush = SelectObject(c.dc, brush);
    HGDIOBJ oldPen = SelectObject(c.dc, GetStockObject(NULL_PEN));
    ASSERT_TRUE(Rectangle(c.dc, 8, 8, 2, 2)) << "corners given in either order";
    const auto red = c.Find(kRed);
    ASSERT_EQ(red.size(), 25u) << "2..6 by 2..6: the outline's last column and row stay empty";
    EXPECT_EQ(red.front().x, 2);
    EXPECT_EQ(red.back().x, 6);
    EXPECT_EQ(red.back().y, 6);

    // Neither pen nor brush: nothing at all.
    c.Clear(kWhite);
    SelectObject(c.dc, GetStockObject(NULL_BRUSH));
    ASSERT_TRUE(Rectangle(c.dc, 2, 2, 8, 8));
    EXPECT_TRUE(c.Find(kRed).empty());
    SelectObject(c.dc, oldBrush);
    SelectObject(c.dc, oldPen);
    DeleteObject(brush);
}

TEST(GdiShapes, RectangleTooThinForAnInsideIsAllOutline) {
    kiv_test::Canvas c(12, 12);
    c.Clear(kWhite);
    HPEN pen = CreatePen(PS_SOLID, 1, kBlue);
    HBRUSH brush = CreateSolidBrush(kRed);
    HGDIOBJ oldPen = SelectObject(c.dc, pen), oldBrush = SelectObject(c.dc, brush);
    ASSERT_TRUE(Rectangle(c.dc, 3, 3, 5, 9));  // two pixels across
    EXPECT_EQ(c.Find(kBlue).size(), 12u);
    EXPECT_TRUE(c.Find(kRed).empty());

    c.Clear(kWhite);
    ASSERT_TRUE(Rectangle(c.dc, 3, 3, 3, 9));  // nothing across: no outline either
    EXPECT_TRUE(c.Find(kBlue).empty());
    SelectObject(c.dc, oldPen);
    SelectObject(c.dc, oldBrush);
    DeleteObject(pen);
    DeleteObject(brush);
    EXPECT_FALSE(Rectangle(nullptr, 0, 0, 4, 4));
    EXPECT_FALSE(Ellipse(nullptr, 0, 0, 4, 4));
}

TEST(GdiShapes, PolygonCallsRefuseWhatTheyCannotDraw) {
    kiv_test::Canvas c(8, 8);
    const POINT one[1] = {{1, 1}};
    // Refused without a promised error code: the system's GDI leaves the last error alone.
    EXPECT_FALSE(Polygon(c.dc, one, 1));
    EXPECT_FALSE(Polygon(nullptr, one, 1));
#ifndef _WIN32
    // The host also refuses a missing point array; the system's GDI reads through it.
    EXPECT_FALSE(Polygon(c.dc, nullptr, 3));
#endif

    EXPECT_EQ(GetPolyFillMode(c.dc), ALTERNATE);
    EXPECT_EQ(SetPolyFillMode(c.dc, WINDING), ALTERNATE);
    EXPECT_EQ(SetPolyFillMode(c.dc, 7), 0) << "an unknown mode is refused";
    EXPECT_EQ(GetPolyFillMode(c.dc), WINDING);
    EXPECT_EQ(SetPolyFillMode(nullptr, WINDING), 0);
    EXPECT_EQ(GetPolyFillMode(nullptr), 0);
}

}  // namespace
