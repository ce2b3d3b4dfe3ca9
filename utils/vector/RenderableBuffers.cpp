// Point, line and arc buffers: how each divides against a node's box, draws itself
// through a renderer, and offers its features to a pick.
#include "utils/vector/RenderableBuffers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace {

// Keeps the candidate when it is within tolerance and nearer than what was found; on a
// tie a point wins over a line, since a point is what a surveyor stakes.
void offer(TPickResult& best, double tolerance, TPickResult::EKind kind, int index, double distance,
           const TCoord2d& nearest) {
    if (!(distance <= tolerance)) return;
    const bool nearer = best.kind == TPickResult::eNone || distance < best.distance ||
                        (distance == best.distance && kind == TPickResult::ePoint && best.kind == TPickResult::eLine);
    if (nearer) best = TPickResult{kind, index, distance, nearest};
}

TCoord2d nearestOnSegment(const TCoord2d& p, double x1, double y1, double x2, double y2) {
    const double dx = x2 - x1, dy = y2 - y1;
    const double length2 = dx * dx + dy * dy;
    double t = length2 > 0.0 ? ((p.x - x1) * dx + (p.y - y1) * dy) / length2 : 0.0;
    t = std::clamp(t, 0.0, 1.0);
    return {x1 + t * dx, y1 + t * dy};
}

BoundingBox boxOfSegment(double x1, double y1, double x2, double y2) {
    return {std::min(x1, x2), std::max(y1, y2), std::max(x1, x2), std::min(y1, y2)};
}

// The quadrants of `node` that `item` touches (0 upper left .. 3 lower right); true
// when it touches all four.
bool touchedQuadrants(const BoundingBox& node, const BoundingBox& item, bool touches[4]) {
    const double cx = node.left + node.getWidth() / 2;
    const double cy = node.bottom + node.getHeight() / 2;
    const bool leftSide = item.left < cx, rightSide = item.right >= cx;
    const bool upper = item.top >= cy, lower = item.bottom < cy;
    touches[0] = leftSide && upper;
    touches[1] = rightSide && upper;
    touches[2] = leftSide && lower;
    touches[3] = rightSide && lower;
    return touches[0] && touches[1] && touches[2] && touches[3];
}

// Differences this close to zero count as zero where a line is tested against the centre.
double snapped(double value) { return std::fabs(value) <= 1e-12 ? 0.0 : value; }

}  // namespace

void quadrantsOf(const BoundingBox& box, BoundingBox quadrants[4]) {
    const double cx = box.left + box.getWidth() / 2;
    const double cy = box.bottom + box.getHeight() / 2;
    quadrants[0] = {box.left, box.top, cx, cy};
    quadrants[1] = {cx, box.top, box.right, cy};
    quadrants[2] = {box.left, cy, cx, box.bottom};
    quadrants[3] = {cx, cy, box.right, box.bottom};
}

// ---- points --------------------------------------------------------------------------

std::shared_ptr<PointBuffer> PointBuffer::fromBlob(const VectorBlob& blob) {
    std::vector<Feature> features;
    if (const VectorFormat::PointsList* points = blob.getPointsList()) {
        features.reserve(points->getCount());
        for (std::uint32_t i = 0; i < points->getCount(); ++i) {
            const TCoord3d p = points->getPosition(i);
            features.push_back({p.x, p.y, i});
        }
    }
    return std::make_shared<PointBuffer>(std::move(features));
}

PointBuffer::PointBuffer(std::vector<Feature> features) : FeatureBuffer(std::move(features)) {
    for (const Feature& f : features_) box_.widen(f.x, f.y);
}

void PointBuffer::render(const TRenderContext& context) const {
    const VectorFormat::PointsList* points = context.blob->getPointsList();
    if (points == nullptr) return;
    const BoundingBox view = context.renderer->getViewport();
    for (const Feature& f : features_) {
        TPointStyle style;
        if (f.index >= points->getCount() || !context.firstInPass(&TRenderMarks::points, f.index)) continue;
        if (!context.blob->getPointStyle(f.index, style)) continue;
        const TCoord3d at = context.from->convert(points->getPosition(f.index), *context.to);
        if (!view.contains(at.x, at.y)) continue;
        context.renderer->drawPoint(at, style);
        context.countDrawn();
    }
}

void PointBuffer::pick(const TCoord2d& at, double tolerance, bool points, bool, TPickResult& best) const {
    if (!points) return;
    for (const Feature& f : features_) {
        offer(best, tolerance, TPickResult::ePoint, static_cast<int>(f.index), std::hypot(at.x - f.x, at.y - f.y),
              {f.x, f.y});
    }
}

bool PointBuffer::split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const {
    std::vector<Feature> quarters[4];
    for (const Feature& f : features_) quarters[quadrantOf(box, f.x, f.y)].push_back(f);
    for (int q = 0; q < 4; ++q) {
        parts[q] = quarters[q].empty() ? nullptr : std::make_shared<PointBuffer>(std::move(quarters[q]));
    }
    return true;
}

// ---- lines ---------------------------------------------------------------------------

LineStore::LineStore(std::uint32_t size)
    : size_(size), segments_(new Segment[size]), polyLines_(new int[size]) {}

std::shared_ptr<const LineStore> LineStore::fromBlob(const VectorBlob& blob) {
    const VectorFormat::LinesList* lines = blob.getLinesList();
    if (lines == nullptr) return std::shared_ptr<const LineStore>(new LineStore());
    std::shared_ptr<LineStore> store(new LineStore(lines->getCount()));
    for (std::uint32_t i = 0; i < store->size_; ++i) {
        const TCoord3d a = lines->getStart(i), b = lines->getEnd(i);
        store->segments_[i] = {a.x, a.y, b.x, b.y};
    }
    blob.getLinePolyLineIndices(store->polyLines_.get());
    return store;
}

LineStore::LineStore(const std::vector<TLineFeature>& features) : LineStore(static_cast<std::uint32_t>(features.size())) {
    lineIndices_.reset(new std::uint32_t[size_]);
    for (std::uint32_t i = 0; i < size_; ++i) {
        const TLineFeature& f = features[i];
        segments_[i] = {f.x1, f.y1, f.x2, f.y2};
        polyLines_[i] = f.polyLine;
        lineIndices_[i] = f.index;
    }
}

std::shared_ptr<LineBuffer> LineBuffer::fromBlob(const VectorBlob& blob) {
    std::shared_ptr<const LineStore> store = LineStore::fromBlob(blob);
    BoundingBox box;
    for (std::uint32_t i = 0; i < store->size(); ++i) {
        const LineStore::Segment& s = store->segment(i);
        box.widen(boxOfSegment(s.x1, s.y1, s.x2, s.y2));
    }
    const std::uint32_t count = store->size();
    return std::make_shared<LineBuffer>(std::move(store), nullptr, count, box);
}

LineBuffer::Feature LineBuffer::featureOf(const VectorBlob& blob, std::uint32_t index) {
    const VectorFormat::LinesList* lines = blob.getLinesList();
    const TCoord3d a = lines->getStart(index), b = lines->getEnd(index);
    return {a.x, a.y, b.x, b.y, index, blob.getLinePolyLineIndex(index)};
}

LineBuffer::LineBuffer(const std::vector<Feature>& features)
    : store_(std::make_shared<const LineStore>(features)), count_(store_->size()) {
    for (const Feature& f : features) box_.widen(boxOfSegment(f.x1, f.y1, f.x2, f.y2));
}

LineBuffer::LineBuffer(std::shared_ptr<const LineStore> store, std::unique_ptr<std::uint32_t[]> positions,
                       std::uint32_t count, const BoundingBox& box)
    : store_(std::move(store)), positions_(std::move(positions)), count_(count), box_(box) {}

void LineBuffer::render(const TRenderContext& context) const {
    const VectorFormat::LinesList* lines = context.blob->getLinesList();
    if (lines == nullptr) return;
    const BoundingBox view = context.renderer->getViewport();
    // Lines of one polyline share its style, and they mostly come in a row: the style
    // is looked up again only when the polyline changes.
    int stylePolyLine = -1;
    bool styleFound = false;
    TLineStyle style;
    for (std::uint32_t i = 0; i < count_; ++i) {
        const std::uint32_t at = positionOf(i);
        const std::uint32_t index = store_->lineIndex(at);
        const int polyLine = store_->polyLine(at);
        if (index >= lines->getCount() || !context.firstInPass(&TRenderMarks::lines, index)) continue;
        if (polyLine < 0 || polyLine != stylePolyLine) {
            styleFound = context.blob->getLineStyle(index, style);
            stylePolyLine = polyLine;
        }
        if (!styleFound) continue;
        const LineStore::Segment& s = store_->segment(at);
        const TCoord3d ends[2] = {context.from->convert(s.x1, s.y1, lines->getStart(index).z, *context.to),
                                  context.from->convert(s.x2, s.y2, lines->getEnd(index).z, *context.to)};
        if (!view.intersects(boxOfSegment(ends[0].x, ends[0].y, ends[1].x, ends[1].y))) continue;
        context.renderer->drawPolyline(ends, 2, style);
        context.countDrawn();
    }
}

void LineBuffer::pick(const TCoord2d& at, double tolerance, bool, bool lines, TPickResult& best) const {
    if (!lines) return;
    for (std::uint32_t i = 0; i < count_; ++i) {
        const std::uint32_t position = positionOf(i);
        const int polyLine = store_->polyLine(position);
        if (polyLine < 0) continue;  // a line of no polyline has no name to be staked by
        const LineStore::Segment& s = store_->segment(position);
        const TCoord2d nearest = nearestOnSegment(at, s.x1, s.y1, s.x2, s.y2);
        offer(best, tolerance, TPickResult::eLine, polyLine, std::hypot(at.x - nearest.x, at.y - nearest.y), nearest);
    }
}

namespace {

// The quadrant of (x, y) around the centre (cx, cy), as quadrantOf, without a branch:
// lines fall in the quadrants at random, so a branch would miss half the time.
inline unsigned quadrantAround(double cx, double cy, double x, double y) {
    const unsigned right = !(x - cx < 0);
    const unsigned lower = !(y - cy >= 0);
    return right + 2 * lower;
}

// Widens `box` by a valid box, as BoundingBox::widen does, where `box` starts from
// `kNothingYet`: the first box is then taken whole, as the empty box takes it.
inline void widenByValid(BoundingBox& box, const BoundingBox& other) {
    box.left = std::min(box.left, other.left);
    box.bottom = std::min(box.bottom, other.bottom);
    box.right = std::max(box.right, other.right);
    box.top = std::max(box.top, other.top);
}
constexpr double kInf = std::numeric_limits<double>::infinity();
const BoundingBox kNothingYet(kInf, -kInf, -kInf, kInf);

constexpr std::uint32_t kPrefetchAhead = 48;
inline void prefetch(const void* address) {
#if defined(__GNUC__) || defined(__clang__)
    __builtin_prefetch(address);
#else
    (void)address;
#endif
}

// Where a line of a split goes: one quadrant (0-3), several (kSeveral, the mask kept
// apart) or none (kNone, its box misses the node's).
constexpr std::uint8_t kSeveral = 4, kNone = 5;

}  // namespace

bool LineBuffer::split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const {
    const double cx = box.left + box.getWidth() / 2;
    const double cy = box.bottom + box.getHeight() / 2;
    // First where every line goes, with each quadrant's count and box; then each
    // quadrant's positions, in exactly the space they need. A quadrant's box widens in
    // the order the quadrant lists its lines, as a buffer made of those lines would.
    // Short lines lie in one quadrant; the few across a dividing line keep their
    // quadrants as a mask of their own.
    std::unique_ptr<std::uint8_t[]> where(new std::uint8_t[count_]);
    std::vector<std::uint8_t> masks;
    std::uint32_t counts[4] = {};
    BoundingBox boxes[4] = {kNothingYet, kNothingYet, kNothingYet, kNothingYet};
    for (std::uint32_t i = 0; i < count_; ++i) {
        // Below the root a buffer's lines lie scattered over the store, every one on a
        // cache line of its own that no hardware prefetcher foresees: asking for the
        // lines some way ahead keeps many misses in flight instead of waiting for each.
        if (positions_ && i + kPrefetchAhead < count_) prefetch(&store_->segment(positions_[i + kPrefetchAhead]));
        const LineStore::Segment& f = store_->segment(positionOf(i));
        const BoundingBox segmentBox = boxOfSegment(f.x1, f.y1, f.x2, f.y2);
        if (!box.intersects(segmentBox)) {
            where[i] = kNone;
            continue;
        }
        const unsigned a = quadrantAround(cx, cy, f.x1, f.y1);
        const unsigned b = quadrantAround(cx, cy, f.x2, f.y2);
        if (a == b) {
            where[i] = static_cast<std::uint8_t>(a);
            ++counts[a];
            widenByValid(boxes[a], segmentBox);
            continue;
        }
        unsigned mask = (1u << a) | (1u << b);
        if (a + b == 3) {
            // Diagonally opposite ends: the segment also passes one of the two other
            // quadrants, told by where it crosses the horizontal dividing line.
            const double crossX = f.x1 + (cy - f.y1) * (f.x2 - f.x1) / (f.y2 - f.y1);
            const bool crossesRight = snapped(crossX - cx) >= 0;
            const bool fromUpperLeft = (a == 0 || b == 0);
            // 0-3 runs down the left side (2) or the right (1); 1-2 the right (3) or the left (0).
            mask |= 1u << (fromUpperLeft ? (crossesRight ? 1 : 2) : (crossesRight ? 3 : 0));
        }  // side by side: the two quadrants of its ends suffice
        where[i] = kSeveral;
        masks.push_back(static_cast<std::uint8_t>(mask));
        for (unsigned q = 0; q < 4; ++q) {
            if ((mask >> q) & 1u) {
                ++counts[q];
                widenByValid(boxes[q], segmentBox);
            }
        }
    }
    std::unique_ptr<std::uint32_t[]> quarters[4];
    std::uint32_t* next[4] = {};
    for (int q = 0; q < 4; ++q) {
        if (counts[q] == 0) continue;
        quarters[q].reset(new std::uint32_t[counts[q]]);
        next[q] = quarters[q].get();
    }
    std::size_t several = 0;
    for (std::uint32_t i = 0; i < count_; ++i) {
        const std::uint8_t to = where[i];
        if (to < 4) {
            *next[to]++ = positionOf(i);
        } else if (to == kSeveral) {
            const unsigned mask = masks[several++];
            for (int q = 0; q < 4; ++q) {
                if ((mask >> q) & 1u) *next[q]++ = positionOf(i);
            }
        }
    }
    for (int q = 0; q < 4; ++q) {
        parts[q] = counts[q] == 0 ? nullptr
                                  : std::make_shared<LineBuffer>(store_, std::move(quarters[q]), counts[q], boxes[q]);
    }
    return true;
}

// ---- labels --------------------------------------------------------------------------

namespace {

BoundingBox textExtent(const TLabel& label) {
    const double h = std::fabs(static_cast<double>(label.style.height));
    const double length = 0.7 * h * label.text.GetLength();
    const double r = static_cast<double>(label.style.rotation) * std::numbers::pi / 180.0;
    const double ux = std::cos(r), uy = std::sin(r);  // along the baseline
    const double vx = -uy, vy = ux;                   // up the letters
    BoundingBox box;
    for (const double along : {0.0, length}) {
        for (const double up : {-0.25 * h, h}) {
            box.widen(label.position.x + along * ux + up * vx, label.position.y + along * uy + up * vy);
        }
    }
    return box;
}

}  // namespace

std::shared_ptr<LabelBuffer> LabelBuffer::fromBlob(const VectorBlob& blob) {
    std::vector<Feature> features;
    for (std::uint32_t i = 0; i < blob.getLabelCount(); ++i) {
        TLabel label;
        if (!blob.getLabel(i, label) || !std::isfinite(label.position.x) || !std::isfinite(label.position.y)) continue;
        BoundingBox extent = textExtent(label);
        if (!extent.isValid()) extent = BoundingBox(label.position.x, label.position.y, label.position.x, label.position.y);
        features.push_back({label.position.x, label.position.y, i, extent});
    }
    return std::make_shared<LabelBuffer>(std::move(features));
}

LabelBuffer::LabelBuffer(std::vector<Feature> features) : FeatureBuffer(std::move(features)) {
    for (const Feature& f : features_) box_.widen(f.extent);
}

void LabelBuffer::render(const TRenderContext& context) const {
    for (const Feature& f : features_) {
        TLabel label;
        if (!context.firstInPass(&TRenderMarks::labels, f.index) || !context.blob->getLabel(f.index, label)) continue;
        // The text's height and direction are carried into the view as a vector each.
        const double r = static_cast<double>(label.style.rotation) * std::numbers::pi / 180.0;
        const double h = static_cast<double>(label.style.height);
        const TCoord3d& p = label.position;
        const TCoord3d at = context.from->convert(p, *context.to);
        const TCoord3d along = context.from->convert(p.x + std::cos(r), p.y + std::sin(r), p.z, *context.to);
        const TCoord3d up = context.from->convert(p.x - h * std::sin(r), p.y + h * std::cos(r), p.z, *context.to);
        TTextStyle style = label.style;
        style.height = static_cast<float>(std::hypot(up.x - at.x, up.y - at.y));
        style.rotation = static_cast<float>(std::atan2(along.y - at.y, along.x - at.x) * 180.0 / std::numbers::pi);
        BoundingBox drawn;
        for (const double ex : {f.extent.left, f.extent.right}) {
            for (const double ey : {f.extent.bottom, f.extent.top}) {
                const TCoord3d corner = context.from->convert(ex, ey, p.z, *context.to);
                drawn.widen(corner.x, corner.y);
            }
        }
        if (!context.renderer->getViewport().intersects(drawn)) continue;
        context.renderer->drawText(at, label.text, style);
        context.countDrawn();
    }
}

bool LabelBuffer::split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const {
    std::vector<Feature> quarters[4];
    bool divided = false;
    for (const Feature& f : features_) {
        bool touches[4];
        divided = !touchedQuadrants(box, f.extent, touches) || divided;
        for (int q = 0; q < 4; ++q) {
            if (touches[q]) quarters[q].push_back(f);
        }
    }
    if (!divided) return false;
    for (int q = 0; q < 4; ++q) {
        parts[q] = quarters[q].empty() ? nullptr : std::make_shared<LabelBuffer>(std::move(quarters[q]));
    }
    return true;
}

// ---- arcs ----------------------------------------------------------------------------

ArcBuffer::ArcBuffer(const VectorBlob& blob, std::uint32_t arcIndex) : index_(arcIndex) {
    const VectorFormat::ArcsList* arcs = blob.getArcsList();
    if (arcs == nullptr || arcIndex >= arcs->getCount()) return;
    const TCoord3d start = arcs->getStart(arcIndex), end = arcs->getEnd(arcIndex);
    z_ = start.z;
    polyLine_ = blob.getArcPolyLineIndex(arcIndex);
    valid_ = arcs->getArc(arcIndex, arc_);
    if (valid_) {
        arc_.getBounds(box_.left, box_.top, box_.right, box_.bottom);
    } else {  // an arc without radius is the box of its ends
        box_ = boxOfSegment(start.x, start.y, end.x, end.y);
    }
}

void ArcBuffer::render(const TRenderContext& context) const {
    TLineStyle style;
    if (!valid_ || !context.firstInPass(&TRenderMarks::arcs, index_)) return;
    if (!context.blob->getArcStyle(index_, style)) return;
    const int steps = chordCount(context);
    std::vector<TCoord3d> samples(static_cast<std::size_t>(steps) + 1);
    BoundingBox drawn;
    for (int i = 0; i <= steps; ++i) {
        const TCoord2d p = arc_.pointAt(static_cast<double>(i) / steps);
        samples[static_cast<std::size_t>(i)] = context.from->convert(p.x, p.y, z_, *context.to);
        drawn.widen(samples[static_cast<std::size_t>(i)].x, samples[static_cast<std::size_t>(i)].y);
    }
    if (context.renderer->getViewport().intersects(drawn)) {
        context.renderer->drawPolyline(samples.data(), static_cast<int>(samples.size()), style);
        context.countDrawn();
    }
}

int ArcBuffer::chordCount(const TRenderContext& context) const {
    // The radius in pixels, measured in the view; a chord of angle a strays r (1 - cos a/2)
    // from the arc, which is to stay within half a pixel.
    const TCoord2d c = arc_.getCenter(), s = arc_.getStart();
    const TCoord3d cv = context.from->convert(c.x, c.y, z_, *context.to);
    const TCoord3d sv = context.from->convert(s.x, s.y, z_, *context.to);
    const double pixel = context.renderer->getPixelSize();
    const double radius = std::hypot(sv.x - cv.x, sv.y - cv.y) / (pixel > 0.0 ? pixel : 1.0);
    const double sweep = std::fabs(arc_.getSweep());
    if (!(radius > 0.5) || !std::isfinite(radius)) return 2;
    const double chordAngle = 2.0 * std::acos(1.0 - 0.5 / radius);
    // A bound on the work for an arc far larger than the screen.
    constexpr double kMaxChords = 1 << 16;
    return static_cast<int>(std::clamp(std::ceil(sweep / chordAngle), 2.0, kMaxChords));
}

void ArcBuffer::pick(const TCoord2d& at, double tolerance, bool, bool lines, TPickResult& best) const {
    if (!lines || !valid_ || polyLine_ < 0) return;
    const double distance = arc_.distanceTo(at);
    // The nearest position: along the ray from the centre when the arc spans it, else an end.
    TCoord2d nearest = arc_.getStart();
    const TCoord2d c = arc_.getCenter();
    const double fromCentre = std::hypot(at.x - c.x, at.y - c.y);
    if (fromCentre > 0.0 && arc_.spansAzimuth(atan3(at.x - c.x, at.y - c.y))) {
        nearest = {c.x + (at.x - c.x) * arc_.getRadius() / fromCentre, c.y + (at.y - c.y) * arc_.getRadius() / fromCentre};
    } else if (std::hypot(at.x - arc_.getFinish().x, at.y - arc_.getFinish().y) < std::hypot(at.x - nearest.x, at.y - nearest.y)) {
        nearest = arc_.getFinish();
    }
    offer(best, tolerance, TPickResult::eLine, polyLine_, distance, nearest);
}

bool ArcBuffer::split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const {
    if (!box_.isValid()) return false;
    const double cx = box.left + box.getWidth() / 2;
    const double cy = box.bottom + box.getHeight() / 2;
    const bool leftSide = box_.left < cx, rightSide = box_.right >= cx;
    const bool upper = box_.top >= cy, lower = box_.bottom < cy;
    const bool touches[4] = {leftSide && upper, rightSide && upper, leftSide && lower, rightSide && lower};
    if (touches[0] && touches[1] && touches[2] && touches[3]) return false;
    for (int q = 0; q < 4; ++q) parts[q] = touches[q] ? std::shared_ptr<ArcBuffer>(new ArcBuffer(*this)) : nullptr;
    return true;
}

// ---- splines -------------------------------------------------------------------------

SplineBuffer::SplineBuffer(const VectorBlob& blob, std::uint32_t splineIndex) : index_(splineIndex) {
    TSpline spline;
    if (blob.getSpline(splineIndex, spline)) box_ = spline.curve.controlBox();
}

void SplineBuffer::render(const TRenderContext& context) const {
    TSpline spline;
    if (!box_.isValid() || !context.firstInPass(&TRenderMarks::splines, index_)) return;
    if (!context.blob->getSpline(index_, spline)) return;
    // The control polygon's length in pixels bounds the curve's, and chords of two pixels
    // stray a fraction of a pixel from any curve that bends less sharply than a pixel's
    // radius.
    BoundingBox drawn;
    std::vector<TCoord3d> controls;
    for (const TCoord3d& p : spline.curve.controlPoints) {
        controls.push_back(context.from->convert(p, *context.to));
        drawn.widen(controls.back().x, controls.back().y);
    }
    if (!context.renderer->getViewport().intersects(drawn)) return;
    double length = 0.0;
    for (std::size_t i = 1; i < controls.size(); ++i) {
        length += std::hypot(controls[i].x - controls[i - 1].x, controls[i].y - controls[i - 1].y);
    }
    const double pixel = context.renderer->getPixelSize();
    const double chords = std::ceil(length / (pixel > 0.0 ? pixel : 1.0) / 2.0);
    const int count = static_cast<int>(std::clamp(std::isfinite(chords) ? chords : 0.0, 8.0, 65536.0));
    std::vector<TCoord3d> points = spline.curve.sample(count);
    for (TCoord3d& p : points) p = context.from->convert(p, *context.to);
    if (spline.curve.closed) points.push_back(points.front());
    context.renderer->drawPolyline(points.data(), static_cast<int>(points.size()), spline.style);
    context.countDrawn();
}

bool SplineBuffer::split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const {
    bool touches[4];
    if (!box_.isValid() || touchedQuadrants(box, box_, touches)) return false;
    for (int q = 0; q < 4; ++q) parts[q] = touches[q] ? std::shared_ptr<SplineBuffer>(new SplineBuffer(*this)) : nullptr;
    return true;
}
