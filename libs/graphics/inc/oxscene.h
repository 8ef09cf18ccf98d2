#pragma once
// oxGraphics::scene: one 3D view of a host application.
//
//     auto context = oxGraphics::openGL::adoptCurrentContext();   // or createHeadlessContext()
//     auto view = oxGraphics::scene::create(context, /*presentToWindow*/ true, /*smoothView*/ true);
//     view->initGfxApiState();
//     view->resize(width, height, 100.0, 0, 0, 0, 0);
//     view->initFBOWithMultiSampling(width, height);
//     view->add(ox::refPtr<oxGraphics::iDrawable>(oxGraphics::meshEntity::create(mesh)));
//     // per frame:
//     view->setupForPainting(); view->renderBefore(); view->draw(); view->renderAfter();
//
// Every operation first makes the scene's context current on the calling thread and silently
// does nothing when that fails (the window is gone). Operations that change what is shown fire
// kEventSceneChanged (1000) to the observers; the host repaints in response.
//
// Window positions are pixels with y counted downwards from the top, as mouse positions are.
#include "oxgraphics_export.h"

#include "oxcamera.h"
#include "oxdrawable.h"
#include "oxeffects.h"
#include "oxglcontext.h"
#include "oxscenetypes.h"
#include "oxselectfilter.h"

#include "oxcolor.h"
#include "oxgeoboundbox.h"
#include "oxgeomatrix.h"
#include "oxgeopoint.h"
#include "oxgeoquaternion.h"
#include "oxgeoray.h"
#include "oxgeovector.h"
#include "oxobservable.h"
#include "oxrefobj.h"
#include "oxrefptr.h"
#include "oxthread.h"

#include <atomic>
#include <deque>
#include <string>
#include <vector>

namespace oxGraphics {

class iScene;

class OX_GRAPHICS_API scene : public ox::refObj, public ox::observable {
public:
    /// A scene drawing into `context`. `presentToWindow`: frames end with a buffer swap (a window);
    /// false for an offscreen scene read back with writeToBuffer. `smoothViewEnabled`: animated
    /// view changes run on a worker thread; otherwise they run to the end on the calling thread.
    /// Empty when the context is empty.
    static ox::refPtr<scene> create(const ox::refPtr<iGlContext>& context, bool presentToWindow,
                                    bool smoothViewEnabled);
#if defined(_WIN32)
    /// The Windows form: the window's device context (HDC) and rendering context (HGLRC).
    static ox::refPtr<scene> create(void* deviceContext, void* renderContext, bool implFlag, bool smoothViewEnabled);
#endif

    // --- content ---------------------------------------------------------------------------
    /// Adds the drawable; one that is also an iBoundBoxProvider takes part in zoomAll.
    void add(const ox::refPtr<iDrawable>& drawable);
    /// Removes the drawable; `forget` also drops it from the selection and modify-enabled sets.
    void remove(const ox::refPtr<iDrawable>& drawable, bool forget);
    virtual void clear();
    void regenerate();
    void addToSelection(const ox::refPtr<iDrawable>& drawable);
    void removeFromSelection(const ox::refPtr<iDrawable>& drawable);
    void clearSelection();
    bool isSelected(const ox::refPtr<iDrawable>& drawable) const;
    void addToModifyEnabled(const ox::refPtr<iDrawable>& drawable);
    void removeFromModifyEnabled(const ox::refPtr<iDrawable>& drawable);
    bool isModifyEnabled(const ox::refPtr<iDrawable>& drawable) const;

    // --- appearance ------------------------------------------------------------------------
    /// Sets every colour slot whose bit (eColorId) is set in `colorIds`; bits above 64 are ignored.
    void setColor(const ox::rgbColor& color, unsigned int colorIds);
    ox::rgbColor color(eColorId slot) const;
    void setUseBackgroundImage(bool use, unsigned char* pixels, int width, int height, int format);
    void setTempBackgroundImage(bool use, unsigned char* pixels, int width, int height, int format);
    bool tempBackgroundImageUsed() const;
    void setBackgroundImageSizing(int sizing);
    void setBackgroundImageAlignment(int alignment);
    void setBackgroundImageTrans(double transparency);
    void setUseTransparentBackground(bool use);

    // --- effects (oxeffects.h) -------------------------------------------------------------
    /// The effects of one drawable, kept while the scene lives or until default effects are set
    /// (removing the drawable with `forget` drops them too). Null drawables are ignored.
    void setDrawableEffects(const ox::refPtr<iDrawable>& drawable, const drawableEffects_t& effects);
    /// Default effects for a drawable that has none.
    drawableEffects_t drawableEffects(const ox::refPtr<iDrawable>& drawable) const;
    /// Selection style, outline width, frame blur and mask mode. Widths and radii outside their
    /// ranges are clamped into them.
    void setSceneEffects(const sceneEffects_t& effects);
    sceneEffects_t sceneEffects() const;
    /// The mask: drawables drawn (with the frame's camera) only to say which pixels the mask
    /// covers; the mask mode says whether those or the others are hidden. They are not drawn in
    /// the frame themselves, need not be added to the scene and are not picked. Empty: no mask.
    void setMaskDrawables(const std::vector<ox::refPtr<iDrawable>>& drawables);
    std::vector<ox::refPtr<iDrawable>> maskDrawables() const;

    // --- targets and frames ----------------------------------------------------------------
    void setMultisamples(int samples);
    int multisamples() const;
    /// The sample count the driver granted the current targets (0 without targets).
    int actualMultisamples() const;
    /// Whether frames have a complete place to go: the offscreen targets were built and the
    /// driver reports them complete, or the scene draws straight into its window (no samples).
    /// False before the targets are first built, for a zero size, and when the driver could not
    /// build them (a size beyond its limits, out of memory): frames would then come out blank, and
    /// the host can ask for fewer samples or a smaller size and refresh.
    bool targetsComplete() const;
    void initFBOWithMultiSampling(int width, int height);
    void refreshFBOWithMultiSampling(int width, int height);
    void refreshFBOWithMultiSampling();
    void initGfxApiState();
    void setupForPainting(int width, int height);
    void setupForPainting();
    void renderBefore();
    virtual void draw() const;
    void renderAfter();
    void setRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2);
    void drawRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2);
    bool clearRubberRect();
    /// BGRA bytes of the current image, bottom row first: exactly viewportWidth × viewportHeight × 4
    /// bytes, whatever size the targets were built at (what they do not cover is zero). The caller
    /// frees them with delete[]; null without a context or a viewport.
    char* writeToBuffer() const;
    /// While disabled, draw() returns at once without touching OpenGL. No event either way.
    void setSceneUpdateEnabled(bool enabled);
    bool sceneUpdateEnabled() const;
    /// Fires kEventSceneChanged and nothing else: call it after changing a drawable in place.
    void fireSceneInvalid();

    // --- camera and viewport ---------------------------------------------------------------
    /// The camera. Its setters refuse values that are not finite (a warning, the camera unchanged).
    ox::refPtr<iCamera> camera() const;
    /// A negative side counts as 0; a view size that is not a positive finite number keeps the
    /// current one, and any view size is held to [1e-9, 1e17] (both with a warning).
    void resize(int width, int height, double viewSize, int offsetFocusBeginWidth, int offsetFocusBeginHeight,
                int offsetFocusEndWidth, int offsetFocusEndHeight);
    void resizeOffset(int offsetFocusBeginWidth, int offsetFocusBeginHeight, int offsetFocusEndWidth,
                      int offsetFocusEndHeight);
    int viewportWidth() const;
    int viewportHeight() const;
    int offsetFocusBeginWidth() const;
    int offsetFocusBeginHeight() const;
    int offsetFocusEndWidth() const;
    int offsetFocusEndHeight() const;
    /// The eye-space size the longer window side spans (the zoom).
    double viewSize() const;
    /// A new copy of the camera in *out (an existing *out is released first); no event.
    void saveView(iSavedView** out);
    /// Copies a saved view back into the camera; no event (call fireSceneInvalid).
    void restoreView(iSavedView* view);
    /// Switches the camera between look-at mode and the planar angles mode.
    void setCameraAnglesMode(bool anglesMode);

    // --- interaction -----------------------------------------------------------------------
    /// Pans so that the world point under (x1, y1) follows the pointer to (x2, y2).
    void moveCamera(int x1, int y1, int x2, int y2);
    /// Turns the view for a pointer drag like a trackball: a horizontal drag turns about the
    /// screen's vertical axis, a vertical drag about its horizontal axis, 180° per window height.
    /// The first form turns about the point under the centre of the usable view area, the
    /// second about `pivot`; the pivot keeps its window position.
    void rotateCamera(int x1, int y1, int x2, int y2);
    void rotateCamera(int x1, int y1, int x2, int y2, const oxGeo::point3d& pivot);
    /// Zooms so that the window rectangle fills the usable view area.
    void zoom(int x1, int y1, int x2, int y2);
    /// Zooms by `factor` (> 1 magnifies) about window point (x, y), which keeps its world point.
    void zoomDynamic(int x, int y, double factor);
    /// One wheel step (factor 1.25) about window point (x, y), which keeps its world point.
    void zoomWheel(int x, int y, bool zoomIn);
    /// The viewing ray through window pixel (x, y), starting in front of everything.
    void getViewRayAt(int x, int y, oxGeo::ray3d& out) const;
    /// The view direction (into the screen) and the screen's up direction in world space; x and
    /// y are not used (the projection is orthographic).
    void getViewVectors(int x, int y, oxGeo::vector3d& viewDirection, oxGeo::vector3d& upDirection) const;
    /// Window pixels (y down) of a world point.
    oxGeo::point2d worldToWinCoordinates(const oxGeo::point3d& world) const;

    // --- fitting (boxes come from the drawables that are iBoundBoxProviders) ----------------
    /// Frames every bounding-box provider in the usable view area, keeping the view direction.
    /// The usable area is centred at (width/2 - offsetFocusEndWidth + offsetFocusBeginWidth,
    /// height/2 - offsetFocusEndHeight + offsetFocusBeginHeight) and reaches symmetrically as far
    /// as the nearer offset margin on each axis; 5 % of it is left free around the box.
    void zoomAll();
    /// Frames `box`.
    void zoomTo(const oxGeo::boundBox3d& box);
    /// Frames the selected bounding-box providers; nothing when none is selected.
    void zoomSelected();
    /// Shows twice the area about the usable view centre.
    void zoomOut();
    /// Pans so that the centre of all providers' boxes lands in the usable view centre; no zoom.
    void translateToCentered();
    /// Pans by the least distance that brings the providers' box inside the usable view area
    /// (centres it when it is larger); no zoom.
    void translateToMinDist();
    /// The world point in the centre of the usable view area, on the plane through the centre
    /// of the providers' boxes (through the origin when there are none) facing the viewer.
    oxGeo::point3d currentViewCentre() const;
    /// The scene facade's own box: always empty; fitting uses the drawables' boxes.
    virtual oxGeo::boundBox3d boundingBox() const;

    // --- picking ---------------------------------------------------------------------------
    /// The topmost drawable in the square of half size `hsize` about (px, py), or null.
    void pickSelect(unsigned int px, unsigned int py, unsigned int hsize, ox::refPtr<ox::iRefObj>& result) const;
    /// Rectangle queries. Corners are window pixels (y down) in either order; a rectangle without
    /// width or height picks the one pixel column or row it names. A hit is one record of the GL
    /// selection: it is reported wherever any part of a drawable reaches into the rectangle, also
    /// behind nearer ones (what is covered on the screen is hit as well). `filter` decides which
    /// hits count (null: all); a filter that throws rejects that hit with a warning.
    ///
    /// Every hit record the filter keeps, nearest first (by minimum depth). A drawable that pushes
    /// names of its own (grips, parts) may give several records, each with its names.
    std::vector<pickHit_t> pickSelectInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                            const ox::refPtr<iSelectFilter>& filter = {}) const;
    /// The nearest hit the filter keeps and the world point under the rectangle's centre at the
    /// depth of that hit's nearest point in the rectangle; false, with `hit` and `point`
    /// untouched, when nothing was kept.
    bool pickSelectGetFirstHitPointInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                          ox::refPtr<iDrawable>& hit, oxGeo::point3d& point,
                                          const ox::refPtr<iSelectFilter>& filter = {}) const;
    /// The same point without the drawable.
    bool getFirstHitPointInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                oxGeo::point3d& point, const ox::refPtr<iSelectFilter>& filter = {}) const;
    /// Rubber-band selection: every drawable the filter keeps in the rectangle changes the
    /// selection as `mode` says (replace, add, toggle, remove). Returns those drawables, nearest
    /// first, each once. A moveRotationControl's handle is never among them. Fires
    /// kEventSceneChanged when the selection changed. An unknown mode is refused with a warning
    /// and changes nothing.
    std::vector<ox::refPtr<iDrawable>> selectMultiple(unsigned int x1, unsigned int y1, unsigned int x2,
                                                      unsigned int y2, eSelectMode mode,
                                                      const ox::refPtr<iSelectFilter>& filter = {});
    /// Run-time type names (typeid(...).name()) preferred by pickSelect within its depth tolerance.
    void setPreferredPickTypes(const std::vector<std::string>& typeNames);
    /// The rectangle selection behind every pick: all hits, in the driver's order.
    std::vector<pickHit_t> pickSelectRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) const;
    /// On (the default), rectangle selections are answered from CPU copies of what the drawables'
    /// recordings hold, kept with each recording and indexed on their first pick: a pick costs
    /// well under a millisecond even with millions of triangles in view. The records are those of
    /// OpenGL selection mode (the same drawables, names and order; depths within 2^-16 of the
    /// depth range). Drawables that draw GLU quadrics (the manipulator), and every drawable while
    /// depth clamping or a clip plane is on, are still picked with selection mode. Off: every pick
    /// uses selection mode, as a reference.
    void setPickAccelerated(bool accelerated);
    bool isPickAccelerated() const;

    // --- view corrections and standard views ----------------------------------------------
    void setViewPreceding(const oxGeo::vector3d& axis, double angleDeg);
    const oxGeo::vector3d& viewPrecedingAxis() const;
    double viewPrecedingAngle() const;
    void setViewOrientation(const oxGeo::vector3d& axis, double angleDeg);
    const oxGeo::vector3d& viewOrientationAxis() const;
    double viewOrientationAngle() const;
    /// Rp · Ro: the preceding and the orientation rotations about the origin (identity for a
    /// zero axis).
    oxGeo::matrix3d addViewMatrix() const;

    /// Standard views. `model` is the orientation of the model being looked at, `pivot` the world
    /// point that keeps its window position. With `animate` the view turns in 15 eased steps
    /// (kEventViewChanged each), on a worker thread when the scene was made with smooth view;
    /// requests that arrive meanwhile are queued and replayed in order.
    void setFrontView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot);
    void setBackView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot);
    void setLeftView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot);
    void setRightView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot);
    void setFrontLeftView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot);
    void setFrontRightView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot);
    void setBackLeftView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot);
    void setBackRightView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot);
    /// Top and bottom: `screenUp` is the model direction (its x and y are used) that should point
    /// up on the screen; a zero xy part means +Y.
    void setTopView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot,
                    const oxGeo::vector3d& screenUp);
    void setBottomView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot,
                       const oxGeo::vector3d& screenUp);
    /// Looks along the direction (x, y, z) (into the screen), keeping world +Z as far up as possible.
    void setCustomViewDirection(double x, double y, double z, bool animate, const oxGeo::point3d& pivot);
    /// True while a transfer thread exists and has not finished.
    ///
    /// Threads: the steps of a worker transfer fire kEventViewChanged on the worker, and requests
    /// queued meanwhile are replayed there after it (so kEventSceneChanged can come from it too);
    /// observers marshal to their GUI thread. Destroying the scene stops a running transfer after
    /// its current step and waits for that; an observer must not drop the last reference to the
    /// scene from inside an event.
    bool smoothViewActive() const;
    bool isInFrontView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const;
    bool isInBackView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const;
    bool isInLeftView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const;
    bool isInRightView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const;
    bool isInTopView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const;
    bool isInBottomView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const;

    /// The renderer behind the facade (for glFrameBuffer and the library's own classes).
    const ox::refPtr<iScene>& implementation() const { return mImplementation; }

protected:
    scene(const ox::refPtr<iGlContext>& context, bool presentToWindow, bool smoothViewEnabled);
    ~scene() override;

private:
    enum class eViewSetter { front, back, left, right, frontLeft, frontRight, backLeft, backRight, top, bottom, custom };
    /// A view request that arrived while a transfer ran; replayed afterwards.
    struct viewRequest_t {
        eViewSetter setter;
        bool animate;
        oxGeo::matrix3d model;
        oxGeo::point3d pivot;
        oxGeo::vector3d extra;     // top/bottom: screen up; custom: the direction
        oxGeo::boundBox3d box;     // reserved for fitting requests
    };
    void fireSceneChanged();
    /// Where the transfer machinery is: idle; a worker transfer running; or replaying the
    /// requests queued during one (new requests keep queuing until the queue is empty).
    enum class eTransferState { idle, running, replaying };
    void setStandardView(eViewSetter setter, bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot,
                         const oxGeo::vector3d& extra);
    void applyViewRequest(const viewRequest_t& request);
    void stopTransfers();
    void smoothViewTransfer(const oxGeo::quaternion& q, const oxGeo::vector3d& translation,
                            const oxGeo::vector3d& scale, const oxGeo::point3d& pivot);
    void runTransferSteps();
    void translateBackToPivotPoint(const oxGeo::quaternion& from, const oxGeo::quaternion& to,
                                   const oxGeo::point3d& pivot);
    bool transferRunning() const;
    bool isInView(eViewSetter view, const oxGeo::matrix3d& model) const;
    oxGeo::boundBox3d providersBox(bool selectedOnly) const;
    static int transferThreadMain(void* self);
    static void onTransferFinished(ox::thread* thread, void* self);

    ox::refPtr<iScene> mImplementation;
    oxGeo::vector3d mPrecedingAxis{0.0, 0.0, 1.0};
    double mPrecedingAngle = 0.0;
    const bool mSmoothViewEnabled;
    ox::refPtr<ox::thread> mTransferThread;
    mutable ox::mutex mTransferLock;  // guards the targets, the queue, the state and the thread member
    eTransferState mTransferState = eTransferState::idle;
    std::atomic<bool> mTransferCancelled{false};
    oxGeo::quaternion mTargetRotation;
    oxGeo::vector3d mTargetTranslation;
    oxGeo::vector3d mTargetScale{1.0, 1.0, 1.0};
    oxGeo::point3d mTargetPivot;
    std::deque<viewRequest_t> mRequestQueue;
    oxGeo::vector3d mOrientationAxis{0.0, 0.0, 1.0};
    double mOrientationAngle = 0.0;
    bool mSceneUpdateEnabled = true;
};

} // namespace oxGraphics
