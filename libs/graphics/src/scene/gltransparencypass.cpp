#include "gltransparencypass.h"

#include "oxdrawable.h"
#include "glstate/glscopedstate.h"
#include "oxgeoboundbox.h"

#include <GL/glew.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace oxGraphics::openGL {
namespace {

constexpr float kClearAccum[4] = {0.0f, 0.0f, 0.0f, 1.0f};  // no colour yet, fully revealed
constexpr float kClearWeight[4] = {0.0f, 0.0f, 0.0f, 0.0f};
constexpr float kDebugWeightScale = 0.01f;

GLuint boundFramebuffer(GLenum binding) {
    GLint name = 0;
    glGetIntegerv(binding, &name);
    return static_cast<GLuint>(name);
}

} // namespace

glTransparencyPass::glTransparencyPass(textureManager& manager) : mTargets(manager) {}

void glTransparencyPass::release() {
    mTargets.release();
    mQuad.reset();
}

void glTransparencyPass::draw(glRenderDrawer& render, const glRenderDrawer::deferredSet& drawables,
                              const programs_t& programs, const oxGeo::matrix3d& modelView, int width, int height,
                              const drawFunction& drawOne) {
    mLastOrderIndependent = false;
    if (drawables.empty()) {
        if (programs.standard != nullptr) programs.standard->deactivate();
        return;
    }
    const glCapabilityScope noCulling(GL_CULL_FACE, false);
    if (canBlendOrderIndependent(programs, width, height)) {
        drawOrderIndependent(render, drawables, programs, width, height, drawOne);
        mLastOrderIndependent = true;
    } else {
        drawSorted(render, drawables, modelView, drawOne);
    }
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    glEnable(GL_DEPTH_TEST);
    if (programs.standard != nullptr) programs.standard->deactivate();
}

bool glTransparencyPass::canBlendOrderIndependent(const programs_t& programs, int width, int height) {
    if (programs.standard == nullptr || programs.standardBlended == nullptr || programs.composite == nullptr ||
        width <= 0 || height <= 0)
        return false;
    const texDesc_t& desc = mTargets.accumDesc();
    if (desc.width != width || desc.height != height) return false;
    // The depth copy needs the frame and the targets at one sample count.
    GLint frameSamples = 0;
    glGetIntegerv(GL_SAMPLES, &frameSamples);
    if (std::max(frameSamples, 1) != desc.numSamples) return false;
    if (!mTargets.allocate()) return false;
    if (!mQuad) mQuad = std::make_unique<glScreenQuad>();
    return mQuad->isValid();
}

void glTransparencyPass::drawOrderIndependent(glRenderDrawer& render, const glRenderDrawer::deferredSet& drawables,
                                              const programs_t& programs, int width, int height,
                                              const drawFunction& drawOne) {
    const GLuint frame = boundFramebuffer(GL_DRAW_FRAMEBUFFER_BINDING);
    const GLuint targets = mTargets.framebuffer()->handle();

    // The opaque frame's depth, so transparent fragments behind opaque ones are dropped.
    {
        const glFramebufferBindingScope frameBindings;
        glBindFramebuffer(GL_READ_FRAMEBUFFER, frame);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, targets);
        glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_DEPTH_BUFFER_BIT, GL_NEAREST);
    }

    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, targets);
    glDepthMask(GL_FALSE);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendEquation(GL_FUNC_ADD);
    clearTargets(*programs.composite);

    programs.standardBlended->activate();
    glBlendFuncSeparate(GL_ONE, GL_ONE, GL_ZERO, GL_ONE_MINUS_SRC_ALPHA);
    render.beginTransparentPass(false);
    for (const auto& drawable : drawables) drawOne(drawable);
    render.endTransparentPass(false);
    programs.standardBlended->deactivate();

    if (mTargets.accumDesc().numSamples >= 2) resolveTargets(width, height);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, frame);
    composite(programs, width, height);
}

void glTransparencyPass::clearTargets(shaderProgram& program) {
    // Drawn rather than glClear'ed, so that both targets get their own start value in one go.
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL); // what the frame drew before may have left lines
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    program.activate();
    program.setUniformInt("u_isOitClearPass", 1);
    program.setUniformVec4("u_oitClearColorAccum", kClearAccum);
    program.setUniformVec4("u_oitClearColorRevealage", kClearWeight);
    program.setUniformFloat4("u_scaleVec2OffsetVec2", 1.0f, 1.0f, 0.0f, 0.0f);
    mQuad->draw();
    program.setUniformInt("u_isOitClearPass", 0);
    program.deactivate();
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
}

void glTransparencyPass::resolveTargets(int width, int height) {
    const GLuint targets = mTargets.framebuffer()->handle();
    const GLuint resolve = mTargets.resolveFramebuffer()->handle();
    const glFramebufferBindingScope frameBindings;
    glBindFramebuffer(GL_READ_FRAMEBUFFER, targets);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, resolve);
    for (const GLenum attachment : {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1}) {
        glReadBuffer(attachment);
        glDrawBuffer(attachment);
        glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    }
    // Both framebuffers go back to reading the first attachment and drawing into both.
    const GLenum both[2] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1};
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    glDrawBuffers(2, both);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, resolve);
    glReadBuffer(GL_COLOR_ATTACHMENT0);
}

void glTransparencyPass::composite(const programs_t& programs, int width, int height) {
    const bool resolved = mTargets.accumDesc().numSamples >= 2;
    const auto& accum = resolved ? mTargets.accumResolveTexture() : mTargets.accumTexture();
    const auto& weight = resolved ? mTargets.revealageResolveTexture() : mTargets.revealageTexture();
    const glTextureBindingScope weightUnit(GL_TEXTURE1, GL_TEXTURE_2D, weight->handle());
    const glTextureBindingScope accumUnit(GL_TEXTURE0, GL_TEXTURE_2D, accum->handle());

    const bool debugging = mDebugView != eTransparencyDebugView::off && programs.debugView != nullptr;
    shaderProgram& program = debugging ? *programs.debugView : *programs.composite;
    glViewport(0, 0, width, height);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL); // a wire-frame drawable leaves lines behind
    glDepthMask(GL_FALSE);
    glDisable(GL_DEPTH_TEST); // the quad lies over everything; the depth copy already culled
    if (debugging) {
        glDisable(GL_BLEND);
    } else {
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    }
    program.activate();
    program.setUniformInt("u_accumTex", 0);
    program.setUniformInt("u_revealageTex", 1);
    program.setUniformFloat4("u_scaleVec2OffsetVec2", 1.0f, 1.0f, 0.0f, 0.0f);
    if (debugging) {
        program.setUniformInt("u_debugView", static_cast<int>(mDebugView));
        program.setUniformFloat("u_weightScale", kDebugWeightScale);
    }
    mQuad->draw();
    program.deactivate();
}

void glTransparencyPass::drawSorted(glRenderDrawer& render, const glRenderDrawer::deferredSet& drawables,
                                    const oxGeo::matrix3d& modelView, const drawFunction& drawOne) {
    // Back to front by the eye depth of each box centre (the eye looks down -z, so the smallest
    // z is the farthest). Drawables without a box have no depth to go by and go first.
    std::vector<std::pair<double, ox::refPtr<iDrawable>>> order;
    order.reserve(drawables.size());
    for (const auto& drawable : drawables) {
        double depth = -std::numeric_limits<double>::infinity();
        if (const auto* provider = dynamic_cast<const iBoundBoxProvider*>(drawable.get())) {
            const oxGeo::boundBox3d box = provider->worldBoundingBox();
            if (box.isValid()) depth = (modelView * box.center()).z();
        }
        order.emplace_back(depth, drawable);
    }
    std::stable_sort(order.begin(), order.end(), [](const auto& a, const auto& b) { return a.first < b.first; });

    render.beginTransparentPass(true);
    // The frame's alpha as "over" has it (1 over an opaque frame), as the composite of the
    // order-independent form leaves it, so a host reading a transparent background gets the same.
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glBlendEquation(GL_FUNC_ADD);
    for (const auto& entry : order) drawOne(entry.second);
    render.endTransparentPass(true);
}

} // namespace oxGraphics::openGL
