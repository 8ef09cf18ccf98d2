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
#include "gltransparencytargets.h"
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

class OX_GRAPHICS_API glScene final : public iScene, public iDrawerHost, public ox::refObj {
public:
    /// A renderer for `context`; `presentToWindow` makes renderAfter swap buffers and lets a
    /// scene without multisampling draw straight into the window.
    static ox::refPtr<glScene> create(const ox::refPtr<iGlContext>& context, bool presentToWindow);

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
    std::vector<ox::refPtr<iDrawable>> pickSelectInRect(unsigned int x1, unsigned int y1, unsigned int x2,
                                                        unsigned int y2) override;
    bool getFirstHitPointInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                ox::refPtr<iDrawable>& hit, oxGeo::point3d& point) override;
    void setPreferredPickTypes(const std::vector<std::string>& typeNames) override;
    void setSelected(const ox::refPtr<iDrawable>& drawable, bool selected) override;
    bool isSelected(const ox::refPtr<iDrawable>& drawable) const override;
    void clearSelection() override;
    void regenerate() override;
    void setModifyEnabled(const ox::refPtr<iDrawable>& drawable, bool enabled) override;
    bool isModifyEnabled(const ox::refPtr<iDrawable>& drawable) const override;
    ox::refPtr<iGlContext> glContext() const override { return mContext; }
    const std::vector<std::string>& preferredPickTypes() const override { return mPreferredPickTypes; }
    void setModifiedDrawable(const ox::refPtr<iDrawable>& drawable) override;
    offscreenTargets_t offscreenTargets() const override;
    bool checkFBO() override;
    int actualMultisamples() const override { return mActualSamples; }
    std::vector<ox::refPtr<iDrawable>> drawables() const override { return mDrawables; }
    ox::rgbColor color(unsigned int colorId) const override;
    bool targetsComplete() const override;

    // iDrawerHost
    const ox::string& sceneName() const override { return mName; }
    bool getViewRayAt(int x, int y, oxGeo::ray3d& ray, int flags) const override;

    /// Draws the resolved frame over the whole viewport (a new display list each time).
    void drawTextureToDisplayScreen();
    /// Releases the offscreen targets (the first step of both refreshes).
    void releaseFBOWithMultiSampling();
    void setName(const ox::string& name) { mName = name; }
    const glTransparencyTargets& transparencyTargets() const { return mTransparency; }
    const ox::refPtr<glCamera>& cameraImpl() const { return mCamera; }
    const glViewProjection& projection() const { return mProjection; }
    unsigned int screenQuadList() const { return mScreenQuadList; }

private:
    glScene(const ox::refPtr<iGlContext>& context, bool presentToWindow);
    ~glScene() override;

    struct backgroundImage_t {
        bool used = false;
        std::vector<unsigned char> pixels;  // tightly packed rows, top row first
        int width = 0, height = 0, channels = 0;
        unsigned int texture = 0;           // uploaded on first draw
        bool dirty = false;
    };

    bool makeCurrent() const { return mContext && mContext->makeCurrent(); }
    /// Deletes the scene's own offscreen objects, in release order (context current).
    void deleteOffscreenTargets();
    bool contextAlive() const { return mContext && mContext->isValid(); }
    void setupLights();
    void drawBackground();
    void drawBackgroundImage(backgroundImage_t& image);
    void drawRubberRectangles() const;
    void bringTransparencyTargets(int samples);
    void assignBackgroundImage(backgroundImage_t& image, bool use, const unsigned char* pixels, int width,
                               int height, int format);
    void deleteBackgroundTexture(backgroundImage_t& image);
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
    int mActualSamples = 0;
    unsigned int mMultisampledFbo = 0;
    unsigned int mResolveFbo = 0;
    unsigned int mColorRenderbuffer = 0;
    unsigned int mDepthStencilRenderbuffer = 0;
    unsigned int mResolveTexture = 0;
    unsigned int mScreenQuadList = 0;
    unsigned int mScreenQuadNames = 0;  // two consecutive list names the quads alternate between
    const bool mPresentToWindow;
    int mViewportWidth = 0;
    int mViewportHeight = 0;
    int mTargetWidth = 0;   // size the offscreen targets were made at
    int mTargetHeight = 0;
    bool mTargetsComplete = false;  // the last initialisation built complete targets
    std::array<int, 4> mOffsetFocus{};  // begin width, begin height, end width, end height

    std::vector<ox::refPtr<iDrawable>> mDrawables;
    std::set<ox::refPtr<iDrawable>> mSelection;
    std::set<ox::refPtr<iDrawable>> mModifyEnabled;
    std::vector<ox::refPtr<iBoundBoxProvider>> mBoundBoxProviders;
    ox::refPtr<iDrawable> mModifiedDrawable;
    ox::refPtr<glCamera> mCamera;
    glViewProjection mProjection;
    std::array<ox::rgbColor, 6> mColors;
    bool mTransparentBackground = false;
    backgroundImage_t mBackgroundImage;
    backgroundImage_t mTempBackgroundImage;
    double mBackgroundImageTransparency = 0.0;
    int mBackgroundImageSizing = 0;
    int mBackgroundImageAlignment = 0;
    std::vector<std::array<unsigned int, 4>> mRubberRects;
    std::vector<std::string> mPreferredPickTypes;
    ox::string mName;
    glTextureManager mTextureManager;
    glTransparencyTargets mTransparency{mTextureManager};
};

} // namespace oxGraphics::openGL
