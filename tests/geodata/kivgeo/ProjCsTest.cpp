// Coordinate systems through PROJ: the WGS 84 to UTM 33N round trip over a grid, one
// point against PROJ's own cs2cs, and a box carried between the two.
#include <gtest/gtest.h>

#include <cstdio>

#include "geodata/ProjCs.h"
#include "tests/geodata/kivgeo/GeoSamples.h"
#include "utils/vector/TransformBBox.h"

namespace {

std::unique_ptr<Csx::CProjCs> Make(const std::string& definition) {
    std::string error;
    auto cs = Csx::CProjCs::create(definition, error);
    EXPECT_TRUE(cs) << error;
    return cs;
}

TEST(ProjCs, GeographicToUtm33AndBackWithinAMillimetreOverTheZone) {
    auto geographic = Make("EPSG:4326");
    auto utm = Make("EPSG:32633");
    ASSERT_TRUE(geographic && utm);
    for (double lon = 12.0; lon <= 18.0; lon += 0.75) {
        for (double lat = 0.5; lat <= 80.0; lat += 4.5) {
            const TCoord3d grid = geographic->convert(lon, lat, 0.0, *utm);
            const TCoord3d back = utm->convert(grid, *geographic);
            // Compared in metres, on the grid, so the millimetre means the same at every latitude.
            const TCoord3d again = geographic->convert(back, *utm);
            EXPECT_NEAR(again.x, grid.x, 0.001) << lon << " " << lat;
            EXPECT_NEAR(again.y, grid.y, 0.001) << lon << " " << lat;
            EXPECT_NEAR(back.x, lon, 1e-8);
            EXPECT_NEAR(back.y, lat, 1e-8);
        }
    }
}

TEST(ProjCs, AgreesWithCs2csOnAKnownPoint) {
    const std::string reply =
        kiv_geo_test::Capture("echo '15.3 52.5' | cs2cs -f %.4f +proj=longlat +datum=WGS84 +to EPSG:32633");
    double easting = 0, northing = 0;
    ASSERT_EQ(std::sscanf(reply.c_str(), "%lf %lf", &easting, &northing), 2) << reply;
    EXPECT_NEAR(easting, 520364.8968, 0.001) << "cs2cs itself";

    auto geographic = Make("+proj=longlat +datum=WGS84 +no_defs");
    auto utm = Make("EPSG:32633");
    ASSERT_TRUE(geographic && utm);
    const TCoord3d p = geographic->convert(15.3, 52.5, 0.0, *utm);
    EXPECT_NEAR(p.x, easting, 0.001);
    EXPECT_NEAR(p.y, northing, 0.001);
}

TEST(ProjCs, BoxesCarryAcrossLikeAnyOtherSystem) {
    auto geographic = Make("EPSG:4326");
    auto utm = Make("EPSG:32633");
    ASSERT_TRUE(geographic && utm);
    BoundingBox box;
    box.left = 500000;
    box.right = 510000;
    box.bottom = 5800000;
    box.top = 5810000;
    const BoundingBox degrees = transformBBox(box, *utm, *geographic);
    EXPECT_NEAR(degrees.left, 15.0, 1e-6);
    EXPECT_GT(degrees.right, 15.14);
    EXPECT_LT(degrees.right, 15.16);
    EXPECT_GT(degrees.top, degrees.bottom);
}

TEST(ProjCs, UnknownSystemsAreRefusedWithAReason) {
    std::string error;
    EXPECT_FALSE(Csx::CProjCs::create("EPSG:999999", error));
    EXPECT_NE(error.find("EPSG:999999"), std::string::npos);
    EXPECT_FALSE(Csx::CProjCs::create("+proj=nonsense", error));
}

}  // namespace
