// importGeodata: a GIS or CAD source (anything GDAL/OGR opens as vector data) read into
// a vector image: points, polylines, polygon rings, arcs, texts and labels, with the
// colours and pen widths the source's styles give or a palette colour per layer.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "utils/vector/VectorBlob.h"

namespace kiv_geo {

struct TImportOptions {
    std::string source;
    std::vector<std::string> layers;  // empty: every layer
    std::string where;                // an attribute filter in OGR SQL, empty for none
    std::string to;                   // target system (EPSG:n or a PROJ string), empty to keep the source's
    std::string labelField;           // a field whose text labels each feature
    std::string styleField;           // a field holding an OGR style string that overrides the feature's own
    // Called now and then while a large source is read, with a line to show.
    std::function<void(const std::string&)> progress;
};

struct TImportSummary {
    std::uint64_t read = 0;      // features read from the chosen layers
    std::uint64_t written = 0;   // features that gave at least one entity
    std::map<std::string, std::uint64_t> skipped;  // why -> how many
    bool badInput = false;       // the failure lies in the options (layer, filter, system)
    std::string error;           // why the import failed, empty on success
    std::uint64_t skippedTotal() const;
};

// The image, or null with summary.error saying why.
std::shared_ptr<VectorBlob> importGeodata(const TImportOptions& options, TImportSummary& summary);

}  // namespace kiv_geo
