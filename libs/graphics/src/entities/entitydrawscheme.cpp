#include "entitydrawscheme.h"

namespace oxGraphics::entityScheme {

void assignTransformation(std::unique_ptr<oxGeo::matrix3d>& slot, const oxGeo::matrix3d& m) {
    if (m.isEqualTo(oxGeo::matrix3d(), kIdentityTolerance)) {
        slot.reset();
        return;
    }
    // Overwritten in place: hosts that drag an entity set a new matrix every mouse move.
    if (slot)
        *slot = m;
    else
        slot = std::make_unique<oxGeo::matrix3d>(m);
}

void applyTransformation(iDrawer& drawer, const std::unique_ptr<oxGeo::matrix3d>& transformation) {
    if (transformation) drawer.multMatrix(*transformation);
}

oxGeo::boundBox3d transformedBox(const std::vector<oxGeo::point3d>& points, const oxGeo::matrix3d* transformation) {
    oxGeo::boundBox3d box;
    // Each point is mapped rather than the box's corners, so a rotation does not inflate the box.
    for (const auto& p : points) box.grow(transformation != nullptr ? *transformation * p : p);
    return box;
}

} // namespace oxGraphics::entityScheme
