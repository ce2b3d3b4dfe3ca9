// VectorImageProducer: the way to make a vector image. Styles and features are
// collected by value; build() lays them out as pools through a VectorBlobBuilder, with
// every pointer field reported to the pool manager, and returns a complete blob.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/kivutils/Heap.h"
#include "utils/vector/VectorBlob.h"

class VectorImageProducer : public SharedHeapObject {
public:
    // Styles; each returns its index, which features refer to.
    int addPointStyle(COLORREF colour, VectorFormat::EPointSymbol symbol = VectorFormat::eSymbolDot,
                      std::uint32_t size = 3);
    int addLineStyle(COLORREF colour, int penStyle = 0, int width = 1);
    int addTextStyle(COLORREF colour, double height, double rotationDegrees = 0.0);

    // Features. A point returns its index in the PointsList; lines, polylines and arcs
    // return the index of the polyline they form; a label its index in the LabelsList.
    // -1 when a style index names no style or a polyline has fewer than two vertices.
    int addPoint(const TCoord3d& position, int pointStyle);
    int addLine(const TCoord3d& start, const TCoord3d& end, int lineStyle);
    int addPolyline(const std::vector<TCoord3d>& vertices, int lineStyle);
    int addArc(const TCoord3d& start, const TCoord3d& centre, const TCoord3d& end, bool clockwise, int lineStyle);
    int addLabel(const TCoord3d& position, const std::wstring& text, int textStyle);
    // A spline through the given control points, clamped at both ends (its knots run
    // 0 .. 0, 1, 2, .., m .. m), weights 1 unless given, drawn in the line style's
    // colour, pen style and width. Returns its index in the SplinesList; -1 for a bad
    // style, a degree below 1, too few control points, or weights that do not match.
    int addSpline(const std::vector<TCoord3d>& controlPoints, int degree, int lineStyle, bool closed = false,
                  const std::vector<double>& weights = {});

    // The image as a blob holding every required kind; null when no arena could be had.
    // The producer may be built again; each build makes a new blob.
    std::shared_ptr<VectorBlob> build() const;

private:
    struct Element {
        std::uint32_t kind;
        std::uint32_t index;
    };
    struct PolyLine {
        int style;
        std::vector<Element> elements;
    };
    struct Line {
        TCoord3d start, end;
        std::uint32_t polyLine;
    };
    struct Arc {
        TCoord3d start, end, centre;
        double direction;
        std::uint32_t polyLine;
    };
    struct PointStyle {
        COLORREF colour;
        std::uint8_t symbol;
        std::uint32_t size;
    };
    struct LineStyle {
        COLORREF colour;
        int penStyle;
        int width;
    };
    struct TextStyle {
        COLORREF colour;
        float height;
        float rotation;
    };
    struct Point {
        TCoord3d position;
        int style;
    };
    struct Label {
        TCoord3d position;
        std::string utf16;  // UTF-16LE with its zero unit
        int style;
    };

    std::vector<PointStyle> pointStyles_;
    std::vector<LineStyle> lineStyles_;
    std::vector<TextStyle> textStyles_;
    std::vector<Point> points_;
    std::vector<Line> lines_;
    std::vector<Arc> arcs_;
    std::vector<PolyLine> polyLines_;
    std::vector<Label> labels_;
    struct Spline {
        TSplineCurve curve;
        int style;
    };
    std::vector<Spline> splines_;
};
