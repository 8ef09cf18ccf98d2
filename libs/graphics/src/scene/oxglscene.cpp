#include "oxglscene.h"

#include "glframelights.h"
#include "glpixelreadback.h"
#include "glpixelstore.h"
#include "glscreenmatrices.h"

#include "drawing/gldrawer.h"
#include "drawing/glhighlightdrawer.h"
#include "drawing/glrenderdrawer.h"
#include "oxglprogramlibrary.h"
#include "oxglshader.h"

#include "oxlog.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace oxGraphics::openGL {
namespace {

constexpr const char* kRenderBeforeLogger = "oxGraphics::openGL::glScene::renderBefore";
constexpr const char* kRenderAfterLogger = "oxGraphics::openGL::glScene::renderAfter";
constexpr const char* kScreenLogger = "oxGraphics::openGL::glScene::drawTextureToDisplayScreen";
constexpr const char* kResizeLogger = "oxGraphics::openGL::glScene::resize";

constexpr std::array<ox::rgbColor, 6> kDefaultColors = {
    ox::rgbColor(0, 78, 152),    ox::rgbColor(0, 78, 152),   ox::rgbColor(255, 255, 255),
    ox::rgbColor(255, 255, 255), ox::rgbColor(255, 255, 0), ox::rgbColor(255, 220, 0)};

int slotIndex(unsigned int colorId) {
    for (int i = 0; i < 6; ++i)
        if (colorId == (1u << i)) return i;
    return -1;
}

void glColor(const ox::rgbColor& c, float alpha = 1.0f) {
    glColor4f(c.red() / 255.0f, c.green() / 255.0f, c.blue() / 255.0f, alpha);
}

// The programs a frame uses, each looked up once per process by name (a program that does not
// exist stays absent; the frame then draws that part fixed-function). They are GL objects of the
// context current at that first lookup and are used only there: in another context the same name
// could be some other program.
struct framePrograms_t {
    std::shared_ptr<shaderProgram> standard, outline, oit2d, screenQuad, oitDebug;
    void* context = nullptr;
};

const framePrograms_t& framePrograms() {
    static const framePrograms_t programs{getShaderProgram("standardLightingShaderProgram"),
                                          getShaderProgram("objectOutlineShaderProgram"),
                                          getShaderProgram("blendedOit2dShaderProgram"),
                                          getShaderProgram("texturedScreenQuadShaderProgram"),
                                          getShaderProgram("blendedOitDebugVisShaderProgram"),
                                          currentNativeContext()};
    return programs;
}

// Draws one drawable between a push and a pop of the model-view matrix, so a placement it
// multiplies on stays its own. A drawable that throws is logged and skipped; the frame goes on.
void drawOne(glDrawer& drawer, const ox::refPtr<iDrawable>& drawable, eRendermode mode, shaderProgram* program) {
    drawer.setCurrentDrawable(drawable);
    drawer.pushMatrix();
    try {
        drawable->draw(&drawer, mode, program);
    } catch (...) {
        OX_LOG_DEBUG("oxGraphics::openGL::glScene::draw", L"a drawable threw while drawing; it was skipped");
    }
    drawer.popMatrix();
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
    if (!makeCurrent()) return;
    deleteOffscreenTargets();
    mTransparency.release();
    deleteBackgroundTexture(mBackgroundImage);
    deleteBackgroundTexture(mTempBackgroundImage);
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
    for (int i = 0; i < 6; ++i)
        if (colorIds & (1u << i)) mColors[static_cast<std::size_t>(i)] = color;
}

ox::rgbColor glScene::color(unsigned int colorId) const {
    const int index = slotIndex(colorId);
    return index < 0 ? ox::rgbColor() : mColors[static_cast<std::size_t>(index)];
}

void glScene::setUseTransparentBackground(bool use) {
    if (contextAlive()) mTransparentBackground = use;
}

void glScene::assignBackgroundImage(backgroundImage_t& image, bool use, const unsigned char* pixels, int width,
                                    int height, int format) {
    image.used = use;
    // `format` is the number of bytes per pixel: 3 (RGB) or 4 (RGBA), rows top first, packed.
    if (pixels != nullptr && width > 0 && height > 0 && (format == 3 || format == 4)) {
        image.pixels.assign(pixels, pixels + static_cast<std::size_t>(width) * height * format);
        image.width = width;
        image.height = height;
        image.channels = format;
        image.dirty = true;
    } else if (pixels != nullptr) {
        image.used = false; // unusable pixels: show no image rather than garbage
    }
}

void glScene::setUseBackgroundImage(bool use, const unsigned char* pixels, int width, int height, int format) {
    if (!contextAlive()) return;
    assignBackgroundImage(mBackgroundImage, use, pixels, width, height, format);
}

void glScene::setTempBackgroundImage(bool use, const unsigned char* pixels, int width, int height, int format) {
    if (!contextAlive()) return;
    assignBackgroundImage(mTempBackgroundImage, use, pixels, width, height, format);
}

bool glScene::tempBackgroundImageUsed() const { return mTempBackgroundImage.used && !mTempBackgroundImage.pixels.empty(); }

void glScene::setBackgroundImageTrans(double transparency) {
    if (contextAlive()) mBackgroundImageTransparency = std::clamp(transparency, 0.0, 1.0);
}
void glScene::setBackgroundImageSizing(int sizing) {
    if (contextAlive()) mBackgroundImageSizing = sizing;
}
void glScene::setBackgroundImageAlignment(int alignment) {
    if (contextAlive()) mBackgroundImageAlignment = alignment;
}

void glScene::deleteBackgroundTexture(backgroundImage_t& image) {
    if (image.texture != 0) glDeleteTextures(1, &image.texture);
    image.texture = 0;
}

void glScene::drawBackground() {
    const ox::rgbColor& top = mColors[0];
    const ox::rgbColor& bottom = mColors[1];
    if (mTransparentBackground)
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    else
        glClearColor(bottom.red() / 255.0f, bottom.green() / 255.0f, bottom.blue() / 255.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    backgroundImage_t* image = tempBackgroundImageUsed() ? &mTempBackgroundImage
                               : (mBackgroundImage.used && !mBackgroundImage.pixels.empty()) ? &mBackgroundImage
                                                                                              : nullptr;
    const bool gradient = !mTransparentBackground && !(top == bottom);
    if (!gradient && image == nullptr) return;

    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_DEPTH_BUFFER_BIT | GL_COLOR_BUFFER_BIT | GL_TEXTURE_BIT |
                 GL_POLYGON_BIT);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL); // a rubber band leaves GL_LINE behind
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    {
        const glScreenMatrices screen;
        if (gradient) {
            glBegin(GL_QUADS);
            glColor(bottom);
            glVertex2f(-1.0f, -1.0f);
            glVertex2f(1.0f, -1.0f);
            glColor(top);
            glVertex2f(1.0f, 1.0f);
            glVertex2f(-1.0f, 1.0f);
            glEnd();
        }
        if (image != nullptr) drawBackgroundImage(*image);
    }
    glPopAttrib();
}

// Sizing: 0 stretches over the viewport, 1 fits inside keeping the aspect, 2 keeps the image's
// pixel size. Alignment (for 1 and 2): 0 centre, 1 top-left, 2 top-right, 3 bottom-left,
// 4 bottom-right.
void glScene::drawBackgroundImage(backgroundImage_t& image) {
    if (image.dirty || image.texture == 0) {
        if (image.texture == 0) glGenTextures(1, &image.texture);
        const glPixelStore tightRows(glPixelStore::eDirection::unpack);
        glBindTexture(GL_TEXTURE_2D, image.texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image.width, image.height, 0, image.channels == 4 ? GL_RGBA : GL_RGB,
                     GL_UNSIGNED_BYTE, image.pixels.data());
        image.dirty = false;
    }
    const double vw = std::max(mViewportWidth, 1), vh = std::max(mViewportHeight, 1);
    double w = vw, h = vh;
    if (mBackgroundImageSizing == 1) {
        const double scale = std::min(vw / image.width, vh / image.height);
        w = image.width * scale;
        h = image.height * scale;
    } else if (mBackgroundImageSizing == 2) {
        w = image.width;
        h = image.height;
    }
    double left = (vw - w) / 2, bottom = (vh - h) / 2;
    if (mBackgroundImageSizing != 0) {
        if (mBackgroundImageAlignment == 1 || mBackgroundImageAlignment == 3) left = 0;
        if (mBackgroundImageAlignment == 2 || mBackgroundImageAlignment == 4) left = vw - w;
        if (mBackgroundImageAlignment == 1 || mBackgroundImageAlignment == 2) bottom = vh - h;
        if (mBackgroundImageAlignment == 3 || mBackgroundImageAlignment == 4) bottom = 0;
    }
    auto ndcX = [&](double px) { return static_cast<float>(px / vw * 2 - 1); };
    auto ndcY = [&](double py) { return static_cast<float>(py / vh * 2 - 1); };
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, image.texture);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4f(1.0f, 1.0f, 1.0f, static_cast<float>(1.0 - mBackgroundImageTransparency));
    // Rows are stored top first, so texture row 0 goes to the top edge.
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1); glVertex2f(ndcX(left), ndcY(bottom));
    glTexCoord2f(1, 1); glVertex2f(ndcX(left + w), ndcY(bottom));
    glTexCoord2f(1, 0); glVertex2f(ndcX(left + w), ndcY(bottom + h));
    glTexCoord2f(0, 0); glVertex2f(ndcX(left), ndcY(bottom + h));
    glEnd();
    glBindTexture(GL_TEXTURE_2D, 0);
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
    }
}

void glScene::clear() {
    if (!contextAlive()) return;
    mDrawables.clear();
    mBoundBoxProviders.clear();
    mSelection.clear();
    mModifyEnabled.clear();
    mModifiedDrawable.reset();
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
    glBindFramebufferEXT(GL_FRAMEBUFFER, mMultisampledFbo);
    if (const GLenum error = glGetError(); error != GL_NO_ERROR)
        OX_LOG_DEBUG(kRenderBeforeLogger, L"After glBindFramebufferEXT - Error: %i", static_cast<int>(error));
}

void glScene::draw() {
    if (!makeCurrent()) return;

    // 1. Background, then the camera for this frame.
    drawBackground();
    if (mProjection.hasExtents()) mProjection.applyProjection();
    mCamera->applyModelView();

    // 2. The frame's drawers.
    glRenderDrawer render(this);
    glHighlightDrawer selectionDrawer(this, mColors[4]);
    glHighlightDrawer modifyDrawer(this, mColors[5]);

    // 3. No program; a cleared stencil, its writes masked off again.
    const bool shaders = glShaderProgram::areGlShadersEnabledGlobally();
    if (shaders) glUseProgram(0);
    glEnable(GL_STENCIL_TEST);
    glClearStencil(0);
    glStencilMask(0xFFFFFFFFu);
    glClear(GL_STENCIL_BUFFER_BIT);
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    glDisable(GL_STENCIL_TEST);
    glStencilMask(0);

    // 4. The programs of the frame.
    shaderProgram* program = nullptr;
    if (shaders && framePrograms().context == currentNativeContext()) program = framePrograms().standard.get();

    // 5. Opaque pass.
    if (program) {
        program->activate();
        program->setUniformInt("u_maskTexture", 1);
        program->setUniformInt("u_isSelected", 0);
        program->setUniformInt("u_packedTopBtmColorAndEnable", 0);
        program->setUniformInt("u_numLayerDescriptions", 0);
        program->setUniformInt("u_forceColorFromVertexAttrib", 0);
    }
    for (const auto& drawable : mDrawables) {
        if (drawable == mModifiedDrawable) continue;
        if (mSelection.contains(drawable)) {
            if (program) program->setUniformInt("u_isSelected", 1);
            drawOne(selectionDrawer, drawable, eRendermode::selected, program);
            if (program) program->setUniformInt("u_isSelected", 0);
        } else if (mModifyEnabled.contains(drawable)) {
            drawOne(modifyDrawer, drawable, eRendermode::modifyEnabled, program);
        } else {
            drawOne(render, drawable, eRendermode::opaque, program);
        }
    }

    // 6. Transparent pass: the drawables the render drawer held back, blended over the opaque
    //    frame with depth writes off and culling off.
    if (!render.deferredDrawables().empty()) {
        const GLboolean culling = glIsEnabled(GL_CULL_FACE);
        glDisable(GL_CULL_FACE);
        render.beginTransparentPass(true);
        for (const auto& drawable : render.deferredDrawables()) drawOne(render, drawable, eRendermode::transparent, program);
        render.endTransparentPass(true);
        if (culling) glEnable(GL_CULL_FACE);
    }
    render.setCurrentDrawable({});
    if (program) program->deactivate();

    // 7. Rubber rectangles.
    drawRubberRectangles();
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

namespace {

// Steps 2 to 5 of the XOR rectangle, without the draw buffer and polygon mode.
void rubberRectangleLoop(const std::array<unsigned int, 4>& r, int width, int height, bool setPolygonMode) {
    const glScreenMatrices screen(width, height);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glColor3f(1.0f, 1.0f, 1.0f);
    if (setPolygonMode) glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    glLineWidth(2.0f);
    const double h = height;
    glBegin(GL_LINE_LOOP);
    glVertex2d(r[0], h - r[1]);
    glVertex2d(r[2], h - r[1]);
    glVertex2d(r[2], h - r[3]);
    glVertex2d(r[0], h - r[3]);
    glEnd();
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_LIGHTING);
    glLineWidth(1.0f);
}

} // namespace

void glScene::drawRubberRectangles() const {
    if (mRubberRects.empty()) return; // nothing drawn, no state touched
    glEnable(GL_COLOR_LOGIC_OP);
    glLogicOp(GL_XOR);
    for (const auto& r : mRubberRects) rubberRectangleLoop(r, mViewportWidth, mViewportHeight, false);
    glDisable(GL_COLOR_LOGIC_OP);
}

void glScene::drawRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) {
    if (!makeCurrent()) return;
    glDrawBuffer(GL_FRONT);
    glEnable(GL_COLOR_LOGIC_OP);
    glLogicOp(GL_XOR); // drawing the same rectangle again erases it
    rubberRectangleLoop({x1, y1, x2, y2}, mViewportWidth, mViewportHeight, true);
    glFlush();
    glDisable(GL_COLOR_LOGIC_OP);
    glDrawBuffer(GL_BACK);
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
        if (mActualSamples >= 1) {
            glBindFramebufferEXT(GL_READ_FRAMEBUFFER, mMultisampledFbo);
            glBindFramebufferEXT(GL_DRAW_FRAMEBUFFER, mResolveFbo);
            glBlitFramebufferEXT(0, 0, mViewportWidth, mViewportHeight, 0, 0, mViewportWidth, mViewportHeight,
                                 GL_COLOR_BUFFER_BIT, GL_NEAREST);
            glBindFramebufferEXT(GL_FRAMEBUFFER, 0);
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

    {
        const glScreenMatrices screen;
        glPushAttrib(GL_CURRENT_BIT | GL_POLYGON_BIT);
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL); // a rubber band leaves GL_LINE behind
        glDisable(GL_LIGHTING);
        glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
        glEnable(GL_TEXTURE_RECTANGLE);
        glBindTexture(GL_TEXTURE_RECTANGLE, mResolveTexture);

        // A new list every time, compiled into the one of the scene's two quad names that does
        // not hold the previous list, so that one stays as it was. Fresh names every frame would
        // keep all earlier lists alive, or, deleted, still grow the driver's name tables with every
        // frame of a session.
        if (mScreenQuadNames == 0) mScreenQuadNames = glGenLists(2);
        mScreenQuadList = mScreenQuadList == mScreenQuadNames ? mScreenQuadNames + 1 : mScreenQuadNames;
        const float w = static_cast<float>(mViewportWidth), h = static_cast<float>(mViewportHeight);
        glNewList(mScreenQuadList, GL_COMPILE_AND_EXECUTE);
        glBegin(GL_QUADS);
        glTexCoord2f(0, 0); glVertex3f(-1, -1, -1);
        glTexCoord2f(w, 0); glVertex3f(1, -1, -1);
        glTexCoord2f(w, h); glVertex3f(1, 1, -1);
        glTexCoord2f(0, h); glVertex3f(-1, 1, -1);
        glEnd();
        glEndList();

        glBindTexture(GL_TEXTURE_RECTANGLE, 0);
        glDisable(GL_TEXTURE_RECTANGLE);
        glPopAttrib();
    }
    if (const GLenum error = glGetError(); error != GL_NO_ERROR)
        OX_LOG_DEBUG(kScreenLogger, L"OpenGL-Error after DrawTextureToDisplayScreen - %i", static_cast<int>(error));
}

char* glScene::writeToBuffer() const {
    if (!makeCurrent() || mViewportWidth <= 0 || mViewportHeight <= 0) return nullptr;
    // Through the offscreen targets, the resolved frame (renderAfter has run); the targets may
    // have been made at another size than the viewport. Otherwise the window's back buffer.
    if (mRequestedSamples >= 1 && mResolveFbo != 0)
        return readBgraPixels(mResolveFbo, mViewportWidth, mViewportHeight, mTargetWidth, mTargetHeight);
    return readBgraPixels(0, mViewportWidth, mViewportHeight, mViewportWidth, mViewportHeight);
}

} // namespace oxGraphics::openGL
