// VectorBlob and its builder: the completed tag set, the completeness check and its log
// lines, the round trip through a file, and pointer following that stays in the image.
#include "utils/vector/VectorBlob.h"

#include <gtest/gtest.h>

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

struct FieldList : IPointerProcessor {
    std::vector<unsigned char*> fields;
    void processPointer(unsigned char* field) override { fields.push_back(field); }
};

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

TEST(VectorBlobCheck, LogsOneLinePerMissingRequiredKind) {
    int size = 0;
    auto image = imageOf({eLinesList, ePolyLineElementsLists}, {}, size);
    kiv_test::LogCapture log;
    VectorBlob blob;
    EXPECT_FALSE(blob.deserialize(image, size));
    ASSERT_EQ(log.count(), 2u);
    EXPECT_EQ(log.entries()[0].level, 0);
    EXPECT_EQ(log.entries()[0].text, L"Vector Format Error: cannot find required entity with id 00040000\n");
    EXPECT_EQ(log.entries()[1].text, L"Vector Format Error: cannot find required entity with id 000B0000\n");
    EXPECT_EQ(image.use_count(), 2);  // the failed blob still holds the image
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
    auto built = smallSitePlan();
    ASSERT_NE(built, nullptr);
    {
        CEntityWriter writer(L"\\site.vec");
        ASSERT_TRUE(built->serialize(writer));
    }
    auto loaded = loadFile(root.HostPath(L"\\site.vec"));
    ASSERT_NE(loaded, nullptr);
    ASSERT_NE(loaded->getDirectory(), nullptr);

    ASSERT_EQ(loaded->getPointCount(), 2u);
    EXPECT_EQ(loaded->getPointsList()->getPosition(0).z, 1.25);
    EXPECT_EQ(loaded->getPointsList()->getPosition(1).x, -3.5);
    TPointStyle pointStyle;
    ASSERT_TRUE(loaded->getPointStyle(1, pointStyle));
    EXPECT_EQ(pointStyle.colour, RGB(200, 0, 0));
    EXPECT_EQ(pointStyle.symbol, eSymbolCross);
    EXPECT_EQ(pointStyle.size, 5u);

    ASSERT_EQ(loaded->getLineCount(), 3u);
    ASSERT_EQ(loaded->getPolyLineCount(), 3u);
    EXPECT_EQ(loaded->getLinePolyLineIndex(1), 0);
    EXPECT_EQ(loaded->getLinePolyLineIndex(2), 1);
    TLineStyle lineStyle;
    ASSERT_TRUE(loaded->getLineStyle(2, lineStyle));
    EXPECT_EQ(lineStyle.colour, RGB(0, 0, 255));
    EXPECT_EQ(lineStyle.penStyle, 1);
    EXPECT_EQ(lineStyle.width, 2);

    ASSERT_EQ(loaded->getArcCount(), 1u);
    EXPECT_EQ(loaded->getArcPolyLineIndex(0), 2);
    CArc arc;
    ASSERT_TRUE(loaded->getArcsList()->getArc(0, arc));
    EXPECT_FALSE(arc.isClockwise());
    EXPECT_DOUBLE_EQ(arc.getRadius(), 10.0);

    TLabel label;
    ASSERT_TRUE(loaded->getLabel(0, label));
    EXPECT_EQ(label.text, L"Manhole \u00e9\U0001F600");
    EXPECT_EQ(label.position.y, 2.0);
    EXPECT_EQ(label.style.colour, RGB(10, 20, 30));
    EXPECT_FLOAT_EQ(label.style.height, 1.5f);
    EXPECT_FLOAT_EQ(label.style.rotation, 90.0f);

    {
        CEntityWriter writer(L"\\again.vec");
        ASSERT_TRUE(loaded->serialize(writer));
    }
    EXPECT_EQ(kiv_test::ReadFileBytes(root.HostPath(L"\\again.vec")),
              kiv_test::ReadFileBytes(root.HostPath(L"\\site.vec")));
}

TEST(VectorBlobPointers, EnumerationMatchesWhatTheProducerReported) {
    auto blob = smallSitePlan();
    FieldList enumerated;
    blob->enumPointers(enumerated);
    const auto& reported = blob->getPoolManager().getPointerList();
    // 2 points + 1 arc + 3 lines + 2 per label + 2 per polyline + 1 per element
    ASSERT_EQ(enumerated.fields.size(), 2u + 1 + 3 + 2 + 6 + 4);
    ASSERT_EQ(static_cast<std::size_t>(reported.GetSize()), enumerated.fields.size());
    for (std::size_t i = 0; i < enumerated.fields.size(); ++i) {
        EXPECT_EQ(reported[static_cast<int>(i)], enumerated.fields[i]) << i;
    }
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

TEST(VectorBlobLookup, FindsKindsByExactIdOnly) {
    VectorBlobBuilder builder;
    auto* variant = reinterpret_cast<PoolManager::Entity*>(builder.getPoolManager().alloc(8));
    variant->setId(0x00040001);
    variant->setSize(0);
    VectorBlob blob;
    blob.getPoolManager().registerPool(variant);
    EXPECT_EQ(blob.getLinesList(), nullptr);
    EXPECT_EQ(blob.getEntity(eLinesList), nullptr);
    EXPECT_EQ(blob.getEntity(0x00040001), variant);
}
