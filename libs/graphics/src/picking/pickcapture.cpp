#include "pickcapture.h"

#include <cmath>
#include <limits>

namespace oxGraphics::openGL {

namespace {

constexpr double kDegenerateNormal = 1e-6;
constexpr std::uint32_t kMaxVertices = std::numeric_limits<std::uint32_t>::max() - 1;

std::size_t strideOf(pickCapture::opKind kind) {
    switch (kind) {
    case pickCapture::opKind::filledTriangles:
    case pickCapture::opKind::wireTriangles: return 3;
    case pickCapture::opKind::lines: return 2;
    case pickCapture::opKind::points: return 1;
    default: return 0;
    }
}

bool isGeometry(pickCapture::opKind kind) { return strideOf(kind) != 0; }

} // namespace

pickCapture::op_t& pickCapture::batch(opKind kind) {
    if (mOps.empty() || mOps.back().kind != kind) mOps.push_back({kind, 0, mCorners.size(), 0});
    return mOps.back();
}

std::uint32_t pickCapture::addVertex(const oxGeo::point3d& p) {
    const auto index = static_cast<std::uint32_t>(mVertices.size() / 3);
    const float x = static_cast<float>(p.x()), y = static_cast<float>(p.y()), z = static_cast<float>(p.z());
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z)) mNonFinite = true;
    mVertices.insert(mVertices.end(), {x, y, z});
    return index;
}

void pickCapture::addMesh(const oxGeo::mesh3d& mesh, int mode, bool strictDegenerate) {
    const auto& vertices = mesh.vertices();
    const auto& faces = mesh.faces();
    if (faces.empty()) return;
    const std::size_t base = mVertices.size() / 3;
    if (base + vertices.size() > kMaxVertices) {
        mUnsupported = true;
        return;
    }
    // The whole vertex array once, in the precision the driver keeps; faces index into it.
    mVertices.resize((base + vertices.size()) * 3);
    float* out = mVertices.data() + base * 3;
    float poison = 0.0f; // stays 0 unless a coordinate is NaN or infinite
    for (const auto& p : vertices) {
        out[0] = static_cast<float>(p.x());
        out[1] = static_cast<float>(p.y());
        out[2] = static_cast<float>(p.z());
        poison += (out[0] - out[0]) + (out[1] - out[1]) + (out[2] - out[2]);
        out += 3;
    }
    if (poison != 0.0f) mNonFinite = true;

    op_t& op = batch(mode == 1 ? opKind::wireTriangles : opKind::filledTriangles);
    std::size_t quads = 0;
    for (const auto& face : faces) quads += face.mIndex[3] != oxGeo::indexedTrianglePatch3d::kNoIndex ? 1 : 0;
    const std::size_t before = mCorners.size();
    mCorners.resize(before + (faces.size() + quads) * 3);
    std::uint32_t* corner = mCorners.data() + before;
    const auto b = static_cast<std::uint32_t>(base);
    for (const auto& face : faces) {
        const std::uint32_t* i = face.mIndex;
        const oxGeo::point3d& p0 = vertices[i[0]];
        // The same test as the drawer's, on the same doubles, so the same faces are left out.
        const double length = (vertices[i[1]] - p0).cross(vertices[i[2]] - p0).length();
        if (strictDegenerate ? length < kDegenerateNormal : length <= kDegenerateNormal) continue;
        corner[0] = b + i[0];
        corner[1] = b + i[1];
        corner[2] = b + i[2];
        corner += 3;
        if (i[3] != oxGeo::indexedTrianglePatch3d::kNoIndex) {
            corner[0] = b + i[2];
            corner[1] = b + i[3];
            corner[2] = b + i[0];
            corner += 3;
        }
    }
    mCorners.resize(static_cast<std::size_t>(corner - mCorners.data()));
    op.count += (mCorners.size() - before) / 3;
}

void pickCapture::addPatch(const oxGeo::indexedTrianglePatch3d& patch, int mode) {
    const oxGeo::point3d& p0 = patch.corner(0);
    if ((patch.corner(1) - p0).cross(patch.corner(2) - p0).length() <= kDegenerateNormal) return;
    if (mVertices.size() / 3 + 4 > kMaxVertices) {
        mUnsupported = true;
        return;
    }
    op_t& op = batch(mode == 1 ? opKind::wireTriangles : opKind::filledTriangles);
    std::uint32_t c[4];
    for (int k = 0; k < patch.cornerCount(); ++k) c[k] = addVertex(patch.corner(k));
    mCorners.insert(mCorners.end(), {c[0], c[1], c[2]});
    ++op.count;
    if (patch.isQuad()) {
        mCorners.insert(mCorners.end(), {c[2], c[3], c[0]});
        ++op.count;
    }
}

void pickCapture::addPoints(const oxGeo::point3d* points, std::size_t count) {
    if (count == 0) return;
    if (mVertices.size() / 3 + count > kMaxVertices) {
        mUnsupported = true;
        return;
    }
    op_t& op = batch(opKind::points);
    for (std::size_t i = 0; i < count; ++i) mCorners.push_back(addVertex(points[i]));
    op.count += count;
}

void pickCapture::addLine(const oxGeo::point3d& a, const oxGeo::point3d& b) {
    if (mVertices.size() / 3 + 2 > kMaxVertices) {
        mUnsupported = true;
        return;
    }
    op_t& op = batch(opKind::lines);
    const std::uint32_t ia = addVertex(a);
    mCorners.insert(mCorners.end(), {ia, addVertex(b)});
    ++op.count;
}

void pickCapture::addPolyline(const std::vector<oxGeo::point3d>& points) {
    if (points.size() == 1) return addPoints(points.data(), 1);
    if (points.empty()) return;
    if (mVertices.size() / 3 + points.size() > kMaxVertices) {
        mUnsupported = true;
        return;
    }
    op_t& op = batch(opKind::lines);
    std::uint32_t previous = addVertex(points[0]);
    for (std::size_t i = 1; i < points.size(); ++i) {
        const std::uint32_t next = addVertex(points[i]);
        mCorners.insert(mCorners.end(), {previous, next});
        previous = next;
    }
    op.count += points.size() - 1;
}

void pickCapture::pushName(std::uint32_t name) { mOps.push_back({opKind::pushName, name, 0, 0}); }
void pickCapture::popName() { mOps.push_back({opKind::popName, 0, 0, 0}); }
void pickCapture::pushMatrix() { mOps.push_back({opKind::pushMatrix, 0, 0, 0}); }
void pickCapture::popMatrix() { mOps.push_back({opKind::popMatrix, 0, 0, 0}); }

void pickCapture::multMatrix(const oxGeo::matrix3d& m) {
    double columnMajor[16];
    m.asDoubleArrayColumnMajor(columnMajor);
    const auto number = static_cast<std::uint32_t>(mMatrices.size() / 16);
    for (const double v : columnMajor) {
        const float f = static_cast<float>(v); // the driver keeps matrices in single precision
        if (!std::isfinite(f)) mNonFinite = true;
        mMatrices.push_back(f);
    }
    mOps.push_back({opKind::multMatrix, number, 0, 0});
}

void pickCapture::clear() {
    mVertices.clear();
    mCorners.clear();
    mOps.clear();
    mMatrices.clear();
    mHierarchies.clear();
    mSealed = mUnsupported = mNonFinite = false;
}

std::size_t pickCapture::triangleCount() const {
    std::size_t count = 0;
    for (const auto& op : mOps)
        if (op.kind == opKind::filledTriangles || op.kind == opKind::wireTriangles) count += op.count;
    return count;
}

template <class Visit>
void pickCapture::forEachPrimitive(const op_t& op, std::size_t first, std::size_t count, Visit&& visit) const {
    const std::size_t stride = strideOf(op.kind);
    const std::uint32_t* corner = mCorners.data() + op.first + first * stride;
    const float* v = mVertices.data();
    for (std::size_t i = 0; i < count; ++i, corner += stride) visit(v, corner);
}

void pickCapture::buildHierarchy(std::size_t index) const {
    if (mHierarchies.size() < mOps.size()) mHierarchies.resize(mOps.size());
    const op_t& op = mOps[index];
    auto hierarchy = std::make_unique<pickHierarchy>();
    hierarchy->build(mVertices.data(), mVertices.size() / 3, mCorners.data() + op.first, strideOf(op.kind),
                     static_cast<std::uint32_t>(op.count));
    mHierarchies[index] = std::move(hierarchy);
}

void pickCapture::buildIndex() const {
    for (std::size_t i = 0; i < mOps.size(); ++i)
        if (isGeometry(mOps[i].kind) && mOps[i].count >= kIndexedBatch &&
            (i >= mHierarchies.size() || !mHierarchies[i]))
            buildHierarchy(i);
}

void pickCapture::hitTest(std::size_t index, const pickFrustum& frustum, pickDepthSpan_t& span) const {
    const op_t& op = mOps[index];
    const auto test = [&](const float* v, const std::uint32_t* c) {
        switch (op.kind) {
        case opKind::filledTriangles: frustum.triangle(v + c[0] * 3, v + c[1] * 3, v + c[2] * 3, span); break;
        case opKind::wireTriangles:
            // Polygon mode GL_LINE: the parts of the three edges inside the volume.
            frustum.segment(v + c[0] * 3, v + c[1] * 3, span);
            frustum.segment(v + c[1] * 3, v + c[2] * 3, span);
            frustum.segment(v + c[2] * 3, v + c[0] * 3, span);
            break;
        case opKind::lines: frustum.segment(v + c[0] * 3, v + c[1] * 3, span); break;
        case opKind::points: frustum.point(v + c[0] * 3, span); break;
        default: break;
        }
    };
    if (op.count < kIndexedBatch) {
        forEachPrimitive(op, 0, op.count, test);
        return;
    }
    if (index >= mHierarchies.size() || !mHierarchies[index]) buildHierarchy(index);
    mHierarchies[index]->query(frustum, [&](std::uint32_t first, std::uint32_t count) {
        forEachPrimitive(op, first, count, test);
    });
}

std::size_t pickCapture::bytes() const {
    std::size_t bytes = sizeof(*this) + mVertices.capacity() * sizeof(float) +
                        mCorners.capacity() * sizeof(std::uint32_t) + mOps.capacity() * sizeof(op_t) +
                        mMatrices.capacity() * sizeof(double) +
                        mHierarchies.capacity() * sizeof(std::unique_ptr<pickHierarchy>);
    for (const auto& h : mHierarchies)
        if (h) bytes += sizeof(pickHierarchy) + h->bytes();
    return bytes;
}

} // namespace oxGraphics::openGL
