#pragma once
// Reading a mesh file (STL ASCII or binary, OBJ, PLY) into an oxGeo::mesh3d.
#include "oxgeomesh.h"

#include <memory>
#include <string>

namespace oxview {

/// The mesh of a file, or why there is none.
struct meshLoadResult_t {
    std::shared_ptr<oxGeo::mesh3d> mMesh;  ///< null on failure
    std::string mError;                    ///< the reason, e.g. "no such file"; empty on success
};

/// Every face of every mesh in the file, triangulated, through the file's node transformations,
/// with vertices at identical positions joined. Points, lines and triangles that joining
/// collapses are dropped. Fails for a missing, unreadable or empty file, an extension other than
/// .stl, .obj and .ply (any case), content the importer rejects, and a file without a single
/// triangle.
meshLoadResult_t loadMeshFile(const std::string& path);

/// Whether the file name ends in an extension loadMeshFile reads.
bool isSupportedMeshExtension(const std::string& path);

} // namespace oxview
