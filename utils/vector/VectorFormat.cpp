// The chain of entity kind descriptors, walked to name an id in diagnostics.
#include "utils/vector/VectorFormat.h"

namespace VectorFormat {
namespace {

constexpr EntityKindDescriptor kUnknown{0xFFFFFFFFu, "Unknown", nullptr};
constexpr EntityKindDescriptor kDummy{eDummyEntity, "DummyEntity", &kUnknown};
constexpr EntityKindDescriptor kPointStyles{ePointStylesList, "PointStylesList", &kDummy};
constexpr EntityKindDescriptor kKnots{eSplinesKnots, "SplinesKnots", &kPointStyles};
constexpr EntityKindDescriptor kControlPoints{eSplinesControlPoints, "SplinesControlPoints", &kKnots};
constexpr EntityKindDescriptor kSplines{eSplinesList, "SplinesList", &kControlPoints};
constexpr EntityKindDescriptor kElements{ePolyLineElementsLists, "PolyLineElementsLists", &kSplines};
constexpr EntityKindDescriptor kPolyLines{ePolyLinesList, "PolyLinesList", &kElements};
constexpr EntityKindDescriptor kTextStyles{eTextStylesList, "TextStylesList", &kPolyLines};
constexpr EntityKindDescriptor kLineStyles{eLineStylesList, "LineStylesList", &kTextStyles};
constexpr EntityKindDescriptor kLabels{eLabelsList, "LabelsList", &kLineStyles};
constexpr EntityKindDescriptor kStrings{eStringsData, "StringsData", &kLabels};
constexpr EntityKindDescriptor kArcs{eArcsList, "ArcsList", &kStrings};
constexpr EntityKindDescriptor kLines{eLinesList, "LinesList", &kArcs};
constexpr EntityKindDescriptor kPoints{ePointsList, "PointsList", &kLines};
constexpr EntityKindDescriptor kFixups{eFixupTable, "FixupTable", &kPoints};
constexpr EntityKindDescriptor kDirectory{eTagDirectory, "TagDirectory", &kFixups};

}  // namespace

const EntityKindDescriptor* getFirstEntityKind() { return &kDirectory; }

const char* getEntityKindName(std::uint32_t id) {
    for (const EntityKindDescriptor* kind = getFirstEntityKind(); kind != nullptr; kind = kind->next) {
        if (kind->id == id) return kind->name;
    }
    return "Invalid entity ID";
}

}  // namespace VectorFormat
