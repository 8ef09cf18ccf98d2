#pragma once
// Reading a mesh file (STL ASCII or binary, OBJ, PLY) into an oxGeo::mesh3d.
#include "oxgeolimits.h"
#include "oxgeomesh.h"
#include "oxgeopolyline.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace oxview {

/// What a file holds to be drawn, or why there is nothing.
struct meshLoadResult_t {
    std::shared_ptr<oxGeo::mesh3d> mMesh;  ///< the triangles; null on failure or when there are none
    std::vector<oxGeo::point3d> mPoints;
    /// The mean colour of the points when the file gives them colours (a point set is drawn in one
    /// colour), else nothing.
    std::optional<std::array<std::uint8_t, 3>> mPointColor;
    std::vector<oxGeo::polyline3d> mPolylines;  ///< the line segments, chained where one ends where the next starts
    std::string mError;                    ///< the reason, e.g. "no such file"; empty on success
    std::string mWarning;                  ///< what was left out of a mesh that loaded; usually empty
};

/// The budget of one import. The import runs in a child process that is killed when it takes
/// longer than mSeconds + mSecondsPerMegabyte per MB of file, or maps more memory than
/// mMemory + mMemoryPerFileByte per byte of file (no memory limit in sanitizer builds).
struct meshLoadOptions_t {
    double mSeconds = 10.0;
    double mSecondsPerMegabyte = 1.0;
    std::size_t mMemory = std::size_t(1) << 30;
    std::size_t mMemoryPerFileByte = 32;
    std::function<void()> mWhileWaiting;  ///< called about every 100 ms during the import (progress)
};

/// Coordinates beyond this magnitude (model units) are taken as damage, as everywhere in the
/// library: the squares and cross products computed from them would overflow or lose all precision.
using oxGeo::kMaxCoordinate;

/// Every face of every mesh in the file, triangulated, through the file's node transformations,
/// with vertices at identical positions joined: triangles, points and line segments. Lines and
/// triangles that joining collapses are dropped. Empty parts (an STL solid without facets) are
/// skipped.
///
/// Triangles, points and segments with a corner that is not finite or lies beyond ±kMaxCoordinate
/// are skipped, and mWarning says how many; when that leaves nothing, the file fails like an empty one. Skipping
/// keeps the usable part of a model with a few damaged vertices visible; one such vertex would
/// otherwise blow the view's bounding box up so far that nothing shows.
///
/// Fails for a missing, unreadable or empty file, an extension other than .stl, .obj and .ply
/// (any case), a file whose structure contradicts itself (a binary STL or PLY shorter than its
/// counts, a damaged PLY header), content the importer rejects, an import that crashes or
/// exceeds its budget, and a file without a single usable triangle, point or segment. The importer is trusted with
/// nothing: it runs in a child process, and all it hands back is checked.
meshLoadResult_t loadMeshFile(const std::string& path, const meshLoadOptions_t& options = {});

/// Whether the file name ends in an extension loadMeshFile reads.
bool isSupportedMeshExtension(const std::string& path);

} // namespace oxview
