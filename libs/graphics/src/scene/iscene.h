#pragma once
// iScene: the interface through which the scene facade drives its renderer (glScene). The
// operations keep a fixed slot order; the comment on each gives its slot.

#include "oxcamera.h"
#include "oxdrawable.h"
#include "oxeffects.h"
#include "oxglcontext.h"
#include "oxscenetypes.h"
#include "oxselectfilter.h"

#include "oxcolor.h"
#include "oxgeoboundbox.h"
#include "oxgeopoint.h"
#include "oxgeoray.h"
#include "oxgeovector.h"
#include "oxrefptr.h"

#include <cstdint>
#include <vector>

namespace oxGraphics {

class iScene : public virtual ox::iRefObj {
public:
    virtual void initGfxApiState() = 0;                                                           // 3
    virtual void setupForPainting(int width, int height) = 0;                                     // 4
    virtual void setupForPainting() = 0;                                                          // 5
    /// Window pixels (y down) of a world point.
    virtual oxGeo::point2d worldToWinCoordinates(const oxGeo::point3d& world) const = 0;         // 6
    virtual void resize(int width, int height, double viewSize, int offsetFocusBeginWidth,        // 7
                        int offsetFocusBeginHeight, int offsetFocusEndWidth, int offsetFocusEndHeight) = 0;
    virtual void resizeOffset(int offsetFocusBeginWidth, int offsetFocusBeginHeight,              // 8
                              int offsetFocusEndWidth, int offsetFocusEndHeight) = 0;
    virtual int viewportHeight() const = 0;                                                       // 9
    virtual int viewportWidth() const = 0;                                                        // 10
    virtual int offsetFocusBeginHeight() const = 0;                                               // 11
    virtual int offsetFocusBeginWidth() const = 0;                                                // 12
    virtual int offsetFocusEndHeight() const = 0;                                                 // 13
    virtual int offsetFocusEndWidth() const = 0;                                                  // 14
    virtual void setColor(const ox::rgbColor& color, unsigned int colorIds) = 0;                  // 15
    virtual void setUseTransparentBackground(bool use) = 0;                                       // 16
    virtual void setUseBackgroundImage(bool use, const unsigned char* pixels, int width,          // 17
                                       int height, int format) = 0;
    virtual void setBackgroundImageTrans(double transparency) = 0;                                // 18
    virtual void setBackgroundImageSizing(int sizing) = 0;                                        // 19
    virtual void setBackgroundImageAlignment(int alignment) = 0;                                  // 20
    virtual void setTempBackgroundImage(bool use, const unsigned char* pixels, int width,         // 21
                                        int height, int format) = 0;
    virtual bool tempBackgroundImageUsed() const = 0;                                             // 22
    virtual int multisamples() const = 0;                                                         // 23
    virtual void setMultisamples(int samples) = 0;                                                // 24
    virtual void initFBOWithMultiSampling(int width, int height) = 0;                             // 25
    virtual void refreshFBOWithMultiSampling(int width, int height) = 0;                          // 26
    virtual void refreshFBOWithMultiSampling() = 0;                                               // 27
    virtual void renderBefore() = 0;                                                              // 28
    virtual void renderAfter() = 0;                                                               // 29
    /// The current image as BGRA bytes, bottom row first; the caller frees it with delete[].
    virtual char* writeToBuffer() const = 0;                                                      // 30
    virtual void moveCamera(int x1, int y1, int x2, int y2) = 0;                                  // 31
    virtual void saveView(iSavedView** out) = 0;                                                  // 32
    virtual void restoreView(iSavedView* view) = 0;                                               // 33
    virtual void rotateCamera(int x1, int y1, int x2, int y2) = 0;                                // 34
    virtual void rotateCamera(int x1, int y1, int x2, int y2, const oxGeo::point3d& pivot) = 0;   // 35
    virtual void zoom(int x1, int y1, int x2, int y2) = 0;                                        // 36
    virtual void zoomDynamic(int x, int y, double factor) = 0;                                    // 37
    virtual void zoomWheel(int x, int y, bool zoomIn) = 0;                                        // 38
    virtual void getViewVectors(int x, int y, oxGeo::vector3d& viewDirection,                     // 39
                                oxGeo::vector3d& upDirection) const = 0;
    /// The eye-space size that the longer window side spans.
    virtual double viewSize() const = 0;                                                          // 40
    virtual void setViewSize(double viewSize) = 0;                                                // 41
    /// Frames `box` in the usable view area, keeping the view direction; `margin` is the
    /// fraction of the area left free around it.
    virtual void fitBox(const oxGeo::boundBox3d& box, double margin) = 0;                         // 42
    /// Pans so that `world` lands in the centre of the usable view area.
    virtual void centreOn(const oxGeo::point3d& world) = 0;                                       // 43
    /// The world point on the view axis through the centre of the usable view area that is
    /// nearest to `reference`.
    virtual oxGeo::point3d viewCentreNear(const oxGeo::point3d& reference) const = 0;            // 44
    /// Sets the camera's rotation, translation and scale to the interpolation at f in [0, 1].
    virtual void setCameraInterpolation(const cameraModelState_t& from, const cameraModelState_t& to,
                                        double f) = 0;                                            // 45
    virtual cameraModelState_t cameraModelState() const = 0;                                      // 46
    virtual void setCameraModelState(const cameraModelState_t& state) = 0;                        // 47
    virtual void addBoundBoxProvider(const ox::refPtr<iBoundBoxProvider>& provider) = 0;          // 48
    /// The union of the providers' boxes (only those of selected drawables when asked).
    virtual oxGeo::boundBox3d providersBoundingBox(bool selectedOnly) const = 0;                  // 49
    /// Rectangle selection in window pixels (y down): the hits in the driver's order. `flags`:
    /// kPickSelectionMode asks OpenGL selection mode itself (oxscenetypes.h).
    virtual void pickSelectRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                std::vector<pickHit_t>& hits, int flags) = 0;                     // 50
    virtual void add(const ox::refPtr<iDrawable>& drawable) = 0;                                  // 51
    /// Removes the drawable; `forget` also drops it from the selection and modify-enabled sets.
    virtual void remove(const ox::refPtr<iDrawable>& drawable, bool forget) = 0;                  // 52
    virtual void clear() = 0;                                                                     // 53
    virtual ox::refPtr<iCamera> camera() const = 0;                                               // 54
    /// Switches the camera between look-at mode and the planar angles mode.
    virtual void setCameraAnglesMode(bool anglesMode) = 0;                                        // 55
    virtual bool getViewRayAt(int x, int y, oxGeo::ray3d& out) const = 0;                         // 56
    virtual void draw() = 0;                                                                      // 57
    virtual void drawRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) = 0; // 58
    virtual void setRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) = 0; // 59
    virtual bool clearRubberRect() = 0;                                                           // 60
    /// Every hit record in the rectangle that `filter` keeps (null: all), nearest first.
    virtual std::vector<pickHit_t> pickSelectInRect(unsigned int x1, unsigned int y1, unsigned int x2,
                                                    unsigned int y2, const iSelectFilter* filter) = 0; // 61
    /// The nearest hit `filter` keeps and the world point under the rectangle's centre at its
    /// depth; false when nothing was kept.
    virtual bool getFirstHitPointInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                        const iSelectFilter* filter, ox::refPtr<iDrawable>& hit,
                                        oxGeo::point3d& point) = 0;                               // 62
    virtual void setPreferredPickTypes(const std::vector<std::string>& typeNames) = 0;            // 63
    virtual void setSelected(const ox::refPtr<iDrawable>& drawable, bool selected) = 0;           // 64
    virtual bool isSelected(const ox::refPtr<iDrawable>& drawable) const = 0;                     // 65
    virtual void clearSelection() = 0;                                                            // 66
    virtual void regenerate() = 0;                                                                // 67
    virtual void setModifyEnabled(const ox::refPtr<iDrawable>& drawable, bool enabled) = 0;       // 68
    virtual bool isModifyEnabled(const ox::refPtr<iDrawable>& drawable) const = 0;                // 69
    virtual ox::refPtr<iGlContext> glContext() const = 0;                                         // 70
    virtual const std::vector<std::string>& preferredPickTypes() const = 0;                       // 71
    /// The drawable being moved interactively; the opaque pass leaves it out. Null for none.
    virtual void setModifiedDrawable(const ox::refPtr<iDrawable>& drawable) = 0;                  // 72
    /// The scene's own offscreen targets (zero names when it has none).
    virtual offscreenTargets_t offscreenTargets() const = 0;                                      // 73
    virtual bool checkFBO() = 0;                                                                  // 74
    virtual int actualMultisamples() const = 0;                                                   // 75
    virtual std::vector<ox::refPtr<iDrawable>> drawables() const = 0;                             // 76
    virtual ox::rgbColor color(unsigned int colorId) const = 0;                                   // 77
    /// Whether frames have a complete place to go (see scene::targetsComplete).
    virtual bool targetsComplete() const = 0;                                                     // 78
    /// Effects of one drawable; default effects remove its entry.
    virtual void setDrawableEffects(const ox::refPtr<iDrawable>& drawable, const drawableEffects_t& effects) = 0; // 79
    virtual drawableEffects_t drawableEffects(const ox::refPtr<iDrawable>& drawable) const = 0;  // 80
    /// Effects of the whole frame; values out of range are clamped.
    virtual void setSceneEffects(const sceneEffects_t& effects) = 0;                              // 81
    virtual sceneEffects_t sceneEffects() const = 0;                                              // 82
    /// Drawables that make the frame's mask; empty for none. They are not drawn in the frame.
    virtual void setMaskDrawables(const std::vector<ox::refPtr<iDrawable>>& drawables) = 0;       // 83
    virtual std::vector<ox::refPtr<iDrawable>> maskDrawables() const = 0;                         // 84
    /// Whether rectangle selections answer from the CPU captures (true) or always use selection mode.
    virtual void setPickAccelerated(bool accelerated) = 0;                                        // 85
    virtual bool isPickAccelerated() const = 0;                                                   // 86
    /// Every selected drawable, in the scene or not.
    virtual std::vector<ox::refPtr<iDrawable>> selectedDrawables() const = 0;                     // 87
};

} // namespace oxGraphics
