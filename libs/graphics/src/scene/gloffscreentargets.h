#pragma once
// The frame's offscreen targets: a multisampled framebuffer (colour and depth-stencil
// renderbuffers) that a frame is drawn into, and the single-sampled resolve framebuffer whose
// colour is a rectangle texture, shown on the window and read back. Names of 0 mean the object
// does not exist.
#include "glstate/globjectname.h"

#include <functional>

namespace oxGraphics::openGL {

class glOffscreenTargets {
public:
    /// Answers whether the framebuffer bound to GL_FRAMEBUFFER is complete (and logs why not).
    using completenessCheck = std::function<bool()>;

    struct buildResult_t {
        bool resolveComplete = false;
        bool multisampledComplete = false;
        bool outOfMemory = false;  // the driver said so although it may call the targets complete
    };

    glOffscreenTargets() = default;
    glOffscreenTargets(const glOffscreenTargets&) = delete;
    glOffscreenTargets& operator=(const glOffscreenTargets&) = delete;

    /// Makes every target at width × height, the multisampled ones with `samples` samples (at
    /// most what the driver stores; 0 makes ordinary renderbuffers), after deleting any there
    /// are. Leaves framebuffer 0 bound. The owning context must be current.
    buildResult_t build(int width, int height, int samples, const completenessCheck& check);
    /// Deletes every target (owning context current).
    void release();
    /// Forgets every target without GL calls: their context is gone and took them along.
    void abandon();
    /// The multisampled frame resolved into the resolve framebuffer, over width × height.
    void resolve(int width, int height) const;

    bool exist() const { return static_cast<bool>(mMultisampledFbo) || static_cast<bool>(mResolveFbo); }
    /// The sample count the driver granted (0 when there are no multisampled targets).
    int actualSamples() const { return mActualSamples; }
    int width() const { return mWidth; }
    int height() const { return mHeight; }
    unsigned int multisampledFramebuffer() const { return mMultisampledFbo.get(); }
    unsigned int resolveFramebuffer() const { return mResolveFbo.get(); }
    unsigned int resolveTexture() const { return mResolveTexture.get(); }

private:
    glFramebufferName mMultisampledFbo;
    glFramebufferName mResolveFbo;
    glRenderbufferName mColorRenderbuffer;
    glRenderbufferName mDepthStencilRenderbuffer;
    glTextureName mResolveTexture;
    int mActualSamples = 0;
    int mWidth = 0;
    int mHeight = 0;
};

} // namespace oxGraphics::openGL
