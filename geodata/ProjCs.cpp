// Each system holds its own PROJ context, so systems made on different threads never
// share PROJ's state, and one operation from the system to the world used both ways.
#include "geodata/ProjCs.h"

#include <cmath>
#include <limits>

#include <proj.h>

namespace Csx {

namespace {

constexpr const char* kWorld = "EPSG:4326";

TCoord3d Apply(PJ* operation, PJ_DIRECTION direction, const TCoord3d& p) {
    const PJ_COORD out = proj_trans(operation, direction, proj_coord(p.x, p.y, p.z, 0.0));
    if (!std::isfinite(out.xyz.x) || !std::isfinite(out.xyz.y) || out.xyz.x == HUGE_VAL) {
        constexpr double inf = std::numeric_limits<double>::infinity();
        return {inf, inf, p.z};
    }
    return {out.xyz.x, out.xyz.y, out.xyz.z};
}

}  // namespace

std::unique_ptr<CProjCs> CProjCs::create(const std::string& definition, std::string& error) {
    PJ_CONTEXT* context = proj_context_create();
    if (context == nullptr) {
        error = "PROJ could not start";
        return nullptr;
    }
    proj_log_level(context, PJ_LOG_NONE);
    PJ* raw = proj_create_crs_to_crs(context, definition.c_str(), kWorld, nullptr);
    // Longitude before latitude and easting before northing, whatever the authority's order.
    PJ* normal = raw ? proj_normalize_for_visualization(context, raw) : nullptr;
    if (raw) proj_destroy(raw);
    if (normal == nullptr) {
        const int code = proj_context_errno(context);
        error = "PROJ does not know \"" + definition + "\" as a coordinate system" +
                (code ? std::string(" (") + proj_context_errno_string(context, code) + ")" : std::string());
        proj_context_destroy(context);
        return nullptr;
    }
    return std::unique_ptr<CProjCs>(new CProjCs(context, normal));
}

CProjCs::~CProjCs() {
    proj_destroy(toWorld_);
    proj_context_destroy(context_);
}

TCoord3d CProjCs::toWorld(const TCoord3d& p) const { return Apply(toWorld_, PJ_FWD, p); }

TCoord3d CProjCs::fromWorld(const TCoord3d& p) const { return Apply(toWorld_, PJ_INV, p); }

}  // namespace Csx
