#pragma once
// Blur: of chosen drawables, or of the whole frame. A separable Gaussian in two screen passes
// ("gaussianBlurShaderProgram"), across into a scratch target and down into the frame.
//
// Blurred drawables are drawn apart, into a layer ("blurLayerFbo") that starts transparent and
// holds a copy of the frame's depth, so nearer sharp drawables still hide them; the blurred
// layer is then laid over the frame (premultiplied alpha), its edges soft. They write no depth
// into the frame. A frame drawn straight into a window gets its depth copied too; only a window
// without depth and stencil, or with samples of its own, leaves the blurred drawables over the
// whole frame. Runs on the shader path only.
#include "gleffecttarget.h"

#include "drawing/glrenderdrawer.h"
#include "oxdrawable.h"
#include "oxshader.h"
#include "resources/oxglscreenquad.h"

#include <memory>
#include <vector>

namespace oxGraphics::openGL {

class glBlurPass {
public:
    struct programs_t {
        shaderProgram* standard = nullptr;  ///< the standard lighting program
        shaderProgram* blur = nullptr;      ///< "gaussianBlurShaderProgram"
    };

    /// Draws `drawables` blurred by `radius` pixels into the frame of width × height pixels bound
    /// for drawing. Ends with no program bound; every other state it changes is put back.
    void drawBlurred(const std::vector<ox::refPtr<iDrawable>>& drawables, int radius, const programs_t& programs,
                     iDrawerHost* host, int width, int height);
    /// Blurs everything the frame bound for drawing shows by `radius` pixels.
    void blurFrame(int radius, shaderProgram* blur, int width, int height);

    void release();
    void abandon();

private:
    bool bringTargets(int width, int height);
    /// `source` blurred across into the scratch target, then down into `frame` (blended over it
    /// with premultiplied alpha when `blend`).
    void blurInto(GLuint source, GLuint frame, bool blend, int radius, shaderProgram& blur, int width, int height);

    glEffectTarget mLayer{"blurLayerFbo", glEffectTarget::eFormat::color, true};
    glEffectTarget mScratch{"blurScratchFbo", glEffectTarget::eFormat::color, false};
    std::unique_ptr<glScreenQuad> mQuad;
};

} // namespace oxGraphics::openGL
