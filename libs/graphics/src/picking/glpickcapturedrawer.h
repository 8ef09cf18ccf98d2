#pragma once
// glPickCaptureDrawer: the drawer of an accelerated rectangle selection. It behaves as
// glSelectDrawer does for names, matrices and recordings, but nothing reaches the driver's
// selection mode: immediate primitives are tested against the pick frustum at once, and a
// recording is answered from the capture its drawer made while compiling it (pickcapture.h),
// through that capture's hierarchy. The hits feed a selectionEmulator.
//
// Matrices live on a CPU stack that starts from the view's model-view matrix; names go to the
// emulator (and through the base drawer, which keeps the name depth; outside a display list and
// selection mode the driver ignores name calls). While an entity records through this drawer
// (its first pick before any frame), everything goes to the base drawer: the list compiles as it
// would under glSelectDrawer and the capture hook fills its capture; the replay that follows is
// answered from that capture.
//
// What cannot be answered here makes the current drawable need selection mode (needsSelectionMode):
// GLU quadrics (cylinders, disks, spheres, arrow heads), a recording without a replayable capture,
// or a non-finite matrix or vertex. The scene then asks selection mode for that drawable alone.
#include "drawing/gldrawer.h"
#include "pickcapture.h"
#include "selectionemulator.h"

#include <vector>

namespace oxGraphics::openGL {

class glPickCaptureDrawer : public glDrawer {
public:
    /// `clipFromEye` and `eyeFromWorld`: column-major, as the driver holds the pick projection and
    /// the view's model-view. Window depth = ndc z × depthScale + depthOffset.
    glPickCaptureDrawer(iDrawerHost* host, selectionEmulator& emulator, const double clipFromEye[16],
                        const double eyeFromWorld[16], float depthScale, float depthOffset);
    ~glPickCaptureDrawer() override;

    /// Something the current drawable drew cannot be answered here.
    bool needsSelectionMode() const { return mNeedsSelectionMode || mStackBroken; }
    void clearNeedsSelectionMode() { mNeedsSelectionMode = false; }

    void pushMatrix() override;
    void multMatrix(const oxGeo::matrix3d& m) override;
    void popMatrix() override;
    void setColor(const ox::rgbColor& color, float transparency) override;
    void setLineWidth(float width) override;
    void setPointSize(float size) override;
    void drawPoint(const oxGeo::point3d& p) override;
    void drawPoints(const std::vector<oxGeo::point3d>& points) override;
    void drawLine(const oxGeo::point3d& a, const oxGeo::point3d& b, bool lit) override;
    void drawArrowHead(const oxGeo::point3d& from, const oxGeo::point3d& to, float headLength,
                       float headRadius) override;
    void drawStippledLine(const oxGeo::point3d& a, const oxGeo::point3d& b, int factor, bool lit) override;
    void drawPolyline(const std::vector<oxGeo::point3d>& points) override;
    void drawMesh(const oxGeo::mesh3d& mesh, int mode) override;
    void drawMeshPatchColors(const oxGeo::mesh3d& mesh, const std::vector<ox::rgbColor>& patchColors,
                             const ox::rgbColor& defaultColor, const ox::rgbColor& backColor, int mode) override;
    void drawPatch(const oxGeo::indexedTrianglePatch3d& patch, int mode) override;
    void drawCylinder(const oxGeo::point3d& from, const oxGeo::point3d& to, float radiusFrom, float radiusTo,
                      bool capFrom, bool capTo, int slices, int mode) override;
    void drawDisk(const oxGeo::point3d& center, const oxGeo::vector3d& normal, float radius, int slices,
                  int mode) override;
    void drawSphere(const oxGeo::point3d& center, float radius, int stacks, int slices, int mode) override;
    void drawMeshGradient(const oxGeo::mesh3d& mesh, float transparency, const ox::rgbColor& colorFrom,
                          const ox::rgbColor& colorTo, const oxGeo::point3d& from, const oxGeo::point3d& to) override;
    void drawRecording(const ox::refPtr<iRecorded>& recording) override;
    void pushName(unsigned int name) override;
    void popName() override;

private:
    struct matrix_t {
        double m[16];
    };
    /// Tests what the scratch capture holds, then empties it.
    void answerScratch();
    /// Runs a capture's operations against the current matrix stack and the emulator.
    void replay(const pickCapture& capture);
    const pickFrustum& frustum();

    selectionEmulator& mEmulator;
    double mClipFromEye[16];
    float mDepthScale;
    float mDepthOffset;
    std::vector<matrix_t> mStack;
    pickCapture mScratch;
    pickFrustum mFrustum;
    bool mFrustumCurrent = false;
    bool mNeedsSelectionMode = false;
    /// A drawable popped below its start or pushed past the driver's depth. The driver's stack
    /// is then not what this drawer's is for everything drawn afterwards, so from there on every
    /// drawable is left to selection mode, which then draws them all in the same state.
    bool mStackBroken = false;
};

} // namespace oxGraphics::openGL
