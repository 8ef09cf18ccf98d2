#pragma once
// oxGeo::polyline2d, oxGeo::polyline3d: ordered point sequences. A polyline is an open chain
// unless an operation says it treats it as closed.
#include "oxgeo_export.h"
#include "oxgeoboundbox.h"
#include "oxgeomatrix.h"
#include "oxgeopoint.h"

#include <cstddef>
#include <vector>

namespace oxGeo {

class OX_GEO_API polyline2d {
public:
    polyline2d() = default;
    explicit polyline2d(std::vector<point2d> points) : mPoints(std::move(points)) {}

    void addPoint(const point2d& p) { mPoints.push_back(p); }
    void reserve(std::size_t n) { mPoints.reserve(n); }
    void clear() { mPoints.clear(); }
    const std::vector<point2d>& points() const { return mPoints; }
    std::size_t size() const { return mPoints.size(); }
    bool empty() const { return mPoints.empty(); }
    const point2d& operator[](std::size_t i) const { return mPoints[i]; }
    point2d& operator[](std::size_t i) { return mPoints[i]; }
    auto begin() const { return mPoints.begin(); }
    auto end() const { return mPoints.end(); }

    /// Maps every point through `m` in the plane z = 0 and drops the resulting z.
    polyline2d& transformBy(const matrix3d& m);
    /// Even-odd test against the outline closed implicitly from the last point back to the
    /// first (a repeated first point does no harm). Correct for concave and self-touching
    /// outlines. Points on the boundary count as inside: a point within 1e-9 of the outline's
    /// bounding-box diagonal from an edge or vertex is inside. Fewer than three points enclose
    /// nothing.
    bool isPointInside(const point2d& p) const;
    /// The length of the open chain (no closing segment).
    double length() const;
    boundBox2d boundingBox() const;

private:
    std::vector<point2d> mPoints;
};

class OX_GEO_API polyline3d {
public:
    polyline3d() = default;
    explicit polyline3d(std::vector<point3d> points) : mPoints(std::move(points)) {}

    void addPoint(const point3d& p) { mPoints.push_back(p); }
    /// Appends the points of `p` with z = 0.
    void addPolyline2d(const polyline2d& p);
    void reserve(std::size_t n) { mPoints.reserve(n); }
    void clear() { mPoints.clear(); }
    /// The points, as the drawer's polyline operations take them.
    const std::vector<point3d>& points() const { return mPoints; }
    std::size_t size() const { return mPoints.size(); }
    bool empty() const { return mPoints.empty(); }
    const point3d& operator[](std::size_t i) const { return mPoints[i]; }
    point3d& operator[](std::size_t i) { return mPoints[i]; }
    auto begin() const { return mPoints.begin(); }
    auto end() const { return mPoints.end(); }

    /// Sets z of every point (moves a planar outline to a height).
    polyline3d& setZComponent(double z);
    polyline3d& transformBy(const matrix3d& m);
    /// The length of the open chain (no closing segment).
    double length() const;
    boundBox3d boundingBox() const;

private:
    std::vector<point3d> mPoints;
};

} // namespace oxGeo
