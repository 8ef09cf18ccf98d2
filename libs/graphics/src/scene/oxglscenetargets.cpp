// glScene: the multisampled offscreen targets and their resolve step.
#include "oxglscene.h"

#include "oxlog.h"

#include <GL/glew.h>

#include <algorithm>

namespace oxGraphics::openGL {
namespace {
constexpr const char* kInitLogger = "oxGraphics::openGL::glScene::initFBOWithMultiSampling";
constexpr const char* kCheckLogger = "oxGraphics::openGL::glScene::checkFBO";
} // namespace

void glScene::setMultisamples(int samples) {
    if (contextAlive()) mRequestedSamples = samples; // takes effect at the next refresh
}

void glScene::initFBOWithMultiSampling(int width, int height) {
    if (!makeCurrent()) return;
    if (mRequestedSamples < 1 && mPresentToWindow) return; // frames go straight into the back buffer
    if (width == 0 || height == 0) return;
    const auto built = mTargets.build(width, height, mRequestedSamples, [this] { return checkFBO(); });
    if (!built.resolveComplete) OX_LOG_DEBUG(kInitLogger, L"InitFBOWithMultiSampling - CheckFBO 1 failed");
    if (!built.multisampledComplete) OX_LOG_DEBUG(kInitLogger, L"InitFBOWithMultiSampling - CheckFBO 2 failed");
    // A driver may report a target complete whose storage it could not allocate.
    bool outOfMemory = false;
    for (GLenum error = glGetError(); error != GL_NO_ERROR; error = glGetError()) {
        OX_LOG_DEBUG(kInitLogger, L"InitFBOWithMultiSampling - glGetError %i", static_cast<int>(error));
        outOfMemory = outOfMemory || error == GL_OUT_OF_MEMORY;
    }
    mTargetsComplete = built.resolveComplete && built.multisampledComplete && !outOfMemory;
    bringTransparencyTargets(std::max(mTargets.actualSamples(), 1));
}

void glScene::bringTransparencyTargets(int samples) {
    if (mViewportWidth <= 0 || mViewportHeight <= 0) return;
    mTransparencyPass.targets().bringTo(mViewportWidth, mViewportHeight, samples);
}

void glScene::releaseFBOWithMultiSampling() {
    if (!makeCurrent()) return;
    mTargets.release();
    mScreen.release(); // the last screen quad goes with the targets
    mTargetsComplete = false;
    // Initialisation returns early without multisampling, so the transparency targets follow here.
    if (mRequestedSamples <= 0) bringTransparencyTargets(1);
}

void glScene::refreshFBOWithMultiSampling(int width, int height) {
    if (!makeCurrent()) return;
    releaseFBOWithMultiSampling();
    initFBOWithMultiSampling(width, height);
}

void glScene::refreshFBOWithMultiSampling() { refreshFBOWithMultiSampling(viewportWidth(), viewportHeight()); }

bool glScene::checkFBO() {
    if (!makeCurrent()) return false;
    const GLenum status = glCheckFramebufferStatusEXT(GL_FRAMEBUFFER);
    if (status != GL_FRAMEBUFFER_COMPLETE) {
        OX_LOG_DEBUG(kCheckLogger, L"glCheckFramebufferStatusEXT returned error: %i", static_cast<int>(status));
        return false;
    }
    return true;
}

bool glScene::targetsComplete() const {
    if (!contextAlive()) return false;
    // Without multisampling a window scene draws straight into its back buffer.
    if (mRequestedSamples < 1 && mPresentToWindow) return mViewportWidth > 0 && mViewportHeight > 0;
    return mTargetsComplete;
}

offscreenTargets_t glScene::offscreenTargets() const {
    if (!mTargets.exist()) return {};
    return {mTargets.multisampledFramebuffer(), mTargets.resolveFramebuffer(), mTargets.resolveTexture(),
            mTargets.width(), mTargets.height()};
}

} // namespace oxGraphics::openGL
