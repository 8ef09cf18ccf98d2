#pragma once
// The import proper: the file through Assimp, triangulated and welded, as an importedMesh_t.
// It trusts the importer, so it runs in a child process (see meshFileLoader.cpp).
#include "meshStream.h"

#include <optional>
#include <string>

namespace oxview {

/// Every face of every mesh in the file, triangulated, through the file's node transformations,
/// with vertices at identical positions joined: triangles, points (with their colours when the
/// file has vertex colours) and line segments. Lines and triangles that joining collapses are
/// dropped. Nothing, with `error` set, when the importer rejects the file or a face
/// names a vertex its mesh does not have.
std::optional<importedMesh_t> importWithAssimp(const std::string& path, std::string& error);

} // namespace oxview
