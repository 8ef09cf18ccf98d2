#include "entitydrawscheme.h"

#include "oxgeolimits.h"
#include "oxlog.h"

namespace oxGraphics::entityScheme {

bool assignTransformation(std::unique_ptr<oxGeo::matrix3d>& slot, const oxGeo::matrix3d& m) {
    if (!oxGeo::isFinite(m)) {
        OX_LOG_WARN("oxGraphics::entity::setTransformation",
                    L"ignored a transformation that is not finite; the entity keeps its placement");
        return false;
    }
    if (m.isEqualTo(oxGeo::matrix3d(), kIdentityTolerance)) {
        slot.reset();
        return true;
    }
    // Overwritten in place: hosts that drag an entity set a new matrix every mouse move.
    if (slot)
        *slot = m;
    else
        slot = std::make_unique<oxGeo::matrix3d>(m);
    return true;
}

void applyTransformation(iDrawer& drawer, const std::unique_ptr<oxGeo::matrix3d>& transformation) {
    if (transformation) drawer.multMatrix(*transformation);
}

oxGeo::boundBox3d transformedBox(const std::vector<oxGeo::point3d>& points, const oxGeo::matrix3d* transformation) {
    oxGeo::boundBox3d box;
    // Each point is mapped rather than the box's corners, so a rotation does not inflate the box.
    // Points that are no usable coordinates cannot be drawn; letting them into the box would make
    // every fit frame nothing (NaN) or a speck (1e308).
    for (const auto& p : points) {
        if (!oxGeo::isUsable(p)) continue;
        const oxGeo::point3d placed = transformation != nullptr ? *transformation * p : p;
        if (oxGeo::isUsable(placed)) box.grow(placed);
    }
    return box;
}

} // namespace oxGraphics::entityScheme
