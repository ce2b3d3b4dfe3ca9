// The sample site plan, laid out on a local grid 200 m by 140 m whose south-west corner
// is at (5000, 8000). Positions that look surveyed are jittered by a fixed generator,
// so every build gives the same image.
#include "utils/vector/SampleSitePlan.h"

#include <charconv>
#include <cstdint>
#include <string>

#include "utils/vector/VectorImageProducer.h"

namespace {

constexpr double kWest = 5000.0, kSouth = 8000.0;

// A small fixed pseudo-random sequence in [-1, 1).
class Jitter {
public:
    double next() {
        state_ = state_ * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<double>(state_ >> 11) / static_cast<double>(1ull << 52) - 1.0;
    }

private:
    std::uint64_t state_ = 0x5EED5EEDull;
};

TCoord3d at(double east, double north, double height = 0.0) { return {kWest + east, kSouth + north, height}; }

}  // namespace

std::shared_ptr<VectorBlob> buildSampleSitePlan() {
    using namespace VectorFormat;
    VectorImageProducer plan;
    Jitter jitter;

    const int treeStyle = plan.addPointStyle(RGB(0, 128, 0), eSymbolCircle, 5);
    const int controlStyle = plan.addPointStyle(RGB(220, 0, 0), eSymbolCross, 7);
    const int manholeStyle = plan.addPointStyle(RGB(0, 0, 200), eSymbolSquare, 5);
    const int lampStyle = plan.addPointStyle(RGB(255, 140, 0), eSymbolDot, 4);
    const int spotStyle = plan.addPointStyle(RGB(0, 0, 0), eSymbolDot, 2);
    const int boundary = plan.addLineStyle(RGB(200, 0, 0), 1, 2);
    const int kerb = plan.addLineStyle(RGB(0, 0, 0), 0, 1);
    const int building = plan.addLineStyle(RGB(64, 64, 64), 0, 2);
    const int fence = plan.addLineStyle(RGB(139, 69, 19), 2, 1);
    const int canopy = plan.addLineStyle(RGB(34, 139, 34), 0, 1);
    const int title = plan.addTextStyle(RGB(0, 0, 0), 4.0);
    const int roadName = plan.addTextStyle(RGB(80, 80, 80), 3.0, 0.0);
    const int note = plan.addTextStyle(RGB(0, 0, 160), 1.2);

    // Site boundary and a fence along the north side.
    plan.addPolyline({at(0, 0), at(200, 0), at(200, 140), at(0, 140), at(0, 0)}, boundary);
    plan.addPolyline({at(5, 135), at(195, 135)}, fence);
    plan.addLabel(at(70, 125), L"Riverside Park - Lot 7", title);

    // The access road from the west edge, kerbs on both sides, ending in a turning
    // circle; the kerbs run into the circle with quarter arcs.
    plan.addPolyline({at(0, 30), at(140, 30)}, kerb);
    plan.addPolyline({at(0, 40), at(140, 40)}, kerb);
    plan.addArc(at(140, 30), at(140, 20), at(150, 20), true, kerb);
    plan.addArc(at(140, 40), at(140, 50), at(150, 50), false, kerb);
    plan.addArc(at(150, 20), at(160, 35), at(150, 50), false, kerb);
    plan.addLabel(at(40, 34), L"Mill Lane", roadName);

    // A footpath winding north from the road between the buildings and the trees.
    const int path = plan.addLineStyle(RGB(160, 82, 45), 1, 1);
    plan.addSpline({at(97, 41), at(103, 55), at(93, 72), at(102, 90), at(94, 108), at(99, 134)}, 3, path);

    // Buildings north of the road, each a closed outline with its name.
    const wchar_t* names[] = {L"Block A", L"Block B", L"Block C", L"Workshop", L"Store", L"Office"};
    for (int i = 0; i < 6; ++i) {
        const double e = 10.0 + 30.0 * (i % 3);
        const double n = i < 3 ? 60.0 : 95.0;
        const double w = 20.0 + 2.0 * i, h = 15.0 + i;
        plan.addPolyline({at(e, n), at(e + w, n), at(e + w, n + h), at(e, n + h), at(e, n)}, building);
        plan.addLabel(at(e + 3, n + h / 2), names[i], note);
    }

    // Trees east of the buildings on a loose grid, each with its canopy.
    for (int row = 0; row < 10; ++row) {
        for (int col = 0; col < 8; ++col) {
            const double e = 105.0 + col * 11.0 + 2.0 * jitter.next();
            const double n = 58.0 + row * 7.5 + 2.0 * jitter.next();
            plan.addPoint(at(e, n, 12.0 + jitter.next()), treeStyle);
            if ((row + col) % 4 == 0) plan.addArc(at(e + 2.5, n), at(e, n), at(e + 2.5, n), false, canopy);
        }
    }

    // Manholes along the road's centre line and lamps along the north kerb.
    for (int i = 0; i < 12; ++i) plan.addPoint(at(8.0 + i * 11.0, 35.0, 10.5 - 0.05 * i), manholeStyle);
    for (int i = 0; i < 15; ++i) plan.addPoint(at(5.0 + i * 9.5, 41.5, 11.0), lampStyle);

    // Control points with their names.
    const TCoord3d control[] = {at(2, 2, 10.12), at(198, 3, 10.87), at(197, 138, 13.40), at(3, 137, 12.95)};
    for (int i = 0; i < 4; ++i) {
        plan.addPoint(control[i], controlStyle);
        plan.addLabel({control[i].x + 1.5, control[i].y + 1.5, 0.0}, L"CP" + std::to_wstring(i + 1), note);
    }

    // Spot heights south of the road, every tenth labelled with its height.
    for (int row = 0; row < 6; ++row) {
        for (int col = 0; col < 20; ++col) {
            const double height = 9.8 + 0.02 * col + 0.05 * row + 0.03 * jitter.next();
            const TCoord3d spot = at(5.0 + col * 10.0, 3.0 + row * 4.5, height);
            plan.addPoint(spot, spotStyle);
            if ((row * 20 + col) % 10 == 0) {
                char text[32];
                const auto written = std::to_chars(text, text + sizeof text, height, std::chars_format::fixed, 2);
                plan.addLabel({spot.x + 0.5, spot.y + 0.5, 0.0}, std::wstring(text, written.ptr), note);
            }
        }
    }
    return plan.build();
}
