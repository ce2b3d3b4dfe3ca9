// CDC: an attached device context is only lent, one it made is its own.
#include <gtest/gtest.h>

#include "platform/mfc/Dc.h"

namespace {

TEST(CDC, DetachGivesBackALentContextAndDeleteOnlyReleasesItsOwn) {
    HDC lent = CreateCompatibleDC(nullptr);
    {
        CDC dc;
        EXPECT_TRUE(dc.Attach(lent));
        EXPECT_FALSE(dc.Attach(lent)) << "one context at a time";
        EXPECT_EQ(dc.GetSafeHdc(), lent);
        EXPECT_EQ(dc.m_hDC, lent);
        EXPECT_FALSE(dc.DeleteDC()) << "a lent context is not the CDC's to delete";
        EXPECT_EQ(dc.Detach(), lent);
        EXPECT_EQ(dc.GetSafeHdc(), nullptr);
        EXPECT_TRUE(dc.Attach(lent));
    }  // destroyed while attached
    EXPECT_EQ(GetObjectType(lent), OBJ_MEMDC) << "still alive after the CDC went";
    EXPECT_TRUE(DeleteDC(lent));

    HDC made = nullptr;
    {
        CDC dc;
        ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
        made = dc.GetSafeHdc();
        EXPECT_EQ(GetObjectType(made), OBJ_MEMDC);
    }
    EXPECT_EQ(GetObjectType(made), 0u) << "the one it made goes with it";
}

TEST(CDC, ForwardsDrawingToItsContext) {
    BITMAPINFO info{};
    info.bmiHeader = BITMAPINFOHEADER{sizeof(BITMAPINFOHEADER), 8, -8, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    HGDIOBJ old = dc.SelectObject(bitmap);
    dc.FillSolidRect(0, 0, 8, 8, RGB(255, 255, 255));
    dc.MoveTo(0, 3);
    dc.LineTo(8, 3);
    EXPECT_EQ(dc.GetPixel(7, 3), RGB(0, 0, 0));
    EXPECT_EQ(dc.GetPixel(7, 4), RGB(255, 255, 255));
    EXPECT_EQ(static_cast<const std::uint32_t*>(bits)[3 * 8], 0u);
    dc.SelectObject(old);
    DeleteObject(bitmap);
}

}  // namespace
