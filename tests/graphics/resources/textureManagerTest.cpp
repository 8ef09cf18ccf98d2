// Framebuffers assembled by the texture manager from texture lists and a depth renderbuffer.
#include "glCallCounter.h"

#include "assertRecorder.h"
#include "glTestFixture.h"
#include "oxgltexturemanager.h"

using namespace oxGraphics;
using namespace oxGraphics::openGL;

namespace {

class glTextureManagerTest : public oxtest::glTest {
protected:
    ox::refPtr<iTexture> texture(eTextureFormat format, eTextureKind kind = eTextureKind::texture2d) {
        texDesc_t desc;
        desc.format = format;
        desc.kind = kind;
        desc.width = 32;
        desc.height = 32;
        return mManager.createTexture(desc);
    }
    GLint attachment(GLuint fbo, GLenum point, GLenum what) {
        GLint value = 0;
        glBindFramebuffer(GL_FRAMEBUFFER, fbo);
        glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, point, what, &value);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        return value;
    }
    // Draw and read buffer of a framebuffer.
    std::pair<GLint, GLint> buffers(GLuint fbo) {
        glBindFramebuffer(GL_FRAMEBUFFER, fbo);
        const std::pair<GLint, GLint> result{oxtest::readGlInteger(GL_DRAW_BUFFER), oxtest::readGlInteger(GL_READ_BUFFER)};
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        return result;
    }

    glTextureManager mManager;
};

TEST_F(glTextureManagerTest, assemblesColourAndDepthAttachmentsAndRestoresState) {
    glViewport(3, 4, 50, 60);
    const auto colour = texture(eTextureFormat::rgba8);
    const auto depth = texture(eTextureFormat::depth24);
    const auto fbo = mManager.createFramebuffer({{colour, 2}, {depth, 0}}, {});
    ASSERT_TRUE(fbo);
    EXPECT_FALSE(fbo->isBound());
    EXPECT_EQ(oxtest::readGlInteger(GL_DRAW_FRAMEBUFFER_BINDING), 0);
    EXPECT_EQ(oxtest::readGlIntegers(GL_VIEWPORT, 4), (std::vector<GLint>{3, 4, 50, 60}));
    EXPECT_EQ(attachment(fbo->handle(), GL_COLOR_ATTACHMENT2, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME),
              static_cast<GLint>(colour->handle()));
    EXPECT_EQ(attachment(fbo->handle(), GL_DEPTH_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME),
              static_cast<GLint>(depth->handle()));
    EXPECT_NE(buffers(fbo->handle()).first, GL_NONE);
    EXPECT_EQ(mManager.currentContext(), oxtest::sharedGlContext()->nativeContext());
    glViewport(0, 0, oxtest::kSharedContextSize, oxtest::kSharedContextSize);
}

TEST_F(glTextureManagerTest, withoutColourTextureDrawAndReadBuffersAreNone) {
    const auto depthTexture = mManager.createFramebuffer({{texture(eTextureFormat::depth32f), 0}}, {});
    const auto depthRenderbuffer =
        mManager.createFramebuffer({}, mManager.createRenderbuffer({eRenderbufferFormat::depth24Stencil8, 1, 32, 32}));
    for (const auto& fbo : {depthTexture, depthRenderbuffer}) {
        ASSERT_TRUE(fbo);
        EXPECT_TRUE(fbo->hasNoColorBuffer());
        EXPECT_EQ(buffers(fbo->handle()), (std::pair<GLint, GLint>{GL_NONE, GL_NONE}));
    }
    EXPECT_EQ(attachment(depthRenderbuffer->handle(), GL_STENCIL_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE),
              GL_RENDERBUFFER);
}

TEST_F(glTextureManagerTest, secondDepthTextureAssertsYetFramebufferIsReturned) {
    const oxtest::assertRecorder asserts;
    const auto second = texture(eTextureFormat::depth24);
    const auto fbo = mManager.createFramebuffer(
        {{texture(eTextureFormat::rgba8), 0}, {texture(eTextureFormat::depth24), 0}, {second, 0}}, {});
    EXPECT_EQ(asserts.conditions(), std::vector<std::wstring>{L"numDepthTextures <= 1"});
    ASSERT_TRUE(fbo);
    EXPECT_EQ(attachment(fbo->handle(), GL_DEPTH_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME),
              static_cast<GLint>(second->handle()));
}

TEST_F(glTextureManagerTest, incompleteFramebufferIsReleasedAndEmpty) {
    // A rectangle texture gets no storage at creation: attached, it leaves the framebuffer incomplete.
    const oxtest::glCallCounter<&__glewDeleteFramebuffers> deleteFramebuffers;
    const auto fbo = mManager.createFramebuffer({{texture(eTextureFormat::rgba8, eTextureKind::rectangle), 0}}, {});
    EXPECT_FALSE(fbo);
    EXPECT_EQ(deleteFramebuffers.calls(), 1);
    EXPECT_EQ(oxtest::readGlInteger(GL_DRAW_FRAMEBUFFER_BINDING), 0);

    const oxtest::assertRecorder asserts;
    EXPECT_FALSE(mManager.createFramebuffer({{texture(eTextureFormat::rgba8, eTextureKind::texture3d), 0}}, {}));
    EXPECT_EQ(asserts.conditions(), std::vector<std::wstring>{L"false"});   // kind 4 cannot be attached
}

} // namespace
