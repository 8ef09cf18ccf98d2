#pragma once
// glDrawer: the OpenGL implementation of iDrawer that every drawer variant derives from.
//
// Everything but the colour operation is drawn here with immediate-mode OpenGL and GLU quadrics,
// into whatever context is current (the scene makes its own current before it draws). Variants
// (glrenderdrawer.h, glhighlightdrawer.h, glselectdrawer.h, glnulldrawer.h) choose colours and
// whether anything is drawn.
//
// The skip flag: while it is set, multMatrix, the drawing operations (drawPoint … drawMeshGradient),
// drawRecording, beginRecording and endRecording return at once without touching OpenGL. Matrix
// push/pop, line width, point size, names and the colour operation still act. Only
// glRenderDrawer's setColor sets it (a transparent colour in the opaque pass).
//
// "Unlit" below: glPushAttrib(GL_LIGHTING_BIT), glDisable(GL_LIGHTING), glNormal3f(0, 0, 0),
// the geometry, glPopAttrib().
#include "oxdrawable.h"
#include "oxdrawer.h"

#include "oxrefptr.h"

#include <cstdint>

namespace oxGraphics::openGL {

class iDrawerHost;
class glRecording;
class pickCapture;

class glDrawer : public iDrawer {
public:
    /// `host` (not owned, may be null): the scene drawn for. Without one nothing can be
    /// recorded and the scene queries answer empty.
    explicit glDrawer(iDrawerHost* host);
    /// Releases the active recording (closing its list if it is still open) and the current drawable.
    ~glDrawer() override;
    glDrawer(const glDrawer&) = delete;
    glDrawer& operator=(const glDrawer&) = delete;

    std::int64_t auxTag() const override { return 0; }
    void pushMatrix() override;
    void multMatrix(const oxGeo::matrix3d& m) override;
    void popMatrix() override;
    /// glLineWidth(w) only when w > 0.
    void setLineWidth(float width) override;
    /// glPointSize(s) only when s > 0.
    void setPointSize(float size) override;
    /// Sets the point size to 5 (for what follows, too), then one lit GL_POINTS vertex.
    void drawPoint(const oxGeo::point3d& p) override;
    /// Unlit GL_POINTS; the point size is left as it is.
    void drawPoints(const std::vector<oxGeo::point3d>& points) override;
    void drawLine(const oxGeo::point3d& a, const oxGeo::point3d& b, bool lit) override;
    /// An unlit shaft from `from` to the base of the head, then a closed cone of `headLength`
    /// and `headRadius` whose tip is `to`.
    void drawArrowHead(const oxGeo::point3d& from, const oxGeo::point3d& to, float headLength,
                       float headRadius) override;
    /// Stipple pattern 0x00FF repeated `factor` times.
    void drawStippledLine(const oxGeo::point3d& a, const oxGeo::point3d& b, int factor, bool lit) override;
    /// Unlit open GL_LINE_STRIP.
    void drawPolyline(const std::vector<oxGeo::point3d>& points) override;
    /// Polygon mode `mode` (left so afterwards), culling off, flat-shaded triangles of every patch.
    void drawMesh(const oxGeo::mesh3d& mesh, int mode) override;
    /// As drawMesh, but with colour and front material per patch (a table entry or `defaultColor`),
    /// back material and secondary colour `backColor`, opaque. The last patch's colour stays current.
    void drawMeshPatchColors(const oxGeo::mesh3d& mesh, const std::vector<ox::rgbColor>& patchColors,
                             const ox::rgbColor& defaultColor, const ox::rgbColor& backColor, int mode) override;
    void drawPatch(const oxGeo::indexedTrianglePatch3d& patch, int mode) override;
    /// A GLU cylinder or cone from `from` to `to` with optional caps. Polygon mode 1 is put back
    /// to GL_FILL afterwards.
    void drawCylinder(const oxGeo::point3d& from, const oxGeo::point3d& to, float radiusFrom, float radiusTo,
                      bool capFrom, bool capTo, int slices, int mode) override;
    /// A GLU disk at `center`; its front faces away from `normal` (the inside orientation wins).
    void drawDisk(const oxGeo::point3d& center, const oxGeo::vector3d& normal, float radius, int slices,
                  int mode) override;
    /// A GLU sphere; note GLU's order: slices, then stacks.
    void drawSphere(const oxGeo::point3d& center, float radius, int stacks, int slices, int mode) override;
    /// The glyph outlines of `text` (capital height 2) at z = 0, each edge through this drawer's
    /// own drawLine(a, b, true), so a variant that overrides drawLine changes text as well.
    void drawText(const ox::string& text, const ox::string& font) override;
    /// Filled, culling off, colour and material per vertex: where the plane through the vertex
    /// across the from→to axis cuts the segment from→to, colorFrom and colorTo interpolated;
    /// off the segment, the colour of the nearer end; equal colours give colorFrom. Alpha is
    /// 1 − transparency. Normals are the face normal multiplied by its own length (not unit
    /// length; GL_NORMALIZE copes).
    void drawMeshGradient(const oxGeo::mesh3d& mesh, float transparency, const ox::rgbColor& colorFrom,
                          const ox::rgbColor& colorTo, const oxGeo::point3d& from, const oxGeo::point3d& to) override;
    bool isRecordingValid(const ox::refPtr<iRecorded>& recording) const override;
    bool isRecording() const override { return static_cast<bool>(mRecording); }
    void drawRecording(const ox::refPtr<iRecorded>& recording) override;
    void pushName(unsigned int name) override;
    /// glPopName only while names pushed by this drawer remain.
    void popName() override;
    bool isTransparentPass() const override { return false; }
    const wchar_t* sceneName() const override;
    bool sceneViewRayAt(int x, int y, oxGeo::ray<oxGeo::_space3d>& out) const override;
    /// Starts a display list in the host's context.
    void beginRecording() override;
    /// Ends the list and hands it out. While skipping, an open list is still closed (the context
    /// must not stay in compile mode) but discarded: it lacks what was skipped.
    ox::refPtr<iRecorded> endRecording() override;

    /// The drawable being drawn; the scene sets it before each draw call.
    void setCurrentDrawable(ox::refPtr<iDrawable> drawable);
    const ox::refPtr<iDrawable>& currentDrawable() const { return mCurrentDrawable; }
    bool isSkipping() const { return mSkip; }
    /// Names pushed and not yet popped.
    std::uint64_t nameDepth() const { return mNameDepth; }
    /// The caller has reset the name stack: the names this drawer pushed are gone.
    void forgetNames() { mNameDepth = 0; }
    iDrawerHost* host() const { return mHost; }

protected:
    void setSkipping(bool skip) { mSkip = skip; }
    /// Closes the active list and gives up the recording; returns it (empty when none).
    ox::refPtr<glRecording> finishRecording();
    /// The capture hook: while a recording compiles, every emission operation also appends what
    /// it emits to the recording's CPU capture (pickcapture.h), one call each; null otherwise.
    pickCapture* recordingCapture() const;

private:
    iDrawerHost* mHost;
    ox::refPtr<iDrawable> mCurrentDrawable;
    bool mSkip = false;
    ox::refPtr<glRecording> mRecording;
    std::uint64_t mNameDepth = 0;
};

} // namespace oxGraphics::openGL
