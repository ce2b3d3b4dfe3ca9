#include "tests/geodata/kivgeo/GeoSamples.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kiv_geo_test {

SampleFolder::SampleFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kivgeo-XXXXXX").string();
    path_ = mkdtemp(pattern.data()) ? pattern : std::string();
}

SampleFolder::~SampleFolder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
}

std::string SampleFolder::write(const std::string& name, const std::string& text) const {
    const std::string file = path(name);
    std::ofstream(file, std::ios::binary) << text;
    return file;
}

namespace {
// The drawing in the exchange format's text form, as a CAD program writes it.
const char* kWriteDrawing = R"(
import sys
rows = []
def entity(*pairs):
    for code, value in pairs: rows.append(f"{code}\n{value}\n")
entity((0, "LINE"), (8, "roads"), (62, 1), (10, 1000.25), (20, 2000.5), (30, 0), (11, 1100.75), (21, 2050.125), (31, 0))
entity((0, "ARC"), (8, "roads"), (62, 3), (10, 1050.0), (20, 2050.0), (30, 0), (40, 10.0), (50, 0.0), (51, 90.0))
entity((0, "CIRCLE"), (8, "wells"), (62, 7), (10, 1200.0), (20, 2100.0), (30, 0), (40, 2.0))
entity((0, "TEXT"), (8, "notes"), (62, 5), (10, 1010.0), (20, 2020.0), (30, 0), (40, 2.5), (1, "Well 7"))
open(sys.argv[1], "w").write("0\nSECTION\n2\nENTITIES\n" + "".join(rows) + "0\nENDSEC\n0\nEOF\n")
)";
}  // namespace

std::string WriteWellsShapefile(const SampleFolder& folder) {
    folder.write("wells.csv",
                 "id,name,WKT\n1,Well 7,POINT (512345.678 5412345.123)\n2,Gate,POINT (512400.001 5412300.999)\n"
                 "3,,POINT (512350 5412350)\n");
    const std::string shapefile = folder.path("wells.shp");
    return Shell("ogr2ogr -f 'ESRI Shapefile' " + shapefile + " " + folder.path("wells.csv")) == 0 ? shapefile : "";
}

std::string WritePlanGeoJson(const SampleFolder& folder) {
    folder.write("plan.csv",
                 "id,WKT\n"
                 "1,\"LINESTRING (100.001 200.002,150.5 200.002,150.5 260.75)\"\n"
                 "2,\"POLYGON ((0 0,40 0,40 30,0 30,0 0),(10 10,20 10,10 20,10 10))\"\n"
                 "3,\"MULTILINESTRING ((1 1,2 2),(3 3,4 4))\"\n");
    const std::string json = folder.path("plan.geojson");
    return Shell("ogr2ogr -f GeoJSON " + json + " " + folder.path("plan.csv")) == 0 ? json : "";
}

std::string WriteSiteDrawing(const SampleFolder& folder) {
    const std::string script = folder.write("drawing.py", kWriteDrawing);
    const std::string drawing = folder.path("site.dxf");
    return Shell("python3 " + script + " " + drawing) == 0 ? drawing : "";
}

std::string WriteTwoLayerGeoPackage(const SampleFolder& folder) {
    folder.write("roads.csv",
                 "id,kind,WKT\n1,main,\"LINESTRING (500000.001 4649776.224,500100.002 4649876.225)\"\n"
                 "2,track,\"LINESTRING (500200 4649776,500300 4649700,500400 4649800)\"\n");
    folder.write("wells.csv", "id,WKT\n1,POINT (500050.5 4649800.25)\n");
    const std::string gpkg = folder.path("map.gpkg");
    if (Shell("ogr2ogr -f GPKG -a_srs EPSG:32633 " + gpkg + " " + folder.path("roads.csv")) != 0) return "";
    return Shell("ogr2ogr -update -f GPKG -a_srs EPSG:32633 " + gpkg + " " + folder.path("wells.csv")) == 0 ? gpkg : "";
}

int Shell(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()); }

std::string Capture(const std::string& command) {
    std::string out;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        std::size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, n);
        pclose(pipe);
    }
    return out;
}

}  // namespace kiv_geo_test
