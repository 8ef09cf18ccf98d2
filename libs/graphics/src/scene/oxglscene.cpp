#include "oxglscene.h"

#include "glframelights.h"
#include "glpixelreadback.h"

#include "glcsgpass.h"
#include "glopaquepass.h"
#include "glstate/glscopedstate.h"
#include "drawing/gldrawer.h"
#include "drawing/glhighlightdrawer.h"
#include "drawing/glrenderdrawer.h"
#include "resources/oxglprogramlibrary.h"
#include "oxglshader.h"

#include "oxlog.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace oxGraphics::openGL {

// The programs of a frame, from the library of the current context's share group (each built
// on first use there). A program that does not exist stays null and its part of the frame is
// drawn fixed-function.
struct framePrograms_t {
    shaderProgram* standard = nullptr;
    shaderProgram* standardBlended = nullptr;
    shaderProgram* outline = nullptr;
    shaderProgram* oit2d = nullptr;
    shaderProgram* screenQuad = nullptr;
    shaderProgram* oitDebug = nullptr;
    shaderProgram* background = nullptr;
    shaderProgram* multilayer = nullptr;
    shaderProgram* coverageMask = nullptr;
    shaderProgram* outlineRing = nullptr;
    shaderProgram* blur = nullptr;
};

namespace {

constexpr const char* kRenderBeforeLogger = "oxGraphics::openGL::glScene::renderBefore";
constexpr const char* kRenderAfterLogger = "oxGraphics::openGL::glScene::renderAfter";
constexpr const char* kScreenLogger = "oxGraphics::openGL::glScene::drawTextureToDisplayScreen";
constexpr const char* kResizeLogger = "oxGraphics::openGL::glScene::resize";

constexpr std::array<ox::rgbColor, kColorSlotCount> kDefaultColors = {
    ox::rgbColor(0, 78, 152),    ox::rgbColor(0, 78, 152),   ox::rgbColor(255, 255, 255),
    ox::rgbColor(255, 255, 255), ox::rgbColor(255, 255, 0), ox::rgbColor(255, 220, 0),
    ox::rgbColor(230, 120, 40)};

int slotIndex(unsigned int colorId) {
    for (int i = 0; i < kColorSlotCount; ++i)
        if (colorId == (1u << i)) return i;
    return -1;
}

framePrograms_t framePrograms() {
    glProgramLibrary* library =
        glShaderProgram::areGlShadersEnabledGlobally() ? glProgramLibrary::forCurrentContext() : nullptr;
    if (library == nullptr) return {};
    return {library->program("standardLightingShaderProgram").get(),
            library->program("standardLightingBlendedOitShaderProgram").get(),
            library->program("objectOutlineShaderProgram").get(),
            library->program("blendedOit2dShaderProgram").get(),
            library->program("texturedScreenQuadShaderProgram").get(),
            library->program("blendedOitDebugVisShaderProgram").get(),
            library->program("backgroundShaderProgram").get(),
            library->program("multilayerBlankShaderProgram").get(),
            library->program("coverageMaskShaderProgram").get(),
            library->program("outlineRingShaderProgram").get(),
            library->program("gaussianBlurShaderProgram").get()};
}

} // namespace

ox::refPtr<glScene> glScene::create(const ox::refPtr<iGlContext>& context, bool presentToWindow) {
    if (!context) return {};
    return ox::refPtr<glScene>(new glScene(context, presentToWindow));
}

glScene::glScene(const ox::refPtr<iGlContext>& context, bool presentToWindow)
    : mContext(context), mPresentToWindow(presentToWindow), mCamera(new glCamera), mColors(kDefaultColors) {}

glScene::~glScene() {
    // GL names can only be deleted in their own context; a context that is gone took them along.
    if (!makeCurrent()) {
        mTargets.abandon();
        mScreen.abandon();
        mTransparencyPass.abandon();
        mBackground.abandon();
        mMaskPass.abandon();
        mOutlinePass.abandon();
        mBlurPass.abandon();
        return;
    }
    mTargets.release();
    mScreen.release();
    mTransparencyPass.release();
    mBackground.release();
    mMaskPass.release();
    mOutlinePass.release();
    mBlurPass.release();
}

// ---- state set-up ----------------------------------------------------------------------------

void glScene::initGfxApiState() {
    if (!makeCurrent()) return;
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glColor3f(1.0f, 0.0f, 0.0f); // red on purpose: geometry drawn without a colour stands out
    glShadeModel(GL_SMOOTH);
}

void glScene::setupForPainting(int width, int height) {
    if (!makeCurrent()) return;
    glViewport(0, 0, width, height);
    setupLights();
}

void glScene::setupForPainting() { setupForPainting(mViewportWidth, mViewportHeight); }

void glScene::setupLights() { applyFrameLights(); }

void glScene::resize(int width, int height, double viewSize, int offsetFocusBeginWidth, int offsetFocusBeginHeight,
                     int offsetFocusEndWidth, int offsetFocusEndHeight) {
    if (!makeCurrent()) return;
    if (width < 0 || height < 0 || !std::isfinite(viewSize) || viewSize <= 0.0)
        OX_LOG_WARN(kResizeLogger, L"a negative window size counts as 0, a view size that is not a positive number "
                                   L"keeps the current one (given %ix%i, %g)",
                    width, height, viewSize);
    width = std::max(width, 0);
    height = std::max(height, 0);
    mOffsetFocus = {offsetFocusBeginWidth, offsetFocusBeginHeight, offsetFocusEndWidth, offsetFocusEndHeight};
    mViewportWidth = width;
    mViewportHeight = height;
    glViewport(0, 0, width, height);
    mProjection.resize(width, height, viewSize);
    if (width != 0 && height != 0) mProjection.applyProjection();
    const int requested = mRequestedSamples;
    mRequestedSamples = std::max(1, requested);
    refreshFBOWithMultiSampling(width, height);
    mRequestedSamples = requested;
}

void glScene::resizeOffset(int offsetFocusBeginWidth, int offsetFocusBeginHeight, int offsetFocusEndWidth,
                           int offsetFocusEndHeight) {
    if (!contextAlive()) return;
    mOffsetFocus = {offsetFocusBeginWidth, offsetFocusBeginHeight, offsetFocusEndWidth, offsetFocusEndHeight};
}

// ---- colours and background ------------------------------------------------------------------

void glScene::setColor(const ox::rgbColor& color, unsigned int colorIds) {
    if (!contextAlive()) return;
    for (int i = 0; i < kColorSlotCount; ++i)
        if (colorIds & (1u << i)) mColors[static_cast<std::size_t>(i)] = color;
}

ox::rgbColor glScene::color(unsigned int colorId) const {
    const int index = slotIndex(colorId);
    return index < 0 ? ox::rgbColor() : mColors[static_cast<std::size_t>(index)];
}

void glScene::setUseTransparentBackground(bool use) {
    if (contextAlive()) mBackground.setTransparent(use);
}

void glScene::setUseBackgroundImage(bool use, const unsigned char* pixels, int width, int height, int format) {
    if (contextAlive()) mBackground.setImage(use, pixels, width, height, format);
}

void glScene::setTempBackgroundImage(bool use, const unsigned char* pixels, int width, int height, int format) {
    if (contextAlive()) mBackground.setTemporaryImage(use, pixels, width, height, format);
}

bool glScene::tempBackgroundImageUsed() const { return mBackground.temporaryImageUsed(); }

void glScene::setBackgroundImageTrans(double transparency) {
    if (contextAlive()) mBackground.setImageTransparency(transparency);
}
void glScene::setBackgroundImageSizing(int sizing) {
    if (contextAlive()) mBackground.setImageSizing(sizing);
}
void glScene::setBackgroundImageAlignment(int alignment) {
    if (contextAlive()) mBackground.setImageAlignment(alignment);
}

// ---- content -------------------------------------------------------------------------------

void glScene::add(const ox::refPtr<iDrawable>& drawable) {
    if (!contextAlive() || !drawable) return;
    if (std::find(mDrawables.begin(), mDrawables.end(), drawable) == mDrawables.end()) mDrawables.push_back(drawable);
}

void glScene::remove(const ox::refPtr<iDrawable>& drawable, bool forget) {
    if (!contextAlive()) return;
    std::erase(mDrawables, drawable);
    std::erase_if(mBoundBoxProviders, [&](const ox::refPtr<iBoundBoxProvider>& p) {
        return dynamic_cast<iDrawable*>(p.get()) == drawable.get();
    });
    if (mModifiedDrawable == drawable) mModifiedDrawable.reset();
    if (forget) {
        mSelection.erase(drawable);
        mModifyEnabled.erase(drawable);
        mEffects.erase(drawable);
    }
}

void glScene::clear() {
    if (!contextAlive()) return;
    mDrawables.clear();
    mBoundBoxProviders.clear();
    mSelection.clear();
    mModifyEnabled.clear();
    mModifiedDrawable.reset();
    mEffects.clear();
}

// ---- effects -----------------------------------------------------------------------------------

void glScene::setDrawableEffects(const ox::refPtr<iDrawable>& drawable, const drawableEffects_t& effects) {
    if (!contextAlive() || !drawable) return;
    if (effects.any()) mEffects[drawable] = effects;
    else mEffects.erase(drawable);
}

drawableEffects_t glScene::drawableEffects(const ox::refPtr<iDrawable>& drawable) const {
    const auto found = mEffects.find(drawable);
    return found == mEffects.end() ? drawableEffects_t{} : found->second;
}

void glScene::setSceneEffects(const sceneEffects_t& effects) {
    if (!contextAlive()) return;
    mSceneEffects = effects;
    mSceneEffects.outlineWidth = std::clamp(effects.outlineWidth, 1, 16);
    mSceneEffects.blurRadius = std::clamp(effects.blurRadius, 1, 32);
}

void glScene::setMaskDrawables(const std::vector<ox::refPtr<iDrawable>>& drawables) {
    if (!contextAlive()) return;
    mMaskDrawables.clear();
    for (const auto& drawable : drawables)
        if (drawable) mMaskDrawables.push_back(drawable);
}

void glScene::addBoundBoxProvider(const ox::refPtr<iBoundBoxProvider>& provider) {
    if (!contextAlive() || !provider) return;
    if (std::find(mBoundBoxProviders.begin(), mBoundBoxProviders.end(), provider) == mBoundBoxProviders.end())
        mBoundBoxProviders.push_back(provider);
}

oxGeo::boundBox3d glScene::providersBoundingBox(bool selectedOnly) const {
    oxGeo::boundBox3d box;
    for (const auto& provider : mBoundBoxProviders) {
        if (selectedOnly) {
            ox::refPtr<iDrawable> drawable(dynamic_cast<iDrawable*>(provider.get()));
            if (!drawable || !mSelection.contains(drawable)) continue;
        }
        const oxGeo::boundBox3d b = provider->worldBoundingBox();
        if (b.isValid()) box.grow(b);
    }
    return box;
}

void glScene::setSelected(const ox::refPtr<iDrawable>& drawable, bool selected) {
    if (!contextAlive() || !drawable) return;
    if (selected) mSelection.insert(drawable);
    else mSelection.erase(drawable);
}
bool glScene::isSelected(const ox::refPtr<iDrawable>& drawable) const { return mSelection.contains(drawable); }
void glScene::clearSelection() {
    if (contextAlive()) mSelection.clear();
}

void glScene::setModifyEnabled(const ox::refPtr<iDrawable>& drawable, bool enabled) {
    if (!contextAlive() || !drawable) return;
    if (enabled) mModifyEnabled.insert(drawable);
    else mModifyEnabled.erase(drawable);
}
bool glScene::isModifyEnabled(const ox::refPtr<iDrawable>& drawable) const { return mModifyEnabled.contains(drawable); }

void glScene::setModifiedDrawable(const ox::refPtr<iDrawable>& drawable) {
    if (contextAlive()) mModifiedDrawable = drawable;
}

void glScene::regenerate() {
    if (!makeCurrent()) return;
    for (const auto& drawable : mDrawables) drawable->invalidate();
}

void glScene::setPreferredPickTypes(const std::vector<std::string>& typeNames) {
    if (contextAlive()) mPreferredPickTypes = typeNames;
}

// ---- the frame -----------------------------------------------------------------------------

void glScene::renderBefore() {
    if (!makeCurrent()) return;
    if (mRequestedSamples < 1) return; // no multisampling: straight into the back buffer
    glBindFramebufferEXT(GL_FRAMEBUFFER, mTargets.multisampledFramebuffer());
    if (const GLenum error = glGetError(); error != GL_NO_ERROR)
        OX_LOG_DEBUG(kRenderBeforeLogger, L"After glBindFramebufferEXT - Error: %i", static_cast<int>(error));
}

void glScene::draw() {
    if (!makeCurrent()) return;
    const bool shaders = glShaderProgram::areGlShadersEnabledGlobally();
    // The programs live as long as their library, which outlives every scene.
    const framePrograms_t programs = shaders ? framePrograms() : framePrograms_t{};

    // 1. Background, then the camera for this frame. A host's colour mask would hide channels of
    //    the whole frame.
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    mBackground.paint(mColors[0], mColors[1], mViewportWidth, mViewportHeight, programs.background);
    if (mProjection.hasExtents()) mProjection.applyProjection();
    mCamera->applyModelView();

    // 2. The frame's drawers.
    glRenderDrawer render(this);
    glHighlightDrawer selectionDrawer(this, mColors[4]);
    glHighlightDrawer modifyDrawer(this, mColors[5]);
    glOverrideColorDrawer overrideDrawer(this);

    // 3. No program; a cleared stencil, its writes masked off again.
    if (shaders) glUseProgram(0);
    glEnable(GL_STENCIL_TEST);
    glClearStencil(0);
    glStencilMask(0xFFFFFFFFu);
    glClear(GL_STENCIL_BUFFER_BIT);
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    glDisable(GL_STENCIL_TEST);
    glStencilMask(0);

    // The mask hides parts of the frame before anything but the background is drawn there.
    mMaskPass.apply(mMaskDrawables, mSceneEffects.maskMode, {programs.outline, programs.coverageMask}, this,
                    mViewportWidth, mViewportHeight);

    // 4. and 5. Opaque pass.
    shaderProgram* program = programs.standard;
    if (program) program->activate();
    const bool blurApart = programs.standard && programs.blur;
    // Without the outline's programs a selection is always highlighted.
    const eSelectionStyle style =
        programs.outline && programs.outlineRing ? mSceneEffects.selectionStyle : eSelectionStyle::highlight;
    const glCsgPass::participants_t cut = glCsgPass::collect(mDrawables, mModifiedDrawable);
    const frameContent_t content{
        mDrawables, mSelection, mModifyEnabled, mModifiedDrawable, mEffects, style, blurApart, &cut.members};
    const frameDrawers_t drawers{render, selectionDrawer, modifyDrawer, overrideDrawer};
    const glOpaquePass::programs_t opaquePrograms{program, programs.multilayer};
    glOpaquePass(drawers).draw(content, opaquePrograms, modelView());
    glCsgPass(drawers).draw(cut, content, opaquePrograms, modelView(), color(kColorOutsideBlank));

    // 6. Transparent pass: what the render drawers held back.
    drawTransparent(render, overrideDrawer, content, programs);

    // Effects over the finished frame: blurred drawables, outlines, then the frame's own blur.
    drawEffects(content, programs);

    // 7. Rubber rectangles.
    glScreenPass::drawRectangles(mRubberRects, mViewportWidth, mViewportHeight);
}

void glScene::drawTransparent(glRenderDrawer& render, glOverrideColorDrawer& overrideDrawer,
                              const frameContent_t& content, const framePrograms_t& programs) {
    // Both drawers' held-back drawables; a copy only when there are overridden ones.
    const glRenderDrawer::deferredSet& overridden = overrideDrawer.deferredDrawables();
    glRenderDrawer::deferredSet merged;
    if (!overridden.empty()) {
        merged = render.deferredDrawables();
        merged.insert(overridden.begin(), overridden.end());
    }
    const glRenderDrawer::deferredSet& deferred = overridden.empty() ? render.deferredDrawables() : merged;
    const auto activeProgram = [&]() -> shaderProgram* {
        const GLuint current = glstate::readName(GL_CURRENT_PROGRAM);
        for (shaderProgram* candidate : {programs.standard, programs.standardBlended})
            if (candidate && current != 0 && candidate->handle() == current) return candidate;
        return nullptr;
    };
    overrideDrawer.beginTransparentPass(false);  // its colours apply now; the pass sets the GL state
    mTransparencyPass.draw(render, deferred,
                           {programs.standard, programs.standardBlended, programs.oit2d, programs.oitDebug}, modelView(),
                           mViewportWidth, mViewportHeight, [&](const ox::refPtr<iDrawable>& drawable) {
                               shaderProgram* active = activeProgram();
                               if (!overridden.contains(drawable)) {
                                   drawDrawable(render, drawable, eRendermode::transparent, active);
                                   return;
                               }
                               const drawableEffects_t* effects = content.effectsOf(drawable);
                               if (effects)
                                   overrideDrawer.setOverride(effects->overrideColor, effects->overrideTransparency);
                               applyColorOverride(active, effects);
                               drawDrawable(overrideDrawer, drawable, eRendermode::colorOverride, active);
                               applyColorOverride(active, nullptr);
                           });
    overrideDrawer.endTransparentPass(false);
    render.setCurrentDrawable({});
    overrideDrawer.setCurrentDrawable({});
}

void glScene::drawEffects(const frameContent_t& content, const framePrograms_t& programs) {
    if (!programs.standard) return;  // the effects need shaders; the frame above is what shows
    if (content.effects.empty() && content.selectionStyle == eSelectionStyle::highlight && !mSceneEffects.blurFrame)
        return;  // nothing asked for: no walk over the drawables
    std::vector<ox::refPtr<iDrawable>> blurred, outlined;
    for (const auto& drawable : content.drawables) {
        if (drawable == content.modified) continue;
        const drawableEffects_t* effects = content.effectsOf(drawable);
        if (content.drawsBlurred(drawable, effects)) blurred.push_back(drawable);
        const bool selectedOutline =
            content.selectionStyle != eSelectionStyle::highlight && content.selection.contains(drawable);
        if (selectedOutline || (effects && effects->outline)) outlined.push_back(drawable);
    }
    mBlurPass.drawBlurred(blurred, mSceneEffects.blurRadius, {programs.standard, programs.blur}, this, mViewportWidth,
                          mViewportHeight);
    mOutlinePass.draw(outlined, mColors[2], mSceneEffects.outlineWidth, {programs.outline, programs.outlineRing}, this,
                      mViewportWidth, mViewportHeight);
    if (mSceneEffects.blurFrame) mBlurPass.blurFrame(mSceneEffects.blurRadius, programs.blur, mViewportWidth, mViewportHeight);
}

void glScene::setRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) {
    if (contextAlive()) mRubberRects.push_back({x1, y1, x2, y2});
}

bool glScene::clearRubberRect() {
    if (!contextAlive()) return false;
    const bool hadAny = !mRubberRects.empty();
    mRubberRects.clear();
    return hadAny;
}

void glScene::drawRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) {
    if (!makeCurrent()) return;
    glScreenPass::drawRectangleXor({x1, y1, x2, y2}, mViewportWidth, mViewportHeight);
}

void glScene::renderAfter() {
    if (!makeCurrent()) return;
    if (mRequestedSamples >= 1) {
        const GLenum status = glCheckFramebufferStatusEXT(GL_FRAMEBUFFER);
        if (status != GL_FRAMEBUFFER_COMPLETE)
            OX_LOG_DEBUG(kRenderAfterLogger, L"RenderBefore: glCheckFramebufferStatusEXT reports error - %i",
                         static_cast<int>(status));
        if (const GLenum error = glGetError(); error != GL_NO_ERROR)
            OX_LOG_DEBUG(kRenderAfterLogger, L"RenderBefore: After glCheckFramebufferStatusEXT, glGetError - %i",
                         static_cast<int>(error));
        glBindFramebufferEXT(GL_FRAMEBUFFER, 0);
        if (const GLenum error = glGetError(); error != GL_NO_ERROR)
            OX_LOG_DEBUG(kRenderAfterLogger, L"RenderBefore: After glBindFramebufferEXT - %i", static_cast<int>(error));
        if (mTargets.actualSamples() >= 1) {
            mTargets.resolve(mViewportWidth, mViewportHeight);
            if (const GLenum error = glGetError(); error != GL_NO_ERROR)
                OX_LOG_DEBUG(kRenderAfterLogger, L"RenderBefore: After glBindFramebufferEXT g_fbo - %i",
                             static_cast<int>(error));
        }
        drawTextureToDisplayScreen();
    }
    if (mPresentToWindow) mContext->swapBuffers();
    if (const GLenum error = glGetError(); error != GL_NO_ERROR)
        OX_LOG_DEBUG(kRenderAfterLogger, L"RenderBefore: After SwapBuffers: %i", static_cast<int>(error));
}

void glScene::drawTextureToDisplayScreen() {
    if (!makeCurrent()) return;
    glViewport(0, 0, mViewportWidth, mViewportHeight);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    if (const GLenum error = glGetError(); error != GL_NO_ERROR)
        OX_LOG_DEBUG(kScreenLogger, L"OpenGL-Error after glClear - %i", static_cast<int>(error));
    mScreen.showFrame(mTargets.resolveTexture(), mViewportWidth, mViewportHeight);
    if (const GLenum error = glGetError(); error != GL_NO_ERROR)
        OX_LOG_DEBUG(kScreenLogger, L"OpenGL-Error after DrawTextureToDisplayScreen - %i", static_cast<int>(error));
}

char* glScene::writeToBuffer() const {
    if (!makeCurrent() || mViewportWidth <= 0 || mViewportHeight <= 0) return nullptr;
    // Through the offscreen targets, the resolved frame (renderAfter has run); the targets may
    // have been made at another size than the viewport. Otherwise the window's back buffer.
    if (mRequestedSamples >= 1 && mTargets.resolveFramebuffer() != 0)
        return readBgraPixels(mTargets.resolveFramebuffer(), mViewportWidth, mViewportHeight, mTargets.width(),
                              mTargets.height());
    return readBgraPixels(0, mViewportWidth, mViewportHeight, mViewportWidth, mViewportHeight);
}

} // namespace oxGraphics::openGL
