// The built-in sample: a complete image of a few hundred features that survives the
// round trip through a file unchanged, byte for byte on every build.
#include "utils/vector/SampleSitePlan.h"

#include <gtest/gtest.h>

#include "tests/support/TestSupport.h"
#include "utils/vector/VectorImageLibrary.h"

TEST(SampleSitePlan, IsCompleteAndTheSameOnEveryBuild) {
    kiv_test::TempDeviceRoot root;
    auto plan = buildSampleSitePlan();
    ASSERT_NE(plan, nullptr);
    EXPECT_TRUE(plan->verifyTagSet());
    EXPECT_GE(plan->getPointCount(), 200u);
    EXPECT_GT(plan->getLineCount(), 0u);
    EXPECT_GT(plan->getArcCount(), 0u);
    EXPECT_GT(plan->getLabelCount(), 0u);

    VectorImageLibrary library(L"\\Maps");
    ASSERT_TRUE(library.saveImage(L"one.vec", plan));
    ASSERT_TRUE(library.saveImage(L"two.vec", buildSampleSitePlan()));
    EXPECT_EQ(kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\one.vec")),
              kiv_test::ReadFileBytes(root.HostPath(L"\\Maps\\two.vec")));

    auto loaded = library.getImage(L"one.vec");
    ASSERT_NE(loaded, nullptr);
    TLabel label;
    ASSERT_TRUE(loaded->getLabel(0, label));
    EXPECT_EQ(label.text, L"Riverside Park - Lot 7");
    for (std::uint32_t i = 0; i < loaded->getLineCount(); ++i) {
        TLineStyle style;
        EXPECT_TRUE(loaded->getLineStyle(i, style)) << i;
    }
}
