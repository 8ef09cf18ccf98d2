#include "triadgeometry.h"

#include "oxgeomatrix.h"
#include "oxgeomeshfactory.h"
#include "oxgeopolyline.h"
#include "oxgeopolylinefactory.h"

#include "oxangle.h"

namespace oxGraphics::triadGeometry {
namespace {

oxGeo::mesh3d buildZArrow(double s) {
    oxGeo::mesh3d arrow;
    const double precision = 0.005 * s;

    // Shaft: a tube from just above the origin cube's centre to the head. The circles run
    // counter-clockwise about +Z with the lower one first, so the faces point outward.
    oxGeo::polyline3d shaftBottom;
    oxGeo::polylinefactory::generateCircularPolyline(0.03 * s, precision, oxGeo::point3d(), shaftBottom);
    shaftBottom.setZComponent(0.05 * s);
    oxGeo::polyline3d shaftTop = shaftBottom;
    shaftTop.setZComponent(s);
    oxGeo::meshfactory::appendRuledMesh(shaftBottom, shaftTop, arrow, false, false);

    // Head: a flat cap facing down and a cone; the fan from an apex above the circle faces inward
    // unless flipped.
    oxGeo::polyline3d headBase;
    oxGeo::polylinefactory::generateCircularPolyline(0.05 * s, precision, oxGeo::point3d(), headBase);
    headBase.setZComponent(s);
    oxGeo::meshfactory::appendRuledMesh(oxGeo::point3d(0.0, 0.0, s), headBase, arrow, false, false);
    oxGeo::meshfactory::appendRuledMesh(oxGeo::point3d(0.0, 0.0, 1.2 * s), headBase, arrow, false, true);
    return arrow;
}

oxGeo::matrix3d rotationAbout(const oxGeo::vector3d& axis) {
    oxGeo::matrix3d rotation;
    rotation.setToRotation(ox::angle::fromDegree(-90.0), axis, oxGeo::point3d());
    return rotation;
}

} // namespace

triadMeshes_t buildTriadMeshes(double size) {
    triadMeshes_t meshes;
    const double edge = 0.1 * size;
    oxGeo::meshfactory::appendBoxMesh(edge, edge, edge, meshes.originCube, true);
    if (size <= 0.0) return meshes;

    meshes.zArrow = buildZArrow(size);
    // −90° about X turns +Z into +Y; a further −90° about Z turns +Y into +X.
    meshes.yArrow = meshes.zArrow;
    meshes.yArrow.transformBy(rotationAbout({1.0, 0.0, 0.0}));
    meshes.xArrow = meshes.yArrow;
    meshes.xArrow.transformBy(rotationAbout({0.0, 0.0, 1.0}));
    return meshes;
}

} // namespace oxGraphics::triadGeometry
