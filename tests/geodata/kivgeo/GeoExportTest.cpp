// The export read back by ogrinfo, an independent reader, in every format it writes;
// and a drawing exported and imported again keeps its arcs, texts and colours.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>

#include "geodata/GeoExport.h"
#include "geodata/GeoImport.h"
#include "tests/geodata/kivgeo/GeoSamples.h"
#include "utils/vector/VectorImageProducer.h"

namespace {

using kiv_geo_test::Capture;
using kiv_geo_test::SampleFolder;

// Two points, a polyline of two segments, a half circle and a label.
std::shared_ptr<VectorBlob> SmallImage() {
    VectorImageProducer producer;
    const int red = producer.addPointStyle(RGB(255, 0, 0));
    const int blue = producer.addLineStyle(RGB(0, 0, 255), 0, 2);
    const int green = producer.addLineStyle(RGB(0, 255, 0));
    const int text = producer.addTextStyle(RGB(255, 0, 255), 2.5);
    producer.addPoint({512345.678, 5412345.123, 0}, red);
    producer.addPoint({512350.0, 5412350.0, 0}, red);
    producer.addPolyline({{512300, 5412300, 0}, {512310.5, 5412300, 0}, {512310.5, 5412320.25, 0}}, blue);
    producer.addArc({512400, 5412400, 0}, {512410, 5412400, 0}, {512420, 5412400, 0}, true, green);
    producer.addLabel({512345.678, 5412346.0, 0}, L"Well 7", text);
    return producer.build();
}

// The feature count of every layer ogrinfo reports, added up.
int OgrFeatureCount(const std::string& path) {
    const std::string report = Capture("ogrinfo -so -al '" + path + "' 2>/dev/null");
    const std::regex count("Feature Count: ([0-9]+)");
    int total = 0;
    for (std::sregex_iterator it(report.begin(), report.end(), count), end; it != end; ++it) {
        total += std::stoi((*it)[1]);
    }
    return total;
}

// The vertices of every LINESTRING Z in an ogrinfo report, in order.
std::vector<std::vector<TCoord2d>> LineStrings(const std::string& report) {
    std::vector<std::vector<TCoord2d>> found;
    const std::string tag = "LINESTRING Z (";
    for (std::size_t at = report.find(tag); at != std::string::npos; at = report.find(tag, at + 1)) {
        std::istringstream in(report.substr(at + tag.size(), report.find(')', at) - at - tag.size()));
        std::vector<TCoord2d> vertices;
        double x, y, z;
        char comma;
        while (in >> x >> y >> z) {
            vertices.push_back({x, y});
            in >> comma;
        }
        found.push_back(vertices);
    }
    return found;
}

class GeoExportFormats : public ::testing::TestWithParam<const char*> {};

TEST_P(GeoExportFormats, OgrinfoReadsEveryPointPolylineAndLabelBack) {
    SampleFolder folder;
    auto blob = SmallImage();
    ASSERT_TRUE(blob);
    kiv_geo::TExportOptions options;
    options.output = folder.path("out");
    options.format = GetParam();
    kiv_geo::TExportSummary summary;
    ASSERT_TRUE(kiv_geo::exportGeodata(*blob, options, summary)) << summary.error;
    EXPECT_EQ(summary.points, 2u);
    EXPECT_EQ(summary.polylines, 2u);
    EXPECT_EQ(summary.labels, 1u);
    EXPECT_EQ(OgrFeatureCount(options.output), 5);
}

INSTANTIATE_TEST_SUITE_P(AllFormats, GeoExportFormats, ::testing::Values("GeoJSON", "GPKG", "DXF", "ESRI Shapefile"),
                         [](const auto& info) { return std::string(info.param).substr(0, 4); });

TEST(GeoExport, GeoJsonCarriesCoordinatesColoursAndTexts) {
    SampleFolder folder;
    kiv_geo::TExportOptions options;
    options.output = folder.path("image.geojson");
    kiv_geo::TExportSummary summary;
    ASSERT_TRUE(kiv_geo::exportGeodata(*SmallImage(), options, summary)) << summary.error;
    EXPECT_EQ(summary.format, "GeoJSON");
    const std::string report = Capture("ogrinfo -al -q '" + options.output + "'");
    EXPECT_NE(report.find("POINT Z (512345.678 5412345.123 0)"), std::string::npos) << report;
    EXPECT_NE(report.find("colour (String) = #0000ff"), std::string::npos);
    EXPECT_NE(report.find("text (String) = Well 7"), std::string::npos);
    const auto lines = LineStrings(report);
    ASSERT_EQ(lines.size(), 2u) << report;
    ASSERT_EQ(lines[0].size(), 3u);
    EXPECT_NEAR(lines[0][1].x, 512310.5, 0.001);
    EXPECT_NEAR(lines[0][2].y, 5412320.25, 0.001);
    // The clockwise half circle from west to east bulges north of its centre, to 10 m.
    double north = 0.0;
    for (const auto& p : lines[1]) north = std::max(north, p.y - 5412400.0);
    EXPECT_NEAR(north, 10.0, 0.01);
}

TEST(GeoExport, DrawingExportedAndImportedAgainKeepsArcsTextsAndColours) {
    SampleFolder folder;
    kiv_geo::TExportOptions options;
    options.output = folder.path("image.dxf");
    kiv_geo::TExportSummary exported;
    ASSERT_TRUE(kiv_geo::exportGeodata(*SmallImage(), options, exported)) << exported.error;
    kiv_geo::TImportOptions importOptions;
    importOptions.source = options.output;
    kiv_geo::TImportSummary summary;
    auto back = kiv_geo::importGeodata(importOptions, summary);
    ASSERT_TRUE(back) << summary.error;
    EXPECT_EQ(back->getPointCount(), 2u);
    EXPECT_EQ(back->getLineCount(), 2u);
    ASSERT_EQ(back->getArcCount(), 1u);
    EXPECT_NEAR(back->getArcsList()->getCenter(0).x, 512410.0, 0.001);
    TLineStyle arcStyle;
    ASSERT_TRUE(back->getArcStyle(0, arcStyle));
    EXPECT_EQ(arcStyle.colour, RGB(0, 255, 0));
    TLabel label;
    ASSERT_TRUE(back->getLabel(0, label));
    EXPECT_EQ(std::wstring(label.text.GetString()), L"Well 7");
    EXPECT_EQ(label.style.colour, RGB(255, 0, 255));
}

TEST(GeoExport, UnknownFormatsAreRefusedAndAFailedWriteLeavesNoFile) {
    SampleFolder folder;
    kiv_geo::TExportOptions options;
    options.output = folder.path("image.txt");
    kiv_geo::TExportSummary summary;
    EXPECT_FALSE(kiv_geo::exportGeodata(*SmallImage(), options, summary));
    EXPECT_TRUE(summary.badInput);

    options.output = folder.path("absent/image.gpkg");
    EXPECT_FALSE(kiv_geo::exportGeodata(*SmallImage(), options, summary));
    EXPECT_FALSE(summary.badInput);
    EXPECT_EQ(Capture("ls -A '" + folder.path("") + "'"), "");
}

}  // namespace
