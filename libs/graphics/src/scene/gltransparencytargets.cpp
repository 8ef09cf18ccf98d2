#include "gltransparencytargets.h"

#include "glstate/glscopedstate.h"

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

// A framebuffer of the pass is drawn into through both colour attachments at once: the fragment
// stage writes the accumulation to the first and the weight to the second.
ox::refPtr<iFbo> drawingIntoBoth(ox::refPtr<iFbo> framebuffer) {
    if (!framebuffer) return framebuffer;
    const glFramebufferBindingScope bound(GL_DRAW_FRAMEBUFFER, framebuffer->handle());
    const GLenum buffers[2] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1};
    glDrawBuffers(2, buffers);
    return framebuffer;
}

} // namespace

glTransparencyTargets::glTransparencyTargets(textureManager& manager) : mManager(manager) {}

void glTransparencyTargets::describe(texDesc_t& desc, int width, int height, int samples) const {
    desc.width = side(width);
    desc.height = side(height);
    desc.numSamples = sampleCount(samples);
    desc.kind = samples == 1 ? eTextureKind::texture2d : eTextureKind::texture2dMultisample;
}

ox::refPtr<iTexture> glTransparencyTargets::create(const texDesc_t& desc, const char* text) {
    auto texture = mManager.createTexture(desc);
    if (texture) label(GL_TEXTURE, texture->handle(), text);
    return texture;
}

bool glTransparencyTargets::bringTo(int width, int height, int samples) {
    samples = std::max(samples, 1);
    if (mAccumDesc.width != 0 && mAccumDesc.width == side(width) && mAccumDesc.height == side(height) &&
        mAccumDesc.numSamples == sampleCount(samples))
        return false;
    describe(mAccumDesc, width, height, samples);
    describe(mRevealageDesc, width, height, samples);
    describe(mAccumResolveDesc, width, height, 1);
    describe(mRevealageResolveDesc, width, height, 1);
    mDepthDesc.width = side(width);
    mDepthDesc.height = side(height);
    mDepthDesc.numSamples = sampleCount(samples);
    if (isAllocated()) build();
    return true;
}

bool glTransparencyTargets::fitDriverLimits() const {
    GLint largestTexture = 0, largestRenderbuffer = 0, samples = 0, colorSamples = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largestTexture);
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &largestRenderbuffer);
    glGetIntegerv(GL_MAX_SAMPLES, &samples);
    glGetIntegerv(GL_MAX_COLOR_TEXTURE_SAMPLES, &colorSamples);
    const int side = std::max(mAccumDesc.width, mAccumDesc.height);
    return side <= std::min(largestTexture, largestRenderbuffer) &&
           (mAccumDesc.numSamples < 2 || mAccumDesc.numSamples <= std::min(samples, colorSamples));
}

bool glTransparencyTargets::allocate() {
    // Targets the driver cannot make would only raise GL errors; the pass then blends sorted.
    if (!isAllocated() && mAccumDesc.width != 0 && mAccumDesc.height != 0 && fitDriverLimits()) build();
    return isAllocated() && (mAccumDesc.numSamples < 2 || mResolveFramebuffer);
}

void glTransparencyTargets::build() {
    ++mRebuilds;
    const glPixelStore noUpload(glPixelStore::eDirection::unpack); // a host's pixel buffer is not our data
    // Framebuffers first: they keep their attachments alive.
    mFramebuffer.reset();
    mResolveFramebuffer.reset();
    mAccum.reset();
    mRevealage.reset();
    mDepth.reset();
    mAccumResolve.reset();
    mRevealageResolve.reset();

    mAccum = create(mAccumDesc, kAccumTexture);
    mRevealage = create(mRevealageDesc, kRevealageTexture);
    mDepth = mManager.createRenderbuffer(mDepthDesc);
    if (mDepth) label(GL_RENDERBUFFER, mDepth->handle(), kDepthRenderbuffer);
    if (mAccum && mRevealage && mDepth)
        mFramebuffer = drawingIntoBoth(mManager.createFramebuffer({{mAccum, 0}, {mRevealage, 1}}, mDepth));
    if (mFramebuffer) label(GL_FRAMEBUFFER, mFramebuffer->handle(), kFramebuffer);

    if (mAccumDesc.numSamples >= 2) {
        // The resolve targets are single-sampled: the multisampled accumulation is blitted into them.
        mAccumResolve = create(mAccumResolveDesc, kAccumResolveTexture);
        mRevealageResolve = create(mRevealageResolveDesc, kRevealageResolveTexture);
        if (mAccumResolve && mRevealageResolve)
            mResolveFramebuffer = drawingIntoBoth(mManager.createFramebuffer({{mAccumResolve, 0}, {mRevealageResolve, 1}}, {}));
        if (mResolveFramebuffer) label(GL_FRAMEBUFFER, mResolveFramebuffer->handle(), kResolveFramebuffer);
    }
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
    mAccumDesc.numSamples = 1;
}

} // namespace oxGraphics::openGL
