// glScene: the rectangle queries built on the rectangle selection (pickSelectRect), which stays
// the one place that talks to GL selection mode. The rules over the hits are in pickqueries.h.
#include "oxglscene.h"

#include "pickqueries.h"

namespace oxGraphics::openGL {
namespace {

constexpr const char* kInRectLogger = "oxGraphics::openGL::glScene::pickSelectInRect";
constexpr const char* kFirstHitLogger = "oxGraphics::openGL::glScene::getFirstHitPointInRect";

} // namespace

std::vector<pickHit_t> glScene::pickSelectInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                                 const iSelectFilter* filter) {
    std::vector<pickHit_t> hits;
    pickSelectRect(x1, y1, x2, y2, hits, 0);
    return pickQueries::acceptedNearestFirst(std::move(hits), filter, kInRectLogger);
}

bool glScene::getFirstHitPointInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                     const iSelectFilter* filter, ox::refPtr<iDrawable>& hit, oxGeo::point3d& point) {
    std::vector<pickHit_t> hits;
    pickSelectRect(x1, y1, x2, y2, hits, 0);
    const auto nearest = pickQueries::nearestAccepted(hits, filter, kFirstHitLogger);
    if (!nearest) return false;
    const pickHit_t& chosen = hits[*nearest];
    // Window depth 0..1 to eye depth: the projection maps eye z in [100 s, -100 s] onto it.
    const double windowDepth = chosen.minDepth / 4294967295.0;
    const double eyeZ = -(2.0 * windowDepth - 1.0) * 100.0 * mProjection.viewSize();
    // In double: the corners' sum may not fit the unsigned type; their order does not matter.
    const oxGeo::point3d eye = mProjection.windowToEye((double(x1) + x2) / 2.0, (double(y1) + y2) / 2.0, eyeZ);
    oxGeo::matrix3d eyeToWorld;
    if (!modelView().inverse(eyeToWorld)) return false;
    hit = chosen.drawable;
    point = eyeToWorld * eye;
    return true;
}

} // namespace oxGraphics::openGL
