#include "assimpImport.h"

#include "vertexWelder.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

namespace oxview {
namespace {

// Only positions matter here (the drawer computes flat normals), and the colours of points, so every
// other component is dropped at once. The importers have read the colours by then anyway: keeping
// them adds nothing to the peak memory, and only those of points are converted. Identical vertices
// are joined by vertexWelder during the conversion rather than by the importer's joining step,
// which compares all attributes and dominated the load time of large files. No validation or normal generation steps either: they cost seconds on a million
// triangles, and the conversion checks every index itself.
constexpr unsigned int kImportFlags = aiProcess_RemoveComponent | aiProcess_Triangulate | aiProcess_SortByPType;
constexpr int kRemovedComponents = aiComponent_NORMALS | aiComponent_TANGENTS_AND_BITANGENTS |
                                   aiComponent_TEXCOORDS | aiComponent_BONEWEIGHTS | aiComponent_ANIMATIONS |
                                   aiComponent_TEXTURES | aiComponent_LIGHTS | aiComponent_CAMERAS |
                                   aiComponent_MATERIALS;

std::uint8_t colorByte(float c) {
    return static_cast<std::uint8_t>(c > 0.f ? (c < 1.f ? c * 255.f + 0.5f : 255.f) : 0.f);  // NaN gives 0
}

/// Appends the triangles, points and line segments of every mesh under `node`, placed by the
/// accumulated transformation. Triangles and segments that joining collapses are dropped: they
/// cover nothing. A mesh without faces is a point cloud (so the PLY importer delivers one). False,
/// with `error` set, when a face names a vertex the mesh does not have.
bool appendNode(const aiScene& scene, const aiNode& node, const aiMatrix4x4& parent, vertexWelder& welder,
                importedMesh_t& out, std::string& error) {
    const aiMatrix4x4 placement = parent * node.mTransformation;
    const bool transform = !placement.IsIdentity();
    std::vector<std::uint32_t> joined;
    for (unsigned int m = 0; m < node.mNumMeshes; ++m) {
        const aiMesh& mesh = *scene.mMeshes[node.mMeshes[m]];
        joined.resize(mesh.mNumVertices);
        for (unsigned int v = 0; v < mesh.mNumVertices; ++v) {
            const aiVector3D p = transform ? placement * mesh.mVertices[v] : mesh.mVertices[v];
            joined[v] = welder.add(p.x, p.y, p.z);
        }
        const bool colored = mesh.HasVertexColors(0);
        auto addPoint = [&](unsigned int v) {
            out.mPoints.push_back(joined[v]);
            if (!colored) return;
            // Points without colours before these (another part of the file) are shown white.
            out.mPointColors.resize(3 * (out.mPoints.size() - 1), 255);
            const aiColor4D& c = mesh.mColors[0][v];
            out.mPointColors.insert(out.mPointColors.end(), {colorByte(c.r), colorByte(c.g), colorByte(c.b)});
        };
        if (mesh.mNumFaces == 0)
            for (unsigned int v = 0; v < mesh.mNumVertices; ++v) addPoint(v);
        for (unsigned int f = 0; f < mesh.mNumFaces; ++f) {
            const aiFace& face = mesh.mFaces[f];
            if (face.mNumIndices < 1 || face.mNumIndices > 3) continue;
            const unsigned int* i = face.mIndices;
            for (unsigned int k = 0; k < face.mNumIndices; ++k)
                if (i[k] >= mesh.mNumVertices) {
                    error = "face " + std::to_string(f) + " refers to a vertex beyond the " +
                            std::to_string(mesh.mNumVertices) + " the mesh has";
                    return false;
                }
            if (face.mNumIndices == 1) {
                addPoint(i[0]);
            } else if (face.mNumIndices == 2) {
                const std::uint32_t a = joined[i[0]], b = joined[i[1]];
                if (a != b) out.mSegments.insert(out.mSegments.end(), {a, b});
            } else {
                const std::uint32_t a = joined[i[0]], b = joined[i[1]], c = joined[i[2]];
                if (a != b && b != c && c != a) out.mTriangles.insert(out.mTriangles.end(), {a, b, c});
            }
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

/// Gives meshes without vertices a primitive type: sorting by type rejects a mesh without one, and
/// with it the whole file. They hold nothing, so appendNode adds nothing for them.
void typeEmptyMeshes(aiScene& scene) {
    for (unsigned int m = 0; m < scene.mNumMeshes; ++m)
        if (scene.mMeshes[m]->mNumVertices == 0) scene.mMeshes[m]->mPrimitiveTypes = aiPrimitiveType_POINT;
}

} // namespace

std::optional<importedMesh_t> importWithAssimp(const std::string& path, std::string& error) {
    Assimp::Importer importer;
    importer.SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS, kRemovedComponents);
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, 0);  // points and lines are shown too
    // Read first, post-process once empty meshes are mended: the STL importer makes one of an
    // empty solid, and sorting by primitive type would reject the whole file for it.
    const aiScene* scene = importer.ReadFile(path, 0);
    if (scene && scene->mRootNode) {
        typeEmptyMeshes(*const_cast<aiScene*>(scene));  // the importer owns the scene, and it is not const
        scene = importer.ApplyPostProcessing(kImportFlags);
    }
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
    if (!mesh.mPointColors.empty()) mesh.mPointColors.resize(3 * mesh.mPoints.size(), 255);
    return mesh;
}

} // namespace oxview
