// The renderable buffers the quadtree holds: a batch of points, a batch of lines, or
// one arc, each with its bounding box. Buffers copy the geometry they need out of the
// blob, so splitting and picking never go back to the image; drawing asks the blob for
// styles and, for lines, their heights.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/kivmath/Arc.h"
#include "platform/kivutils/Heap.h"
#include "utils/vector/BoundingBox.h"
#include "utils/vector/Csx.h"
#include "utils/vector/IRenderer.h"
#include "utils/vector/VectorBlob.h"

// What a pick found: a point (by its index in the PointsList) or a line (by the index
// of its polyline in the PolyLinesList; arcs are picked as the polylines they belong to).
struct TPickResult {
    enum EKind { eNone, ePoint, eLine };
    EKind kind = eNone;
    int index = -1;
    double distance = 0.0;
    TCoord2d nearest;  // the nearest position on the feature, in the image's system
};

// What one render walk did: the nodes it entered, the features of the buffers it went
// through (a feature held by several buffers counts in each), the features it drew.
struct TRenderStats {
    int nodesVisited = 0;
    long long featuresVisited = 0;
    long long featuresDrawn = 0;
};

// The pass in which each feature was last drawn, by kind and index in its list. Lines,
// arcs and labels can sit in several buffers of one tree; the marks let a walk draw
// each of them once.
struct TRenderMarks {
    std::vector<int> points, lines, arcs, labels, splines;
};

// Everything a buffer needs to draw itself. Without marks (a lone buffer drawn for a
// highlight) every feature is drawn; without stats nothing is counted.
struct TRenderContext {
    const VectorBlob* blob;
    const Csx::CCs* from;
    const Csx::CCs* to;
    IRenderer* renderer;
    int pass = 0;
    TRenderMarks* marks = nullptr;
    TRenderStats* stats = nullptr;

    // True unless the feature was drawn already in this pass; marks it drawn.
    bool firstInPass(std::vector<int> TRenderMarks::*kind, std::uint32_t index) const {
        if (marks == nullptr) return true;
        std::vector<int>& drawn = marks->*kind;
        if (index >= drawn.size()) return true;
        if (drawn[index] == pass) return false;
        drawn[index] = pass;
        return true;
    }
    void countDrawn() const {
        if (stats != nullptr) ++stats->featuresDrawn;
    }
};

class IRenderableBuffer : public SharedHeapObject {
public:
    virtual ~IRenderableBuffer() = default;
    virtual const BoundingBox& getBBox() const = 0;
    virtual int getFeatureCount() const = 0;
    virtual void render(const TRenderContext& context) const = 0;
    // Offers every feature within `tolerance` of `at` to `best`, keeping the nearer.
    virtual void pick(const TCoord2d& at, double tolerance, bool points, bool lines, TPickResult& best) const = 0;
    // Divides the buffer against `box` into up to four parts, one per quadrant (0 upper
    // left, 1 upper right, 2 lower left, 3 lower right; null where nothing falls). False
    // when the buffer cannot be divided; `parts` is then left alone.
    virtual bool split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const = 0;
    // The pass this buffer was last drawn in, so that a buffer shared by several nodes
    // is drawn once per pass.
    int lastPass = -1;
};

// The quadrant of (x, y) in `box`: 0 upper left, 1 upper right, 2 lower left, 3 lower
// right; a position on a dividing line belongs to the right or the upper side.
inline int quadrantOf(const BoundingBox& box, double x, double y) {
    const double dx = x - (box.left + box.getWidth() / 2);
    const double dy = y - (box.bottom + box.getHeight() / 2);
    if (dy >= 0) return dx < 0 ? 0 : 1;
    return dx < 0 ? 2 : 3;
}
// The four quadrants of `box`, in quadrant order.
void quadrantsOf(const BoundingBox& box, BoundingBox quadrants[4]);

// A batch of features of one kind, with the box around them.
template <class TFeature>
class FeatureBuffer : public IRenderableBuffer {
public:
    using Feature = TFeature;
    const BoundingBox& getBBox() const override { return box_; }
    int getFeatureCount() const override { return static_cast<int>(features_.size()); }
    const std::vector<Feature>& getFeatures() const { return features_; }

protected:
    explicit FeatureBuffer(std::vector<Feature> features) : features_(std::move(features)) {}
    std::vector<Feature> features_;
    BoundingBox box_;
};

struct TPointFeature {
    double x, y;
    std::uint32_t index;
};

struct TLineFeature {
    double x1, y1, x2, y2;
    std::uint32_t index;  // in the blob's LinesList
    int polyLine;
};

// The ends and polylines of a batch of lines, copied once and shared by every line
// buffer cut from it: a buffer holds 4-byte positions into the store, so cutting a tree
// copies positions, never geometry, and a line held by several leaves costs 4 bytes in
// each. The heights are not kept; drawing reads them from the blob with the styles.
class LineStore : public SharedHeapObject {
public:
    struct Segment {
        double x1, y1, x2, y2;
    };
    // Every line of the blob; a line's position is its index in the LinesList.
    static std::shared_ptr<const LineStore> fromBlob(const VectorBlob& blob);
    // These lines, in this order.
    explicit LineStore(const std::vector<TLineFeature>& features);

    std::uint32_t size() const { return size_; }
    const Segment& segment(std::uint32_t at) const { return segments_[at]; }
    int polyLine(std::uint32_t at) const { return polyLines_[at]; }
    std::uint32_t lineIndex(std::uint32_t at) const { return lineIndices_ ? lineIndices_[at] : at; }

private:
    LineStore() = default;
    explicit LineStore(std::uint32_t size);

    std::uint32_t size_ = 0;
    std::unique_ptr<Segment[]> segments_;
    std::unique_ptr<int[]> polyLines_;
    std::unique_ptr<std::uint32_t[]> lineIndices_;  // null: a position is the line's index
};

class PointBuffer : public FeatureBuffer<TPointFeature> {
public:
    static std::shared_ptr<PointBuffer> fromBlob(const VectorBlob& blob);
    explicit PointBuffer(std::vector<Feature> features);

    void render(const TRenderContext& context) const override;
    void pick(const TCoord2d& at, double tolerance, bool points, bool lines, TPickResult& best) const override;
    bool split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const override;
};

class LineBuffer : public IRenderableBuffer {
public:
    using Feature = TLineFeature;
    static std::shared_ptr<LineBuffer> fromBlob(const VectorBlob& blob);
    // Line `index` of the blob, which must hold it.
    static Feature featureOf(const VectorBlob& blob, std::uint32_t index);
    // A buffer of its own over these lines, in this order.
    explicit LineBuffer(const std::vector<Feature>& features);
    // The `count` lines of `store` at `positions`, in that order, and the box around
    // them; null positions stand for the whole store in its order.
    LineBuffer(std::shared_ptr<const LineStore> store, std::unique_ptr<std::uint32_t[]> positions,
               std::uint32_t count, const BoundingBox& box);

    const BoundingBox& getBBox() const override { return box_; }
    int getFeatureCount() const override { return static_cast<int>(count_); }
    void render(const TRenderContext& context) const override;
    void pick(const TCoord2d& at, double tolerance, bool points, bool lines, TPickResult& best) const override;
    // Lines whose box misses `box` are left out first; the rest go to the quadrants of
    // their ends, whole, never cut (see the definition for lines across the centre).
    bool split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const override;

private:
    std::uint32_t positionOf(std::uint32_t i) const { return positions_ ? positions_[i] : i; }

    std::shared_ptr<const LineStore> store_;
    std::unique_ptr<std::uint32_t[]> positions_;
    std::uint32_t count_ = 0;
    BoundingBox box_;
};

// A label, with the box its text is expected to cover (from the text's length and its
// style's height: 0.7 of the height per character, a quarter below the baseline).
struct TLabelFeature {
    double x, y;
    std::uint32_t index;
    BoundingBox extent;
};

class LabelBuffer : public FeatureBuffer<TLabelFeature> {
public:
    static std::shared_ptr<LabelBuffer> fromBlob(const VectorBlob& blob);
    explicit LabelBuffer(std::vector<Feature> features);

    void render(const TRenderContext& context) const override;
    // Labels are not staked.
    void pick(const TCoord2d&, double, bool, bool, TPickResult&) const override {}
    // A label goes to each quadrant its text's box touches; the buffer cannot be divided
    // when every label touches all four.
    bool split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const override;
};

class ArcBuffer : public IRenderableBuffer {
public:
    ArcBuffer(const VectorBlob& blob, std::uint32_t arcIndex);

    const BoundingBox& getBBox() const override { return box_; }
    int getFeatureCount() const override { return 1; }
    void render(const TRenderContext& context) const override;
    void pick(const TCoord2d& at, double tolerance, bool points, bool lines, TPickResult& best) const override;
    // The arc goes, whole, to each quadrant its box touches; an arc touching all four
    // cannot be divided.
    bool split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const override;
    std::uint32_t getArcIndex() const { return index_; }

private:
    ArcBuffer() = default;
    // Chords enough that none strays more than half a pixel from the arc in the view.
    int chordCount(const TRenderContext& context) const;

    CArc arc_;
    bool valid_ = false;
    double z_ = 0.0;
    std::uint32_t index_ = 0;
    int polyLine_ = -1;
    BoundingBox box_;
};

// One spline, drawn as chords about two pixels long along its control polygon.
class SplineBuffer : public IRenderableBuffer {
public:
    SplineBuffer(const VectorBlob& blob, std::uint32_t splineIndex);

    const BoundingBox& getBBox() const override { return box_; }
    int getFeatureCount() const override { return 1; }
    void render(const TRenderContext& context) const override;
    // Splines are not staked.
    void pick(const TCoord2d&, double, bool, bool, TPickResult&) const override {}
    // As an arc: whole, to each quadrant its box touches.
    bool split(const BoundingBox& box, std::shared_ptr<IRenderableBuffer> parts[4]) const override;

private:
    SplineBuffer() = default;

    std::uint32_t index_ = 0;
    BoundingBox box_;
};
