// VectorBlob and its builder: the completed tag set, the spline companions check and the
// round trip through a file.
#include "utils/vector/VectorBlob.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/TestSupport.h"
#include "tests/utils/vector/ImageBytes.h"
#include "utils/vector/VectorImageProducer.h"

using namespace VectorFormat;

namespace {

// The required kinds but `left`, empty, plus `extra` and an empty fixup table.
std::shared_ptr<unsigned char[]> imageOf(std::initializer_list<std::uint32_t> left, vector_test::Kinds extra,
                                         int& size) {
    vector_test::Kinds kinds;
    for (std::uint32_t kind : kRequiredKinds) {
        if (std::find(left.begin(), left.end(), kind) == left.end()) kinds.push_back({kind, 0});
    }
    kinds.insert(kinds.end(), extra.begin(), extra.end());
    kinds.push_back({eFixupTable, 0});
    vector_test::ImageBytes image(kinds);
    size = image.size();
    std::shared_ptr<unsigned char[]> bytes(new unsigned char[image.bytes.size()]);
    std::memcpy(bytes.get(), image.data(), image.bytes.size());
    return bytes;
}

std::shared_ptr<VectorBlob> smallSitePlan() {
    VectorImageProducer producer;
    const int marker = producer.addPointStyle(RGB(200, 0, 0), eSymbolCross, 5);
    const int kerb = producer.addLineStyle(RGB(0, 0, 255), 1, 2);
    const int text = producer.addTextStyle(RGB(10, 20, 30), 1.5, 90.0);
    producer.addPoint({10.0, 20.0, 1.25}, marker);
    producer.addPoint({-3.5, 7.0, 0.0}, marker);
    producer.addPolyline({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}}, kerb);
    producer.addLine({5, 5, 0}, {6, 6, 0}, kerb);
    producer.addArc({10, 0, 0}, {0, 0, 0}, {0, 10, 0}, false, kerb);
    producer.addLabel({1, 2, 3}, L"Manhole \u00e9\U0001F600", text);
    return producer.build();
}

std::shared_ptr<VectorBlob> loadFile(const std::string& hostPath) {
    const std::string bytes = kiv_test::ReadFileBytes(hostPath);
    std::shared_ptr<unsigned char[]> image(new unsigned char[bytes.size()]);
    std::memcpy(image.get(), bytes.data(), bytes.size());
    auto blob = std::shared_ptr<VectorBlob>(new VectorBlob());
    return blob->deserialize(image, static_cast<int>(bytes.size())) ? blob : nullptr;
}

// Every entity of `b` as `a` holds it, read through the blob's own accessors.
void expectSameEntities(const VectorBlob& a, const VectorBlob& b) {
    for (std::uint32_t kind : kRequiredKinds) {
        ASSERT_NE(b.getEntity(static_cast<int>(kind)), nullptr) << std::hex << kind;
        EXPECT_EQ(b.getEntity(static_cast<int>(kind))->getSize(), a.getEntity(static_cast<int>(kind))->getSize());
    }
    ASSERT_EQ(b.getPointCount(), a.getPointCount());
    for (std::uint32_t i = 0; i < a.getPointCount(); ++i) {
        const TCoord3d p = a.getPointsList()->getPosition(i), q = b.getPointsList()->getPosition(i);
        EXPECT_EQ((std::vector<double>{q.x, q.y, q.z}), (std::vector<double>{p.x, p.y, p.z})) << i;
        TPointStyle s, t;
        ASSERT_TRUE(a.getPointStyle(i, s));
        ASSERT_TRUE(b.getPointStyle(i, t));
        EXPECT_EQ(std::tie(t.colour, t.symbol, t.size), std::tie(s.colour, s.symbol, s.size)) << i;
    }
    ASSERT_EQ(b.getLineCount(), a.getLineCount());
    ASSERT_EQ(b.getPolyLineCount(), a.getPolyLineCount());
    for (std::uint32_t i = 0; i < a.getLineCount(); ++i) {
        EXPECT_EQ(b.getLinePolyLineIndex(i), a.getLinePolyLineIndex(i)) << i;
        TLineStyle s, t;
        ASSERT_TRUE(a.getLineStyle(i, s));
        ASSERT_TRUE(b.getLineStyle(i, t));
        EXPECT_EQ(std::tie(t.colour, t.penStyle, t.width), std::tie(s.colour, s.penStyle, s.width)) << i;
    }
    ASSERT_EQ(b.getArcCount(), a.getArcCount());
    for (std::uint32_t i = 0; i < a.getArcCount(); ++i) {
        EXPECT_EQ(b.getArcPolyLineIndex(i), a.getArcPolyLineIndex(i)) << i;
        CArc s, t;
        ASSERT_TRUE(a.getArcsList()->getArc(i, s));
        ASSERT_TRUE(b.getArcsList()->getArc(i, t));
        EXPECT_EQ(t.isClockwise(), s.isClockwise()) << i;
        EXPECT_DOUBLE_EQ(t.getRadius(), s.getRadius()) << i;
    }
    ASSERT_EQ(b.getLabelCount(), a.getLabelCount());
    for (std::uint32_t i = 0; i < a.getLabelCount(); ++i) {
        TLabel s, t;
        ASSERT_TRUE(a.getLabel(i, s));
        ASSERT_TRUE(b.getLabel(i, t));
        EXPECT_EQ(t.text, s.text) << i;
        EXPECT_EQ((std::vector<double>{t.position.x, t.position.y, t.position.z}),
                  (std::vector<double>{s.position.x, s.position.y, s.position.z})) << i;
        EXPECT_EQ(std::tie(t.style.colour, t.style.height, t.style.rotation),
                  std::tie(s.style.colour, s.style.height, s.style.rotation)) << i;
    }
}

}  // namespace

TEST(VectorBlobBuilder, EmptyBuildHoldsTheTenRequiredKindsAndNoSplines) {
    VectorBlobBuilder builder;
    auto blob = builder.build();
    kiv_test::LogCapture log;
    EXPECT_TRUE(blob->verifyTagSet());
    EXPECT_EQ(log.count(), 0u);
    EXPECT_EQ(blob->getPoolManager().getPoolCount(), 10);
    for (std::uint32_t kind : kRequiredKinds) {
        ASSERT_NE(blob->getEntity(static_cast<int>(kind)), nullptr) << std::hex << kind;
        EXPECT_EQ(blob->getEntity(static_cast<int>(kind))->getSize(), 0u);
    }
    EXPECT_EQ(blob->getEntity(eSplinesList), nullptr);
    EXPECT_EQ(blob->getEntity(eSplinesKnots), nullptr);
    EXPECT_EQ(builder.build(), blob);  // the builder keeps its share of the same blob
}

TEST(VectorBlobCheck, SplineCompanionsAreNeededFromThirtyTwoBytesOn) {
    const auto check = [](vector_test::Kinds extra, std::size_t lines) {
        int size = 0;
        auto image = imageOf({}, extra, size);
        kiv_test::LogCapture log;
        VectorBlob blob;
        EXPECT_EQ(blob.deserialize(image, size), lines == 0);
        EXPECT_EQ(log.count(), lines);
        return log.entries();
    };
    check({{eSplinesList, 16}}, 0);
    const auto lines = check({{eSplinesList, 32}}, 2);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, L"Vector Format Error: entity SplinesList exists but no SplinesControlPoints entity found");
    EXPECT_EQ(lines[1].text, L"Vector Format Error: entity SplinesList exists but no SplinesKnots entity found");
    check({{eSplinesList, 32}, {eSplinesControlPoints, 0}, {eSplinesKnots, 0}}, 0);
}

TEST(VectorBlobRoundTrip, BuiltImageLoadsInPlaceWithTheSameEntitiesAndWritesTheSameBytes) {
    kiv_test::TempDeviceRoot root;
    {
        CEntityWriter writer(L"\\site.vec");
        ASSERT_TRUE(smallSitePlan()->serialize(writer));
    }
    auto loaded = loadFile(root.HostPath(L"\\site.vec"));
    ASSERT_NE(loaded, nullptr);
    ASSERT_NE(loaded->getDirectory(), nullptr);
    // Writing spends the built image's pointers, so compare against a fresh build.
    auto fresh = smallSitePlan();
    ASSERT_EQ(loaded->getPointCount(), 2u);
    ASSERT_EQ(loaded->getLabelCount(), 1u);
    expectSameEntities(*fresh, *loaded);
    {
        CEntityWriter writer(L"\\again.vec");
        ASSERT_TRUE(loaded->serialize(writer));
    }
    EXPECT_EQ(kiv_test::ReadFileBytes(root.HostPath(L"\\again.vec")),
              kiv_test::ReadFileBytes(root.HostPath(L"\\site.vec")));
}

TEST(VectorBlobPointers, StylesOutsideTheImageAreRefusedNotRead) {
    auto blob = smallSitePlan();
    writeU32(blob->getPointsList()->record(0) + kPointStyleField, 0xFFFFFFF0u);
    TPointStyle pointStyle;
    EXPECT_FALSE(blob->getPointStyle(0, pointStyle));
    EXPECT_TRUE(blob->getPointStyle(1, pointStyle));
    EXPECT_FALSE(blob->getPointStyle(2, pointStyle));

    writeU32(blob->getLinesList()->record(0) + kLinePolyLineField, 0x7FFFFFFFu);
    TLineStyle lineStyle;
    EXPECT_FALSE(blob->getLineStyle(0, lineStyle));
    EXPECT_EQ(blob->getLinePolyLineIndex(0), -1);
}

TEST(VectorBlobRoundTrip, LoadingASecondImageReplacesTheFirstAndLeavesEarlierCopiesIntact) {
    kiv_test::TempDeviceRoot root;
    {
        CEntityWriter writer(L"\\site.vec");
        ASSERT_TRUE(smallSitePlan()->serialize(writer));
        CEntityWriter empty(L"\\empty.vec");
        ASSERT_TRUE(VectorBlobBuilder().build()->serialize(empty));
    }
    auto blob = loadFile(root.HostPath(L"\\empty.vec"));
    ASSERT_NE(blob, nullptr);
    const VectorBlob before(*blob);
    const std::string bytes = kiv_test::ReadFileBytes(root.HostPath(L"\\site.vec"));
    std::shared_ptr<unsigned char[]> image(new unsigned char[bytes.size()]);
    std::memcpy(image.get(), bytes.data(), bytes.size());
    ASSERT_TRUE(blob->deserialize(image, static_cast<int>(bytes.size())));
    EXPECT_EQ(blob->getPoolManager().getPoolCount(), before.getPoolManager().getPoolCount());
    expectSameEntities(*smallSitePlan(), *blob);
    expectSameEntities(*VectorBlobBuilder().build(), before);
    EXPECT_EQ(before.getPointCount(), 0u);
}
