// The record layouts of the list entities and typed access to them. Every list payload
// is a packed array of fixed-size little-endian records; positions are three 64-bit
// floats x, y, z; pointer fields are 32-bit words (see PoolManager.h).
//
// Layouts (offset: contents; "->" marks a pointer field):
//   PointsList             28  0: position; 24 -> the point's PointStylesList record
//   LinesList              52  0: start; 24: end; 48 -> the line's PolyLinesList record,
//                              whose first word holds the address of its line style
//   ArcsList               84  0: start; 24: end; 48: centre; 72: float64 turning
//                              direction (> 0 counter-clockwise, otherwise clockwise);
//                              80 -> the arc's PolyLinesList record, as for lines
//   StringsData             1  character data: UTF-16LE text, each ending in a zero unit
//   LabelsList             32  0: position; 24 -> text in StringsData; 28 -> TextStylesList record
//   LineStylesList         12  0..2: colour bytes; 4: pen style (low byte, signed:
//                              0 solid, 1 dash, 2 dot, 3 dash-dot, 5 none); 8: width in pixels
//   TextStylesList         12  0..2: colour bytes; 4: float32 text height in image units;
//                              8: float32 rotation, degrees counter-clockwise from +x
//   PolyLinesList          12  0 -> LineStylesList record; 4 -> the first of its
//                              PolyLineElementsLists records; 8: element count
//   PolyLineElementsLists   8  0: element kind (1 line, 2 arc); 4 -> the LinesList or
//                              ArcsList record
//   SplinesList            32  0: degree; 4: control point count; 8: knot count;
//                              12 -> first SplinesControlPoints record; 16..18: colour
//                              bytes; 19: pen style; 20: width in pixels; 24 -> first
//                              SplinesKnots value; 28: flags (bit 0 closed)
//   SplinesControlPoints   32  0: position; 24: float64 weight
//   SplinesKnots            8  float64 knot value
//   PointStylesList         8  0..2: colour bytes; 3: symbol (0 dot, 1 cross, 2 circle,
//                              3 square); 4: symbol size in pixels
// A colour is byte0 + byte1 x 256 + byte2 x 65536 (a COLORREF).
#pragma once

#include <cstdint>

#include "platform/kivmath/Arc.h"
#include "platform/kivmath/Coord.h"
#include "platform/win32/Win32Types.h"
#include "utils/vector/VectorFormat.h"

namespace VectorFormat {

constexpr std::uint32_t kPointRecordBytes = 28;
constexpr std::uint32_t kLineRecordBytes = 52;
constexpr std::uint32_t kArcRecordBytes = 84;
constexpr std::uint32_t kLabelRecordBytes = 32;
constexpr std::uint32_t kLineStyleRecordBytes = 12;
constexpr std::uint32_t kTextStyleRecordBytes = 12;
constexpr std::uint32_t kPolyLineRecordBytes = 12;
constexpr std::uint32_t kPolyLineElementRecordBytes = 8;
constexpr std::uint32_t kSplineRecordBytes = 32;
constexpr std::uint32_t kSplineControlPointRecordBytes = 32;
constexpr std::uint32_t kSplineKnotRecordBytes = 8;
constexpr std::uint32_t kPointStyleRecordBytes = 8;

// Pointer field offsets within each record, in ascending order.
constexpr std::uint32_t kPointStyleField = 24;
constexpr std::uint32_t kLinePolyLineField = 48;
constexpr std::uint32_t kArcPolyLineField = 80;
constexpr std::uint32_t kLabelTextField = 24;
constexpr std::uint32_t kLabelStyleField = 28;
constexpr std::uint32_t kPolyLineStyleField = 0;
constexpr std::uint32_t kPolyLineElementsField = 4;
constexpr std::uint32_t kPolyLineElementTargetField = 4;
constexpr std::uint32_t kSplineControlPointsField = 12;
constexpr std::uint32_t kSplineKnotsField = 24;

enum EPolyLineElementKind : std::uint32_t { eElementLine = 1, eElementArc = 2 };
enum EPointSymbol : std::uint8_t { eSymbolDot = 0, eSymbolCross = 1, eSymbolCircle = 2, eSymbolSquare = 3 };

inline TCoord3d readPosition(const unsigned char* at) { return {readF64(at), readF64(at + 8), readF64(at + 16)}; }
inline void writePosition(unsigned char* at, const TCoord3d& p) {
    writeF64(at, p.x);
    writeF64(at + 8, p.y);
    writeF64(at + 16, p.z);
}
inline COLORREF readColour(const unsigned char* at) {
    return static_cast<COLORREF>(at[0]) | (static_cast<COLORREF>(at[1]) << 8) | (static_cast<COLORREF>(at[2]) << 16);
}
inline void writeColour(unsigned char* at, COLORREF colour) {
    at[0] = static_cast<unsigned char>(colour);
    at[1] = static_cast<unsigned char>(colour >> 8);
    at[2] = static_cast<unsigned char>(colour >> 16);
}

// A list entity of fixed-size records.
template <std::uint32_t RecordBytes>
struct RecordList : Entity<char> {
    static constexpr std::uint32_t kRecordBytes = RecordBytes;
    std::uint32_t getCount() const { return getSize() / RecordBytes; }
    unsigned char* record(std::uint32_t i) { return data() + std::size_t{i} * RecordBytes; }
    const unsigned char* record(std::uint32_t i) const { return data() + std::size_t{i} * RecordBytes; }
};

struct PointsList : RecordList<kPointRecordBytes> {
    TCoord3d getPosition(std::uint32_t i) const { return readPosition(record(i)); }
    std::uint32_t getStyleWord(std::uint32_t i) const { return readU32(record(i) + kPointStyleField); }
};

struct LinesList : RecordList<kLineRecordBytes> {
    TCoord3d getStart(std::uint32_t i) const { return readPosition(record(i)); }
    TCoord3d getEnd(std::uint32_t i) const { return readPosition(record(i) + 24); }
    std::uint32_t getPolyLineWord(std::uint32_t i) const { return readU32(record(i) + kLinePolyLineField); }
};

struct ArcsList : RecordList<kArcRecordBytes> {
    TCoord3d getStart(std::uint32_t i) const { return readPosition(record(i)); }
    TCoord3d getEnd(std::uint32_t i) const { return readPosition(record(i) + 24); }
    TCoord3d getCenter(std::uint32_t i) const { return readPosition(record(i) + 48); }
    double getDirection(std::uint32_t i) const { return readF64(record(i) + 72); }
    std::uint32_t getPolyLineWord(std::uint32_t i) const { return readU32(record(i) + kArcPolyLineField); }
    // The arc through start, centre and end; false for an arc without radius.
    bool getArc(std::uint32_t i, CArc& arc) const {
        const TCoord3d s = getStart(i), c = getCenter(i), e = getEnd(i);
        return arc.set_start_center_finish({s.x, s.y}, {c.x, c.y}, {e.x, e.y}, !(getDirection(i) > 0.0));
    }
};

}  // namespace VectorFormat
