#pragma once
// oxGeo::meshfactory: appends standard shapes to a mesh. Every function only appends: vertices
// and patches already in the mesh stay as they are.
#include "oxgeo_export.h"
#include "oxgeomesh.h"
#include "oxgeopoint.h"
#include "oxgeopolyline.h"

namespace oxGeo::meshfactory {

/// A closed box of 8 shared vertices and 12 triangles, wound counter-clockwise seen from
/// outside (every patch normal points out of the box). `centred`: the box is centred on the
/// origin; otherwise it spans from the origin to (dx, dy, dz). Negative edge lengths are taken
/// by their absolute value.
OX_GEO_API void appendBoxMesh(double dx, double dy, double dz, mesh3d& mesh, bool centred);

/// The ruled surface between two polylines: for each i the strip a[i], a[i+1], b[i+1], b[i],
/// as the triangles (a[i], a[i+1], b[i+1]) and (a[i], b[i+1], b[i]). Each face's normal points
/// along (a[i+1] − a[i]) × (b[i] − a[i]): for two circles running counter-clockwise about +Z,
/// `a` below `b`, the normals point outward.
///  - closeLoop: also add the strip from the last points back to the first ones. When both
///    polylines already end on their first point (as circles from polylinefactory do), that
///    strip would be empty and is not added.
///  - flipOrientation: reverse the winding of every face (normals point the other way).
/// Polylines of unequal length are a programming error: it asserts and uses the shorter count.
OX_GEO_API void appendRuledMesh(const polyline3d& a, const polyline3d& b, mesh3d& mesh, bool closeLoop,
                                bool flipOrientation);

/// The ruled surface from one point to a polyline (a cone, a fan, or a flat cap when the apex
/// lies in the polyline's plane): the triangles (apex, b[i+1], b[i]), i.e. the two-polyline form
/// with `a` shrunk to the apex. For a counter-clockwise circle about +Z the normals point away
/// from +Z (outward-down for a cap below, inward for a cone whose apex lies above the circle;
/// pass flipOrientation for an outward cone). The bools mean what they mean above.
OX_GEO_API void appendRuledMesh(const point3d& apex, const polyline3d& b, mesh3d& mesh, bool closeLoop,
                                bool flipOrientation);

} // namespace oxGeo::meshfactory
