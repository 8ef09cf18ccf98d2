#include "oxgeomesh.h"
#include "oxgeomeshfactory.h"
#include "oxgeopolylinefactory.h"

#include "assertRecorder.h"

#include <gtest/gtest.h>

#include <map>
#include <utility>

using namespace oxGeo;

namespace {

point3d centroid(const indexedTrianglePatch3d& p) {
    return ((p.corner(0).asVector() + p.corner(1).asVector() + p.corner(2).asVector()) / 3.0).asPoint();
}

/// Closed and consistently oriented: every directed edge occurs exactly once and its reverse
/// exactly once too, so each edge joins exactly two faces that agree on orientation.
void expectClosedAndConsistent(const mesh3d& mesh) {
    std::map<std::pair<std::uint32_t, std::uint32_t>, int> directed;
    for (const auto& patch : mesh.patches())
        for (int i = 0; i < patch.cornerCount(); ++i) ++directed[{patch.index(i), patch.index((i + 1) % patch.cornerCount())}];
    for (const auto& [edge, count] : directed) {
        EXPECT_EQ(count, 1);
        const auto reverse = directed.find({edge.second, edge.first});
        EXPECT_TRUE(reverse != directed.end() && reverse->second == 1);
    }
}

} // namespace

TEST(meshfactory, boxIsClosedWithOutwardNormals) {
    struct testCase {
        double dx, dy, dz;
        bool centred;
        point3d min, max;
    };
    const testCase cases[] = {
        {1, 2, 3, true, {-0.5, -1, -1.5}, {0.5, 1, 1.5}},
        {1, 2, 3, false, {0, 0, 0}, {1, 2, 3}},
        {-2, 0.1, 4, true, {-1, -0.05, -2}, {1, 0.05, 2}},
    };
    for (const auto& c : cases) {
        mesh3d mesh;
        mesh.addVertex({100, 100, 100}); // appending keeps what is there
        meshfactory::appendBoxMesh(c.dx, c.dy, c.dz, mesh, c.centred);
        EXPECT_EQ(mesh.vertexCount(), 9u);
        EXPECT_EQ(mesh.patchCount(), 12u);
        const boundBox3d box(c.min, c.max);
        double volume = 0.0;
        for (const auto& patch : mesh.patches()) {
            ASSERT_TRUE(patch.isTriangle());
            const vector3d n = patch.calculatePatchNormalNotNormalized();
            EXPECT_GT(n.dot(centroid(patch) - box.center()), 0.0) << "points away from the centre";
            EXPECT_NEAR(std::fabs(n.norm().x()) + std::fabs(n.norm().y()) + std::fabs(n.norm().z()), 1.0, 1e-12);
            volume += patch.corner(0).asVector().dot(n) / 6.0; // divergence theorem
        }
        EXPECT_NEAR(volume, std::fabs(c.dx * c.dy * c.dz), 1e-12);
        expectClosedAndConsistent(mesh);
        mesh3d boxOnly;
        meshfactory::appendBoxMesh(c.dx, c.dy, c.dz, boxOnly, c.centred);
        EXPECT_TRUE(boxOnly.boundingBox().isEqualTo(box, 1e-15));
    }
}

TEST(meshfactory, ruledMeshes) {
    polyline3d bottom, top, cap;
    polylinefactory::generateCircularPolyline(1.0, 0.01, point3d(0, 0, 0), bottom);
    polylinefactory::generateCircularPolyline(1.0, 0.01, point3d(0, 0, 2), top);
    const std::size_t segments = bottom.size() - 1;

    for (bool flip : {false, true}) {
        mesh3d tube;
        meshfactory::appendRuledMesh(bottom, top, tube, true, flip);
        // The circles are already closed: closeLoop adds no empty strip.
        EXPECT_EQ(tube.patchCount(), 2 * segments);
        mesh3d cone;
        meshfactory::appendRuledMesh(point3d(0, 0, 3), top, cone, true, flip);
        EXPECT_EQ(cone.patchCount(), segments);
        for (const mesh3d* m : {&tube, &cone})
            for (const auto& patch : m->patches()) {
                const vector3d n = patch.calculatePatchNormalNotNormalized();
                ASSERT_GT(n.length(), 1e-9) << "no degenerate faces";
                const point3d c = centroid(patch);
                const double radial = n.dot(vector3d(c.x(), c.y(), 0));
                // Tube: outward unless flipped. Cone with its apex above: inward unless flipped.
                EXPECT_EQ(radial > 0, (m == &tube) != flip);
            }
    }
    mesh3d lid;
    meshfactory::appendRuledMesh(point3d(0, 0, 2), top, lid, false, false);
    for (const auto& patch : lid.patches()) {
        EXPECT_TRUE(patch.calculatePatchNormalNotNormalized().norm().isEqualTo({0, 0, -1}, 1e-12));
    }

    // Open squares: closeLoop adds the strip from the last corners back to the first.
    const polyline3d a({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    polyline3d b(a);
    b.setZComponent(1);
    mesh3d open, closed;
    meshfactory::appendRuledMesh(a, b, open, false, false);
    meshfactory::appendRuledMesh(a, b, closed, true, false);
    EXPECT_EQ(open.patchCount(), 6u);
    EXPECT_EQ(closed.patchCount(), 8u);
    EXPECT_EQ(closed.patch(7).corner(0), point3d(0, 1, 0));

    oxtest::assertRecorder asserts;
    mesh3d uneven;
    meshfactory::appendRuledMesh(a, polyline3d({{0, 0, 1}, {1, 0, 1}, {1, 1, 1}}), uneven, false, false);
    EXPECT_EQ(asserts.count(), 1u);
    EXPECT_EQ(uneven.patchCount(), 4u) << "the shorter count";
}

TEST(mesh3d, patchesIndicesAndCopies) {
    mesh3d mesh;
    mesh.reserve(5, 2);
    for (const point3d& p : {point3d(0, 0, 0), point3d(2, 0, 0), point3d(2, 2, 0), point3d(0, 2, 0), point3d(1, 1, 1)})
        mesh.addVertex(p);
    mesh.addQuad(0, 1, 2, 3);
    mesh.addTriangle(0, 1, 4);
    {
        oxtest::assertRecorder asserts;
        mesh.addTriangle(0, 1, 5);
        EXPECT_EQ(asserts.count(), 1u);
        EXPECT_EQ(mesh.patchCount(), 2u) << "a face with a missing vertex is not added";
    }
    const auto begin = mesh.patchesBegin();
    ASSERT_EQ(mesh.patchesEnd() - begin, 2);
    EXPECT_TRUE(begin->isQuad());
    EXPECT_EQ(begin->cornerCount(), 4);
    EXPECT_EQ(begin->corner(3), point3d(0, 2, 0));
    EXPECT_EQ(begin[1].cornerCount(), 3);
    EXPECT_EQ(begin[1].index(2), 4u);
    EXPECT_EQ(begin->calculatePatchNormalNotNormalized(), vector3d(0, 0, 4));
    EXPECT_EQ((begin + 1)->calculatePatchNormalNotNormalized(), vector3d(0, -2, 2));

    // A copy's patches read the copy's vertices, whatever happens to the original afterwards.
    mesh3d copy = mesh;
    mesh.transformBy(matrix3d().setToTranslation({10, 0, 0}));
    mesh3dManipulator::clearMesh(mesh);
    EXPECT_TRUE(mesh.empty());
    EXPECT_EQ(mesh.patchesBegin(), mesh.patchesEnd());
    EXPECT_EQ(copy.patch(1).corner(2), point3d(1, 1, 1));
    mesh3d moved = std::move(copy);
    int corners = 0;
    for (const auto& patch : moved)
        for (int i = 0; i < patch.cornerCount(); ++i, ++corners)
            EXPECT_EQ(&patch.corner(i), &moved.vertices()[patch.index(i)]);
    EXPECT_EQ(corners, 7);

    moved.transformBy(matrix3d().setToScale(2));
    EXPECT_TRUE(moved.boundingBox().isEqualTo(boundBox3d({0, 0, 0}, {4, 4, 2})));
    EXPECT_FALSE(mesh.boundingBox().isValid());
}
