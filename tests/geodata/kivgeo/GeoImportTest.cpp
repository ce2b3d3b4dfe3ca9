// The import over files made by ogr2ogr and Python: what lands in the image is checked
// record by record, positions to the millimetre, colours as the source's styles give.
#include <gtest/gtest.h>

#include <cmath>

#include "geodata/GeoImport.h"
#include "platform/host/TextCodec.h"
#include "tests/geodata/kivgeo/GeoSamples.h"

namespace {

using kiv_geo_test::SampleFolder;

constexpr double kMillimetre = 0.001;

std::shared_ptr<VectorBlob> Import(const std::string& source, kiv_geo::TImportSummary& summary,
                                   kiv_geo::TImportOptions options = {}) {
    options.source = source;
    return kiv_geo::importGeodata(options, summary);
}

void ExpectAt(const TCoord3d& p, double x, double y) {
    EXPECT_NEAR(p.x, x, kMillimetre);
    EXPECT_NEAR(p.y, y, kMillimetre);
}

COLORREF LineColour(const VectorBlob& blob, std::uint32_t line) {
    TLineStyle style;
    EXPECT_TRUE(blob.getLineStyle(line, style));
    return style.colour;
}

TEST(GeoImport, ShapefilePointsKeepTheirPositionsAndGetLabelsFromTheLabelField) {
    SampleFolder folder;
    const std::string source = kiv_geo_test::WriteWellsShapefile(folder);
    ASSERT_FALSE(source.empty());

    kiv_geo::TImportSummary summary;
    kiv_geo::TImportOptions options;
    options.labelField = "name";
    auto blob = Import(source, summary, options);
    ASSERT_TRUE(blob) << summary.error;
    EXPECT_EQ(summary.read, 3u);
    EXPECT_EQ(summary.written, 3u);
    ASSERT_EQ(blob->getPointCount(), 3u);
    ExpectAt(blob->getPointsList()->getPosition(0), 512345.678, 5412345.123);
    ExpectAt(blob->getPointsList()->getPosition(1), 512400.001, 5412300.999);
    TPointStyle pointStyle;
    ASSERT_TRUE(blob->getPointStyle(0, pointStyle));
    EXPECT_EQ(pointStyle.colour, RGB(0, 0, 0)) << "the first layer takes the palette's first colour";

    // The third well has an empty name and so no label.
    ASSERT_EQ(blob->getLabelCount(), 2u);
    TLabel label;
    ASSERT_TRUE(blob->getLabel(1, label));
    EXPECT_EQ(std::wstring(label.text.GetString()), L"Gate");
    ExpectAt(label.position, 512400.001, 5412300.999);
    EXPECT_GT(label.style.height, 0.0f);
}

TEST(GeoImport, GeoJsonLinesAndPolygonRingsBecomePolylinesVertexForVertex) {
    SampleFolder folder;
    const std::string source = kiv_geo_test::WritePlanGeoJson(folder);
    ASSERT_FALSE(source.empty());

    kiv_geo::TImportSummary summary;
    auto blob = Import(source, summary);
    ASSERT_TRUE(blob) << summary.error;
    EXPECT_EQ(summary.written, 3u);
    // 2 segments, 4 for the outer ring and 3 for the hole, 1 for each part of the multi-line.
    ASSERT_EQ(blob->getLineCount(), 11u);
    EXPECT_EQ(blob->getPolyLineCount(), 5u);
    const VectorFormat::LinesList& lines = *blob->getLinesList();
    ExpectAt(lines.getStart(0), 100.001, 200.002);
    ExpectAt(lines.getEnd(1), 150.5, 260.75);
    // The rings are closed: each ends where it began.
    ExpectAt(lines.getStart(2), 0, 0);
    ExpectAt(lines.getEnd(5), 0, 0);
    ExpectAt(lines.getStart(6), 10, 10);
    ExpectAt(lines.getEnd(8), 10, 10);
    EXPECT_EQ(blob->getLinePolyLineIndex(8), 2);
    EXPECT_EQ(blob->getLinePolyLineIndex(9), 3);
}

TEST(GeoImport, DrawingKeepsLinesArcsCirclesTextsAndTheirColours) {
    SampleFolder folder;
    const std::string source = kiv_geo_test::WriteSiteDrawing(folder);
    ASSERT_FALSE(source.empty());

    kiv_geo::TImportSummary summary;
    auto blob = Import(source, summary);
    ASSERT_TRUE(blob) << summary.error;
    EXPECT_EQ(summary.read, 4u);
    EXPECT_EQ(summary.written, 4u);

    ASSERT_EQ(blob->getLineCount(), 1u);
    ExpectAt(blob->getLinesList()->getStart(0), 1000.25, 2000.5);
    ExpectAt(blob->getLinesList()->getEnd(0), 1100.75, 2050.125);
    EXPECT_EQ(LineColour(*blob, 0), RGB(255, 0, 0));

    // The quarter arc, counter-clockwise from 0 to 90 degrees, and the circle in two halves.
    ASSERT_EQ(blob->getArcCount(), 3u);
    const VectorFormat::ArcsList& arcs = *blob->getArcsList();
    // The reader may run it either way; either way it must sweep the same quarter.
    const bool forward = std::abs(arcs.getStart(0).x - 1060.0) < kMillimetre;
    ExpectAt(arcs.getStart(0), forward ? 1060.0 : 1050.0, forward ? 2050.0 : 2060.0);
    ExpectAt(arcs.getEnd(0), forward ? 1050.0 : 1060.0, forward ? 2060.0 : 2050.0);
    ExpectAt(arcs.getCenter(0), 1050.0, 2050.0);
    EXPECT_EQ(arcs.getDirection(0) > 0.0, forward);
    TLineStyle arcStyle;
    ASSERT_TRUE(blob->getArcStyle(0, arcStyle));
    EXPECT_EQ(arcStyle.colour, RGB(0, 255, 0));
    ExpectAt(arcs.getCenter(1), 1200.0, 2100.0);
    ExpectAt(arcs.getCenter(2), 1200.0, 2100.0);
    ExpectAt(arcs.getStart(1), arcs.getEnd(2).x, arcs.getEnd(2).y);

    ASSERT_EQ(blob->getLabelCount(), 1u);
    ASSERT_EQ(blob->getPointCount(), 0u) << "a text is a label, not a point symbol";
    TLabel label;
    ASSERT_TRUE(blob->getLabel(0, label));
    EXPECT_EQ(std::wstring(label.text.GetString()), L"Well 7");
    ExpectAt(label.position, 1010.0, 2020.0);
    EXPECT_EQ(label.style.colour, RGB(0, 0, 255));
    EXPECT_FLOAT_EQ(label.style.height, 2.5f);
}

class GeoPackageImport : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(kiv_geo_test::WriteTwoLayerGeoPackage(folder), gpkg()); }
    std::string gpkg() const { return folder.path("map.gpkg"); }
    SampleFolder folder;
};

TEST_F(GeoPackageImport, EveryLayerIsReadAndEachLayerTakesItsOwnPaletteColour) {
    kiv_geo::TImportSummary summary;
    auto blob = Import(gpkg(), summary);
    ASSERT_TRUE(blob) << summary.error;
    EXPECT_EQ(summary.read, 3u);
    ASSERT_EQ(blob->getLineCount(), 3u);
    ASSERT_EQ(blob->getPointCount(), 1u);
    ExpectAt(blob->getLinesList()->getStart(0), 500000.001, 4649776.224);
    ExpectAt(blob->getPointsList()->getPosition(0), 500050.5, 4649800.25);
    TPointStyle pointStyle;
    ASSERT_TRUE(blob->getPointStyle(0, pointStyle));
    EXPECT_NE(pointStyle.colour, LineColour(*blob, 0));
}

TEST_F(GeoPackageImport, LayerChoiceFilterAndTargetSystemApply) {
    kiv_geo::TImportOptions options;
    options.layers = {"roads"};
    options.where = "kind = 'track'";
    options.to = "EPSG:4326";
    kiv_geo::TImportSummary summary;
    auto blob = Import(gpkg(), summary, options);
    ASSERT_TRUE(blob) << summary.error;
    EXPECT_EQ(summary.read, 1u);
    ASSERT_EQ(blob->getLineCount(), 2u);
    EXPECT_EQ(blob->getPointCount(), 0u);
    // Easting 500200 lies just east of zone 33's central meridian, 15 degrees east.
    const TCoord3d start = blob->getLinesList()->getStart(0);
    EXPECT_NEAR(start.x, 15.0, 0.01);
    EXPECT_NEAR(start.y, 42.0, 0.01);
}

TEST_F(GeoPackageImport, BadOptionsAreRefusedAsSuchAndNameWhatIsThere) {
    kiv_geo::TImportSummary summary;
    kiv_geo::TImportOptions options;
    options.layers = {"rivers"};
    EXPECT_FALSE(Import(gpkg(), summary, options));
    EXPECT_TRUE(summary.badInput);
    EXPECT_NE(summary.error.find("roads"), std::string::npos) << summary.error;

    options = {};
    options.to = "EPSG:nonsense";
    EXPECT_FALSE(Import(gpkg(), summary, options));
    EXPECT_TRUE(summary.badInput);

    EXPECT_FALSE(Import(folder.path("absent.gpkg"), summary));
    EXPECT_FALSE(summary.badInput);
    EXPECT_FALSE(summary.error.empty());
}

TEST(GeoImport, UnsupportedAndMissingGeometriesAreSkippedAndCountedByReason) {
    SampleFolder folder;
    const std::string table = folder.write(
        "mixed.csv", "id,WKT\n1,\"TIN Z (((0 0 0,1 0 0,0 1 0,0 0 0)))\"\n2,\n3,POINT (5 5)\n4,\"LINESTRING (1 1)\"\n");
    kiv_geo::TImportSummary summary;
    auto blob = Import(table, summary);
    ASSERT_TRUE(blob) << summary.error;
    EXPECT_EQ(summary.read, 4u);
    EXPECT_EQ(summary.written, 1u);
    EXPECT_EQ(summary.skippedTotal(), 3u);
    EXPECT_EQ(summary.skipped["no geometry"], 1u);
    EXPECT_EQ(blob->getPointCount(), 1u);
}

}  // namespace
