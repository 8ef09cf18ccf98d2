#include "gloutlinepass.h"

#include "glstate/glscopedstate.h"

namespace oxGraphics::openGL {

void glOutlinePass::draw(const std::vector<ox::refPtr<iDrawable>>& drawables, const ox::rgbColor& color,
                         int widthPixels, const programs_t& programs, iDrawerHost* host, int width, int height) {
    if (drawables.empty() || !programs.flat || !programs.ring) return;
    if (!drawCoverage(mCoverage, drawables, *programs.flat, host, kEffectTagOutline, eRendermode::outline, width,
                      height))
        return;
    const glTextureBindingScope coverageUnit(GL_TEXTURE1, GL_TEXTURE_2D, mCoverage.texture());
    const glColorMaskScope allChannels(true, true, true, true);
    const glCapabilityScope noBlending(GL_BLEND, false);
    const glCapabilityScope depthTest(GL_DEPTH_TEST, true);
    // The ring lies on the near plane: it passes everywhere but where a mask put the near plane.
    const glDepthFuncScope less(GL_LESS);
    const glDepthMaskScope noDepthWrites(false);
    programs.ring->activate();
    programs.ring->setUniformInt("u_coverageTexture", 1);
    programs.ring->setUniformFloat4("u_outlineColor", color.red() / 255.0f, color.green() / 255.0f,
                                    color.blue() / 255.0f, 1.0f);
    programs.ring->setUniformInt("u_outlineWidth", widthPixels);
    drawViewportQuad(mQuad, *programs.ring);
    programs.ring->deactivate();
}

void glOutlinePass::release() {
    mCoverage.release();
    mQuad.reset();
}

void glOutlinePass::abandon() {
    mCoverage.abandon();
    mQuad.reset();
}

} // namespace oxGraphics::openGL
