#include "meshFileLoader.h"

#include "vertexWelder.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

namespace oxview {
namespace {

std::string lowerExtension(const std::string& path) {
    std::string ext = std::filesystem::path(path).extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return ext;
}

// Only positions matter here (the drawer computes flat normals), so every other component is
// dropped at once. Identical vertices are joined by vertexWelder during the conversion rather than
// by the importer's joining step, which compares all attributes and dominated the load time of
// large files. No validation or normal generation steps either: they cost seconds on a million
// triangles, and the conversion checks every index itself.
constexpr unsigned int kImportFlags = aiProcess_RemoveComponent | aiProcess_Triangulate | aiProcess_SortByPType;
constexpr int kRemovedComponents = aiComponent_NORMALS | aiComponent_TANGENTS_AND_BITANGENTS | aiComponent_COLORS |
                                   aiComponent_TEXCOORDS | aiComponent_BONEWEIGHTS | aiComponent_ANIMATIONS |
                                   aiComponent_TEXTURES | aiComponent_LIGHTS | aiComponent_CAMERAS |
                                   aiComponent_MATERIALS;

/// Appends the triangles of every mesh under `node`, placed by the accumulated transformation.
/// Triangles that joining leaves with two equal corners are dropped: they cover nothing. False,
/// with `error` set, when a face names a vertex the mesh does not have.
bool appendNode(const aiScene& scene, const aiNode& node, const aiMatrix4x4& parent, vertexWelder& welder,
                oxGeo::mesh3d& out, std::string& error) {
    const aiMatrix4x4 placement = parent * node.mTransformation;
    const bool transform = !placement.IsIdentity();
    std::vector<std::uint32_t> joined;
    for (unsigned int m = 0; m < node.mNumMeshes; ++m) {
        const aiMesh& mesh = *scene.mMeshes[node.mMeshes[m]];
        if (!(mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE)) continue;
        joined.resize(mesh.mNumVertices);
        for (unsigned int v = 0; v < mesh.mNumVertices; ++v) {
            const aiVector3D p = transform ? placement * mesh.mVertices[v] : mesh.mVertices[v];
            joined[v] = welder.add(p.x, p.y, p.z);
        }
        for (unsigned int f = 0; f < mesh.mNumFaces; ++f) {
            const aiFace& face = mesh.mFaces[f];
            if (face.mNumIndices != 3) continue;
            const unsigned int* i = face.mIndices;
            if (i[0] >= mesh.mNumVertices || i[1] >= mesh.mNumVertices || i[2] >= mesh.mNumVertices) {
                error = "face " + std::to_string(f) + " refers to a vertex beyond the " +
                        std::to_string(mesh.mNumVertices) + " the mesh has";
                return false;
            }
            const std::uint32_t a = joined[i[0]], b = joined[i[1]], c = joined[i[2]];
            if (a != b && b != c && c != a) out.addTriangle(a, b, c);
        }
    }
    for (unsigned int c = 0; c < node.mNumChildren; ++c)
        if (!appendNode(scene, *node.mChildren[c], placement, welder, out, error)) return false;
    return true;
}

/// A binary STL file's size must match the triangle count in its header. The importer rejects
/// a mismatch with "Failed to determine STL storage representation"; this names the cause.
/// Returns the reason, empty when the file is no binary STL or is consistent.
std::string checkBinaryStl(const std::string& path, std::uintmax_t size) {
    constexpr std::uintmax_t kHeader = 84, kRecord = 50;
    char head[kHeader];
    std::ifstream in(path, std::ios::binary);
    if (size < kHeader || !in.read(head, kHeader)) return {};
    std::uint32_t count = 0;
    std::memcpy(&count, head + 80, 4);  // little-endian, as the format stores it
    const std::uintmax_t expected = kHeader + kRecord * count;
    // ASCII files start with "solid"; a binary header may too, but then its size fits exactly.
    if (std::strncmp(head, "solid", 5) == 0 && size != expected) return {};
    if (size < expected)
        return "corrupt binary STL: truncated (the header announces " + std::to_string(count) + " triangles in " +
               std::to_string(expected) + " bytes, the file has " + std::to_string(size) + ")";
    if (count == 0) return "contains no triangles (empty mesh)";
    return {};
}

/// Vertex and face counts of everything appendNode will add, so the mesh is allocated once.
void countNode(const aiScene& scene, const aiNode& node, std::size_t& vertices, std::size_t& faces) {
    for (unsigned int m = 0; m < node.mNumMeshes; ++m) {
        vertices += scene.mMeshes[node.mMeshes[m]]->mNumVertices;
        faces += scene.mMeshes[node.mMeshes[m]]->mNumFaces;
    }
    for (unsigned int c = 0; c < node.mNumChildren; ++c) countNode(scene, *node.mChildren[c], vertices, faces);
}

} // namespace

bool isSupportedMeshExtension(const std::string& path) {
    const std::string ext = lowerExtension(path);
    return ext == ".stl" || ext == ".obj" || ext == ".ply";
}

meshLoadResult_t loadMeshFile(const std::string& path) {
    auto fail = [](std::string reason) { return meshLoadResult_t{nullptr, std::move(reason)}; };

    std::error_code ec;
    const auto status = std::filesystem::status(path, ec);
    if (ec && ec != std::errc::no_such_file_or_directory) return fail("cannot be read: " + ec.message());
    if (!std::filesystem::exists(status)) return fail("no such file");
    if (std::filesystem::is_directory(status)) return fail("is a directory, not a file");
    if (!isSupportedMeshExtension(path)) {
        const std::string ext = std::filesystem::path(path).extension().string();
        return fail((ext.empty() ? std::string("no file extension") : "unknown extension '" + ext + "'") +
                    " (oxview reads .stl, .obj and .ply)");
    }
    {
        std::ifstream probe(path, std::ios::binary);
        if (!probe) return fail(std::string("cannot be read: ") + std::strerror(errno));
    }
    const std::uintmax_t size = std::filesystem::file_size(path, ec);
    if (size == 0 && !ec) return fail("the file is empty");
    if (lowerExtension(path) == ".stl")
        if (std::string reason = checkBinaryStl(path, size); !reason.empty()) return fail(std::move(reason));

    Assimp::Importer importer;
    importer.SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS, kRemovedComponents);
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    const aiScene* scene = importer.ReadFile(path, kImportFlags);
    if (!scene || !scene->mRootNode) {
        std::string reason = importer.GetErrorString();
        if (reason.empty()) reason = "unknown import error";
        return fail("corrupt or unsupported content: " + reason);
    }

    auto mesh = std::make_shared<oxGeo::mesh3d>();
    std::size_t vertices = 0, faces = 0;
    countNode(*scene, *scene->mRootNode, vertices, faces);
    // Files repeat each shared corner (STL: about six times), so the joined count is a guess.
    mesh->reserve(vertices / 4, faces);
    vertexWelder welder(*mesh, vertices / 4);
    std::string error;
    if (!appendNode(*scene, *scene->mRootNode, aiMatrix4x4(), welder, *mesh, error))
        return fail("corrupt content: " + error);
    if (mesh->patchCount() == 0) return fail("contains no triangles (empty mesh)");
    return {std::move(mesh), {}};
}

} // namespace oxview
