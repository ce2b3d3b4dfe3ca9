// The spatial index of a vector image: a quadtree whose nodes hold renderable buffers,
// built from a blob, cut where a region holds more than 30 features, and walked to draw
// and to pick.
#pragma once

#include <memory>
#include <set>

#include "platform/kivmath/Coord.h"
#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivArray.h"
#include "platform/kivutils/KivString.h"
#include "utils/vector/BoundingBox.h"
#include "utils/vector/Csx.h"
#include "utils/vector/IRenderer.h"
#include "utils/vector/RenderableBuffers.h"
#include "utils/vector/VectorBlob.h"

class QuadtreeNode : public SharedHeapObject {
public:
    // A node of more features than this is cut, down to this depth, while it is at least
    // one unit wide and high.
    static constexpr int kMaxLeafFeatures = 30;
    static constexpr int kMaxDepth = 5;
    static constexpr double kMinSplitSize = 1.0;
    // What one rebalance may build: the leaves of the subtree hold at most this many
    // buffer references for each feature of the node it started from (a shared buffer
    // and each copy of a line counted once per leaf holding it). A cut that would pass
    // the allowance is undone and leaves the node a leaf. Work and memory of a build are
    // thus linear in the image's feature count, however its features overlap: a hostile
    // image of arcs spanning every quadrant would otherwise be copied into all 1024
    // leaves. Ordinary images stay far below the allowance and are cut as before.
    static constexpr long long kMaxReferencesPerFeature = 16;

    QuadtreeNode() = default;
    explicit QuadtreeNode(const BoundingBox& box) : box_(box) {}
    QuadtreeNode(double left, double top, double right, double bottom) : box_(left, top, right, bottom) {}
    // Copies share the children and the buffers.
    QuadtreeNode(const QuadtreeNode&) = default;
    QuadtreeNode& operator=(const QuadtreeNode&) = default;

    bool isLeaf() const { return leaf_; }
    const BoundingBox& getBBox() const { return box_; }
    void setBBox(const BoundingBox& box) { box_ = box; }
    double getX() const { return box_.left; }
    double getY() const { return box_.bottom; }
    double getWidth() const { return box_.getWidth(); }
    double getHeight() const { return box_.getHeight(); }
    // Child 0 upper left, 1 upper right, 2 lower left, 3 lower right; null for a leaf.
    const std::shared_ptr<QuadtreeNode>& getChild(int quadrant) const { return children_[quadrant]; }
    const CKivArray<std::shared_ptr<IRenderableBuffer>>& getBuffers() const { return buffers_; }

    void insertBuffer(std::shared_ptr<IRenderableBuffer> buffer);
    // The features of this node's own buffers; children are not counted.
    int getNodeFeatureCount() const;
    // The union of the buffers' boxes, starting from the empty box.
    void calcBBox();
    // Cuts this node while it is a leaf of more than 30 features above depth 5, and its
    // children in turn, within the allowance above.
    void rebalance(int depth);
    // Cuts the node into four quadrants; undone (false) unless some buffer divided and
    // every child holds fewer features than the node.
    bool split();

private:
    // `spare`: references the subtree may still add; null for no allowance.
    void rebalance(int depth, long long& spare);
    bool split(long long* spare);

    bool leaf_ = true;
    std::shared_ptr<QuadtreeNode> children_[4];
    BoundingBox box_;
    CKivArray<std::shared_ptr<IRenderableBuffer>> buffers_;
};

// The kinds of entity a pick may return.
enum EStakeableEntity { eStakeablePoint, eStakeableLine };
using StakeableEntities = std::set<EStakeableEntity>;

class IRenderTree : public SharedHeapObject {
public:
    virtual ~IRenderTree() = default;
    // Draws every buffer whose node meets the renderer's viewport, converting from the
    // image's system `from` into the view's `to`. `pass` numbers the drawing pass: a
    // buffer shared by several nodes is drawn once per pass.
    virtual void render(int pass, const Csx::CCs& from, const Csx::CCs& to, IRenderer* renderer) = 0;
    // Draws the one entity a pick returned (a point, or every element of a polyline).
    virtual void renderEntity(const TPickResult& entity, const Csx::CCs& from, const Csx::CCs& to,
                              IRenderer* renderer) = 0;
    // The nearest entity of the asked kinds within `tolerance` of `at`. `at` is given in
    // the view's system `to` and measured in the image's system `from`, where the
    // tolerance applies too; on success `at` becomes the nearest position on the entity,
    // back in `to`.
    virtual bool pick(TCoord2d& at, const Csx::CCs& from, const Csx::CCs& to, double tolerance,
                      const StakeableEntities& kinds, TPickResult& result) = 0;
    virtual std::shared_ptr<QuadtreeNode> getRoot() const = 0;
};

// Builds the index of a blob, in time and memory linear in its feature count (see
// QuadtreeNode::kMaxReferencesPerFeature). The tree reads styles from the blob while drawing: when
// the blob is held by a shared pointer the tree keeps it alive, otherwise the caller
// keeps it for as long as the tree is drawn.
std::shared_ptr<IRenderTree> buildQuadtree(VectorBlob& blob);

// Names of pickable entities: "v_<name>_pt<index>" for a point, "v_<name>_ln<index>"
// for a polyline.
CKivStringT generateVectorImagePointName(const wchar_t* name, int pointIndex);
CKivStringT generateVectorImageLineName(const wchar_t* name, int polyLineIndex);

// The shape of a tree, for reports.
struct TQuadtreeStats {
    int depth = 0;  // of the deepest leaf; the root is at depth 0
    int nodes = 0;
    int leaves = 0;
    int minLeafFeatures = 0;
    int maxLeafFeatures = 0;
    long long leafFeatures = 0;  // summed over the leaves (shared buffers count in each)
};
TQuadtreeStats getQuadtreeStats(const QuadtreeNode& root);
