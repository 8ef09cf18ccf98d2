#include "sampleScene.h"

#include "oxboundeddrawable.h"
#include "oxcsentity.h"
#include "oxmeshentity.h"
#include "oxpointentity.h"
#include "oxpolylineentity.h"

#include "oxgeomatrix.h"
#include "oxgeomesh.h"
#include "oxgeomeshfactory.h"
#include "oxgeopolyline.h"
#include "oxgeopolylinefactory.h"

#include "oxangle.h"
#include "oxcolor.h"
#include "oxsharedptr.h"

#include <cmath>
#include <memory>

namespace oxview {
namespace {

using oxGeo::matrix3d;
using oxGeo::mesh3d;
using oxGeo::point3d;
using oxGeo::polyline3d;
using oxGeo::vector3d;

/// (radius, z) of a profile turned about a vertical axis.
struct profilePoint_t {
    double mRadius;
    double mZ;
};

/// A closed unit circle from the factory; every ring of a turned part is a copy of it, so
/// neighbouring rings have the same point count whatever their radii.
const polyline3d& unitCircle() {
    static const polyline3d circle = [] {
        polyline3d c;
        oxGeo::polylinefactory::generateCircularPolyline(1.0, 0.0005, point3d(), c);
        return c;
    }();
    return circle;
}

polyline3d ring(const point3d& axisBase, double radius, double z) {
    matrix3d scale;
    scale.setToScale(radius);
    matrix3d place;
    place.setToTranslation(vector3d(axisBase.x(), axisBase.y(), axisBase.z() + z));
    polyline3d r = unitCircle();
    r.transformBy(place * scale);
    return r;
}

/// Turns the profile about the vertical axis through `axisBase`. The profile runs
/// counter-clockwise in the (radius, z) half-plane (outside up, inside down), which makes every
/// face normal point out of the solid. Points on the axis become cone apexes.
void appendTurnedPart(const std::vector<profilePoint_t>& profile, const point3d& axisBase, mesh3d& mesh) {
    for (std::size_t i = 0; i + 1 < profile.size(); ++i) {
        const profilePoint_t& p0 = profile[i];
        const profilePoint_t& p1 = profile[i + 1];
        if (p0.mRadius == 0.0) {
            const point3d apex(axisBase.x(), axisBase.y(), axisBase.z() + p0.mZ);
            oxGeo::meshfactory::appendRuledMesh(apex, ring(axisBase, p1.mRadius, p1.mZ), mesh, true, false);
        } else if (p1.mRadius == 0.0) {
            const point3d apex(axisBase.x(), axisBase.y(), axisBase.z() + p1.mZ);
            oxGeo::meshfactory::appendRuledMesh(apex, ring(axisBase, p0.mRadius, p0.mZ), mesh, true, true);
        } else {
            oxGeo::meshfactory::appendRuledMesh(ring(axisBase, p0.mRadius, p0.mZ), ring(axisBase, p1.mRadius, p1.mZ),
                                                mesh, true, false);
        }
    }
}

/// A box from `corner` spanning (dx, dy, dz).
void appendBox(const point3d& corner, double dx, double dy, double dz, mesh3d& mesh) {
    mesh3d box;
    oxGeo::meshfactory::appendBoxMesh(dx, dy, dz, box, false);
    matrix3d place;
    place.setToTranslation(vector3d(corner));
    box.transformBy(place);
    const auto base = static_cast<std::uint32_t>(mesh.vertexCount());
    for (const point3d& v : box.vertices()) mesh.addVertex(v);
    for (const auto& face : box.faces())
        mesh.addTriangle(base + face.mIndex[0], base + face.mIndex[1], base + face.mIndex[2]);
}

ox::refPtr<oxGraphics::iDrawable> part(mesh3d mesh, ox::rgbColor color) {
    auto entity = oxGraphics::meshEntity::create(
        ox::const_sharedPtr<mesh3d>(std::make_shared<mesh3d>(std::move(mesh))));
    entity->setColor(color);
    return oxGraphics::boundedDrawable::create(entity);
}

/// A zigzag pocketing pass over the plate beside the bracket, with approach and retract moves.
polyline3d toolPath() {
    polyline3d path;
    constexpr double x0 = 22.0, x1 = 72.0, y0 = 26.0, y1 = 44.0, step = 3.0, z = 1.0, safe = 25.0;
    path.addPoint({x0, y0, safe});
    bool forward = true;
    for (double y = y0; y <= y1 + 1e-9; y += step) {
        path.addPoint({forward ? x0 : x1, y, z});
        path.addPoint({forward ? x1 : x0, y, z});
        forward = !forward;
    }
    const point3d last = path.points().back();
    path.addPoint({last.x(), last.y(), safe});
    return path;
}

} // namespace

sceneContent_t buildSampleScene() {
    sceneContent_t content;
    auto& drawables = content.mDrawables;

    // Base plate, its top face in z = 0.
    mesh3d plate;
    appendBox({-80.0, -50.0, -12.0}, 160.0, 100.0, 12.0, plate);
    drawables.push_back(part(std::move(plate), {165, 170, 180}));

    // Stepped shaft with a chamfered tip.
    mesh3d shaft;
    appendTurnedPart({{0, 0}, {10, 0}, {10, 50}, {6, 50}, {6, 68}, {4, 70}, {0, 70}}, {-50.0, -15.0, 0.0}, shaft);
    drawables.push_back(part(std::move(shaft), {225, 135, 40}));
    // The tall shaft stands clear against the background, so the handle on its top reads well.
    content.mFeaturedPart = drawables.back();

    // Flanged bushing: a flange ring and a hub around a through bore.
    mesh3d bushing;
    appendTurnedPart({{14, 0}, {30, 0}, {30, 8}, {18, 8}, {18, 26}, {16, 28}, {14, 28}, {14, 0}}, {32.0, -12.0, 0.0},
                     bushing);
    drawables.push_back(part(std::move(bushing), {70, 170, 120}));

    // L-bracket: a foot on the plate and an upright at its back.
    mesh3d bracket;
    appendBox({-32.0, 18.0, 0.0}, 44.0, 28.0, 6.0, bracket);
    appendBox({-32.0, 40.0, 6.0}, 44.0, 6.0, 40.0, bracket);
    drawables.push_back(part(std::move(bracket), {200, 70, 80}));
    content.mParts = drawables;

    auto path = oxGraphics::polylineEntity::create(
        ox::const_sharedPtr<polyline3d>(std::make_shared<polyline3d>(toolPath())));
    path->setColor({240, 80, 230});
    path->setLineWidth(2);
    drawables.push_back(oxGraphics::boundedDrawable::create(path));

    // Drill points: the plate's corner holes and the flange's bolt circle.
    std::vector<point3d> holes{{-70, -40, 0}, {70, -40, 0}, {70, 40, 0}, {-70, 40, 0}};
    for (int i = 0; i < 6; ++i) {
        const double a = ox::angle::kPi * i / 3.0;
        holes.push_back({32.0 + 24.0 * std::cos(a), -12.0 + 24.0 * std::sin(a), 8.0});
    }
    auto points = oxGraphics::pointEntity::create(holes);
    points->setColor({0, 230, 255});
    points->setPointSize(8);
    drawables.push_back(oxGraphics::boundedDrawable::create(points));

    // The workpiece frame at the plate's front-left corner.
    matrix3d frame;
    frame.setToTranslation({-80.0, -50.0, 0.0});
    auto triad = oxGraphics::csEntity::create(frame);
    triad->setSize(25.0);
    drawables.push_back(oxGraphics::boundedDrawable::create(triad));

    return content;
}

} // namespace oxview
