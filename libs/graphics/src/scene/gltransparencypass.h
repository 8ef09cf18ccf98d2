#pragma once
// The transparent pass of a frame: the drawables the render drawer held back in the opaque pass,
// drawn after it.
//
// With the standard program, as blended order-independent transparency: the frame's depth is
// copied into the transparency targets, the transparent fragments accumulate there (a weighted
// sum of colours and the product of their transparencies, neither of which depends on drawing
// order), and one screen quad lays the result over the frame. Without shaders, or when the
// targets cannot be used for this frame (no storage, a frame buffer whose sample count differs),
// the drawables are blended back to front by the centres of their boxes instead.
//
// GL state afterwards: blending off, depth writes on, depth test on, no program bound; the blend
// equation is GL_FUNC_ADD and the blend factors are those the pass used last. Culling, the
// framebuffer bindings, the viewport and the texture units are as they were.
#include "gltransparencytargets.h"

#include "drawing/glrenderdrawer.h"
#include "oxgeomatrix.h"
#include "resources/oxglscreenquad.h"
#include "oxshader.h"

#include <functional>
#include <memory>
#include <vector>

namespace oxGraphics::openGL {

/// What the pass shows instead of compositing, for looking into the targets while debugging.
enum class eTransparencyDebugView { off = 0, averageColor = 1, revealage = 2, weight = 3 };

class glTransparencyPass {
public:
    /// Draws one drawable of the pass through the render drawer with the program in use.
    using drawFunction = std::function<void(const ox::refPtr<iDrawable>&)>;

    struct programs_t {
        shaderProgram* standard = nullptr;   ///< the opaque pass's, active on entry; null: fixed function
        shaderProgram* standardBlended = nullptr;  ///< its variant that accumulates instead of blending
        shaderProgram* composite = nullptr;  ///< "blendedOit2dShaderProgram"
        shaderProgram* debugView = nullptr;  ///< "blendedOitDebugVisShaderProgram"
    };

    explicit glTransparencyPass(textureManager& manager);

    glTransparencyTargets& targets() { return mTargets; }
    const glTransparencyTargets& targets() const { return mTargets; }

    /// Runs the pass for `drawables` (in any order) in a frame of width × height pixels whose
    /// eye transform is `modelView`. The standard program, when given, must be active; the pass
    /// ends with no program bound.
    void draw(glRenderDrawer& render, const glRenderDrawer::deferredSet& drawables, const programs_t& programs,
              const oxGeo::matrix3d& modelView, int width, int height, const drawFunction& drawOne);

    void setDebugView(eTransparencyDebugView view) { mDebugView = view; }
    eTransparencyDebugView debugView() const { return mDebugView; }
    /// Whether the last pass blended in order-independent form (false: sorted or no pass).
    bool lastPassWasOrderIndependent() const { return mLastOrderIndependent; }
    /// Deletes the pass's GL objects; the owning context must be current.
    void release();
    /// Lets go of them when their context is gone (each checks its own context: no GL call).
    void abandon() { release(); }

private:
    bool canBlendOrderIndependent(const programs_t& programs, int width, int height);
    void drawOrderIndependent(glRenderDrawer& render, const glRenderDrawer::deferredSet& drawables,
                              const programs_t& programs, int width, int height, const drawFunction& drawOne);
    void drawSorted(glRenderDrawer& render, const glRenderDrawer::deferredSet& drawables,
                    const oxGeo::matrix3d& modelView, const drawFunction& drawOne);
    void clearTargets(shaderProgram& composite);
    void resolveTargets(int width, int height);
    void composite(const programs_t& programs, int width, int height);

    glTransparencyTargets mTargets;
    std::unique_ptr<glScreenQuad> mQuad;  // vertex arrays are not shared: made in the scene's context
    eTransparencyDebugView mDebugView = eTransparencyDebugView::off;
    bool mLastOrderIndependent = false;
};

} // namespace oxGraphics::openGL
