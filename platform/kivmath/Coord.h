// Plane and space coordinates shared by kivmath's geometry and the vector images:
// x east, y north, z up, all in metres of whatever system the caller works in.
#pragma once

struct TCoord2d {
    double x = 0.0;
    double y = 0.0;
};

struct TCoord3d {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};
