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
    deleteOffscreenTargets(); // called twice without a release in between, the old ones would leak

    // Resolve target: a rectangle texture read back and shown by drawTextureToDisplayScreen.
    glGenTextures(1, &mResolveTexture);
    glBindTexture(GL_TEXTURE_RECTANGLE, mResolveTexture);
    glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_RECTANGLE, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glBindTexture(GL_TEXTURE_RECTANGLE, 0);

    glGenFramebuffersEXT(1, &mResolveFbo);
    glBindFramebufferEXT(GL_FRAMEBUFFER, mResolveFbo);
    glFramebufferTexture2DEXT(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, mResolveTexture, 0);
    const bool resolveComplete = checkFBO();
    if (!resolveComplete) OX_LOG_DEBUG(kInitLogger, L"InitFBOWithMultiSampling - CheckFBO 1 failed");

    // A count above what the driver can store would leave the target incomplete and every frame
    // black; the driver may grant fewer samples than asked, so ask for at most its maximum.
    GLint maxSamples = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &maxSamples);
    const GLsizei samples = std::clamp(mRequestedSamples, 0, std::max(maxSamples, 0));
    glGenFramebuffersEXT(1, &mMultisampledFbo);
    glBindFramebufferEXT(GL_FRAMEBUFFER, mMultisampledFbo);
    glGenRenderbuffersEXT(1, &mColorRenderbuffer);
    glBindRenderbufferEXT(GL_RENDERBUFFER, mColorRenderbuffer);
    glRenderbufferStorageMultisampleEXT(GL_RENDERBUFFER, samples, GL_RGBA8, width, height);
    glGetRenderbufferParameterivEXT(GL_RENDERBUFFER, GL_RENDERBUFFER_SAMPLES, &mActualSamples);
    glFramebufferRenderbufferEXT(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, mColorRenderbuffer);
    glGenRenderbuffersEXT(1, &mDepthStencilRenderbuffer);
    glBindRenderbufferEXT(GL_RENDERBUFFER, mDepthStencilRenderbuffer);
    glRenderbufferStorageMultisampleEXT(GL_RENDERBUFFER, samples, GL_DEPTH24_STENCIL8, width, height);
    glGetRenderbufferParameterivEXT(GL_RENDERBUFFER, GL_RENDERBUFFER_SAMPLES, &mActualSamples);
    glFramebufferRenderbufferEXT(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                                 mDepthStencilRenderbuffer);
    glBindRenderbufferEXT(GL_RENDERBUFFER, 0);
    const bool multisampledComplete = checkFBO();
    if (!multisampledComplete) OX_LOG_DEBUG(kInitLogger, L"InitFBOWithMultiSampling - CheckFBO 2 failed");

    glBindFramebufferEXT(GL_FRAMEBUFFER, 0);
    mTargetWidth = width;
    mTargetHeight = height;
    // A driver may report a target complete whose storage it could not allocate.
    bool outOfMemory = false;
    for (GLenum error = glGetError(); error != GL_NO_ERROR; error = glGetError()) {
        OX_LOG_DEBUG(kInitLogger, L"InitFBOWithMultiSampling - glGetError %i", static_cast<int>(error));
        outOfMemory = outOfMemory || error == GL_OUT_OF_MEMORY;
    }
    mTargetsComplete = resolveComplete && multisampledComplete && !outOfMemory;
    bringTransparencyTargets(std::max(mActualSamples, 1));
}

void glScene::bringTransparencyTargets(int samples) {
    if (mViewportWidth <= 0 || mViewportHeight <= 0) return;
    mTransparency.bringTo(mViewportWidth, mViewportHeight, samples);
}

void glScene::deleteOffscreenTargets() {
    auto deleteFramebuffer = [](unsigned int& name) {
        if (name != 0) glDeleteFramebuffersEXT(1, &name);
        name = 0;
    };
    auto deleteRenderbuffer = [](unsigned int& name) {
        if (name != 0) glDeleteRenderbuffersEXT(1, &name);
        name = 0;
    };
    deleteFramebuffer(mMultisampledFbo);
    deleteFramebuffer(mResolveFbo);
    deleteRenderbuffer(mColorRenderbuffer);
    deleteRenderbuffer(mDepthStencilRenderbuffer);
    if (mResolveTexture != 0) glDeleteTextures(1, &mResolveTexture);
    mResolveTexture = 0;
    if (mScreenQuadNames != 0) glDeleteLists(mScreenQuadNames, 2); // the last quad and the one before
    mScreenQuadNames = mScreenQuadList = 0;
    mTargetWidth = mTargetHeight = 0;
    mActualSamples = 0; // nothing is left to have samples
    mTargetsComplete = false;
}

void glScene::releaseFBOWithMultiSampling() {
    if (!makeCurrent()) return;
    deleteOffscreenTargets();
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
    if (mMultisampledFbo == 0 && mResolveFbo == 0) return {};
    return {mMultisampledFbo, mResolveFbo, mResolveTexture, mTargetWidth, mTargetHeight};
}

} // namespace oxGraphics::openGL
