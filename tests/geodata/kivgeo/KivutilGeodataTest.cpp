// kivutil's geodata commands as a user runs them: each source written by ogr2ogr or Python
// goes through "vector import", and "vector info --list" shows what the image holds,
// counts, positions to the millimetre and colours; "render --from --to" draws an image
// in another coordinate system.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "tests/geodata/kivgeo/GeoSamples.h"
#include "tests/tools/kivutil/RunKivutil.h"

namespace {

using kiv_geo_test::SampleFolder;
using kivutil_test::Kivutil;

// Imports `source` with the extra options and returns the listing of the image.
std::string ImportAndList(const SampleFolder& folder, const std::string& source, const std::string& options = "") {
    const std::string image = folder.path("imported.vec");
    const auto imported = Kivutil("vector import '" + source + "' -o '" + image + "' " + options);
    EXPECT_EQ(imported.status, 0) << imported.out;
    const auto info = Kivutil("vector info --list '" + image + "'");
    EXPECT_EQ(info.status, 0) << info.out;
    return imported.out + info.out;
}

bool HasLine(const std::string& text, const std::string& line) {
    std::istringstream lines(text);
    for (std::string l; std::getline(lines, l);)
        if (l == line) return true;
    return false;
}

#define EXPECT_LINE(text, line) EXPECT_TRUE(HasLine(text, line)) << "no line \"" << (line) << "\" in\n" << (text)

TEST(ImportThroughKivutil, ShapefileWellsWithTheirNamesAsLabels) {
    SampleFolder folder;
    const std::string source = kiv_geo_test::WriteWellsShapefile(folder);
    ASSERT_FALSE(source.empty());
    const std::string out = ImportAndList(folder, source, "--label-field name");
    EXPECT_NE(out.find("3 features read, 3 written, 0 skipped"), std::string::npos) << out;
    EXPECT_LINE(out, "entities: 3 points, 0 lines, 0 arcs, 2 labels; 0 polylines");
    EXPECT_LINE(out, "point 0 at 512345.678, 5412345.123 colour #000000");
    EXPECT_LINE(out, "point 1 at 512400.001, 5412300.999 colour #000000");
    EXPECT_LINE(out, "point 2 at 512350.000, 5412350.000 colour #000000");
    EXPECT_NE(out.find("label 1 \"Gate\" at 512400.001, 5412300.999"), std::string::npos) << out;
}

TEST(ImportThroughKivutil, GeoJsonLinesAndClosedPolygonRings) {
    SampleFolder folder;
    const std::string source = kiv_geo_test::WritePlanGeoJson(folder);
    ASSERT_FALSE(source.empty());
    const std::string out = ImportAndList(folder, source);
    EXPECT_LINE(out, "entities: 0 points, 11 lines, 0 arcs, 0 labels; 5 polylines");
    EXPECT_NE(out.find("line 0 from 100.001, 200.002 to 150.500, 200.002 colour "), std::string::npos) << out;
    EXPECT_NE(out.find("line 1 from 150.500, 200.002 to 150.500, 260.750 colour "), std::string::npos) << out;
    // The outer ring closes back on its start; the hole is a polyline of its own.
    EXPECT_NE(out.find("line 5 from 0.000, 30.000 to 0.000, 0.000 colour "), std::string::npos) << out;
    EXPECT_NE(out.find("line 8 from 10.000, 20.000 to 10.000, 10.000 colour "), std::string::npos) << out;
    EXPECT_NE(out.find("polyline 3\nline 10 from 3.000, 3.000 to 4.000, 4.000"), std::string::npos) << out;
}

TEST(ImportThroughKivutil, DrawingKeepsItsColoursArcsAndText) {
    SampleFolder folder;
    const std::string source = kiv_geo_test::WriteSiteDrawing(folder);
    ASSERT_FALSE(source.empty());
    const std::string out = ImportAndList(folder, source);
    EXPECT_LINE(out, "entities: 0 points, 1 lines, 3 arcs, 1 labels; 4 polylines");
    EXPECT_LINE(out, "line 0 from 1000.250, 2000.500 to 1100.750, 2050.125 colour #FF0000 width 1 polyline 0");
    // The quarter arc may run either way round; its centre and colour are fixed.
    EXPECT_NE(out.find("centre 1050.000, 2050.000"), std::string::npos) << out;
    EXPECT_TRUE(out.find("arc 0 from 1060.000, 2050.000 to 1050.000, 2060.000 centre 1050.000, 2050.000 "
                         "counter-clockwise colour #00FF00") != std::string::npos ||
                out.find("arc 0 from 1050.000, 2060.000 to 1060.000, 2050.000 centre 1050.000, 2050.000 "
                         "clockwise colour #00FF00") != std::string::npos)
        << out;
    EXPECT_NE(out.find("arc 1 from "), std::string::npos) << "the circle comes in two halves\n" << out;
    EXPECT_LINE(out, "label 0 \"Well 7\" at 1010.000, 2020.000 height 2.50 colour #0000FF");
}

TEST(ImportThroughKivutil, GeoPackageLayersEachTakeTheirOwnColour) {
    SampleFolder folder;
    const std::string source = kiv_geo_test::WriteTwoLayerGeoPackage(folder);
    ASSERT_FALSE(source.empty());
    const std::string out = ImportAndList(folder, source);
    EXPECT_LINE(out, "entities: 1 points, 3 lines, 0 arcs, 0 labels; 2 polylines");
    EXPECT_NE(out.find("line 0 from 500000.001, 4649776.224 to 500100.002, 4649876.225 colour "), std::string::npos)
        << out;
    const auto colourOf = [&](const std::string& prefix) {
        const auto at = out.find(prefix);
        const auto colour = out.find("colour #", at);
        return at == std::string::npos || colour == std::string::npos ? std::string() : out.substr(colour + 7, 7);
    };
    EXPECT_EQ(colourOf("point 0 at 500050.500, 4649800.250"), colourOf("point 0 at"));
    EXPECT_FALSE(colourOf("point 0 at 500050.500, 4649800.250").empty()) << out;
    EXPECT_NE(colourOf("point 0 at"), colourOf("line 0 from")) << out;
    EXPECT_EQ(colourOf("line 0 from"), colourOf("line 2 from")) << "one layer, one colour";

    // One layer, filtered, in geographic degrees.
    const std::string tracks = ImportAndList(folder, source, "--layer roads --where \"kind = 'track'\" --to EPSG:4326");
    EXPECT_LINE(tracks, "entities: 0 points, 2 lines, 0 arcs, 0 labels; 1 polylines");
    EXPECT_NE(tracks.find("line 0 from 15.002, 42.000 to 15.004, 41.999 "), std::string::npos) << tracks;
}

// The README's site: WGS 84 degrees imported into UTM zone 33 north, labels sized in metres.
TEST(ImportThroughKivutil, SiteInDegreesLandsInUtmWithLabelsSizedInMetres) {
    SampleFolder folder;
    const std::string out = ImportAndList(folder, std::string(KIV_SOURCE_DIR) + "/data/site-wgs84.geojson",
                                          "--to EPSG:32633 --label-field name --style-field style");
    EXPECT_NE(out.find("32 features read, 32 written, 0 skipped"), std::string::npos) << out;
    EXPECT_NE(out.find("extent: x 461706.307 .. 462106.899, y 5099720.930 .. 5100020.206"), std::string::npos) << out;
    // A hundredth of the 400 m site, not of its 0.005 degrees.
    EXPECT_NE(out.find("label 0 \"Main Road\" at 461906.603, 5099873.154 height 4.02 colour #B03A2E"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("line 0 from 461706.307, 5099841.905 to 461826.426, 5099851.155 colour #B03A2E width 5"), std::string::npos) << out;
}

// The box a render reports it drew, from its "drawn in" line.
bool DrawnBox(const std::string& out, double box[4]) {
    const auto at = out.find("drawn in ");
    const auto colon = out.find(": x ", at);
    return at != std::string::npos && colon != std::string::npos &&
           std::sscanf(out.c_str() + colon, ": x %lf .. %lf, y %lf .. %lf", &box[0], &box[1], &box[2], &box[3]) == 4;
}

TEST(RenderThroughKivutil, ImageInDegreesIsDrawnInUtmWhereTheImportPutsIt) {
    SampleFolder folder;
    const std::string degrees = folder.path("site-degrees.vec"), picture = folder.path("site.png");
    ASSERT_EQ(Kivutil("vector import " + std::string(KIV_SOURCE_DIR) + "/data/site-wgs84.geojson -o " + degrees).status,
              0);
    const auto drawn = Kivutil("render " + degrees + " --from EPSG:4326 --to EPSG:32633 --size 400x300 -o " + picture);
    ASSERT_EQ(drawn.status, 0) << drawn.out;
    double box[4] = {};
    ASSERT_TRUE(DrawnBox(drawn.out, box)) << drawn.out;
    // Centred on the site's UTM box (as the import above finds it), and as large as it with
    // the render's margin of 3 % of the longer side all round, to the 2 % the degree box's
    // corners leave.
    const double margin = 0.03 * 400.592;
    EXPECT_NEAR((box[0] + box[1]) / 2, (461706.307 + 462106.899) / 2, 1.0);
    EXPECT_NEAR((box[2] + box[3]) / 2, (5099720.930 + 5100020.206) / 2, 1.0);
    EXPECT_NEAR(box[1] - box[0], 400.592 + 2 * margin, 0.02 * 400.592);
    EXPECT_NEAR(box[3] - box[2], 299.276 + 2 * margin, 0.02 * 400.592);
    EXPECT_NE(kiv_geo_test::Capture("file " + picture).find("PNG image data, 400 x 300"), std::string::npos);

    // Only both systems together, and only systems PROJ knows; one line each, status 2.
    for (const char* bad : {"--from EPSG:4326", "--to EPSG:32633", "--from EPSG:4326 --to EPSG:nonsense"}) {
        const auto refused = Kivutil("render " + degrees + " " + std::string(bad) + " -o " + picture);
        EXPECT_EQ(refused.status, 2) << bad;
        EXPECT_EQ(std::count(refused.out.begin(), refused.out.end(), '\n'), 1) << refused.out;
    }
    EXPECT_NE(Kivutil("render " + degrees + " --from EPSG:4326 --to EPSG:nonsense").out.find("EPSG:nonsense"),
              std::string::npos);
}

}  // namespace
