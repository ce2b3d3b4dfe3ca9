// exportGeodata: a vector image written as a GIS or CAD file, so that any GIS can show
// what an image holds. Points, polylines (lines and arcs by the polyline they belong
// to) and labels become features with their colours in OGR style strings.
#pragma once

#include <cstdint>
#include <string>

#include "utils/vector/VectorBlob.h"

namespace kiv_geo {

struct TExportOptions {
    std::string output;
    // "GeoJSON", "GPKG", "DXF" or "ESRI Shapefile"; empty to choose by the output's
    // extension (.geojson/.json, .gpkg, .dxf, .shp or a folder for shapefiles).
    std::string format;
};

struct TExportSummary {
    std::uint64_t points = 0, polylines = 0, labels = 0;
    std::string format;       // the format written
    bool badInput = false;    // the failure lies in the options (format, name)
    std::string error;        // why the export failed, empty on success
};

bool exportGeodata(const VectorBlob& blob, const TExportOptions& options, TExportSummary& summary);

}  // namespace kiv_geo
