// VectorBlob and VectorBlobBuilder: where the pointer fields of each list lie, loading
// and checking an image, and typed access that never leaves the image.
#include "utils/vector/VectorBlob.h"

#include <string>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/KivLog.h"

using namespace VectorFormat;

namespace {

// Reports the pointer fields at `offsets` of every record of `entity`.
template <std::size_t N>
void reportFields(PoolManager::Entity* entity, std::uint32_t recordBytes, const std::uint32_t (&offsets)[N],
                  IPointerProcessor& processor) {
    if (entity == nullptr) return;
    const std::uint32_t count = entity->getSize() / recordBytes;
    for (std::uint32_t i = 0; i < count; ++i) {
        unsigned char* record = entity->data() + std::size_t{i} * recordBytes;
        for (std::uint32_t offset : offsets) processor.processPointer(record + offset);
    }
}

// Labels are short; a text without its zero unit within this many units is cut here.
constexpr std::size_t kMaxLabelUnits = 4096;

}  // namespace

template <typename List>
List* VectorBlob::getList(std::uint32_t kind) const {
    Entity* entity = getEntity(static_cast<int>(kind));
    if (entity == nullptr || (entity->getId() & kKindMask) != kind) return nullptr;
    return reinterpret_cast<List*>(entity);
}

PointsList* VectorBlob::getPointsList() const { return getList<PointsList>(ePointsList); }
LinesList* VectorBlob::getLinesList() const { return getList<LinesList>(eLinesList); }
ArcsList* VectorBlob::getArcsList() const { return getList<ArcsList>(eArcsList); }

void VectorBlob::enumPointers(IPointerProcessor& processor) {
    const auto kept = [this](std::uint32_t kind) { return getList<Entity>(kind); };
    static constexpr std::uint32_t kPointFields[] = {kPointStyleField};
    static constexpr std::uint32_t kArcFields[] = {kArcPolyLineField};
    static constexpr std::uint32_t kLineFields[] = {kLinePolyLineField};
    static constexpr std::uint32_t kLabelFields[] = {kLabelTextField, kLabelStyleField};
    static constexpr std::uint32_t kPolyLineFields[] = {kPolyLineStyleField, kPolyLineElementsField};
    static constexpr std::uint32_t kElementFields[] = {kPolyLineElementTargetField};
    static constexpr std::uint32_t kSplineFields[] = {kSplineControlPointsField, kSplineKnotsField};
    // Point styles, text styles, line styles and spline control points hold no pointers.
    reportFields(kept(ePointsList), kPointRecordBytes, kPointFields, processor);
    reportFields(kept(eArcsList), kArcRecordBytes, kArcFields, processor);
    reportFields(kept(eLinesList), kLineRecordBytes, kLineFields, processor);
    reportFields(kept(eLabelsList), kLabelRecordBytes, kLabelFields, processor);
    reportFields(kept(ePolyLinesList), kPolyLineRecordBytes, kPolyLineFields, processor);
    reportFields(kept(ePolyLineElementsLists), kPolyLineElementRecordBytes, kElementFields, processor);
    reportFields(kept(eSplinesList), kSplineRecordBytes, kSplineFields, processor);
}

bool VectorBlob::deserialize(std::shared_ptr<unsigned char[]> image, int bytes) {
    // A blob that already holds an image starts afresh: the old pools live inside the
    // image about to be let go (or in a built arena) and must not be found next to the
    // new ones. Copies taken earlier keep their own pools and their share of the old image.
    pools_ = PoolManager();
    directory_ = nullptr;
    image_ = std::move(image);
    if (!pools_.deserialize(image_.get(), bytes)) return false;
    directory_ = (readU32(image_.get()) & kKindMask) == eTagDirectory ? reinterpret_cast<Entity*>(image_.get())
                                                                        : nullptr;
    return verifyTagSet();
}

bool VectorBlob::serialize(CEntityWriter& writer) { return pools_.serialize(writer); }

bool VectorBlob::verifyTagSet() {
    bool complete = true;
    for (std::uint32_t kind : kRequiredKinds) {
        if (getEntity(static_cast<int>(kind)) == nullptr) {
            LOGMESSAGE(0, L"Vector Format Error: cannot find required entity with id %08X\n", kind);
            complete = false;
        }
    }
    const Entity* splines = getEntity(eSplinesList);
    if (splines != nullptr && splines->getSize() >= kSplineRecordBytes) {
        if (getEntity(eSplinesControlPoints) == nullptr) {
            LOGMESSAGE(0, L"Vector Format Error: entity SplinesList exists but no SplinesControlPoints entity found");
            complete = false;
        }
        if (getEntity(eSplinesKnots) == nullptr) {
            LOGMESSAGE(0, L"Vector Format Error: entity SplinesList exists but no SplinesKnots entity found");
            complete = false;
        }
    }
    return complete;
}

std::uint32_t VectorBlob::getPointCount() const {
    const auto* list = getPointsList();
    return list ? list->getCount() : 0;
}
std::uint32_t VectorBlob::getLineCount() const {
    const auto* list = getLinesList();
    return list ? list->getCount() : 0;
}
std::uint32_t VectorBlob::getArcCount() const {
    const auto* list = getArcsList();
    return list ? list->getCount() : 0;
}
std::uint32_t VectorBlob::getLabelCount() const {
    const auto* list = getList<Entity>(eLabelsList);
    return list ? list->getSize() / kLabelRecordBytes : 0;
}
std::uint32_t VectorBlob::getPolyLineCount() const {
    const auto* list = getList<Entity>(ePolyLinesList);
    return list ? list->getSize() / kPolyLineRecordBytes : 0;
}

std::uint32_t VectorBlob::getSplineCount() const {
    const auto* list = getList<Entity>(eSplinesList);
    return list ? list->getSize() / kSplineRecordBytes : 0;
}

bool VectorBlob::getPointStyle(std::uint32_t point, TPointStyle& style) const {
    const PointsList* points = getPointsList();
    if (points == nullptr || point >= points->getCount()) return false;
    // The style pointer comes from the file: its target is checked to lie in the image.
    const unsigned char* record = pools_.fromWord(points->getStyleWord(point), kPointStyleRecordBytes);
    if (record == nullptr) return false;
    style.colour = readColour(record);
    style.symbol = record[3];
    style.size = readU32(record + 4);
    return true;
}

bool VectorBlob::readLineStyleThrough(std::uint32_t polyLineWord, TLineStyle& style) const {
    // Two hops, each checked to stay in the image: to the word that holds the style's
    // address (the polyline's first word), then to the style record itself.
    const unsigned char* styleWord = pools_.fromWord(polyLineWord, 4);
    if (styleWord == nullptr) return false;
    const unsigned char* record = pools_.fromWord(readU32(styleWord), kLineStyleRecordBytes);
    if (record == nullptr) return false;
    style.colour = readColour(record);
    style.penStyle = static_cast<signed char>(record[4]);
    style.width = static_cast<int>(readU32(record + 8));
    return true;
}

bool VectorBlob::getLineStyle(std::uint32_t line, TLineStyle& style) const {
    const LinesList* lines = getLinesList();
    return lines != nullptr && line < lines->getCount() && readLineStyleThrough(lines->getPolyLineWord(line), style);
}

bool VectorBlob::getArcStyle(std::uint32_t arc, TLineStyle& style) const {
    const ArcsList* arcs = getArcsList();
    return arcs != nullptr && arc < arcs->getCount() && readLineStyleThrough(arcs->getPolyLineWord(arc), style);
}

bool VectorBlob::getPolyLineStyle(std::uint32_t polyLine, TLineStyle& style) const {
    const Entity* list = getList<Entity>(ePolyLinesList);
    if (list == nullptr || polyLine >= list->getSize() / kPolyLineRecordBytes) return false;
    return readLineStyleThrough(pools_.toWord(list->data() + std::size_t{polyLine} * kPolyLineRecordBytes), style);
}

// The index of the polyline record that `word` names in a list of `count` records
// starting at `first`; -1 unless it names the start of one.
static int polyLineIndexIn(std::uint32_t word, std::uint32_t first, std::uint32_t count) {
    if (word < first || (word - first) % kPolyLineRecordBytes != 0) return -1;
    const std::uint32_t index = (word - first) / kPolyLineRecordBytes;
    return index < count ? static_cast<int>(index) : -1;
}

int VectorBlob::polyLineIndexOf(std::uint32_t polyLineWord) const {
    const Entity* list = getList<Entity>(ePolyLinesList);
    if (list == nullptr) return -1;
    return polyLineIndexIn(polyLineWord, pools_.toWord(list->data()), list->getSize() / kPolyLineRecordBytes);
}

int VectorBlob::getLinePolyLineIndex(std::uint32_t line) const {
    const LinesList* lines = getLinesList();
    return lines != nullptr && line < lines->getCount() ? polyLineIndexOf(lines->getPolyLineWord(line)) : -1;
}

void VectorBlob::getLinePolyLineIndices(int* out) const {
    const LinesList* lines = getLinesList();
    if (lines == nullptr) return;
    const Entity* list = getList<Entity>(ePolyLinesList);
    const std::uint32_t first = list != nullptr ? pools_.toWord(list->data()) : 0;
    const std::uint32_t count = list != nullptr ? list->getSize() / kPolyLineRecordBytes : 0;
    for (std::uint32_t i = 0; i < lines->getCount(); ++i)
        out[i] = list != nullptr ? polyLineIndexIn(lines->getPolyLineWord(i), first, count) : -1;
}

int VectorBlob::getArcPolyLineIndex(std::uint32_t arc) const {
    const ArcsList* arcs = getArcsList();
    return arcs != nullptr && arc < arcs->getCount() ? polyLineIndexOf(arcs->getPolyLineWord(arc)) : -1;
}

bool VectorBlob::getLabel(std::uint32_t label, TLabel& result) const {
    const Entity* list = getList<Entity>(eLabelsList);
    if (list == nullptr || label >= list->getSize() / kLabelRecordBytes) return false;
    const unsigned char* record = list->data() + std::size_t{label} * kLabelRecordBytes;
    result.position = readPosition(record);
    const unsigned char* style = pools_.fromWord(readU32(record + kLabelStyleField), kTextStyleRecordBytes);
    if (style == nullptr) return false;
    result.style.colour = readColour(style);
    result.style.height = readF32(style + 4);
    result.style.rotation = readF32(style + 8);
    // The text runs to its zero unit, but never past the end of the image.
    const std::uint32_t textWord = readU32(record + kLabelTextField);
    const unsigned char* text = pools_.fromWord(textWord, 0);
    if (text == nullptr) return false;
    std::size_t units = 0;
    while (units < kMaxLabelUnits && pools_.fromWord(textWord, 2 * (units + 1)) != nullptr &&
           (text[2 * units] != 0 || text[2 * units + 1] != 0)) {
        ++units;
    }
    result.text = CKivStringT(
        kiv_text::FromUtf16Le(std::string_view(reinterpret_cast<const char*>(text), 2 * units)).c_str());
    return true;
}

bool VectorBlob::getSpline(std::uint32_t spline, TSpline& result) const {
    constexpr std::uint32_t kMaxControlPoints = 1u << 16, kMaxDegree = 31;
    if (spline >= getSplineCount()) return false;
    const unsigned char* record = getList<Entity>(eSplinesList)->data() + std::size_t{spline} * kSplineRecordBytes;
    const std::uint32_t degree = readU32(record), controls = readU32(record + 4), knots = readU32(record + 8);
    if (degree < 1 || degree > kMaxDegree || controls > kMaxControlPoints || knots != controls + degree + 1) return false;
    const unsigned char* points = pools_.fromWord(readU32(record + kSplineControlPointsField),
                                                  std::size_t{controls} * kSplineControlPointRecordBytes);
    const unsigned char* values =
        pools_.fromWord(readU32(record + kSplineKnotsField), std::size_t{knots} * kSplineKnotRecordBytes);
    if (points == nullptr || values == nullptr) return false;
    TSplineCurve& curve = result.curve;
    curve.degree = static_cast<int>(degree);
    curve.closed = (readU32(record + 28) & 1u) != 0;
    curve.controlPoints.resize(controls);
    curve.weights.resize(controls);
    for (std::uint32_t i = 0; i < controls; ++i) {
        curve.controlPoints[i] = readPosition(points + std::size_t{i} * kSplineControlPointRecordBytes);
        curve.weights[i] = readF64(points + std::size_t{i} * kSplineControlPointRecordBytes + 24);
    }
    curve.knots.resize(knots);
    for (std::uint32_t i = 0; i < knots; ++i) curve.knots[i] = readF64(values + std::size_t{i} * kSplineKnotRecordBytes);
    result.style.colour = readColour(record + 16);
    result.style.penStyle = static_cast<signed char>(record[19]);
    result.style.width = static_cast<int>(readU32(record + 20));
    return curve.isValid();
}

VectorBlobBuilder::VectorBlobBuilder() : blob_(new VectorBlob()) {}

void VectorBlobBuilder::completeTagSet() {
    PoolManager& pools = blob_->getPoolManager();
    for (std::uint32_t kind : kRequiredKinds) {
        if (blob_->getEntity(static_cast<int>(kind)) != nullptr) continue;
        auto* entity = reinterpret_cast<PoolManager::Entity*>(pools.alloc(kEntityHeaderBytes));
        if (entity == nullptr) return;
        entity->setId(kind);
        entity->setSize(0);
        pools.registerPool(entity);
    }
}

std::shared_ptr<VectorBlob> VectorBlobBuilder::build() {
    completeTagSet();
    return blob_;
}
