// VectorBlob: one vector image (its pools, the file image a loaded blob lives in, typed
// access to its lists) and the image's IReader, which knows where the pointer fields
// of every list lie. VectorBlobBuilder makes an empty blob, lets a producer add pools,
// and fills in every required kind the producer left out.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"
#include "utils/vector/PoolManager.h"
#include "utils/vector/Spline.h"
#include "utils/vector/VectorRecords.h"

struct TPointStyle {
    COLORREF colour = 0;
    std::uint8_t symbol = VectorFormat::eSymbolDot;
    std::uint32_t size = 0;
};

struct TLineStyle {
    COLORREF colour = 0;
    int penStyle = 0;
    int width = 0;
};

struct TTextStyle {
    COLORREF colour = 0;
    float height = 0.0f;
    float rotation = 0.0f;
};

struct TLabel {
    TCoord3d position;
    CKivStringT text;
    TTextStyle style;
};

struct TSpline {
    TSplineCurve curve;
    TLineStyle style;
};

class VectorBlob : public IReader, public SharedHeapObject, public std::enable_shared_from_this<VectorBlob> {
public:
    using Entity = VectorFormat::Entity<char>;

    VectorBlob() = default;
    // Copies share the pools and the held image.
    VectorBlob(const VectorBlob&) = default;
    VectorBlob& operator=(const VectorBlob&) = default;

    // Reports the pointer fields of every list, record by record, in the kind order
    // PointsList, ArcsList, LinesList, LabelsList, PolyLinesList, PolyLineElementsLists,
    // SplinesList. Kinds that are absent report nothing.
    void enumPointers(VectorFormat::IPointerProcessor& processor) override;
    // Holds the image, loads it in place and checks that the required kinds are there.
    // Whatever the blob held before (a loaded image or built pools) is dropped first.
    virtual bool deserialize(std::shared_ptr<unsigned char[]> image, int bytes);
    // Writes the image; afterwards its pointers are spent (see PoolManager).
    virtual bool serialize(CEntityWriter& writer);
    // True when every required kind is present and a SplinesList of 32 bytes or more has
    // both companions; logs one line per missing kind.
    bool verifyTagSet();

    // The first pool registered with exactly this id, or null.
    Entity* getEntity(int id) const { return pools_.getPool(id); }
    // The list of that kind, or null when there is none. (A null pointer rather than the
    // null reference of old, which no caller could test for.)
    VectorFormat::PointsList* getPointsList() const;
    VectorFormat::LinesList* getLinesList() const;
    VectorFormat::ArcsList* getArcsList() const;
    PoolManager& getPoolManager() { return pools_; }
    const PoolManager& getPoolManager() const { return pools_; }
    // The image's directory entity when the blob was loaded, else null.
    Entity* getDirectory() const { return directory_; }

    // Record counts, 0 when the kind is absent.
    std::uint32_t getPointCount() const;
    std::uint32_t getLineCount() const;
    std::uint32_t getArcCount() const;
    std::uint32_t getLabelCount() const;
    std::uint32_t getPolyLineCount() const;
    std::uint32_t getSplineCount() const;

    // Following pointer fields. Each target is checked to lie inside the image before it
    // is read, so a malformed file yields false, never a read outside its bytes.
    bool getPointStyle(std::uint32_t point, TPointStyle& style) const;
    bool getLineStyle(std::uint32_t line, TLineStyle& style) const;
    bool getArcStyle(std::uint32_t arc, TLineStyle& style) const;
    bool getPolyLineStyle(std::uint32_t polyLine, TLineStyle& style) const;
    // The index of the polyline a line or an arc belongs to, -1 when it names none.
    int getLinePolyLineIndex(std::uint32_t line) const;
    int getArcPolyLineIndex(std::uint32_t arc) const;
    // getLinePolyLineIndex of every line in line order, into `out` (getLineCount()
    // places), with the lists looked up once for all lines rather than once per line.
    void getLinePolyLineIndices(int* out) const;
    bool getLabel(std::uint32_t label, TLabel& result) const;
    // A spline with its control points, weights and knots; false when its record or
    // arrays leave the image, it has more than 65536 control points or a degree above
    // 31, or the curve is not valid (TSplineCurve::isValid).
    bool getSpline(std::uint32_t spline, TSpline& result) const;

private:
    template <typename List>
    List* getList(std::uint32_t kind) const;
    bool readLineStyleThrough(std::uint32_t polyLineWord, TLineStyle& style) const;
    int polyLineIndexOf(std::uint32_t polyLineWord) const;

    Entity* directory_ = nullptr;
    PoolManager pools_;
    std::shared_ptr<unsigned char[]> image_;
};

class VectorBlobBuilder : public SharedHeapObject {
public:
    VectorBlobBuilder();
    PoolManager& getPoolManager() { return blob_->getPoolManager(); }
    // Adds an empty entity for every required kind the blob lacks (never spline kinds).
    void completeTagSet();
    // completeTagSet(), then the blob; the builder keeps its own share.
    std::shared_ptr<VectorBlob> build();

private:
    std::shared_ptr<VectorBlob> blob_;
};
