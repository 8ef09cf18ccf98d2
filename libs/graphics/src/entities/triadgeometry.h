#pragma once
// The meshes of a coordinate-system triad: an origin cube and three solid arrows, in the triad's
// own frame (before its coordinate system is applied).
#include "oxgeomesh.h"

namespace oxGraphics::triadGeometry {

struct triadMeshes_t {
    oxGeo::mesh3d originCube;   ///< edge 0.1·size, centred on the origin
    oxGeo::mesh3d xArrow;
    oxGeo::mesh3d yArrow;
    oxGeo::mesh3d zArrow;       ///< shaft from z = 0.05·size to size, head up to 1.2·size
};

/// The four meshes for arrows of length `size` (>= 0). A size of 0 gives a degenerate cube and
/// empty arrows: circles of radius 0 have nothing to show, and their chord precision of 0 would
/// ask for the largest segment count there is.
triadMeshes_t buildTriadMeshes(double size);

} // namespace oxGraphics::triadGeometry
