// Laying out a producer's features as pools. Pools are allocated in the order of the
// required kinds, records written in list order, and each pointer field is reported to
// the pool manager as it is written, in the order VectorBlob::enumPointers uses.
#include "utils/vector/VectorImageProducer.h"

#include "platform/host/TextCodec.h"

using namespace VectorFormat;

namespace {

bool validIndex(int index, std::size_t count) { return index >= 0 && static_cast<std::size_t>(index) < count; }

}  // namespace

int VectorImageProducer::addPointStyle(COLORREF colour, EPointSymbol symbol, std::uint32_t size) {
    pointStyles_.push_back({colour, symbol, size});
    return static_cast<int>(pointStyles_.size()) - 1;
}

int VectorImageProducer::addLineStyle(COLORREF colour, int penStyle, int width) {
    lineStyles_.push_back({colour, penStyle, width});
    return static_cast<int>(lineStyles_.size()) - 1;
}

int VectorImageProducer::addTextStyle(COLORREF colour, double height, double rotationDegrees) {
    textStyles_.push_back({colour, static_cast<float>(height), static_cast<float>(rotationDegrees)});
    return static_cast<int>(textStyles_.size()) - 1;
}

int VectorImageProducer::addPoint(const TCoord3d& position, int pointStyle) {
    if (!validIndex(pointStyle, pointStyles_.size())) return -1;
    points_.push_back({position, pointStyle});
    return static_cast<int>(points_.size()) - 1;
}

int VectorImageProducer::addLine(const TCoord3d& start, const TCoord3d& end, int lineStyle) {
    return addPolyline({start, end}, lineStyle);
}

int VectorImageProducer::addPolyline(const std::vector<TCoord3d>& vertices, int lineStyle) {
    if (!validIndex(lineStyle, lineStyles_.size()) || vertices.size() < 2) return -1;
    const auto polyLine = static_cast<std::uint32_t>(polyLines_.size());
    PolyLine added{lineStyle, {}};
    for (std::size_t i = 1; i < vertices.size(); ++i) {
        added.elements.push_back({eElementLine, static_cast<std::uint32_t>(lines_.size())});
        lines_.push_back({vertices[i - 1], vertices[i], polyLine});
    }
    polyLines_.push_back(std::move(added));
    return static_cast<int>(polyLine);
}

int VectorImageProducer::addArc(const TCoord3d& start, const TCoord3d& centre, const TCoord3d& end, bool clockwise,
                                int lineStyle) {
    if (!validIndex(lineStyle, lineStyles_.size())) return -1;
    const auto polyLine = static_cast<std::uint32_t>(polyLines_.size());
    polyLines_.push_back({lineStyle, {{eElementArc, static_cast<std::uint32_t>(arcs_.size())}}});
    arcs_.push_back({start, end, centre, clockwise ? -1.0 : 1.0, polyLine});
    return static_cast<int>(polyLine);
}

int VectorImageProducer::addLabel(const TCoord3d& position, const std::wstring& text, int textStyle) {
    if (!validIndex(textStyle, textStyles_.size())) return -1;
    std::string utf16 = kiv_text::ToUtf16Le(text);
    utf16.append(2, '\0');
    labels_.push_back({position, std::move(utf16), textStyle});
    return static_cast<int>(labels_.size()) - 1;
}

int VectorImageProducer::addSpline(const std::vector<TCoord3d>& controlPoints, int degree, int lineStyle, bool closed,
                                   const std::vector<double>& weights) {
    if (!validIndex(lineStyle, lineStyles_.size()) || degree < 1 ||
        controlPoints.size() < static_cast<std::size_t>(degree) + 1 ||
        (!weights.empty() && weights.size() != controlPoints.size())) {
        return -1;
    }
    TSplineCurve curve;
    curve.degree = degree;
    curve.closed = closed;
    curve.controlPoints = controlPoints;
    curve.weights = weights.empty() ? std::vector<double>(controlPoints.size(), 1.0) : weights;
    const int inner = static_cast<int>(controlPoints.size()) - degree;  // the knot values run 0 .. inner
    for (int i = 0; i < degree; ++i) curve.knots.push_back(0.0);
    for (int i = 0; i <= inner; ++i) curve.knots.push_back(i);
    for (int i = 0; i < degree; ++i) curve.knots.push_back(inner);
    if (!curve.isValid()) return -1;
    splines_.push_back({std::move(curve), lineStyle});
    return static_cast<int>(splines_.size()) - 1;
}

std::shared_ptr<VectorBlob> VectorImageProducer::build() const {
    VectorBlobBuilder builder;
    PoolManager& pools = builder.getPoolManager();
    IPointerProcessor& fields = *pools.getPointerCollector();

    std::size_t stringBytes = 0;
    for (const Label& label : labels_) stringBytes += label.utf16.size();
    std::size_t elementCount = 0;
    for (const PolyLine& polyLine : polyLines_) elementCount += polyLine.elements.size();

    const auto addPool = [&pools](std::uint32_t kind, std::size_t payload) -> unsigned char* {
        if (payload > 0x7FFFFFF0u) return nullptr;
        auto* entity = reinterpret_cast<PoolManager::Entity*>(pools.alloc(static_cast<int>(payload + 8)));
        if (entity == nullptr) return nullptr;
        entity->setId(kind);
        entity->setSize(static_cast<std::uint32_t>(payload));
        pools.registerPool(entity);
        return entity->data();
    };
    unsigned char* points = addPool(ePointsList, points_.size() * kPointRecordBytes);
    unsigned char* pointStyles = addPool(ePointStylesList, pointStyles_.size() * kPointStyleRecordBytes);
    unsigned char* arcs = addPool(eArcsList, arcs_.size() * kArcRecordBytes);
    unsigned char* lines = addPool(eLinesList, lines_.size() * kLineRecordBytes);
    unsigned char* strings = addPool(eStringsData, stringBytes);
    unsigned char* labels = addPool(eLabelsList, labels_.size() * kLabelRecordBytes);
    unsigned char* lineStyles = addPool(eLineStylesList, lineStyles_.size() * kLineStyleRecordBytes);
    unsigned char* textStyles = addPool(eTextStylesList, textStyles_.size() * kTextStyleRecordBytes);
    unsigned char* polyLines = addPool(ePolyLinesList, polyLines_.size() * kPolyLineRecordBytes);
    unsigned char* elements = addPool(ePolyLineElementsLists, elementCount * kPolyLineElementRecordBytes);
    if (!points || !pointStyles || !arcs || !lines || !strings || !labels || !lineStyles || !textStyles ||
        !polyLines || !elements) {
        return nullptr;
    }

    // A pointer field: the word naming `target`, reported to the pool manager.
    const auto link = [&](unsigned char* field, const unsigned char* target) {
        writeU32(field, pools.toWord(target));
        fields.processPointer(field);
    };

    for (std::size_t i = 0; i < pointStyles_.size(); ++i) {
        unsigned char* record = pointStyles + i * kPointStyleRecordBytes;
        writeColour(record, pointStyles_[i].colour);
        record[3] = pointStyles_[i].symbol;
        writeU32(record + 4, pointStyles_[i].size);
    }
    for (std::size_t i = 0; i < lineStyles_.size(); ++i) {
        unsigned char* record = lineStyles + i * kLineStyleRecordBytes;
        writeU32(record, 0);
        writeColour(record, lineStyles_[i].colour);
        writeU32(record + 4, static_cast<std::uint8_t>(static_cast<signed char>(lineStyles_[i].penStyle)));
        writeU32(record + 8, static_cast<std::uint32_t>(lineStyles_[i].width));
    }
    for (std::size_t i = 0; i < textStyles_.size(); ++i) {
        unsigned char* record = textStyles + i * kTextStyleRecordBytes;
        writeU32(record, 0);
        writeColour(record, textStyles_[i].colour);
        writeF32(record + 4, textStyles_[i].height);
        writeF32(record + 8, textStyles_[i].rotation);
    }

    for (std::size_t i = 0; i < points_.size(); ++i) {
        unsigned char* record = points + i * kPointRecordBytes;
        writePosition(record, points_[i].position);
        link(record + kPointStyleField, pointStyles + points_[i].style * kPointStyleRecordBytes);
    }
    for (std::size_t i = 0; i < arcs_.size(); ++i) {
        unsigned char* record = arcs + i * kArcRecordBytes;
        writePosition(record, arcs_[i].start);
        writePosition(record + 24, arcs_[i].end);
        writePosition(record + 48, arcs_[i].centre);
        writeF64(record + 72, arcs_[i].direction);
        link(record + kArcPolyLineField, polyLines + arcs_[i].polyLine * kPolyLineRecordBytes);
    }
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        unsigned char* record = lines + i * kLineRecordBytes;
        writePosition(record, lines_[i].start);
        writePosition(record + 24, lines_[i].end);
        link(record + kLinePolyLineField, polyLines + lines_[i].polyLine * kPolyLineRecordBytes);
    }
    std::size_t stringOffset = 0;
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        unsigned char* record = labels + i * kLabelRecordBytes;
        std::memcpy(strings + stringOffset, labels_[i].utf16.data(), labels_[i].utf16.size());
        writePosition(record, labels_[i].position);
        link(record + kLabelTextField, strings + stringOffset);
        link(record + kLabelStyleField, textStyles + labels_[i].style * kTextStyleRecordBytes);
        stringOffset += labels_[i].utf16.size();
    }
    std::size_t firstElement = 0;
    for (std::size_t i = 0; i < polyLines_.size(); ++i) {
        unsigned char* record = polyLines + i * kPolyLineRecordBytes;
        link(record + kPolyLineStyleField, lineStyles + polyLines_[i].style * kLineStyleRecordBytes);
        link(record + kPolyLineElementsField, elements + firstElement * kPolyLineElementRecordBytes);
        writeU32(record + 8, static_cast<std::uint32_t>(polyLines_[i].elements.size()));
        firstElement += polyLines_[i].elements.size();
    }
    std::size_t element = 0;
    for (const PolyLine& polyLine : polyLines_) {
        for (const Element& e : polyLine.elements) {
            unsigned char* record = elements + element++ * kPolyLineElementRecordBytes;
            writeU32(record, e.kind);
            const unsigned char* target = e.kind == eElementLine ? lines + e.index * kLineRecordBytes
                                                                 : arcs + e.index * kArcRecordBytes;
            link(record + kPolyLineElementTargetField, target);
        }
    }
    // Spline kinds only when there are splines: an image without them holds none.
    if (!splines_.empty()) {
        std::size_t controlCount = 0, knotCount = 0;
        for (const Spline& spline : splines_) {
            controlCount += spline.curve.controlPoints.size();
            knotCount += spline.curve.knots.size();
        }
        unsigned char* list = addPool(eSplinesList, splines_.size() * kSplineRecordBytes);
        unsigned char* controls = addPool(eSplinesControlPoints, controlCount * kSplineControlPointRecordBytes);
        unsigned char* knots = addPool(eSplinesKnots, knotCount * kSplineKnotRecordBytes);
        if (!list || !controls || !knots) return nullptr;
        std::size_t control = 0, knot = 0;
        for (std::size_t i = 0; i < splines_.size(); ++i) {
            const TSplineCurve& curve = splines_[i].curve;
            const LineStyle& style = lineStyles_[static_cast<std::size_t>(splines_[i].style)];
            unsigned char* record = list + i * kSplineRecordBytes;
            writeU32(record, static_cast<std::uint32_t>(curve.degree));
            writeU32(record + 4, static_cast<std::uint32_t>(curve.controlPoints.size()));
            writeU32(record + 8, static_cast<std::uint32_t>(curve.knots.size()));
            link(record + kSplineControlPointsField, controls + control * kSplineControlPointRecordBytes);
            writeU32(record + 16, 0);
            writeColour(record + 16, style.colour);
            record[19] = static_cast<unsigned char>(static_cast<signed char>(style.penStyle));
            writeU32(record + 20, static_cast<std::uint32_t>(style.width));
            link(record + kSplineKnotsField, knots + knot * kSplineKnotRecordBytes);
            writeU32(record + 28, curve.closed ? 1u : 0u);
            for (std::size_t j = 0; j < curve.controlPoints.size(); ++j, ++control) {
                unsigned char* point = controls + control * kSplineControlPointRecordBytes;
                writePosition(point, curve.controlPoints[j]);
                writeF64(point + 24, curve.weights[j]);
            }
            for (double value : curve.knots) writeF64(knots + knot++ * kSplineKnotRecordBytes, value);
        }
    }
    return builder.build();
}
