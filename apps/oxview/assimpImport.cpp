#include "assimpImport.h"

#include "vertexWelder.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

namespace oxview {
namespace {

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
                importedMesh_t& out, std::string& error) {
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
            if (a != b && b != c && c != a) out.mTriangles.insert(out.mTriangles.end(), {a, b, c});
        }
    }
    for (unsigned int c = 0; c < node.mNumChildren; ++c)
        if (!appendNode(scene, *node.mChildren[c], placement, welder, out, error)) return false;
    return true;
}

/// Vertex and face counts of everything appendNode will add, so the arrays are allocated once.
void countNode(const aiScene& scene, const aiNode& node, std::size_t& vertices, std::size_t& faces) {
    for (unsigned int m = 0; m < node.mNumMeshes; ++m) {
        vertices += scene.mMeshes[node.mMeshes[m]]->mNumVertices;
        faces += scene.mMeshes[node.mMeshes[m]]->mNumFaces;
    }
    for (unsigned int c = 0; c < node.mNumChildren; ++c) countNode(scene, *node.mChildren[c], vertices, faces);
}

} // namespace

std::optional<importedMesh_t> importWithAssimp(const std::string& path, std::string& error) {
    Assimp::Importer importer;
    importer.SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS, kRemovedComponents);
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    const aiScene* scene = importer.ReadFile(path, kImportFlags);
    if (!scene || !scene->mRootNode) {
        error = importer.GetErrorString();
        if (error.empty()) error = "unknown import error";
        return std::nullopt;
    }

    importedMesh_t mesh;
    std::size_t vertices = 0, faces = 0;
    countNode(*scene, *scene->mRootNode, vertices, faces);
    // Files repeat each shared corner (STL: about six times), so the joined count is a guess.
    mesh.mPositions.reserve(3 * (vertices / 4));
    mesh.mTriangles.reserve(3 * faces);
    vertexWelder welder(mesh.mPositions, vertices / 4);
    if (!appendNode(*scene, *scene->mRootNode, aiMatrix4x4(), welder, mesh, error)) return std::nullopt;
    return mesh;
}

} // namespace oxview
