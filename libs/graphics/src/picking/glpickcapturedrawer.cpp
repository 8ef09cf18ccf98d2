#include "glpickcapturedrawer.h"

#include "drawing/glcolorstate.h"
#include "drawing/glrecording.h"

#include <cstring>

namespace oxGraphics::openGL {

namespace {

// The driver's model-view stack is 32 deep and the selection itself takes one level. A drawable
// that needs more, or pops below its start, is left to selection mode rather than imitated.
constexpr std::size_t kMaxStackDepth = 31;

/// a · b, column-major, rounded to single precision as the driver keeps its matrices.
void multiply(const double* a, const double* b, double* out) {
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k) sum += a[k * 4 + r] * b[c * 4 + k];
            out[c * 4 + r] = static_cast<float>(sum);
        }
}

} // namespace

glPickCaptureDrawer::glPickCaptureDrawer(iDrawerHost* host, selectionEmulator& emulator, const double clipFromEye[16],
                                         const double eyeFromWorld[16], float depthScale, float depthOffset)
    : glDrawer(host), mEmulator(emulator), mDepthScale(depthScale), mDepthOffset(depthOffset),
      mFrustum(clipFromEye, depthScale, depthOffset) {
    std::memcpy(mClipFromEye, clipFromEye, sizeof(mClipFromEye));
    matrix_t top;
    std::memcpy(top.m, eyeFromWorld, sizeof(top.m));
    mStack.push_back(top);
}

glPickCaptureDrawer::~glPickCaptureDrawer() {
    // As glSelectDrawer: names still pushed are popped, so their pending hit is written.
    while (nameDepth() > 0) popName();
}

const pickFrustum& glPickCaptureDrawer::frustum() {
    if (!mFrustumCurrent) {
        double clipFromLocal[16];
        multiply(mClipFromEye, mStack.back().m, clipFromLocal);
        mFrustum = pickFrustum(clipFromLocal, mDepthScale, mDepthOffset);
        mFrustumCurrent = true;
    }
    return mFrustum;
}

void glPickCaptureDrawer::pushMatrix() {
    if (isRecording()) return glDrawer::pushMatrix();
    if (mStack.size() >= kMaxStackDepth) {
        mStackBroken = true;
        return;
    }
    mStack.push_back(mStack.back());
}

void glPickCaptureDrawer::multMatrix(const oxGeo::matrix3d& m) {
    if (isRecording()) return glDrawer::multMatrix(m);
    double columnMajor[16];
    m.asDoubleArrayColumnMajor(columnMajor);
    for (double& v : columnMajor) v = static_cast<float>(v);
    matrix_t product;
    multiply(mStack.back().m, columnMajor, product.m);
    mStack.back() = product;
    mFrustumCurrent = false;
}

void glPickCaptureDrawer::popMatrix() {
    if (isRecording()) return glDrawer::popMatrix();
    if (mStack.size() <= 1) {
        mStackBroken = true;
        return;
    }
    mStack.pop_back();
    mFrustumCurrent = false;
}

// Colours, widths and sizes change no selection answer; inside a list they are compiled as
// glSelectDrawer compiles them, so the recording renders the same.
void glPickCaptureDrawer::setColor(const ox::rgbColor& color, float /*transparency*/) {
    if (isRecording()) applyColor3(color);
}
void glPickCaptureDrawer::setLineWidth(float width) {
    if (isRecording()) glDrawer::setLineWidth(width);
}
void glPickCaptureDrawer::setPointSize(float size) {
    if (isRecording()) glDrawer::setPointSize(size);
}

void glPickCaptureDrawer::answerScratch() {
    mScratch.seal();
    if (!mScratch.isReplayable()) {
        mNeedsSelectionMode = true;
    } else {
        replay(mScratch);
    }
    mScratch.clear();
}

void glPickCaptureDrawer::drawPoint(const oxGeo::point3d& p) {
    if (isRecording()) return glDrawer::drawPoint(p);
    mScratch.addPoints(&p, 1);
    answerScratch();
}

void glPickCaptureDrawer::drawPoints(const std::vector<oxGeo::point3d>& points) {
    if (isRecording()) return glDrawer::drawPoints(points);
    mScratch.addPoints(points.data(), points.size());
    answerScratch();
}

void glPickCaptureDrawer::drawLine(const oxGeo::point3d& a, const oxGeo::point3d& b, bool lit) {
    if (isRecording()) return glDrawer::drawLine(a, b, lit);
    mScratch.addLine(a, b);
    answerScratch();
}

void glPickCaptureDrawer::drawArrowHead(const oxGeo::point3d& from, const oxGeo::point3d& to, float headLength,
                                        float headRadius) {
    if (isRecording()) return glDrawer::drawArrowHead(from, to, headLength, headRadius);
    mNeedsSelectionMode = true; // a GLU cone
}

void glPickCaptureDrawer::drawStippledLine(const oxGeo::point3d& a, const oxGeo::point3d& b, int factor, bool lit) {
    if (isRecording()) return glDrawer::drawStippledLine(a, b, factor, lit);
    mScratch.addLine(a, b); // selection happens before stippling
    answerScratch();
}

void glPickCaptureDrawer::drawPolyline(const std::vector<oxGeo::point3d>& points) {
    if (isRecording()) return glDrawer::drawPolyline(points);
    if (points.size() < 2) return; // immediately drawn, a strip of one vertex draws nothing
    mScratch.addPolyline(points);
    answerScratch();
}

void glPickCaptureDrawer::drawMesh(const oxGeo::mesh3d& mesh, int mode) {
    if (isRecording()) return glDrawer::drawMesh(mesh, mode);
    mScratch.addMesh(mesh, mode);
    answerScratch();
}

void glPickCaptureDrawer::drawMeshPatchColors(const oxGeo::mesh3d& mesh, const std::vector<ox::rgbColor>& patchColors,
                                              const ox::rgbColor& defaultColor, const ox::rgbColor& backColor,
                                              int mode) {
    if (isRecording()) return glDrawer::drawMeshPatchColors(mesh, patchColors, defaultColor, backColor, mode);
    mScratch.addMesh(mesh, mode);
    answerScratch();
}

void glPickCaptureDrawer::drawPatch(const oxGeo::indexedTrianglePatch3d& patch, int mode) {
    if (isRecording()) return glDrawer::drawPatch(patch, mode);
    mScratch.addPatch(patch, mode);
    answerScratch();
}

void glPickCaptureDrawer::drawCylinder(const oxGeo::point3d& from, const oxGeo::point3d& to, float radiusFrom,
                                       float radiusTo, bool capFrom, bool capTo, int slices, int mode) {
    if (isRecording()) return glDrawer::drawCylinder(from, to, radiusFrom, radiusTo, capFrom, capTo, slices, mode);
    mNeedsSelectionMode = true;
}

void glPickCaptureDrawer::drawDisk(const oxGeo::point3d& center, const oxGeo::vector3d& normal, float radius,
                                   int slices, int mode) {
    if (isRecording()) return glDrawer::drawDisk(center, normal, radius, slices, mode);
    mNeedsSelectionMode = true;
}

void glPickCaptureDrawer::drawSphere(const oxGeo::point3d& center, float radius, int stacks, int slices, int mode) {
    if (isRecording()) return glDrawer::drawSphere(center, radius, stacks, slices, mode);
    mNeedsSelectionMode = true;
}

void glPickCaptureDrawer::drawMeshGradient(const oxGeo::mesh3d& mesh, float transparency,
                                           const ox::rgbColor& colorFrom, const ox::rgbColor& colorTo,
                                           const oxGeo::point3d& from, const oxGeo::point3d& to) {
    if (isRecording()) return glDrawer::drawMeshGradient(mesh, transparency, colorFrom, colorTo, from, to);
    mScratch.addMesh(mesh, 0, /*strictDegenerate*/ true);
    answerScratch();
}

void glPickCaptureDrawer::drawRecording(const ox::refPtr<iRecorded>& recording) {
    if (isRecording()) return glDrawer::drawRecording(recording);
    auto* gl = dynamic_cast<glRecording*>(recording.get());
    if (gl == nullptr || !gl->isValid()) return; // selection mode would draw nothing either
    const pickCapture* capture = gl->capture();
    if (capture == nullptr || !capture->isReplayable()) {
        mNeedsSelectionMode = true;
        return;
    }
    replay(*capture);
}

void glPickCaptureDrawer::pushName(unsigned int name) {
    const bool recording = isRecording();
    glDrawer::pushName(name); // keeps the name depth; compiled into an open list
    if (!recording) mEmulator.pushName(name);
}

void glPickCaptureDrawer::popName() {
    if (nameDepth() == 0) return;
    const bool recording = isRecording();
    glDrawer::popName();
    if (!recording) mEmulator.popName();
}

void glPickCaptureDrawer::replay(const pickCapture& capture) {
    const auto& ops = capture.ops();
    for (std::size_t i = 0; i < ops.size() && !needsSelectionMode(); ++i) {
        const auto& op = ops[i];
        switch (op.kind) {
        case pickCapture::opKind::pushName: mEmulator.pushName(op.value); break;
        case pickCapture::opKind::popName: mEmulator.popName(); break;
        case pickCapture::opKind::pushMatrix: pushMatrix(); break;
        case pickCapture::opKind::popMatrix: popMatrix(); break;
        case pickCapture::opKind::multMatrix: {
            matrix_t product;
            multiply(mStack.back().m, capture.matrix(op.value), product.m);
            mStack.back() = product;
            mFrustumCurrent = false;
            break;
        }
        default: {
            const pickFrustum& f = frustum();
            if (!f.isFinite()) {
                mNeedsSelectionMode = true;
                break;
            }
            pickDepthSpan_t span;
            capture.hitTest(i, f, span);
            mEmulator.addHit(span);
            break;
        }
        }
    }
}

} // namespace oxGraphics::openGL
