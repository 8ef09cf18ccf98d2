#pragma once
// The compact binary form in which the importer's child process hands a mesh to oxview.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace oxview {

/// Triangles, points and line segments of a file over one array of positions (x, y, z per vertex):
/// three vertex indices per triangle, one per point, two per segment. mPointColors is empty or
/// holds r, g, b per point.
struct importedMesh_t {
    std::vector<float> mPositions;
    std::vector<std::uint32_t> mTriangles;
    std::vector<std::uint32_t> mPoints;
    std::vector<std::uint8_t> mPointColors;
    std::vector<std::uint32_t> mSegments;
    std::size_t vertexCount() const { return mPositions.size() / 3; }
    std::size_t triangleCount() const { return mTriangles.size() / 3; }
    std::size_t segmentCount() const { return mSegments.size() / 2; }
};

/// Writes the mesh to `fd`; false when the descriptor does not take it all.
bool writeMeshStream(int fd, const importedMesh_t& mesh);
/// Writes the importer's reason for rejecting the file instead of a mesh.
bool writeMeshStreamError(int fd, const std::string& reason);

/// What a stream holds: a mesh, or the importer's reason; mError when the stream itself is bad.
struct meshStreamContent_t {
    std::optional<importedMesh_t> mMesh;
    std::string mImportError;
    std::string mError;
};

/// Unpacks and checks a stream: its signature, every section's bounds and size, the end marker,
/// every index against the vertex count and the colours against the point count. Sections of
/// unknown kinds are skipped, which leaves room for other primitives.
meshStreamContent_t readMeshStream(const std::vector<char>& bytes);

} // namespace oxview
