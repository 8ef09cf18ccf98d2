#include "glTestFixture.h"

#include "oxglcontext.h"
#include "oxglentrypoints.h"
#include "oxlog.h"

#include <gtest/gtest.h>

namespace {

using oxGraphics::iGlContext;
using oxGraphics::openGL::adoptCurrentContext;
using oxGraphics::openGL::createHeadlessContext;
using oxGraphics::openGL::currentNativeContext;
using oxGraphics::openGL::isAnyContextCurrent;

class glContextTest : public oxtest::glTest {};

TEST_F(glContextTest, headlessContextHasTheRequestedFormatAndEntryPoints) {
    EXPECT_TRUE(oxGraphics::openGL::loadGlEntryPoints());
    EXPECT_TRUE(GLEW_VERSION_4_5);
    EXPECT_NE(glGenFramebuffers, nullptr);
    EXPECT_NE(glCreateBuffers, nullptr);   // 4.5
    EXPECT_NE(glBlitFramebufferEXT, nullptr);
    EXPECT_NE(oxtest::readGlInteger(GL_CONTEXT_PROFILE_MASK) & GL_CONTEXT_COMPATIBILITY_PROFILE_BIT, 0);
    EXPECT_NE(oxtest::readGlInteger(GL_CONTEXT_FLAGS) & GL_CONTEXT_FLAG_DEBUG_BIT, 0);
    const struct { GLenum name; GLint bits; } formats[] = {
        {GL_RED_BITS, 8}, {GL_GREEN_BITS, 8}, {GL_BLUE_BITS, 8}, {GL_ALPHA_BITS, 8}, {GL_DEPTH_BITS, 24}, {GL_STENCIL_BITS, 8}};
    for (const auto& format : formats) EXPECT_EQ(oxtest::readGlInteger(format.name), format.bits) << std::hex << format.name;
    const auto shared = oxtest::sharedGlContext();
    EXPECT_EQ(shared->width(), oxtest::kSharedContextSize);
    EXPECT_EQ(shared->height(), oxtest::kSharedContextSize);
    EXPECT_TRUE(shared->swapBuffers());   // a pbuffer has nothing to present
}

TEST_F(glContextTest, creationRejectsEmptyPbuffersWithOneLogLine) {
    const struct { int width, height; bool created; } cases[] = {{0, 16, false}, {16, 0, false}, {-1, -1, false}, {1, 1, true}};
    for (const auto& c : cases) {
        oxtest::sharedGlContext()->makeCurrent();
        oxlog::logCapture capture;
        const auto context = createHeadlessContext({c.width, c.height, false});
        EXPECT_EQ(bool(context), c.created) << c.width << "x" << c.height;
        const auto lines = capture.messages("oxGraphics::openGL::createHeadlessContext");
        if (c.created) {
            EXPECT_TRUE(lines.empty());
            EXPECT_EQ(context->width(), 1);
        } else {
            ASSERT_EQ(lines.size(), 1u);
            EXPECT_NE(lines[0].find(L"invalid pbuffer size"), std::wstring::npos) << lines[0];
            // A failed creation leaves the current context alone.
            EXPECT_TRUE(oxtest::sharedGlContext()->isCurrent());
        }
    }
}

TEST_F(glContextTest, destroyedContextStaysAnInertHandle) {
    const auto shared = oxtest::sharedGlContext();

    // Destroyed while current: released first, so nothing dangling is current afterwards.
    auto context = createHeadlessContext({64, 32, false});
    ASSERT_TRUE(context);
    EXPECT_TRUE(context->isCurrent());
    EXPECT_EQ(currentNativeContext(), context->nativeContext());
    EXPECT_EQ(context->width(), 64);
    EXPECT_EQ(context->height(), 32);
    ox::refPtr<iGlContext> holder = context;
    context->destroy();
    context->destroy();
    EXPECT_FALSE(holder->isValid());
    EXPECT_FALSE(holder->isCurrent());
    EXPECT_FALSE(holder->makeCurrent());
    EXPECT_FALSE(holder->swapBuffers());
    EXPECT_EQ(holder->nativeContext(), nullptr);
    EXPECT_EQ(holder->nativeDrawable(), nullptr);
    EXPECT_EQ(holder->nativeDisplay(), nullptr);
    EXPECT_EQ(holder->width(), 0);
    EXPECT_EQ(currentNativeContext(), nullptr);
    EXPECT_FALSE(isAnyContextCurrent());

    // Destroyed while another context is current: that one stays current and usable.
    auto other = createHeadlessContext({8, 8, false});
    ASSERT_TRUE(other);
    ASSERT_TRUE(shared->makeCurrent());
    other->destroy();
    EXPECT_FALSE(other->makeCurrent());
    EXPECT_TRUE(shared->isCurrent());
    EXPECT_EQ(currentNativeContext(), shared->nativeContext());
    oxtest::clearTo(0, 1, 0, 1);
    EXPECT_EQ(oxtest::readPixel(0, 0), (oxtest::rgba8{0, 255, 0, 255}));
}

TEST_F(glContextTest, contextsOnOneThreadKeepTheirOwnState) {
    const auto shared = oxtest::sharedGlContext();
    oxtest::clearTo(1, 0, 0, 1);
    const auto second = createHeadlessContext({32, 32, false});
    ASSERT_TRUE(second);
    EXPECT_FALSE(shared->isCurrent());
    oxtest::clearTo(0, 0, 1, 1);
    EXPECT_NE(shared->nativeContext(), second->nativeContext());
    EXPECT_EQ(shared->nativeDisplay(), second->nativeDisplay());   // one EGL display per process

    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(shared->makeCurrent());
        EXPECT_TRUE(shared->makeCurrent());   // already current: still true
        EXPECT_EQ(currentNativeContext(), shared->nativeContext());
        EXPECT_EQ(oxtest::readPixel(5, 5), (oxtest::rgba8{255, 0, 0, 255}));
        EXPECT_EQ(oxtest::readGlFloats(GL_COLOR_CLEAR_VALUE, 4), (std::vector<GLfloat>{1, 0, 0, 1}));
        ASSERT_TRUE(second->makeCurrent());
        EXPECT_FALSE(shared->isCurrent());
        EXPECT_EQ(oxtest::readPixel(5, 5), (oxtest::rgba8{0, 0, 255, 255}));
        EXPECT_EQ(oxtest::readGlFloats(GL_COLOR_CLEAR_VALUE, 4), (std::vector<GLfloat>{0, 0, 1, 1}));
    }
}

TEST_F(glContextTest, adoptedContextIsForgottenNotDestroyed) {
    const auto shared = oxtest::sharedGlContext();
    auto adopted = adoptCurrentContext();
    ASSERT_TRUE(adopted);
    EXPECT_EQ(adopted->nativeContext(), shared->nativeContext());
    EXPECT_EQ(adopted->nativeDrawable(), shared->nativeDrawable());
    EXPECT_EQ(adopted->nativeDisplay(), shared->nativeDisplay());
    EXPECT_EQ(adopted->width(), oxtest::kSharedContextSize);
    EXPECT_TRUE(adopted->isCurrent());

    auto other = createHeadlessContext({8, 8, false});
    ASSERT_TRUE(other);
    EXPECT_FALSE(adopted->isCurrent());
    ASSERT_TRUE(adopted->makeCurrent());
    EXPECT_TRUE(shared->isCurrent());

    adopted->destroy();
    adopted.reset();
    EXPECT_TRUE(shared->isValid());
    EXPECT_TRUE(shared->isCurrent());
    oxtest::clearTo(0, 0, 1, 1);
    EXPECT_EQ(oxtest::readPixel(1, 1), (oxtest::rgba8{0, 0, 255, 255}));

    // Nothing current: nothing to adopt, said once.
    other->makeCurrent();
    other->destroy();
    ASSERT_FALSE(isAnyContextCurrent());
    oxlog::logCapture capture;
    EXPECT_FALSE(adoptCurrentContext());
    EXPECT_EQ(capture.messages("oxGraphics::openGL::adoptCurrentContext").size(), 1u);
}

} // namespace
