// Reads every chosen layer of an OGR data source feature by feature into a
// VectorImageProducer. Styles are made once per distinct colour and width and shared.
#include "geodata/GeoImport.h"

#include <cmath>
#include <mutex>
#include <tuple>

#include <cpl_error.h>
#include <gdal_priv.h>
#include <ogr_featurestyle.h>
#include <ogrsf_frmts.h>

#include "geodata/GeoArcs.h"
#include "platform/host/TextCodec.h"
#include "utils/vector/VectorImageProducer.h"

namespace kiv_geo {

std::uint64_t TImportSummary::skippedTotal() const {
    std::uint64_t total = 0;
    for (const auto& [why, count] : skipped) total += count;
    return total;
}

namespace {

// Colours given to layers that carry no style of their own, in layer order: strong,
// distinct hues that stay readable on the map's white background.
constexpr COLORREF kPalette[] = {RGB(0, 0, 0),     RGB(200, 30, 30), RGB(30, 120, 200), RGB(30, 150, 60),
                                 RGB(200, 120, 0), RGB(130, 50, 170), RGB(0, 150, 150), RGB(120, 80, 40)};
constexpr std::uint64_t kProgressStep = 100000;

void RegisterDrivers() {
    static std::once_flag once;
    std::call_once(once, [] { GDALAllRegister(); });
}

// GDAL's own messages would go to stderr unasked; the failure we report names the cause.
struct QuietErrors {
    QuietErrors() { CPLPushErrorHandler(CPLQuietErrorHandler); }
    ~QuietErrors() { CPLPopErrorHandler(); }
};

std::string LastGdalError(const std::string& fallback) {
    // Only GDAL's first line: later ones point into the SQL text and break the one-line report.
    const char* message = CPLGetLastErrorMsg();
    if (message == nullptr || *message == '\0') return fallback;
    const std::string text(message);
    return fallback + ": " + text.substr(0, text.find('\n'));
}

// What a feature's style string says, each part only where the string has it.
struct TFeatureStyle {
    bool hasPen = false, hasText = false, hasLabelSize = false;
    COLORREF penColour = 0, textColour = 0;
    int penWidth = 1;
    double labelSize = 0.0, labelAngle = 0.0;
    std::string text;
};

bool ToolColour(OGRStyleTool& tool, const char* text, COLORREF& colour) {
    int r = 0, g = 0, b = 0, a = 0;
    if (text == nullptr || !tool.GetRGBFromString(text, r, g, b, a)) return false;
    colour = RGB(static_cast<BYTE>(r), static_cast<BYTE>(g), static_cast<BYTE>(b));
    return true;
}

TFeatureStyle ParseStyle(const char* styleString) {
    TFeatureStyle style;
    if (styleString == nullptr || *styleString == '\0') return style;
    OGRStyleMgr manager;
    if (!manager.InitStyleString(styleString)) return style;
    bool brushColour = false;
    for (int i = 0; i < manager.GetPartCount(); ++i) {
        std::unique_ptr<OGRStyleTool> tool(manager.GetPart(i));
        if (!tool) continue;
        GBool unset = TRUE;
        switch (tool->GetType()) {
            case OGRSTCPen: {
                auto& pen = static_cast<OGRStylePen&>(*tool);
                pen.SetUnit(OGRSTUPixel);
                if (ToolColour(pen, pen.Color(unset), style.penColour) && !unset) style.hasPen = true;
                const double width = pen.Width(unset);
                if (!unset && width > 0.0) style.penWidth = std::max(1, static_cast<int>(std::lround(width)));
                break;
            }
            case OGRSTCBrush: {
                // A filled area has no pen of its own in many sources: its outline takes the fill.
                auto& brush = static_cast<OGRStyleBrush&>(*tool);
                if (!style.hasPen && ToolColour(brush, brush.ForeColor(unset), style.penColour) && !unset) {
                    style.hasPen = brushColour = true;
                }
                break;
            }
            case OGRSTCSymbol: {
                auto& symbol = static_cast<OGRStyleSymbol&>(*tool);
                if ((!style.hasPen || brushColour) && ToolColour(symbol, symbol.Color(unset), style.penColour) && !unset) {
                    style.hasPen = true;
                }
                break;
            }
            case OGRSTCLabel: {
                auto& label = static_cast<OGRStyleLabel&>(*tool);
                label.SetUnit(OGRSTUGround);
                const char* text = label.TextString(unset);
                if (!unset && text != nullptr) style.text = text;
                style.hasText = !style.text.empty();
                ToolColour(label, label.ForeColor(unset), style.textColour);
                const double size = label.Size(unset);
                if (!unset && size > 0.0) {
                    style.labelSize = size;
                    style.hasLabelSize = true;
                }
                style.labelAngle = label.Angle(unset);
                if (unset) style.labelAngle = 0.0;
                break;
            }
            default: break;
        }
    }
    return style;
}

class Importer {
public:
    Importer(const TImportOptions& options, TImportSummary& summary) : options_(options), summary_(summary) {}

    std::shared_ptr<VectorBlob> run();

private:
    bool importLayer(OGRLayer& layer, int layerIndex);
    bool addGeometry(const OGRGeometry& geometry);
    bool addCurvePoints(const OGRSimpleCurve& curve);
    bool addCircularString(const OGRSimpleCurve& curve);
    void skip(const std::string& why) { ++summary_.skipped[why]; }
    bool fail(const std::string& why, bool badInput) {
        summary_.error = why;
        summary_.badInput = badInput;
        return false;
    }

    int lineStyle(COLORREF colour, int width) {
        auto [it, added] = lineStyles_.try_emplace({colour, width}, 0);
        if (added) it->second = producer_.addLineStyle(colour, 0, width);
        return it->second;
    }
    int pointStyle(COLORREF colour) {
        auto [it, added] = pointStyles_.try_emplace(colour, 0);
        if (added) it->second = producer_.addPointStyle(colour);
        return it->second;
    }
    int textStyle(COLORREF colour, double height, double rotation) {
        auto [it, added] = textStyles_.try_emplace({colour, height, rotation}, 0);
        if (added) it->second = producer_.addTextStyle(colour, height, rotation);
        return it->second;
    }

    const TImportOptions& options_;
    TImportSummary& summary_;
    VectorImageProducer producer_;
    std::map<std::pair<COLORREF, int>, int> lineStyles_;
    std::map<COLORREF, int> pointStyles_;
    std::map<std::tuple<COLORREF, double, double>, int> textStyles_;
    std::unique_ptr<OGRCoordinateTransformation> transform_;
    bool recoverArcs_ = false;
    // The styles of the feature at hand.
    int line_ = 0, point_ = 0;
    std::vector<TCoord3d> vertices_;
};

std::shared_ptr<VectorBlob> Importer::run() {
    RegisterDrivers();
    QuietErrors quiet;
    CPLErrorReset();
    GDALDatasetUniquePtr source(GDALDataset::Open(options_.source.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
    if (!source) {
        fail(LastGdalError("cannot open " + options_.source + " as GIS or CAD data"), false);
        return nullptr;
    }
    // The CAD reader hands arcs and circles over as chords; they are recovered as arcs.
    recoverArcs_ = EQUAL(source->GetDriverName(), "DXF");

    std::vector<OGRLayer*> layers;
    if (options_.layers.empty()) {
        for (int i = 0; i < source->GetLayerCount(); ++i) layers.push_back(source->GetLayer(i));
    } else {
        for (const auto& name : options_.layers) {
            OGRLayer* layer = source->GetLayerByName(name.c_str());
            if (layer == nullptr) {
                std::string names;
                for (int i = 0; i < source->GetLayerCount(); ++i) {
                    names += (i ? ", " : "") + std::string(source->GetLayer(i)->GetName());
                }
                fail("no layer \"" + name + "\" in " + options_.source + "; its layers are: " + names, true);
                return nullptr;
            }
            layers.push_back(layer);
        }
    }
    for (std::size_t i = 0; i < layers.size(); ++i) {
        if (!importLayer(*layers[i], static_cast<int>(i))) return nullptr;
    }
    auto blob = producer_.build();
    if (!blob) fail("no memory for the image's pools", false);
    return blob;
}

bool Importer::importLayer(OGRLayer& layer, int layerIndex) {
    const std::string name = layer.GetName();
    if (!options_.where.empty() && layer.SetAttributeFilter(options_.where.c_str()) != OGRERR_NONE) {
        return fail(LastGdalError("the filter \"" + options_.where + "\" does not apply to layer " + name), true);
    }
    transform_.reset();
    if (!options_.to.empty()) {
        OGRSpatialReference target;
        if (target.SetFromUserInput(options_.to.c_str()) != OGRERR_NONE) {
            return fail("cannot read \"" + options_.to + "\" as a coordinate system; give EPSG:n or a PROJ string", true);
        }
        const OGRSpatialReference* from = layer.GetSpatialRef();
        if (from == nullptr) return fail("layer " + name + " names no coordinate system to convert from", false);
        OGRSpatialReference sourceSystem(*from);
        sourceSystem.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
        target.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
        transform_.reset(OGRCreateCoordinateTransformation(&sourceSystem, &target));
        if (!transform_) return fail(LastGdalError("no conversion from layer " + name + " to " + options_.to), true);
    }
    const int labelField = options_.labelField.empty()
                               ? -1
                               : layer.GetLayerDefn()->GetFieldIndex(options_.labelField.c_str());
    const int styleField = options_.styleField.empty()
                               ? -1
                               : layer.GetLayerDefn()->GetFieldIndex(options_.styleField.c_str());
    const COLORREF layerColour = kPalette[layerIndex % std::size(kPalette)];
    // Labels of a label field get a height fitted to the layer, so they read at any scale.
    double labelHeight = 1.0;
    OGREnvelope extent;
    if (labelField >= 0 && layer.GetExtent(&extent, TRUE) == OGRERR_NONE) {
        // Measured where the labels go: a layer in degrees imported into metres wants
        // labels metres high, not a hundredth of a degree.
        if (transform_) {
            double xs[4] = {extent.MinX, extent.MaxX, extent.MinX, extent.MaxX};
            double ys[4] = {extent.MinY, extent.MinY, extent.MaxY, extent.MaxY};
            const bool carried = transform_->Transform(4, xs, ys) != FALSE;
            extent = OGREnvelope();
            for (int i = 0; carried && i < 4; ++i) extent.Merge(xs[i], ys[i]);
        }
        const double span = std::max(extent.MaxX - extent.MinX, extent.MaxY - extent.MinY);
        if (span > 0.0 && std::isfinite(span)) labelHeight = span / 100.0;
    }

    const GIntBig total = layer.GetFeatureCount(FALSE);
    std::uint64_t readHere = 0;
    layer.ResetReading();
    for (auto& feature : layer) {
        ++summary_.read;
        if (options_.progress && ++readHere % kProgressStep == 0) {
            options_.progress(total > 0 ? "layer " + name + ": " + std::to_string(readHere) + " of " +
                                              std::to_string(total) + " features"
                                        : "layer " + name + ": " + std::to_string(readHere) + " features");
        }
        const char* styleText = styleField >= 0 ? feature->GetFieldAsString(styleField) : feature->GetStyleString();
        const TFeatureStyle style = ParseStyle(styleText);
        const COLORREF colour = style.hasPen ? style.penColour : layerColour;
        line_ = lineStyle(colour, style.penWidth);
        point_ = pointStyle(colour);

        OGRGeometry* geometry = feature->GetGeometryRef();
        if (geometry == nullptr || geometry->IsEmpty()) {
            skip("no geometry");
            continue;
        }
        if (transform_ && geometry->transform(transform_.get()) != OGRERR_NONE) {
            skip("outside the target system");
            continue;
        }
        bool wrote = false;
        if (style.hasText && wkbFlatten(geometry->getGeometryType()) == wkbPoint) {
            // A text of the source is its words at a point, not a point symbol.
            const auto* at = geometry->toPoint();
            const int textStyleIndex = textStyle(style.textColour, style.hasLabelSize ? style.labelSize : labelHeight,
                                                 style.labelAngle);
            wrote = producer_.addLabel({at->getX(), at->getY(), at->getZ()}, kiv_text::FromUtf8(style.text),
                                       textStyleIndex) >= 0;
        } else {
            wrote = addGeometry(*geometry);
        }
        if (labelField >= 0 && feature->IsFieldSetAndNotNull(labelField)) {
            const std::string text = feature->GetFieldAsString(labelField);
            if (!text.empty()) {
                OGREnvelope3D box;
                geometry->getEnvelope(&box);
                const TCoord3d at = wkbFlatten(geometry->getGeometryType()) == wkbPoint
                                        ? TCoord3d{box.MinX, box.MinY, box.MinZ}
                                        : TCoord3d{(box.MinX + box.MaxX) / 2, (box.MinY + box.MaxY) / 2, box.MinZ};
                wrote |= producer_.addLabel(at, kiv_text::FromUtf8(text), textStyle(colour, labelHeight, 0.0)) >= 0;
            }
        }
        if (wrote) ++summary_.written;
    }
    return true;
}

bool Importer::addCurvePoints(const OGRSimpleCurve& curve) {
    const int n = curve.getNumPoints();
    vertices_.resize(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) vertices_[i] = {curve.getX(i), curve.getY(i), curve.getZ(i)};
    if (n < 2) {
        skip("a line of fewer than two vertices");
        return false;
    }
    if (recoverArcs_ && addRecoveredArc(producer_, vertices_, line_)) return true;
    return producer_.addPolyline(vertices_, line_) >= 0;
}

bool Importer::addCircularString(const OGRSimpleCurve& curve) {
    const int n = curve.getNumPoints();
    if (n < 3 || n % 2 == 0) {
        skip("a malformed circular arc");
        return false;
    }
    bool wrote = false;
    for (int i = 0; i + 2 < n; i += 2) {
        const TCoord3d a{curve.getX(i), curve.getY(i), curve.getZ(i)};
        const TCoord3d m{curve.getX(i + 1), curve.getY(i + 1), curve.getZ(i + 1)};
        const TCoord3d b{curve.getX(i + 2), curve.getY(i + 2), curve.getZ(i + 2)};
        wrote |= addArcThrough(producer_, a, m, b, line_);
    }
    return wrote;
}

bool Importer::addGeometry(const OGRGeometry& geometry) {
    switch (wkbFlatten(geometry.getGeometryType())) {
        case wkbPoint: {
            const auto* p = geometry.toPoint();
            return producer_.addPoint({p->getX(), p->getY(), p->getZ()}, point_) >= 0;
        }
        case wkbLineString:
        case wkbLinearRing: return addCurvePoints(*geometry.toSimpleCurve());
        case wkbCircularString: return addCircularString(*geometry.toSimpleCurve());
        case wkbCompoundCurve: {
            bool wrote = false;
            for (const OGRCurve* part : *geometry.toCompoundCurve()) wrote |= addGeometry(*part);
            return wrote;
        }
        case wkbPolygon:
        case wkbCurvePolygon:
        case wkbTriangle: {
            // Areas become their rings, each a closed polyline.
            bool wrote = false;
            for (const OGRCurve* ring : *geometry.toCurvePolygon()) wrote |= addGeometry(*ring);
            return wrote;
        }
        case wkbMultiPoint:
        case wkbMultiLineString:
        case wkbMultiPolygon:
        case wkbMultiCurve:
        case wkbMultiSurface:
        case wkbGeometryCollection: {
            bool wrote = false;
            for (const OGRGeometry* part : *geometry.toGeometryCollection()) wrote |= addGeometry(*part);
            return wrote;
        }
        default:
            skip(std::string("unsupported geometry ") + OGRGeometryTypeToName(geometry.getGeometryType()));
            return false;
    }
}

}  // namespace

std::shared_ptr<VectorBlob> importGeodata(const TImportOptions& options, TImportSummary& summary) {
    summary = TImportSummary();
    Importer importer(options, summary);
    return importer.run();
}

}  // namespace kiv_geo
