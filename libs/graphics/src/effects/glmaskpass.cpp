#include "glmaskpass.h"

#include "glstate/glscopedstate.h"

namespace oxGraphics::openGL {

void glMaskPass::apply(const std::vector<ox::refPtr<iDrawable>>& maskDrawables, eMaskMode mode,
                       const programs_t& programs, iDrawerHost* host, int width, int height) {
    if (maskDrawables.empty() || !programs.flat || !programs.mask) return;
    if (!drawCoverage(mTarget, maskDrawables, *programs.flat, host, kEffectTagMask, eRendermode::mask, width, height))
        return;
    const glTextureBindingScope maskUnit(GL_TEXTURE1, GL_TEXTURE_2D, mTarget.texture());
    const glColorMaskScope noColor(false, false, false, false);
    const glCapabilityScope depthTest(GL_DEPTH_TEST, true);
    const glDepthFuncScope always(GL_ALWAYS);
    const glDepthMaskScope depthWrites(true);
    programs.mask->activate();
    programs.mask->setUniformInt("u_maskTexture", 1);
    programs.mask->setUniformInt("u_hideCovered", mode == eMaskMode::hideCovered ? 1 : 0);
    drawViewportQuad(mQuad, *programs.mask);
    programs.mask->deactivate();
}

void glMaskPass::release() {
    mTarget.release();
    mQuad.reset();
}

void glMaskPass::abandon() {
    mTarget.abandon();
    mQuad.reset();  // checks its own context: deletes nothing elsewhere
}

} // namespace oxGraphics::openGL
