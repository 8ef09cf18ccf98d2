#pragma once
// glScene: the OpenGL renderer behind a scene. It owns the camera, the drawables and their
// selection state, the offscreen targets, and runs the frame: setupForPainting, renderBefore,
// draw, renderAfter.
//
// Every operation that touches OpenGL first makes the scene's context current and does nothing
// when that fails. Operations on camera and view state only (the animated view transfer calls
// them from its worker thread) need no current context; they too do nothing once the context is
// gone.
#include "iscene.h"

#include "drawing/gldrawerhost.h"
#include "glcamera.h"
#include "glbackgroundpainter.h"
#include "gloffscreentargets.h"
#include "glscreenpass.h"
#include "gltransparencypass.h"
#include "glopaquepass.h"
#include "effects/glblurpass.h"
#include "effects/glmaskpass.h"
#include "effects/gloutlinepass.h"
#include "glviewprojection.h"

#include "oxgltexturemanager.h"
#include "oxstring.h"

#include <array>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace oxGraphics::openGL {

/// The shader programs of one frame (null members: that part is drawn fixed-function).
struct framePrograms_t;

class glScene final : public iScene, public iDrawerHost, public ox::refObj {
public:
    /// A renderer for `context`; `presentToWindow` makes renderAfter swap buffers and lets a
    /// scene without multisampling draw straight into the window.
    static ox::refPtr<glScene> create(const ox::refPtr<iGlContext>& context, bool presentToWindow);

    /// The GL state a frame (setupForPainting, renderBefore, draw, renderAfter), a pick and a
    /// read-back leave set as the scene needs it, rather than as the host had it. Everything
    /// else (texture units and bindings, buffers, vertex arrays, pixel store, renderbuffer,
    /// scissor, colour and stencil functions, ...) is put back. Lights and materials, which the
    /// frame sets, are left too.
    static constexpr const char* kHostStateLeftovers[] = {
        "GL_VIEWPORT",                 // the scene's viewport
        "GL_MATRIX_MODE",              // GL_MODELVIEW
        "GL_MODELVIEW_MATRIX",         // the camera's
        "GL_PROJECTION_MATRIX",        // the camera's
        "GL_LIGHTING", "GL_LIGHT0", "GL_NORMALIZE",  // on, with the light model two-sided
        "GL_CURRENT_COLOR",            // the last colour drawn with
        "GL_SHADE_MODEL",              // GL_SMOOTH
        "GL_DEPTH_TEST",               // on
        "GL_DEPTH_FUNC",               // GL_LEQUAL
        "GL_DEPTH_WRITEMASK",          // on
        "GL_COLOR_WRITEMASK",          // all channels
        "GL_COLOR_CLEAR_VALUE",        // the last clear of the frame
        "GL_BLEND",                    // off
        "GL_BLEND_EQUATION_RGB",       // GL_FUNC_ADD
        "GL_BLEND_SRC_RGB", "GL_BLEND_DST_RGB", "GL_BLEND_SRC_ALPHA", "GL_BLEND_DST_ALPHA",  // the last pass's
        "GL_STENCIL_TEST",             // off
        "GL_STENCIL_WRITEMASK",        // 0
        "GL_CURRENT_PROGRAM",          // none
        "GL_CULL_FACE",                // off: the drawers draw both faces
        "GL_POLYGON_MODE",             // GL_FILL
        "GL_LINE_WIDTH", "GL_POINT_SIZE",  // the last the drawables asked for
        "GL_DRAW_FRAMEBUFFER_BINDING", "GL_READ_FRAMEBUFFER_BINDING",  // 0 after a multisampled frame
    };

    // iScene
    void initGfxApiState() override;
    void setupForPainting(int width, int height) override;
    void setupForPainting() override;
    oxGeo::point2d worldToWinCoordinates(const oxGeo::point3d& world) const override;
    void resize(int width, int height, double viewSize, int offsetFocusBeginWidth, int offsetFocusBeginHeight,
                int offsetFocusEndWidth, int offsetFocusEndHeight) override;
    void resizeOffset(int offsetFocusBeginWidth, int offsetFocusBeginHeight, int offsetFocusEndWidth,
                      int offsetFocusEndHeight) override;
    int viewportHeight() const override { return mViewportHeight; }
    int viewportWidth() const override { return mViewportWidth; }
    int offsetFocusBeginHeight() const override { return mOffsetFocus[1]; }
    int offsetFocusBeginWidth() const override { return mOffsetFocus[0]; }
    int offsetFocusEndHeight() const override { return mOffsetFocus[3]; }
    int offsetFocusEndWidth() const override { return mOffsetFocus[2]; }
    void setColor(const ox::rgbColor& color, unsigned int colorIds) override;
    void setUseTransparentBackground(bool use) override;
    void setUseBackgroundImage(bool use, const unsigned char* pixels, int width, int height, int format) override;
    void setBackgroundImageTrans(double transparency) override;
    void setBackgroundImageSizing(int sizing) override;
    void setBackgroundImageAlignment(int alignment) override;
    void setTempBackgroundImage(bool use, const unsigned char* pixels, int width, int height, int format) override;
    bool tempBackgroundImageUsed() const override;
    int multisamples() const override { return mRequestedSamples; }
    void setMultisamples(int samples) override;
    void initFBOWithMultiSampling(int width, int height) override;
    void refreshFBOWithMultiSampling(int width, int height) override;
    void refreshFBOWithMultiSampling() override;
    void renderBefore() override;
    void renderAfter() override;
    char* writeToBuffer() const override;
    void moveCamera(int x1, int y1, int x2, int y2) override;
    void saveView(iSavedView** out) override;
    void restoreView(iSavedView* view) override;
    void rotateCamera(int x1, int y1, int x2, int y2) override;
    void rotateCamera(int x1, int y1, int x2, int y2, const oxGeo::point3d& pivot) override;
    void zoom(int x1, int y1, int x2, int y2) override;
    void zoomDynamic(int x, int y, double factor) override;
    void zoomWheel(int x, int y, bool zoomIn) override;
    void getViewVectors(int x, int y, oxGeo::vector3d& viewDirection, oxGeo::vector3d& upDirection) const override;
    double viewSize() const override;
    void setViewSize(double viewSize) override;
    void fitBox(const oxGeo::boundBox3d& box, double margin) override;
    void centreOn(const oxGeo::point3d& world) override;
    oxGeo::point3d viewCentreNear(const oxGeo::point3d& reference) const override;
    void setCameraInterpolation(const cameraModelState_t& from, const cameraModelState_t& to, double f) override;
    cameraModelState_t cameraModelState() const override;
    void setCameraModelState(const cameraModelState_t& state) override;
    void addBoundBoxProvider(const ox::refPtr<iBoundBoxProvider>& provider) override;
    oxGeo::boundBox3d providersBoundingBox(bool selectedOnly) const override;
    void pickSelectRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                        std::vector<pickHit_t>& hits, int flags) override;
    void setPickAccelerated(bool accelerated) override { mPickAccelerated = accelerated; }
    bool isPickAccelerated() const override { return mPickAccelerated; }
    void add(const ox::refPtr<iDrawable>& drawable) override;
    void remove(const ox::refPtr<iDrawable>& drawable, bool forget) override;
    void clear() override;
    ox::refPtr<iCamera> camera() const override;
    void setCameraAnglesMode(bool anglesMode) override;
    bool getViewRayAt(int x, int y, oxGeo::ray3d& out) const override;
    void draw() override;
    void drawRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) override;
    void setRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) override;
    bool clearRubberRect() override;
    std::vector<pickHit_t> pickSelectInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                            const iSelectFilter* filter) override;
    bool getFirstHitPointInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                const iSelectFilter* filter, ox::refPtr<iDrawable>& hit, oxGeo::point3d& point) override;
    void setPreferredPickTypes(const std::vector<std::string>& typeNames) override;
    void setSelected(const ox::refPtr<iDrawable>& drawable, bool selected) override;
    bool isSelected(const ox::refPtr<iDrawable>& drawable) const override;
    std::vector<ox::refPtr<iDrawable>> selectedDrawables() const override {
        return {mSelection.begin(), mSelection.end()};
    }
    void clearSelection() override;
    void regenerate() override;
    void setModifyEnabled(const ox::refPtr<iDrawable>& drawable, bool enabled) override;
    bool isModifyEnabled(const ox::refPtr<iDrawable>& drawable) const override;
    ox::refPtr<iGlContext> glContext() const override { return mContext; }
    const std::vector<std::string>& preferredPickTypes() const override { return mPreferredPickTypes; }
    void setModifiedDrawable(const ox::refPtr<iDrawable>& drawable) override;
    offscreenTargets_t offscreenTargets() const override;
    bool checkFBO() override;
    int actualMultisamples() const override { return mTargets.actualSamples(); }
    std::vector<ox::refPtr<iDrawable>> drawables() const override { return mDrawables; }
    ox::rgbColor color(unsigned int colorId) const override;
    bool targetsComplete() const override;
    void setDrawableEffects(const ox::refPtr<iDrawable>& drawable, const drawableEffects_t& effects) override;
    drawableEffects_t drawableEffects(const ox::refPtr<iDrawable>& drawable) const override;
    void setSceneEffects(const sceneEffects_t& effects) override;
    sceneEffects_t sceneEffects() const override { return mSceneEffects; }
    void setMaskDrawables(const std::vector<ox::refPtr<iDrawable>>& drawables) override;
    std::vector<ox::refPtr<iDrawable>> maskDrawables() const override { return mMaskDrawables; }

    // iDrawerHost
    const ox::string& sceneName() const override { return mName; }
    bool getViewRayAt(int x, int y, oxGeo::ray3d& ray, int flags) const override;

    /// Draws the resolved frame over the whole viewport (a new display list each time).
    void drawTextureToDisplayScreen();
    /// Releases the offscreen targets (the first step of both refreshes).
    void releaseFBOWithMultiSampling();
    void setName(const ox::string& name) { mName = name; }
    const glTransparencyTargets& transparencyTargets() const { return mTransparencyPass.targets(); }
    glTransparencyPass& transparencyPass() { return mTransparencyPass; }
    const ox::refPtr<glCamera>& cameraImpl() const { return mCamera; }
    const glViewProjection& projection() const { return mProjection; }
    unsigned int screenQuadList() const { return mScreen.lastList(); }

private:
    glScene(const ox::refPtr<iGlContext>& context, bool presentToWindow);
    ~glScene() override;

    bool makeCurrent() const { return mContext && mContext->makeCurrent(); }
    bool contextAlive() const { return mContext && mContext->isValid(); }
    void setupLights();
    /// The transparent pass over what the render and override-colour drawers held back.
    void drawTransparent(glRenderDrawer& render, glOverrideColorDrawer& overrideDrawer, const frameContent_t& content,
                         const framePrograms_t& programs);
    /// Blurred drawables, outlines and the frame's blur (shader path only).
    void drawEffects(const frameContent_t& content, const framePrograms_t& programs);
    void bringTransparencyTargets(int samples);
    oxGeo::matrix3d modelView() const { return mCamera->modelViewMatrix(); }
    /// The window point at the centre of the usable view area.
    oxGeo::point2d usableViewCentre() const;
    /// Turns the model by `turn` (an eye-space rotation) about the world point `pivot`.
    void turnModel(const oxGeo::quaternion& eyeTurn, const oxGeo::point3d& pivot);
    void zoomAbout(double x, double y, double factor);
    /// Shifts what is shown by `delta` in eye space (x right, y up, z towards the viewer) by
    /// moving the camera; the planar angles mode has no eye depth and ignores z.
    void panEye(const oxGeo::vector3d& delta);
    /// Zooms so the eye-space box fills the usable view area less `margin`, centred in it.
    void fitEyeBox(const oxGeo::boundBox3d& eyeBox, double margin);

    ox::refPtr<iGlContext> mContext;
    int mRequestedSamples = 4;
    const bool mPresentToWindow;
    int mViewportWidth = 0;
    int mViewportHeight = 0;
    bool mTargetsComplete = false;  // the last initialisation built complete targets
    std::array<int, 4> mOffsetFocus{};  // begin width, begin height, end width, end height

    std::vector<ox::refPtr<iDrawable>> mDrawables;
    bool mPickAccelerated = true;
    std::set<ox::refPtr<iDrawable>> mSelection;
    std::set<ox::refPtr<iDrawable>> mModifyEnabled;
    std::vector<ox::refPtr<iBoundBoxProvider>> mBoundBoxProviders;
    ox::refPtr<iDrawable> mModifiedDrawable;
    ox::refPtr<glCamera> mCamera;
    glViewProjection mProjection;
    std::array<ox::rgbColor, kColorSlotCount> mColors;
    glBackgroundPainter mBackground;
    std::vector<glScreenPass::rectangle_t> mRubberRects;
    std::vector<std::string> mPreferredPickTypes;
    ox::string mName;
    glTextureManager mTextureManager;
    glOffscreenTargets mTargets;
    glTransparencyPass mTransparencyPass{mTextureManager};
    glScreenPass mScreen;
    drawableEffectsMap mEffects;
    sceneEffects_t mSceneEffects;
    std::vector<ox::refPtr<iDrawable>> mMaskDrawables;
    glMaskPass mMaskPass;
    glOutlinePass mOutlinePass;
    glBlurPass mBlurPass;
};

} // namespace oxGraphics::openGL
