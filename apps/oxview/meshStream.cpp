#include "meshStream.h"

#include <cerrno>
#include <cstring>
#include <limits>

#include <unistd.h>

namespace oxview {
namespace {

// Both ends are the same program, so the stream uses its byte order and layout.
constexpr char kSignature[8] = {'o', 'x', 'm', 'e', 's', 'h', '1', '\n'};

enum eSection : std::uint32_t {
    kEnd = 0,          ///< the last section, empty: a stream without it was cut off
    kPositions = 1,    ///< float x, y, z per vertex
    kTriangles = 2,    ///< uint32 indices, three per triangle
    kImportError = 3,  ///< the importer's reason, as text
    kPoints = 4,       ///< uint32 indices, one per point
    kPointColors = 5,  ///< uint8 r, g, b per point
    kSegments = 6,     ///< uint32 indices, two per line segment
};

struct sectionHeader_t {
    std::uint32_t mKind;
    std::uint32_t mReserved;
    std::uint64_t mBytes;  ///< of the data that follows
};

bool writeAll(int fd, const void* data, std::size_t size) {
    const char* p = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t put = ::write(fd, p, size);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        p += put;
        size -= static_cast<std::size_t>(put);
    }
    return true;
}

bool writeSection(int fd, eSection kind, const void* data, std::size_t bytes) {
    const sectionHeader_t header{kind, 0, bytes};
    return writeAll(fd, &header, sizeof header) && writeAll(fd, data, bytes);
}

} // namespace

bool writeMeshStream(int fd, const importedMesh_t& mesh) {
    return writeAll(fd, kSignature, sizeof kSignature) &&
           writeSection(fd, kPositions, mesh.mPositions.data(), mesh.mPositions.size() * sizeof(float)) &&
           writeSection(fd, kTriangles, mesh.mTriangles.data(), mesh.mTriangles.size() * sizeof(std::uint32_t)) &&
           writeSection(fd, kPoints, mesh.mPoints.data(), mesh.mPoints.size() * sizeof(std::uint32_t)) &&
           writeSection(fd, kPointColors, mesh.mPointColors.data(), mesh.mPointColors.size()) &&
           writeSection(fd, kSegments, mesh.mSegments.data(), mesh.mSegments.size() * sizeof(std::uint32_t)) &&
           writeSection(fd, kEnd, nullptr, 0);
}

bool writeMeshStreamError(int fd, const std::string& reason) {
    return writeAll(fd, kSignature, sizeof kSignature) && writeSection(fd, kImportError, reason.data(), reason.size()) &&
           writeSection(fd, kEnd, nullptr, 0);
}

meshStreamContent_t readMeshStream(const std::vector<char>& bytes) {
    auto fail = [](std::string reason) { return meshStreamContent_t{std::nullopt, {}, std::move(reason)}; };
    if (bytes.size() < sizeof kSignature || std::memcmp(bytes.data(), kSignature, sizeof kSignature) != 0)
        return fail("it does not start with the stream signature");

    importedMesh_t mesh;
    std::string importError;
    bool positions = false, triangles = false, points = false, colors = false, segments = false, ended = false;
    // Each kind of section at most once, whole records only.
    auto take = [&](bool& seen, std::size_t record, auto& into, const char* data, std::size_t size) {
        if (seen || size % record != 0) return false;
        into.resize(size / sizeof into[0]);
        if (size > 0) std::memcpy(into.data(), data, size);  // an empty vector may have no data()
        return seen = true;
    };
    for (std::size_t at = sizeof kSignature; at < bytes.size();) {
        if (ended) return fail("data follows the end marker");
        sectionHeader_t header;
        if (bytes.size() - at < sizeof header) return fail("it ends inside a section header");
        std::memcpy(&header, bytes.data() + at, sizeof header);
        at += sizeof header;
        if (header.mBytes > bytes.size() - at)
            return fail("a section announces " + std::to_string(header.mBytes) + " bytes, " +
                        std::to_string(bytes.size() - at) + " follow");
        const char* data = bytes.data() + at;
        const std::size_t size = static_cast<std::size_t>(header.mBytes);
        at += size;
        switch (header.mKind) {
        case kEnd:
            if (size != 0) return fail("the end marker has content");
            ended = true;
            break;
        case kPositions:
            // Indices are 32-bit, so more vertices could not all be used.
            if (positions || size % (3 * sizeof(float)) != 0 ||
                size / (3 * sizeof(float)) > std::numeric_limits<std::uint32_t>::max())
                return fail("bad vertex section");
            mesh.mPositions.resize(size / sizeof(float));
            if (size > 0) std::memcpy(mesh.mPositions.data(), data, size);  // an empty vector may have no data()
            positions = true;
            break;
        case kTriangles:
            if (!take(triangles, 3 * sizeof(std::uint32_t), mesh.mTriangles, data, size))
                return fail("bad triangle section");
            break;
        case kPoints:
            if (!take(points, sizeof(std::uint32_t), mesh.mPoints, data, size)) return fail("bad point section");
            break;
        case kPointColors:
            if (!take(colors, 3, mesh.mPointColors, data, size)) return fail("bad point colour section");
            break;
        case kSegments:
            if (!take(segments, 2 * sizeof(std::uint32_t), mesh.mSegments, data, size))
                return fail("bad line segment section");
            break;
        case kImportError:
            importError.assign(data, size);
            if (importError.empty()) importError = "unknown import error";
            break;
        default:  // a kind of primitive this version does not show
            break;
        }
    }
    if (!ended) return fail("it was cut off (no end marker)");
    if (!importError.empty()) return {std::nullopt, std::move(importError), {}};

    const std::size_t vertices = mesh.vertexCount();
    const struct {
        const std::vector<std::uint32_t>& indices;
        std::size_t per;
        const char* name;
    } lists[] = {{mesh.mTriangles, 3, "triangle "}, {mesh.mPoints, 1, "point "}, {mesh.mSegments, 2, "line segment "}};
    for (const auto& list : lists)
        for (std::size_t i = 0; i < list.indices.size(); ++i)
            if (list.indices[i] >= vertices)
                return fail(list.name + std::to_string(i / list.per) + " refers to vertex " +
                            std::to_string(list.indices[i]) + " of " + std::to_string(vertices));
    if (!mesh.mPointColors.empty() && mesh.mPointColors.size() != 3 * mesh.mPoints.size())
        return fail("the point colours do not match the points");
    return {std::move(mesh), {}, {}};
}

} // namespace oxview
