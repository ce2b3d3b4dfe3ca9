// QuadtreeNode's cutting rules, the render tree over a root node, and buildQuadtree.
#include "utils/vector/Quadtree.h"

#include <algorithm>

#include "utils/vector/TransformBBox.h"

void QuadtreeNode::insertBuffer(std::shared_ptr<IRenderableBuffer> buffer) { buffers_.Add(std::move(buffer)); }

int QuadtreeNode::getNodeFeatureCount() const {
    int count = 0;
    for (int i = 0; i < buffers_.GetSize(); ++i) count += buffers_[i]->getFeatureCount();
    return count;
}

void QuadtreeNode::calcBBox() {
    box_ = BoundingBox();
    for (int i = 0; i < buffers_.GetSize(); ++i) box_.widen(buffers_[i]->getBBox());
}

void QuadtreeNode::rebalance(int depth) {
    // The subtree's leaves may hold kMaxReferencesPerFeature references for each feature
    // this node holds now; the node's own references are already spent.
    long long spare = (kMaxReferencesPerFeature - 1) * static_cast<long long>(getNodeFeatureCount());
    rebalance(depth, spare);
}

void QuadtreeNode::rebalance(int depth, long long& spare) {
    if (!leaf_ || getNodeFeatureCount() <= kMaxLeafFeatures || depth >= kMaxDepth) return;
    if (!split(&spare)) return;
    for (auto& child : children_) child->rebalance(depth + 1, spare);
}

bool QuadtreeNode::split() { return split(nullptr); }

bool QuadtreeNode::split(long long* spare) {
    if (getWidth() < kMinSplitSize || getHeight() < kMinSplitSize) return false;
    BoundingBox quadrants[4];
    quadrantsOf(box_, quadrants);
    std::shared_ptr<QuadtreeNode> children[4];
    for (int q = 0; q < 4; ++q) children[q] = std::make_shared<QuadtreeNode>(quadrants[q]);

    bool divided = false;
    for (int i = 0; i < buffers_.GetSize(); ++i) {
        std::shared_ptr<IRenderableBuffer> parts[4];
        if (buffers_[i]->split(box_, parts)) {
            divided = true;
            for (int q = 0; q < 4; ++q) {
                if (parts[q]) children[q]->insertBuffer(parts[q]);
            }
        } else {
            for (auto& child : children) child->insertBuffer(buffers_[i]);
        }
    }
    const int own = getNodeFeatureCount();
    const bool smaller = std::all_of(std::begin(children), std::end(children),
                                     [own](const auto& child) { return child->getNodeFeatureCount() < own; });
    if (!divided || !smaller) return false;  // the children go; the node stays as it was
    if (spare != nullptr) {
        // A buffer that cannot divide goes whole to all four children, so a cut can add
        // up to three references per feature; past the tree's allowance the node stays a
        // leaf. Ordinary images stay far below it.
        long long added = -own;
        for (const auto& child : children) added += child->getNodeFeatureCount();
        if (added > *spare) return false;
        *spare -= added;
    }
    for (int q = 0; q < 4; ++q) children_[q] = std::move(children[q]);
    buffers_.RemoveAll();
    leaf_ = false;
    return true;
}

namespace {

class QuadtreeRenderTree : public IRenderTree {
public:
    QuadtreeRenderTree(std::shared_ptr<QuadtreeNode> root, VectorBlob& blob)
        : root_(std::move(root)), keepAlive_(blob.weak_from_this().lock()), blob_(&blob) {}

    void render(int pass, const Csx::CCs& from, const Csx::CCs& to, IRenderer* renderer) override {
        stats_ = TRenderStats();
        if (renderer == nullptr) return;
        // All four corners of the viewport: under a rotated view the two-corner box of
        // transformBBox misses much of what is shown.
        const BoundingBox view = transformBBoxCorners(renderer->getViewport(), to, from);
        prepareMarks();
        const TRenderContext context{blob_, &from, &to, renderer, pass, &marks_, &stats_};
        renderNode(*root_, pass, view, context);
    }

    void renderEntity(const TPickResult& entity, const Csx::CCs& from, const Csx::CCs& to,
                      IRenderer* renderer) override {
        if (renderer == nullptr || entity.index < 0) return;
        const TRenderContext context{blob_, &from, &to, renderer};
        if (entity.kind == TPickResult::ePoint) {
            if (static_cast<std::uint32_t>(entity.index) >= blob_->getPointCount()) return;
            PointBuffer(std::vector<PointBuffer::Feature>{{0, 0, static_cast<std::uint32_t>(entity.index)}})
                .render(context);
        } else if (entity.kind == TPickResult::eLine) {
            // A polyline's elements are the lines and arcs that name it.
            std::vector<LineBuffer::Feature> lines;
            for (std::uint32_t i = 0; i < blob_->getLineCount(); ++i) {
                if (blob_->getLinePolyLineIndex(i) == entity.index) lines.push_back(LineBuffer::featureOf(*blob_, i));
            }
            LineBuffer(std::move(lines)).render(context);
            for (std::uint32_t i = 0; i < blob_->getArcCount(); ++i) {
                if (blob_->getArcPolyLineIndex(i) == entity.index) ArcBuffer(*blob_, i).render(context);
            }
        }
    }

    TRenderStats getRenderStats() const override { return stats_; }

    bool pick(TCoord2d& at, const Csx::CCs& from, const Csx::CCs& to, double tolerance,
              const StakeableEntities& kinds, TPickResult& result) override {
        const bool points = kinds.count(eStakeablePoint) > 0;
        const bool lines = kinds.count(eStakeableLine) > 0;
        if (!(points || lines) || !(tolerance >= 0.0)) return false;
        const TCoord3d inImage = to.convert(at.x, at.y, 0.0, from);
        const TCoord2d position{inImage.x, inImage.y};
        TPickResult best;
        pickNode(*root_, position, tolerance, points, lines, best);
        if (best.kind == TPickResult::eNone) return false;
        result = best;
        const TCoord3d back = from.convert(best.nearest.x, best.nearest.y, inImage.z, to);
        at = {back.x, back.y};
        return true;
    }

    std::shared_ptr<QuadtreeNode> getRoot() const override { return root_; }
    const VectorBlob* getBlob() const override { return blob_; }

private:
    static void renderNode(const QuadtreeNode& node, int pass, const BoundingBox& view, const TRenderContext& context) {
        if (!node.getBBox().intersects(view)) return;
        ++context.stats->nodesVisited;
        const auto& buffers = node.getBuffers();
        for (int i = 0; i < buffers.GetSize(); ++i) {
            // A buffer that could not be divided is shared by all four children.
            if (buffers[i]->lastPass == pass) continue;
            buffers[i]->lastPass = pass;
            context.stats->featuresVisited += buffers[i]->getFeatureCount();
            buffers[i]->render(context);
        }
        if (node.isLeaf()) return;
        for (int q = 0; q < 4; ++q) renderNode(*node.getChild(q), pass, view, context);
    }

    // One mark per feature of the blob, made on the first walk.
    void prepareMarks() {
        marks_.points.resize(blob_->getPointCount(), kNoPass);
        marks_.lines.resize(blob_->getLineCount(), kNoPass);
        marks_.arcs.resize(blob_->getArcCount(), kNoPass);
        marks_.labels.resize(blob_->getLabelCount(), kNoPass);
        marks_.splines.resize(blob_->getSplineCount(), kNoPass);
    }

    static void pickNode(const QuadtreeNode& node, const TCoord2d& at, double tolerance, bool points, bool lines,
                         TPickResult& best) {
        if (!node.getBBox().inflated(tolerance).contains(at.x, at.y)) return;
        const auto& buffers = node.getBuffers();
        for (int i = 0; i < buffers.GetSize(); ++i) {
            if (buffers[i]->getBBox().inflated(tolerance).contains(at.x, at.y)) {
                buffers[i]->pick(at, tolerance, points, lines, best);
            }
        }
        if (node.isLeaf()) return;
        for (int q = 0; q < 4; ++q) pickNode(*node.getChild(q), at, tolerance, points, lines, best);
    }

    static constexpr int kNoPass = -1;

    std::shared_ptr<QuadtreeNode> root_;
    std::shared_ptr<VectorBlob> keepAlive_;
    const VectorBlob* blob_;
    TRenderMarks marks_;
    TRenderStats stats_;
};

void collectStats(const QuadtreeNode& node, int depth, TQuadtreeStats& stats) {
    ++stats.nodes;
    if (node.isLeaf()) {
        const int features = node.getNodeFeatureCount();
        stats.minLeafFeatures = stats.leaves == 0 ? features : std::min(stats.minLeafFeatures, features);
        stats.maxLeafFeatures = std::max(stats.maxLeafFeatures, features);
        stats.leafFeatures += features;
        ++stats.leaves;
        stats.depth = std::max(stats.depth, depth);
        return;
    }
    for (int q = 0; q < 4; ++q) collectStats(*node.getChild(q), depth + 1, stats);
}

}  // namespace

std::shared_ptr<IRenderTree> buildQuadtree(VectorBlob& blob) {
    auto points = PointBuffer::fromBlob(blob);
    auto lines = LineBuffer::fromBlob(blob);
    BoundingBox box = points->getBBox();
    box.widen(lines->getBBox());
    auto root = std::make_shared<QuadtreeNode>(box);
    root->insertBuffer(std::move(points));
    root->insertBuffer(std::move(lines));
    // From here the root holds the only reference to each whole buffer, so a split that
    // empties the root lets the whole-image copies go before the children are cut.
    for (std::uint32_t i = 0; i < blob.getArcCount(); ++i) root->insertBuffer(std::make_shared<ArcBuffer>(blob, i));
    for (std::uint32_t i = 0; i < blob.getSplineCount(); ++i) root->insertBuffer(std::make_shared<SplineBuffer>(blob, i));
    root->insertBuffer(LabelBuffer::fromBlob(blob));
    root->calcBBox();
    root->rebalance(0);
    return std::shared_ptr<IRenderTree>(new QuadtreeRenderTree(std::move(root), blob));
}

CKivStringT generateVectorImagePointName(const wchar_t* name, int pointIndex) {
    CKivStringT text;
    text.Format(L"v_%s_pt%d", name ? name : L"", pointIndex);
    return text;
}

CKivStringT generateVectorImageLineName(const wchar_t* name, int polyLineIndex) {
    CKivStringT text;
    text.Format(L"v_%s_ln%d", name ? name : L"", polyLineIndex);
    return text;
}

TQuadtreeStats getQuadtreeStats(const QuadtreeNode& root) {
    TQuadtreeStats stats;
    collectStats(root, 0, stats);
    return stats;
}
