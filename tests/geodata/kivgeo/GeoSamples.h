// Source files for the geodata tests, written by tools independent of ours: ogr2ogr
// converts small CSV tables with WKT geometries, and Python writes the CAD drawing.
#pragma once

#include <string>

namespace kiv_geo_test {

// A fresh folder for one test, removed with everything in it at the end of the scope.
class SampleFolder {
public:
    SampleFolder();
    ~SampleFolder();
    SampleFolder(const SampleFolder&) = delete;
    SampleFolder& operator=(const SampleFolder&) = delete;
    std::string path(const std::string& name) const { return path_ + "/" + name; }
    // Writes `text` to the named file in the folder and returns its path.
    std::string write(const std::string& name, const std::string& text) const;

private:
    std::string path_;
};

// The sample sources, each written into the folder by an independent tool; each returns
// the source's path, or an empty text when the tool failed.
// Three wells in a shapefile, positions to the millimetre, a "name" field (one empty).
std::string WriteWellsShapefile(const SampleFolder& folder);
// GeoJSON: a three-vertex line, a polygon with a hole, a two-part multi-line.
std::string WritePlanGeoJson(const SampleFolder& folder);
// A drawing in the CAD exchange format: a red line, a green quarter arc, a circle of
// colour by layer and a blue text.
std::string WriteSiteDrawing(const SampleFolder& folder);
// A GeoPackage in UTM zone 33N with the layers "roads" (two lines, a "kind" field) and
// "wells" (one point).
std::string WriteTwoLayerGeoPackage(const SampleFolder& folder);

// Runs a shell command; its exit status (0 on success).
int Shell(const std::string& command);
// The command's standard output.
std::string Capture(const std::string& command);

}  // namespace kiv_geo_test
