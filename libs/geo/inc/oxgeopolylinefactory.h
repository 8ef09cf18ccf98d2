#pragma once
// oxGeo::polylinefactory: circles and arcs flattened to polylines.
//
// `precision` is the largest allowed chord error: the sagitta r(1 − cos(φ/2)) of every segment
// of angle φ stays within it, with the smallest segment count that achieves this. A full circle
// has at least 8 segments and at most 65536 (arcs in proportion to their angle, at least one;
// never more than 2^20 in all), so a coarse precision still looks round and a tiny one cannot
// exhaust memory. A precision of
// zero or less cannot be met and gives the maximal count; a radius of zero gives a polyline of
// coincident points. A negative radius is taken by its absolute value.
#include "oxgeo_export.h"
#include "oxgeopoint.h"
#include "oxgeopolyline.h"

#include "oxangle.h"

namespace oxGeo::polylinefactory {

/// Replaces the content of `out` with a circle in the XY plane at the centre's z, running
/// counter-clockwise from (cx + r, cy). The circle is closed by repeating its first point at the
/// end, so n segments have n + 1 points.
OX_GEO_API void generateCircularPolyline(double radius, double precision, const point3d& centre, polyline3d& out);

/// Replaces the content of `out` with an arc in the XY plane at the centre's z, from angle 0
/// (cx + r, cy) to `angle`: counter-clockwise for a positive angle, clockwise for a negative
/// one. Both ends are included; a zero angle gives the single start point.
OX_GEO_API void generateArcPolyline(double radius, ox::angle angle, double precision, const point3d& centre,
                                    polyline3d& out);

/// The segment count these functions use for an arc of `sweepRadians` (sign ignored).
OX_GEO_API int segmentCount(double radius, double sweepRadians, double precision);

} // namespace oxGeo::polylinefactory
