// Writes an image through an OGR driver. Formats that hold one layer of any geometry
// (GeoJSON, DXF) get a single layer "image"; the others get "points", "polylines" and
// "labels". Single-file formats are written beside the target and renamed over it, so
// a failed export never leaves half a file; a shapefile folder is written in place.
#include "geodata/GeoExport.h"

#include <cmath>
#include <filesystem>
#include <memory>
#include <numbers>
#include <vector>

#include <cpl_error.h>
#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <fmt/format.h>

#include "platform/host/TextCodec.h"

namespace kiv_geo {

namespace {

std::string Lower(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// The driver name for the format asked for or implied by the output; empty if none.
std::string ChooseFormat(const TExportOptions& options) {
    const std::string asked = Lower(options.format);
    if (!asked.empty()) {
        if (asked == "geojson") return "GeoJSON";
        if (asked == "gpkg") return "GPKG";
        if (asked == "dxf") return "DXF";
        if (asked == "esri shapefile" || asked == "shapefile" || asked == "shp") return "ESRI Shapefile";
        return {};
    }
    const std::string ext = Lower(std::filesystem::path(options.output).extension().string());
    if (ext == ".geojson" || ext == ".json") return "GeoJSON";
    if (ext == ".gpkg") return "GPKG";
    if (ext == ".dxf") return "DXF";
    if (ext == ".shp" || ext.empty()) return "ESRI Shapefile";
    return {};
}

std::string Colour(COLORREF c) { return fmt::format("#{:02x}{:02x}{:02x}", GetRValue(c), GetGValue(c), GetBValue(c)); }

std::string Quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

// The arc as the three points a circular string is made of: start, the point halfway
// along the sweep, end. A start equal to its end is the full circle.
std::unique_ptr<OGRCircularString> ArcString(const TCoord3d& s, const TCoord3d& c, const TCoord3d& e,
                                             double direction) {
    const double a0 = std::atan2(s.y - c.y, s.x - c.x), a1 = std::atan2(e.y - c.y, e.x - c.x);
    const double turn = 2.0 * std::numbers::pi;
    double sweep = direction > 0.0 ? a1 - a0 : a0 - a1;
    while (sweep <= 0.0) sweep += turn;
    while (sweep > turn) sweep -= turn;
    const double mid = a0 + (direction > 0.0 ? sweep : -sweep) / 2.0;
    const double r = std::hypot(s.x - c.x, s.y - c.y);
    auto arc = std::make_unique<OGRCircularString>();
    arc->addPoint(s.x, s.y, s.z);
    arc->addPoint(c.x + r * std::cos(mid), c.y + r * std::sin(mid), (s.z + e.z) / 2.0);
    arc->addPoint(e.x, e.y, e.z);
    return arc;
}

// The pieces of each polyline in record order: runs of joined segments and arcs.
struct PolyLineParts {
    std::vector<std::unique_ptr<OGRCurve>> parts;
};

std::vector<PolyLineParts> CollectPolyLines(const VectorBlob& blob) {
    std::vector<PolyLineParts> polyLines(blob.getPolyLineCount());
    if (const auto* lines = blob.getLinesList()) {
        for (std::uint32_t i = 0; i < lines->getCount(); ++i) {
            const int p = blob.getLinePolyLineIndex(i);
            if (p < 0 || static_cast<std::size_t>(p) >= polyLines.size()) continue;
            auto& parts = polyLines[p].parts;
            const TCoord3d s = lines->getStart(i), e = lines->getEnd(i);
            auto* last = parts.empty() ? nullptr : dynamic_cast<OGRLineString*>(parts.back().get());
            if (last == nullptr || last->getX(last->getNumPoints() - 1) != s.x || last->getY(last->getNumPoints() - 1) != s.y) {
                auto run = std::make_unique<OGRLineString>();
                run->addPoint(s.x, s.y, s.z);
                last = run.get();
                parts.push_back(std::move(run));
            }
            last->addPoint(e.x, e.y, e.z);
        }
    }
    if (const auto* arcs = blob.getArcsList()) {
        for (std::uint32_t i = 0; i < arcs->getCount(); ++i) {
            const int p = blob.getArcPolyLineIndex(i);
            if (p < 0 || static_cast<std::size_t>(p) >= polyLines.size()) continue;
            polyLines[p].parts.push_back(
                ArcString(arcs->getStart(i), arcs->getCenter(i), arcs->getEnd(i), arcs->getDirection(i)));
        }
    }
    return polyLines;
}

std::unique_ptr<OGRGeometry> Assemble(PolyLineParts& polyLine) {
    if (polyLine.parts.size() == 1) return std::move(polyLine.parts.front());
    auto multi = std::make_unique<OGRMultiCurve>();
    for (auto& part : polyLine.parts) multi->addGeometryDirectly(part.release());
    return multi;
}

class Writer {
public:
    Writer(GDALDataset& dataset, bool oneLayer, bool fields)
        : dataset_(dataset), oneLayer_(oneLayer), fields_(fields),
          curves_(dataset.TestCapability(ODsCCurveGeometries) != FALSE) {}

    OGRLayer* layer(const char* name, OGRwkbGeometryType type) {
        // The CAD writer renames its one layer, so the single layer is kept, not looked up.
        if (oneLayer_ && single_ != nullptr) return single_;
        OGRLayer* made = dataset_.CreateLayer(oneLayer_ ? "image" : name, nullptr, oneLayer_ ? wkbUnknown : type, nullptr);
        if (oneLayer_) single_ = made;
        if (made != nullptr && fields_) {
            for (const char* field : {"kind", "text", "colour"}) {
                OGRFieldDefn definition(field, OFTString);
                if (made->CreateField(&definition) != OGRERR_NONE) return nullptr;
            }
        }
        return made;
    }

    bool write(OGRLayer* layer, std::unique_ptr<OGRGeometry> geometry, const char* kind, const std::string& text,
               COLORREF colour, const std::string& style) {
        if (layer == nullptr) return false;
        OGRFeature feature(layer->GetLayerDefn());
        if (fields_) {
            feature.SetField("kind", kind);
            feature.SetField("text", text.c_str());
            feature.SetField("colour", Colour(colour).c_str());
        }
        feature.SetStyleString(style.c_str());
        // Formats without curves get arcs as chords, the way GIS tools store them there.
        if (!curves_ && geometry->hasCurveGeometry()) geometry.reset(geometry->getLinearGeometry());
        feature.SetGeometryDirectly(geometry.release());
        return layer->CreateFeature(&feature) == OGRERR_NONE;
    }

private:
    GDALDataset& dataset_;
    bool oneLayer_, fields_, curves_;
    OGRLayer* single_ = nullptr;
};

bool WriteImage(const VectorBlob& blob, GDALDataset& dataset, const std::string& format, TExportSummary& summary) {
    const bool oneLayer = format == "GeoJSON" || format == "DXF";
    // The CAD writer keeps its own fixed fields; colours and texts travel in the styles.
    Writer writer(dataset, oneLayer, format != "DXF");
    if (const auto* points = blob.getPointsList(); points != nullptr && points->getCount() > 0) {
        OGRLayer* layer = writer.layer("points", wkbPoint25D);
        for (std::uint32_t i = 0; i < points->getCount(); ++i) {
            TPointStyle style;
            blob.getPointStyle(i, style);
            const TCoord3d p = points->getPosition(i);
            if (!writer.write(layer, std::make_unique<OGRPoint>(p.x, p.y, p.z), "point", {}, style.colour,
                              "SYMBOL(id:\"ogr-sym-3\",c:" + Colour(style.colour) + ")")) {
                return false;
            }
            ++summary.points;
        }
    }
    auto polyLines = CollectPolyLines(blob);
    if (!polyLines.empty()) {
        OGRLayer* layer = writer.layer("polylines", wkbMultiLineString25D);
        for (std::size_t i = 0; i < polyLines.size(); ++i) {
            if (polyLines[i].parts.empty()) continue;
            TLineStyle style;
            blob.getPolyLineStyle(static_cast<std::uint32_t>(i), style);
            const std::string pen = fmt::format("PEN(c:{},w:{}px)", Colour(style.colour), std::max(style.width, 1));
            if (!writer.write(layer, Assemble(polyLines[i]), "polyline", {}, style.colour, pen)) return false;
            ++summary.polylines;
        }
    }
    const std::uint32_t labels = blob.getLabelCount();
    if (labels > 0) {
        OGRLayer* layer = writer.layer("labels", wkbPoint25D);
        for (std::uint32_t i = 0; i < labels; ++i) {
            TLabel label;
            if (!blob.getLabel(i, label)) continue;
            const std::string text = kiv_text::ToUtf8(label.text.GetString());
            const std::string style = fmt::format("LABEL(t:{},s:{}g,a:{},c:{})", Quoted(text), label.style.height,
                                                  label.style.rotation, Colour(label.style.colour));
            const TCoord3d& p = label.position;
            if (!writer.write(layer, std::make_unique<OGRPoint>(p.x, p.y, p.z), "label", text, label.style.colour,
                              style)) {
                return false;
            }
            ++summary.labels;
        }
    }
    return true;
}

}  // namespace

bool exportGeodata(const VectorBlob& blob, const TExportOptions& options, TExportSummary& summary) {
    summary = TExportSummary();
    summary.format = ChooseFormat(options);
    if (summary.format.empty()) {
        summary.badInput = true;
        summary.error = options.format.empty()
                            ? "cannot tell the format from \"" + options.output +
                                  "\"; name it .geojson, .gpkg, .dxf or .shp, or give --format"
                            : "unknown format \"" + options.format + "\"; give GeoJSON, GPKG, DXF or \"ESRI Shapefile\"";
        return false;
    }
    static const bool registered = (GDALAllRegister(), true);
    (void)registered;
    CPLPushErrorHandler(CPLQuietErrorHandler);
    CPLErrorReset();
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(summary.format.c_str());
    const bool inPlace = summary.format == "ESRI Shapefile";
    const std::filesystem::path target(options.output);
    const std::string written =
        inPlace ? options.output : options.output + ".partial" + target.extension().string();
    std::error_code ignored;
    std::filesystem::remove(written, ignored);
    bool ok = false;
    if (driver != nullptr) {
        GDALDatasetUniquePtr dataset(driver->Create(written.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
        ok = dataset && WriteImage(blob, *dataset, summary.format, summary);
        // Closing flushes the last bytes; a failure there is the export's failure.
        CPLErrorReset();
        dataset.reset();
        ok = ok && CPLGetLastErrorType() < CE_Failure;
    }
    if (!ok) {
        const char* why = CPLGetLastErrorMsg();
        summary.error = "cannot write " + options.output + (why && *why ? std::string(": ") + why : std::string());
        if (!inPlace) std::filesystem::remove(written, ignored);
    } else if (!inPlace) {
        std::error_code error;
        std::filesystem::rename(written, target, error);
        if (error) {
            summary.error = "cannot put " + options.output + " in place: " + error.message();
            std::filesystem::remove(written, ignored);
            ok = false;
        }
    }
    CPLPopErrorHandler();
    return ok;
}

}  // namespace kiv_geo
