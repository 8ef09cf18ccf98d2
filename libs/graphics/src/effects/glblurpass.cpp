#include "glblurpass.h"

#include "glcoveragedraw.h"
#include "glstate/glscopedstate.h"
#include "scene/glopaquepass.h"

#include "oxeffects.h"

namespace oxGraphics::openGL {

bool glBlurPass::bringTargets(int width, int height) {
    return mLayer.bringTo(width, height) && mScratch.bringTo(width, height);
}

void glBlurPass::drawBlurred(const std::vector<ox::refPtr<iDrawable>>& drawables, int radius,
                             const programs_t& programs, iDrawerHost* host, int width, int height) {
    if (drawables.empty() || !programs.standard || !programs.blur || !bringTargets(width, height)) return;
    const GLuint frame = glstate::readName(GL_DRAW_FRAMEBUFFER_BINDING);
    // A window's depth can be copied when it has depth and stencil and no samples of its own.
    const bool windowDepth = frame == 0 && glstate::readInteger(GL_SAMPLE_BUFFERS) == 0 &&
                             glstate::readInteger(GL_DEPTH_BITS) > 0 && glstate::readInteger(GL_STENCIL_BITS) > 0;
    {
        const glFramebufferBindingScope bindings(GL_DRAW_FRAMEBUFFER, mLayer.framebuffer());
        const glViewportScope viewport(0, 0, width, height);
        const glColorMaskScope allChannels(true, true, true, true);
        const glDepthMaskScope depthWrites(true);
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClearDepth(1.0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, frame);
        if (frame != 0) {
            glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_DEPTH_BUFFER_BIT, GL_NEAREST);
        } else if (windowDepth) {
            // A blit would need the window's exact depth format; a copy into a texture converts.
            const glTextureBindingScope depth(GL_TEXTURE0, GL_TEXTURE_2D, mLayer.depthTexture());
            glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, width, height);
        }
        programs.standard->activate();
        programs.standard->setUniformFloat("u_overrideWeight", 0.0f);
        glAuxRenderDrawer drawer(host);
        drawer.setAuxTag(kEffectTagBlur);
        for (const auto& drawable : drawables) drawDrawable(drawer, drawable, eRendermode::blurred, programs.standard);
        if (!drawer.deferredDrawables().empty()) {
            // Alpha as coverage, so the layer stays premultiplied for the blend over the frame.
            const glBlendScope blending;
            const glDepthMaskScope noDepthWrites(false);
            glEnable(GL_BLEND);
            glBlendEquation(GL_FUNC_ADD);
            glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
            drawer.beginTransparentPass(false);
            for (const auto& drawable : drawer.deferredDrawables())
                drawDrawable(drawer, drawable, eRendermode::blurred, programs.standard);
            drawer.endTransparentPass(false);
        }
        drawer.setCurrentDrawable({});
        programs.standard->deactivate();
    }
    blurInto(mLayer.texture(), frame, true, radius, *programs.blur, width, height);
}

void glBlurPass::blurFrame(int radius, shaderProgram* blur, int width, int height) {
    if (!blur || !bringTargets(width, height)) return;
    const GLuint frame = glstate::readName(GL_DRAW_FRAMEBUFFER_BINDING);
    {
        const glFramebufferBindingScope bindings(GL_DRAW_FRAMEBUFFER, mLayer.framebuffer());
        glBindFramebuffer(GL_READ_FRAMEBUFFER, frame);
        glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    }
    blurInto(mLayer.texture(), frame, false, radius, *blur, width, height);
}

void glBlurPass::blurInto(GLuint source, GLuint frame, bool blend, int radius, shaderProgram& blur, int width,
                          int height) {
    const glCapabilityScope noDepthTest(GL_DEPTH_TEST, false);
    const glColorMaskScope allChannels(true, true, true, true);
    const glBlendScope blending;
    glDisable(GL_BLEND);
    blur.activate();
    blur.setUniformInt("u_texture", 1);
    blur.setUniformInt("u_blurRadius", radius);
    {
        const glFramebufferBindingScope bindings(GL_DRAW_FRAMEBUFFER, mScratch.framebuffer());
        const glViewportScope viewport(0, 0, width, height);
        const glTextureBindingScope sourceUnit(GL_TEXTURE1, GL_TEXTURE_2D, source);
        blur.setUniformInt2("u_blurStep", 1, 0);
        drawViewportQuad(mQuad, blur);
    }
    {
        const glFramebufferBindingScope bindings(GL_DRAW_FRAMEBUFFER, frame);
        const glTextureBindingScope scratchUnit(GL_TEXTURE1, GL_TEXTURE_2D, mScratch.texture());
        if (blend) {
            glEnable(GL_BLEND);
            glBlendEquation(GL_FUNC_ADD);
            glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
        }
        blur.setUniformInt2("u_blurStep", 0, 1);
        drawViewportQuad(mQuad, blur);
    }
    blur.deactivate();
}

void glBlurPass::release() {
    mLayer.release();
    mScratch.release();
    mQuad.reset();
}

void glBlurPass::abandon() {
    mLayer.abandon();
    mScratch.abandon();
    mQuad.reset();
}

} // namespace oxGraphics::openGL
