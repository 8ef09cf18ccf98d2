#include "sceneTestSupport.h"

#include "oxglframebuffer.h"
#include "oxmeshentity.h"
#include "oxgeomeshfactory.h"
#include "oxglshader.h"
#include "scene/oxglscene.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

using oxGraphics::openGL::glScene;
using oxtest::eventCounter;
using oxtest::testSquare;

ox::refPtr<glScene> rendererOf(const ox::refPtr<oxGraphics::scene>& view) {
    return ox::dynamicRefCast<glScene>(view->implementation());
}

class sceneTest : public oxtest::glTest {};

TEST_F(sceneTest, eventsFollowTheForwardingTable) {
    auto view = oxtest::makeScene(64, 64, 0);
    ox::refPtr<eventCounter> events(new eventCounter);
    view->addObserver(events);
    ox::refPtr<oxGraphics::iDrawable> square(new testSquare({0, 0, 0}, 2, {255, 0, 0}));

    struct row { const char* what; void (*call)(oxGraphics::scene&, const ox::refPtr<oxGraphics::iDrawable>&); int events; };
    const row rows[] = {
        {"add", [](auto& s, auto& d) { s.add(d); }, 1},
        {"addToSelection", [](auto& s, auto& d) { s.addToSelection(d); }, 0},
        {"removeFromSelection", [](auto& s, auto& d) { s.removeFromSelection(d); }, 0},
        {"clearSelection", [](auto& s, auto&) { s.clearSelection(); }, 0},
        {"addToModifyEnabled", [](auto& s, auto& d) { s.addToModifyEnabled(d); }, 0},
        {"regenerate", [](auto& s, auto&) { s.regenerate(); }, 1},
        {"setColor with no slot", [](auto& s, auto&) { s.setColor({1, 2, 3}, 0); }, 1},
        {"setBackgroundImageTrans", [](auto& s, auto&) { s.setBackgroundImageTrans(0.5); }, 1},
        {"setUseTransparentBackground", [](auto& s, auto&) { s.setUseTransparentBackground(false); }, 0},
        {"setMultisamples", [](auto& s, auto&) { s.setMultisamples(0); }, 0},
        {"refreshFBOWithMultiSampling", [](auto& s, auto&) { s.refreshFBOWithMultiSampling(); }, 1},
        {"moveCamera", [](auto& s, auto&) { s.moveCamera(1, 1, 2, 2); }, 1},
        {"rotateCamera", [](auto& s, auto&) { s.rotateCamera(1, 1, 2, 2); }, 1},
        {"zoomWheel", [](auto& s, auto&) { s.zoomWheel(3, 3, true); }, 0},
        {"fireSceneInvalid", [](auto& s, auto&) { s.fireSceneInvalid(); }, 1},
        {"setSceneUpdateEnabled", [](auto& s, auto&) { s.setSceneUpdateEnabled(true); }, 0},
        {"remove", [](auto& s, auto& d) { s.remove(d, true); }, 1},
        {"clear", [](auto& s, auto&) { s.clear(); }, 1},
    };
    for (const auto& r : rows) {
        const int before = events->changed;
        r.call(*view, square);
        EXPECT_EQ(events->changed - before, r.events) << r.what;
    }
    EXPECT_EQ(events->viewSteps, 0);
}

TEST_F(sceneTest, colourSlotsAreABitMask) {
    auto view = oxtest::makeScene(32, 32, 0);
    using namespace oxGraphics;
    const ox::rgbColor defaults[] = {{0, 78, 152},  {0, 78, 152},  {255, 255, 255}, {255, 255, 255},
                                     {255, 255, 0}, {255, 220, 0}, {230, 120, 40}};
    const eColorId slots[] = {kColorBackgroundTop, kColorBackgroundBottom, kColorOutline,     kColorAnnotation,
                              kColorSelection,     kColorModifyEnabled,    kColorOutsideBlank};
    for (int i = 0; i < kColorSlotCount; ++i) EXPECT_EQ(view->color(slots[i]), defaults[i]) << "slot " << slots[i];

    const ox::rgbColor c(9, 8, 7);
    view->setColor(c, 1 | 4 | 32 | 64 | 128);  // 128 is no slot
    for (int i = 0; i < kColorSlotCount; ++i)
        EXPECT_EQ(view->color(slots[i]), (i == 0 || i == 2 || i >= 5) ? c : defaults[i]) << i;
    view->setColor({1, 1, 1}, 0);
    EXPECT_EQ(view->color(kColorBackgroundTop), c);
}

TEST_F(sceneTest, selectionAndModifySetsAndTheEmptyFacadeBox) {
    auto view = oxtest::makeScene(32, 32, 0);
    ox::refPtr<oxGraphics::iDrawable> inScene(new testSquare({0, 0, 0}, 1, {1, 2, 3}));
    ox::refPtr<oxGraphics::iDrawable> stranger(new testSquare({5, 0, 0}, 1, {1, 2, 3}));
    view->add(inScene);
    view->addToSelection(stranger);  // passed on unchanged, though it is not in the scene
    view->addToSelection(inScene);
    EXPECT_TRUE(view->isSelected(stranger));
    EXPECT_TRUE(view->isSelected(inScene));
    view->removeFromSelection(stranger);
    EXPECT_FALSE(view->isSelected(stranger));
    view->addToModifyEnabled(inScene);
    EXPECT_TRUE(view->isModifyEnabled(inScene));
    EXPECT_FALSE(view->isModifyEnabled(stranger));
    view->remove(inScene, false);  // kept in the sets
    EXPECT_TRUE(view->isSelected(inScene));
    view->add(inScene);
    view->remove(inScene, true);   // forgotten
    EXPECT_FALSE(view->isSelected(inScene));
    EXPECT_FALSE(view->isModifyEnabled(inScene));

    view->add(inScene);
    EXPECT_FALSE(view->boundingBox().isValid()); // the facade's own box stays empty
}

TEST_F(sceneTest, disabledUpdatesTouchNoGlAtAll) {
    auto view = oxtest::makeScene(32, 32, 0);
    ox::refPtr<testSquare> square(new testSquare({0, 0, 0}, 2, {255, 0, 0}));
    view->add(ox::refPtr<oxGraphics::iDrawable>(square));
    view->setSceneUpdateEnabled(false);
    // Another context current: a draw that made the scene's context current would switch back.
    auto other = oxGraphics::openGL::createHeadlessContext({8, 8});
    ASSERT_TRUE(other);
    ASSERT_TRUE(other->isCurrent());
    view->draw();
    EXPECT_TRUE(other->isCurrent());
    EXPECT_EQ(square->draws, 0);
    view->setSceneUpdateEnabled(true);
    view->draw();
    EXPECT_TRUE(oxtest::sharedGlContext()->isCurrent());
    EXPECT_EQ(square->draws, 1);
    other->destroy();
    ASSERT_TRUE(oxtest::sharedGlContext()->makeCurrent());
}

TEST_F(sceneTest, aLostContextMakesEveryOperationANoOp) {
    auto context = oxGraphics::openGL::createHeadlessContext({32, 32});
    ASSERT_TRUE(context);
    auto view = oxGraphics::scene::create(context, false, false);
    view->initGfxApiState();
    view->resize(32, 32, 10.0, 0, 0, 0, 0);
    ox::refPtr<testSquare> square(new testSquare({0, 0, 0}, 2, {255, 0, 0}));
    view->add(ox::refPtr<oxGraphics::iDrawable>(square));
    context->destroy();

    view->resize(64, 64, 5.0, 1, 2, 3, 4);
    view->setColor({1, 2, 3}, 1);
    view->setMultisamples(8);
    view->add(ox::refPtr<oxGraphics::iDrawable>(new testSquare({0, 0, 0}, 1, {0, 0, 0})));
    oxtest::paint(*view);
    view->zoomWheel(1, 1, true);
    view->setFrontView(false, oxGeo::matrix3d(), oxGeo::point3d());
    EXPECT_EQ(view->viewportWidth(), 32);
    EXPECT_EQ(view->offsetFocusBeginWidth(), 0);
    EXPECT_EQ(view->color(oxGraphics::kColorBackgroundTop), ox::rgbColor(0, 78, 152));
    EXPECT_EQ(view->multisamples(), 4);
    EXPECT_EQ(view->writeToBuffer(), nullptr);
    EXPECT_EQ(square->draws, 0);
    EXPECT_EQ(rendererOf(view)->drawables().size(), 1u);
    EXPECT_TRUE(view->camera()->rotation().isEqualTo(oxGeo::quaternion(), 0.0));
    ASSERT_TRUE(oxtest::sharedGlContext()->makeCurrent());
}

TEST_F(sceneTest, resizeKeepsTheProjectionForAZeroSideAndRestoreViewIgnoresItselfAndNull) {
    auto view = oxtest::makeScene(40, 20, 0);
    auto renderer = rendererOf(view);
    EXPECT_DOUBLE_EQ(renderer->projection().extentWidth(), 10.0);
    EXPECT_DOUBLE_EQ(renderer->projection().extentHeight(), 5.0);
    view->resize(0, 30, 50.0, 0, 0, 0, 0);
    EXPECT_EQ(view->viewportWidth(), 0);
    EXPECT_EQ(oxtest::readGlIntegers(GL_VIEWPORT, 4), (std::vector<GLint>{0, 0, 0, 30}));
    EXPECT_DOUBLE_EQ(renderer->projection().extentWidth(), 10.0);  // previous projection kept
    EXPECT_DOUBLE_EQ(view->viewSize(), 10.0);

    view->resize(20, 40, 8.0, 0, 0, 0, 0);
    EXPECT_DOUBLE_EQ(renderer->projection().extentWidth(), 4.0);  // w <= h: W = (w/h)·s
    EXPECT_DOUBLE_EQ(renderer->projection().extentHeight(), 8.0);

    view->camera()->setTranslation({1, 2, 3});
    oxGraphics::iSavedView* saved = nullptr;
    view->saveView(&saved);
    ASSERT_NE(saved, nullptr);
    view->camera()->setTranslation({7, 7, 7});
    view->restoreView(nullptr);
    view->restoreView(dynamic_cast<oxGraphics::iSavedView*>(view->camera().get()));
    EXPECT_TRUE(view->camera()->translation().isEqualTo({7, 7, 7}, 0.0));
    view->restoreView(saved);
    EXPECT_TRUE(view->camera()->translation().isEqualTo({1, 2, 3}, 0.0));
    view->saveView(&saved);  // releases the old copy first
    saved->release();
}

// ---- offscreen targets ---------------------------------------------------------------------

TEST_F(sceneTest, sampleCountZeroCreatesTargetsOnlyWithoutAWindow) {
    for (const bool window : {true, false}) {
        auto view = oxtest::makeScene(48, 32, 0, window);
        auto renderer = rendererOf(view);
        const auto targets = renderer->offscreenTargets();
        EXPECT_EQ(targets.multisampledFramebuffer != 0, !window) << "window " << window;
        EXPECT_EQ(targets.resolveTexture != 0, !window);
        EXPECT_EQ(renderer->actualMultisamples(), 0);
        // The transparency targets follow the viewport, single-sampled.
        EXPECT_EQ(renderer->transparencyTargets().accumDesc().width, 48);
        EXPECT_EQ(renderer->transparencyTargets().accumDesc().numSamples, 1);
        EXPECT_EQ(renderer->transparencyTargets().accumDesc().kind, oxGraphics::eTextureKind::texture2d);
    }
}

TEST_F(sceneTest, multisampledTargetsAndTheirRebuildRules) {
    auto view = oxtest::makeScene(48, 32, 4);
    auto renderer = rendererOf(view);
    EXPECT_EQ(renderer->actualMultisamples(), 4);
    const auto targets = renderer->offscreenTargets();
    ASSERT_NE(targets.multisampledFramebuffer, 0u);
    EXPECT_TRUE(glIsFramebuffer(targets.multisampledFramebuffer));
    EXPECT_EQ(renderer->transparencyTargets().accumDesc().numSamples, 4);
    EXPECT_EQ(renderer->transparencyTargets().accumDesc().kind, oxGraphics::eTextureKind::texture2dMultisample);
    // Described, but made only for the first transparent drawable.
    EXPECT_FALSE(renderer->transparencyTargets().resolveFramebuffer());
    view->add(ox::refPtr<oxGraphics::iDrawable>(new oxtest::testSquare({0, 0, 0}, 2, {255, 0, 0}, 0.5f)));
    oxtest::paint(*view);
    EXPECT_TRUE(renderer->transparencyTargets().resolveFramebuffer());

    // Same size and count: the scene's own targets are rebuilt, the transparency targets are not.
    const int rebuilds = renderer->transparencyTargets().rebuildCount();
    view->refreshFBOWithMultiSampling();
    EXPECT_EQ(renderer->transparencyTargets().rebuildCount(), rebuilds);
    EXPECT_TRUE(glIsFramebuffer(renderer->offscreenTargets().multisampledFramebuffer));

    // A single-sampled scene drops the resolve targets of the transparency pass.
    view->setMultisamples(1);
    view->refreshFBOWithMultiSampling();
    EXPECT_GE(renderer->actualMultisamples(), 0);
    if (renderer->actualMultisamples() < 2) {
        EXPECT_FALSE(renderer->transparencyTargets().resolveFramebuffer());
    }

    // More samples than the driver stores: it grants its maximum, and the target is complete.
    view->setMultisamples(1000);
    view->refreshFBOWithMultiSampling();
    EXPECT_EQ(renderer->actualMultisamples(), oxtest::readGlInteger(GL_MAX_SAMPLES));
    glBindFramebuffer(GL_FRAMEBUFFER, renderer->offscreenTargets().multisampledFramebuffer);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
    glBindFramebuffer(GL_FRAMEBUFFER, 0);

    // Width or height 0: nothing is created.
    view->setMultisamples(4);
    view->refreshFBOWithMultiSampling(0, 32);
    EXPECT_EQ(renderer->offscreenTargets().multisampledFramebuffer, 0u);
    EXPECT_EQ(renderer->offscreenTargets().resolveTexture, 0u);
}

// GLEW hands out the renderbuffer query through a pointer: a stand-in reports what a driver
// that grants no samples would.
PFNGLGETRENDERBUFFERPARAMETERIVEXTPROC realGetRenderbufferParameteriv = nullptr;
void GLAPIENTRY grantNoSamples(GLenum target, GLenum name, GLint* value) {
    realGetRenderbufferParameteriv(target, name, value);
    if (name == GL_RENDERBUFFER_SAMPLES) *value = 0;
}

TEST_F(sceneTest, aDriverGrantingNoSamplesGetsNoBlitButStillTheScreenQuad) {
    realGetRenderbufferParameteriv = glGetRenderbufferParameterivEXT;
    glGetRenderbufferParameterivEXT = &grantNoSamples;
    auto view = oxtest::makeScene(16, 16, 4);
    glGetRenderbufferParameterivEXT = realGetRenderbufferParameteriv;
    auto renderer = rendererOf(view);
    EXPECT_EQ(renderer->actualMultisamples(), 0);
    EXPECT_EQ(renderer->transparencyTargets().accumDesc().numSamples, 1);

    // Mark the resolve texture: without a blit the quad shows exactly what it holds.
    const auto targets = renderer->offscreenTargets();
    glBindFramebuffer(GL_FRAMEBUFFER, targets.resolveFramebuffer);
    oxtest::clearTo(0.0f, 1.0f, 0.0f, 1.0f);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    const unsigned int listBefore = renderer->screenQuadList();
    oxtest::paint(*view);
    EXPECT_NE(renderer->screenQuadList(), listBefore);  // the screen quad was drawn
    std::unique_ptr<char[]> pixels(view->writeToBuffer());
    EXPECT_EQ(oxtest::pixelOf(pixels.get(), 16, 8, 8), (oxtest::rgba8{0, 255, 0, 255}));
    EXPECT_EQ(oxtest::readPixel(8, 8), (oxtest::rgba8{0, 255, 0, 255}));  // and shown in the window
}

TEST_F(sceneTest, storedRubberRectanglesAreDrawnPlainWhiteIntoEveryFrameUntilCleared) {
    auto view = oxtest::makeScene(40, 40, 0);
    view->add(ox::refPtr<oxGraphics::iDrawable>(new oxtest::testSquare({0, 0, 0}, 20, {0, 0, 255})));
    EXPECT_FALSE(view->clearRubberRect());
    view->setRubberRect(5, 5, 30, 30);
    for (int frame = 0; frame < 2; ++frame) { // XOR would give yellow over blue, and erase it again
        oxtest::paint(*view);
        std::unique_ptr<char[]> pixels(view->writeToBuffer());
        const auto edge = oxtest::pixelOf(pixels.get(), 40, 20, 40 - 1 - 5);  // top edge, y counted from the top
        EXPECT_EQ(edge, (oxtest::rgba8{255, 255, 255, 255})) << frame;
    }
    EXPECT_TRUE(view->clearRubberRect());
    oxtest::paint(*view);
    std::unique_ptr<char[]> pixels(view->writeToBuffer());
    EXPECT_EQ(oxtest::pixelOf(pixels.get(), 40, 20, 40 - 1 - 5), (oxtest::rgba8{0, 0, 255, 255}));
}

TEST_F(sceneTest, eachScreenQuadIsANewListAndLeavesThePreviousOneAlone) {
    auto view = oxtest::makeScene(16, 16, 4);
    auto renderer = rendererOf(view);
    oxtest::paint(*view);
    const unsigned int first = renderer->screenQuadList();
    renderer->drawTextureToDisplayScreen();
    const unsigned int second = renderer->screenQuadList();
    EXPECT_NE(first, second);
    EXPECT_TRUE(glIsList(first)); // drawing a new quad deletes no earlier one
    glCallList(first);            // and the previous one still draws
    oxtest::paint(*view);
    EXPECT_EQ(renderer->screenQuadList(), first); // the two names take turns
    EXPECT_TRUE(glIsList(second));
    view->refreshFBOWithMultiSampling();
    EXPECT_FALSE(glIsList(first)); // the release deletes them
    EXPECT_FALSE(glIsList(second));
    EXPECT_EQ(renderer->screenQuadList(), 0u);
}

TEST_F(sceneTest, writeToBufferAndTheFrameBufferReadTheSameBgraBottomRowFirst) {
    for (const int samples : {0, 1, 4}) {
        auto view = oxtest::makeScene(20, 10, samples);
        view->setColor({10, 20, 30}, 1 | 2);
        view->add(ox::refPtr<oxGraphics::iDrawable>(new testSquare({0, 0, 0}, 3, {255, 0, 0})));
        oxtest::paint(*view);
        std::unique_ptr<char[]> fromScene(view->writeToBuffer());
        ASSERT_TRUE(fromScene) << samples;
        // The view is 10 units wide and 5 high on 20 x 10 pixels; the square spans 3 units.
        EXPECT_EQ(oxtest::pixelOf(fromScene.get(), 20, 10, 5)[0], 255) << samples;
        EXPECT_EQ(oxtest::pixelOf(fromScene.get(), 20, 1, 5), (oxtest::rgba8{10, 20, 30, 255})) << samples;
        EXPECT_EQ(oxtest::pixelOf(fromScene.get(), 20, 10, 1), (oxtest::rgba8{10, 20, 30, 255})) << samples;

        // Whatever pack state a host left behind, the read-back is tight and the state comes back.
        GLuint hostBuffer = 0;
        glGenBuffers(1, &hostBuffer);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, hostBuffer);
        glPixelStorei(GL_PACK_ALIGNMENT, 8);
        glPixelStorei(GL_PACK_ROW_LENGTH, 999);
        glPixelStorei(GL_PACK_SKIP_ROWS, 3);
        std::unique_ptr<char[]> again(view->writeToBuffer());
        EXPECT_EQ(std::memcmp(fromScene.get(), again.get(), 20 * 10 * 4), 0) << samples;
        EXPECT_EQ(oxtest::readGlInteger(GL_PACK_ALIGNMENT), 8);
        EXPECT_EQ(oxtest::readGlInteger(GL_PACK_ROW_LENGTH), 999);
        EXPECT_EQ(oxtest::readGlInteger(GL_PACK_SKIP_ROWS), 3);
        EXPECT_EQ(oxtest::readGlInteger(GL_PIXEL_PACK_BUFFER_BINDING), static_cast<GLint>(hostBuffer));
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        glPixelStorei(GL_PACK_ROW_LENGTH, 0);
        glPixelStorei(GL_PACK_SKIP_ROWS, 0);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        glDeleteBuffers(1, &hostBuffer);

        auto frame = oxGraphics::openGL::glFrameBuffer::create(view, 20, 10);
        frame->renderBefore();
        oxtest::paint(*view);
        frame->renderAfter();
        std::unique_ptr<char[]> fromFrame(frame->writeToBuffer());
        ASSERT_TRUE(fromFrame) << samples;
        EXPECT_EQ(std::memcmp(fromScene.get(), fromFrame.get(), 20 * 10 * 4), 0) << samples;
    }
}

TEST_F(sceneTest, frameBufferOfNoSceneIsInertAndOneByOneReadsBgra) {
    auto inert = oxGraphics::openGL::glFrameBuffer::create(ox::refPtr<oxGraphics::scene>(), 7, 5);
    EXPECT_EQ(inert->writeToBuffer(), nullptr);
    EXPECT_EQ(inert->width(), 7);
    EXPECT_EQ(inert->height(), 5);
    inert->renderBefore();
    inert->renderAfter();

    auto view = oxtest::makeScene(1, 1, 0, /*presentToWindow*/ true);
    auto frame = oxGraphics::openGL::glFrameBuffer::create(view, 1, 1);
    EXPECT_TRUE(frame->ownsTargets());
    frame->renderBefore();
    oxtest::clearTo(1.0f, 0.5f, 0.0f, 1.0f);
    frame->renderAfter();
    std::unique_ptr<char[]> pixel(frame->writeToBuffer());
    const auto* bytes = reinterpret_cast<const unsigned char*>(pixel.get());
    EXPECT_EQ(bytes[0], 0);    // B
    EXPECT_NEAR(bytes[1], 128, 1); // G
    EXPECT_EQ(bytes[2], 255);  // R
    EXPECT_EQ(bytes[3], 255);  // A
}

TEST_F(sceneTest, aPlacedEntityKeepsItsPlacementToItselfAndLeftoverLineModeIsNoHarm) {
    auto view = oxtest::makeScene(100, 100, 4);
    view->setColor({0, 0, 0}, 1 | 2);
    auto box = std::make_shared<oxGeo::mesh3d>();
    oxGeo::meshfactory::appendBoxMesh(1, 1, 1, *box, true);
    auto placed = oxGraphics::meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d>(box));
    oxGeo::matrix3d shift;
    shift.setToTranslation({3, 3, 0});
    placed->setTransformation(shift);
    view->add(ox::refPtr<oxGraphics::iDrawable>(placed));
    view->add(ox::refPtr<oxGraphics::iDrawable>(new testSquare({0, 0, 0}, 2, {255, 0, 0})));
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE); // as a rubber band leaves it
    oxtest::paint(*view);
    std::unique_ptr<char[]> pixels(view->writeToBuffer());
    EXPECT_EQ(oxtest::pixelOf(pixels.get(), 100, 50, 50)[0], 255); // the square where it belongs, filled
    EXPECT_GT(oxtest::pixelOf(pixels.get(), 100, 80, 80)[1], 100);  // the white box at (3, 3)
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

TEST_F(sceneTest, droppingTheSceneDuringATransferWaitsForItsStepAndCleansUpHere) {
    auto view = oxtest::makeScene(32, 32, 4, false, /*smoothView*/ true);
    ox::refPtr<eventCounter> events(new eventCounter);
    view->addObserver(events);
    const unsigned int framebuffer = ox::dynamicRefCast<glScene>(view->implementation())->offscreenTargets().multisampledFramebuffer;
    view->setBackView(true, oxGeo::matrix3d(), oxGeo::point3d());
    view->setFrontView(true, oxGeo::matrix3d(), oxGeo::point3d()); // queued
    view.reset();                                                 // the last reference
    EXPECT_LE(events->viewSteps, 15); // stopped: the queued transfer never ran
    EXPECT_TRUE(oxtest::sharedGlContext()->isCurrent());
    EXPECT_FALSE(glIsFramebuffer(framebuffer)); // deleted on this thread, in this context
}

} // namespace
