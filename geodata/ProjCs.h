// Csx::CProjCs: any coordinate system PROJ knows (an EPSG code, a PROJ string, WKT) as
// a Csx::CCs. Its world system is WGS 84 geographic, longitude then latitude in degrees,
// so any two such systems chain through it, and transformBBox and the render walk take
// it like any other system.
#pragma once

#include <memory>
#include <string>

#include "utils/vector/Csx.h"

struct pj_ctx;
struct PJconsts;

namespace Csx {

class CProjCs : public CCs {
public:
    // The system the definition names, or null with `error` saying why.
    static std::unique_ptr<CProjCs> create(const std::string& definition, std::string& error);
    ~CProjCs() override;
    CProjCs(const CProjCs&) = delete;
    CProjCs& operator=(const CProjCs&) = delete;

    // A point PROJ cannot convert (outside the system's area of use, past a pole) comes
    // back with infinite coordinates, which every box and clip test already rejects.
    // One system must not convert on two threads at once: PROJ keeps state per object.
    TCoord3d toWorld(const TCoord3d& p) const override;
    TCoord3d fromWorld(const TCoord3d& p) const override;

private:
    CProjCs(pj_ctx* context, PJconsts* toWorld) : context_(context), toWorld_(toWorld) {}
    pj_ctx* context_;
    PJconsts* toWorld_;
};

}  // namespace Csx
