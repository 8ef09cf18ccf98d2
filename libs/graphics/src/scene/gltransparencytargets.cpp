#include "gltransparencytargets.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstdint>

namespace oxGraphics::openGL {
namespace {

std::uint16_t side(int pixels) { return static_cast<std::uint16_t>(std::clamp(pixels, 0, 0xFFFF)); }
std::uint8_t sampleCount(int samples) { return static_cast<std::uint8_t>(std::clamp(samples, 1, 0xFF)); }

void label(GLenum identifier, std::uint32_t name, const char* text) {
    if (name != 0 && GLEW_KHR_debug) glObjectLabel(identifier, name, -1, text);
}

} // namespace

glTransparencyTargets::glTransparencyTargets(textureManager& manager) : mManager(manager) {}

ox::refPtr<iTexture> glTransparencyTargets::create(texDesc_t& desc, int width, int height, int samples,
                                                   const char* text) {
    desc.width = side(width);
    desc.height = side(height);
    desc.numSamples = sampleCount(samples);
    desc.kind = samples == 1 ? eTextureKind::texture2d : eTextureKind::texture2dMultisample;
    auto texture = mManager.createTexture(desc);
    if (texture) label(GL_TEXTURE, texture->handle(), text);
    return texture;
}

bool glTransparencyTargets::bringTo(int width, int height, int samples) {
    samples = std::max(samples, 1);
    if (mAccum && mAccumDesc.width == side(width) && mAccumDesc.height == side(height) &&
        mAccumDesc.numSamples == sampleCount(samples))
        return false;
    ++mRebuilds;

    // Framebuffers first: they keep their attachments alive.
    mFramebuffer.reset();
    mResolveFramebuffer.reset();
    mAccum.reset();
    mAccum = create(mAccumDesc, width, height, samples, kAccumTexture);
    mRevealage.reset();
    mRevealage = create(mRevealageDesc, width, height, samples, kRevealageTexture);

    mDepthDesc.width = side(width);
    mDepthDesc.height = side(height);
    mDepthDesc.numSamples = sampleCount(samples);
    mDepth.reset();
    mDepth = mManager.createRenderbuffer(mDepthDesc);
    if (mDepth) label(GL_RENDERBUFFER, mDepth->handle(), kDepthRenderbuffer);
    if (mAccum && mRevealage)
        mFramebuffer = mManager.createFramebuffer({{mAccum, 0}, {mRevealage, 1}}, mDepth);
    if (mFramebuffer) label(GL_FRAMEBUFFER, mFramebuffer->handle(), kFramebuffer);

    mAccumResolve.reset();
    mRevealageResolve.reset();
    if (samples >= 2) {
        // The resolve targets are single-sampled: the multisampled accumulation is blitted into them.
        mAccumResolve = create(mAccumResolveDesc, width, height, 1, kAccumResolveTexture);
        mRevealageResolve = create(mRevealageResolveDesc, width, height, 1, kRevealageResolveTexture);
        if (mAccumResolve && mRevealageResolve)
            mResolveFramebuffer = mManager.createFramebuffer({{mAccumResolve, 0}, {mRevealageResolve, 1}}, {});
        if (mResolveFramebuffer) label(GL_FRAMEBUFFER, mResolveFramebuffer->handle(), kResolveFramebuffer);
    }
    return true;
}

void glTransparencyTargets::release() {
    mFramebuffer.reset();
    mResolveFramebuffer.reset();
    mAccum.reset();
    mRevealage.reset();
    mAccumResolve.reset();
    mRevealageResolve.reset();
    mDepth.reset();
    mAccumDesc.width = mAccumDesc.height = 0;
}

} // namespace oxGraphics::openGL
