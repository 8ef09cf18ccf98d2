// Textures, renderbuffers and framebuffer objects on the headless context: the GL state each
// description creates, bindings put back, and who deletes which name in which context.
#include "assertRecorder.h"
#include "glTestFixture.h"
#include "oxgltexture.h"

using namespace oxGraphics;
using namespace oxGraphics::openGL;

namespace {

class glTextureTest : public oxtest::glTest {};

GLint texParameter(GLenum target, GLenum name) {
    GLint value = 0;
    glGetTexParameteriv(target, name, &value);
    return value;
}

texDesc_t describe(eTextureFormat format, eTextureKind kind, std::uint8_t samples = 1) {
    texDesc_t desc;
    desc.format = format;
    desc.kind = kind;
    desc.numSamples = samples;
    desc.width = 16;
    desc.height = 8;
    return desc;
}

TEST_F(glTextureTest, formatsAndRenderbufferFormatsReachGl) {
    const GLenum textureFormats[] = {GL_R8,   GL_R16F,   GL_R32I,   GL_R32UI,  GL_RGB8,             GL_RGBA8,
                                     GL_RGBA16F, GL_R32F, GL_RGB32F, GL_RGBA32F, GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT32F};
    for (std::uint32_t format = 0; format < std::size(textureFormats); ++format) {
        SCOPED_TRACE(format);
        const auto texture = glTexture::createTexture(describe(static_cast<eTextureFormat>(format), eTextureKind::texture2d));
        texture->bind();
        GLint internal = 0, width = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &internal);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
        EXPECT_EQ(static_cast<GLenum>(internal), textureFormats[format]);
        EXPECT_EQ(width, 16);
        EXPECT_EQ(texParameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
        texture->unbind();
    }

    const GLenum renderbufferFormats[] = {GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT32, GL_DEPTH_COMPONENT24,
                                          GL_DEPTH32F_STENCIL8, GL_DEPTH24_STENCIL8};
    for (std::uint32_t format = 0; format < std::size(renderbufferFormats); ++format) {
        for (const std::uint8_t samples : {1, 4}) {
            SCOPED_TRACE(testing::Message() << format << " samples " << int(samples));
            const auto renderbuffer = glRenderbuffer::createRenderbuffer({static_cast<eRenderbufferFormat>(format), samples, 16, 8});
            renderbuffer->bind();
            GLint internal = 0, granted = -1;
            glGetRenderbufferParameteriv(GL_RENDERBUFFER, GL_RENDERBUFFER_INTERNAL_FORMAT, &internal);
            glGetRenderbufferParameteriv(GL_RENDERBUFFER, GL_RENDERBUFFER_SAMPLES, &granted);
            EXPECT_EQ(static_cast<GLenum>(internal), renderbufferFormats[format]);
            EXPECT_EQ(granted, samples == 1 ? 0 : 4);
            renderbuffer->unbind();
        }
    }
}

TEST_F(glTextureTest, multisampleTextureHasNoSamplerState) {
    const auto texture = glTexture::createTexture(describe(eTextureFormat::rgba8, eTextureKind::texture2dMultisample, 4));
    texture->bind();
    GLint samples = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D_MULTISAMPLE, 0, GL_TEXTURE_SAMPLES, &samples);
    EXPECT_EQ(samples, 4);
    // Setting any filter on a multisample texture is GL_INVALID_ENUM, which the fixture reports;
    // the filter reads as the driver's untouched default.
    EXPECT_EQ(texParameter(GL_TEXTURE_2D_MULTISAMPLE, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    texture->unbind();
}

TEST_F(glTextureTest, depthCompareStateGoesToTheTexture2dBinding) {
    GLuint plain = 0;
    glGenTextures(1, &plain);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, plain);
    glActiveTexture(GL_TEXTURE3);

    texDesc_t desc = describe(eTextureFormat::depth24, eTextureKind::rectangle);
    desc.depthCompare = true;
    const auto rectangle = glTexture::createTexture(desc);

    EXPECT_EQ(oxtest::readGlInteger(GL_ACTIVE_TEXTURE), GL_TEXTURE3);
    glActiveTexture(GL_TEXTURE0);
    EXPECT_EQ(oxtest::readGlInteger(GL_TEXTURE_BINDING_2D), static_cast<GLint>(plain));
    EXPECT_EQ(oxtest::readGlInteger(GL_TEXTURE_BINDING_RECTANGLE), 0);
    EXPECT_EQ(texParameter(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE), GL_COMPARE_REF_TO_TEXTURE);
    EXPECT_EQ(texParameter(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC), GL_LEQUAL);
    EXPECT_EQ(texParameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S), GL_CLAMP_TO_BORDER);
    EXPECT_EQ(texParameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T), GL_CLAMP_TO_BORDER);
    GLfloat border[4] = {};
    glGetTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, border);
    EXPECT_EQ(std::vector<GLfloat>(border, border + 4), std::vector<GLfloat>(4, 1.0f));

    rectangle->bind();
    EXPECT_EQ(texParameter(GL_TEXTURE_RECTANGLE, GL_TEXTURE_COMPARE_MODE), GL_NONE);
    rectangle->unbind();
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteTextures(1, &plain);
}

TEST_F(glTextureTest, badDescriptionsAssertAndGoOnWithInvalidEnum) {
    // GL_INVALID_ENUM as internal format makes glTexImage2D fail with GL_INVALID_VALUE; as a
    // target or renderbuffer format it is GL_INVALID_ENUM.
    expectGlError(GL_INVALID_VALUE);
    expectGlError(GL_INVALID_ENUM);
    oxtest::assertRecorder asserts;
    const auto badFormat = glTexture::createTexture(describe(static_cast<eTextureFormat>(12), eTextureKind::texture2d));
    const auto badKind = glTexture::createTexture(describe(eTextureFormat::rgba8, static_cast<eTextureKind>(6)));
    const auto badRenderbuffer = glRenderbuffer::createRenderbuffer({static_cast<eRenderbufferFormat>(5), 1, 16, 8});
    EXPECT_NE(badFormat->handle(), 0u);
    EXPECT_EQ(asserts.conditions(), std::vector<std::wstring>(3, L"false"));
    EXPECT_EQ(glTexture::glInternalFormat(static_cast<eTextureFormat>(12)), static_cast<std::uint32_t>(GL_INVALID_ENUM));
    EXPECT_EQ(glTexture::glTarget(static_cast<eTextureKind>(6)), static_cast<std::uint32_t>(GL_INVALID_ENUM));

    asserts.clear();
    const auto multisampled1d = glTexture::createTexture(describe(eTextureFormat::r8, eTextureKind::texture1d, 4));
    EXPECT_EQ(asserts.conditions(), std::vector<std::wstring>{L"mTexDesc.numSamples == 1"});
}

TEST_F(glTextureTest, bindAndUnbindPutBackWhatTheyFound) {
    GLuint previousTexture = 0, previousRenderbuffer = 0, previousFramebuffer = 0;
    glGenTextures(1, &previousTexture);
    glGenRenderbuffers(1, &previousRenderbuffer);
    glGenFramebuffers(1, &previousFramebuffer);
    glActiveTexture(GL_TEXTURE2);
    glBindTexture(GL_TEXTURE_2D, previousTexture);
    glBindRenderbuffer(GL_RENDERBUFFER, previousRenderbuffer);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, previousFramebuffer);
    glViewport(1, 2, 30, 40);

    const auto texture = glTexture::createTexture(describe(eTextureFormat::rgba8, eTextureKind::texture2d));
    EXPECT_EQ(oxtest::readGlInteger(GL_TEXTURE_BINDING_2D), static_cast<GLint>(previousTexture));
    texture->bind();
    EXPECT_EQ(oxtest::readGlInteger(GL_TEXTURE_BINDING_2D), static_cast<GLint>(texture->handle()));
    glActiveTexture(GL_TEXTURE5);   // unbind puts back unit 2, not the active one
    texture->unbind();
    EXPECT_EQ(oxtest::readGlInteger(GL_ACTIVE_TEXTURE), GL_TEXTURE5);
    glActiveTexture(GL_TEXTURE2);
    EXPECT_EQ(oxtest::readGlInteger(GL_TEXTURE_BINDING_2D), static_cast<GLint>(previousTexture));

    const auto renderbuffer = glRenderbuffer::createRenderbuffer({eRenderbufferFormat::depth24, 1, 16, 8});
    EXPECT_EQ(oxtest::readGlInteger(GL_RENDERBUFFER_BINDING), static_cast<GLint>(previousRenderbuffer));
    renderbuffer->bind();
    EXPECT_EQ(oxtest::readGlInteger(GL_RENDERBUFFER_BINDING), static_cast<GLint>(renderbuffer->handle()));
    renderbuffer->unbind();
    EXPECT_EQ(oxtest::readGlInteger(GL_RENDERBUFFER_BINDING), static_cast<GLint>(previousRenderbuffer));

    // Creation leaves the framebuffer bound with an empty viewport.
    const auto fbo = glFbo::createFbo(false);
    EXPECT_TRUE(fbo->isBound());
    EXPECT_EQ(oxtest::readGlInteger(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(fbo->handle()));
    EXPECT_EQ(oxtest::readGlIntegers(GL_VIEWPORT, 4), (std::vector<GLint>{0, 0, 0, 0}));
    fbo->unbind();
    EXPECT_EQ(oxtest::readGlInteger(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(previousFramebuffer));
    EXPECT_EQ(oxtest::readGlInteger(GL_READ_FRAMEBUFFER_BINDING), 0);
    EXPECT_EQ(oxtest::readGlIntegers(GL_VIEWPORT, 4), (std::vector<GLint>{1, 2, 30, 40}));
    fbo->bind(16, 8);
    fbo->bind(12, 6);   // bound again: only the viewport changes
    EXPECT_EQ(oxtest::readGlIntegers(GL_VIEWPORT, 4), (std::vector<GLint>{0, 0, 12, 6}));
    fbo->unbind();
    EXPECT_EQ(oxtest::readGlInteger(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(previousFramebuffer));
    EXPECT_EQ(oxtest::readGlIntegers(GL_VIEWPORT, 4), (std::vector<GLint>{1, 2, 30, 40}));

    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    glBindTexture(GL_TEXTURE_2D, 0);
    glActiveTexture(GL_TEXTURE0);
    glDeleteFramebuffers(1, &previousFramebuffer);
    glDeleteRenderbuffers(1, &previousRenderbuffer);
    glDeleteTextures(1, &previousTexture);
    glViewport(0, 0, oxtest::kSharedContextSize, oxtest::kSharedContextSize);
}

TEST_F(glTextureTest, namesAreDeletedOnlyInTheirOwnContext) {
    // Owned here: released here, every name is gone.
    {
        ox::refPtr<iTexture> texture = glTexture::createTexture(describe(eTextureFormat::rgba8, eTextureKind::texture2d));
        ox::refPtr<iRenderbuffer> renderbuffer = glRenderbuffer::createRenderbuffer({eRenderbufferFormat::depth24, 1, 16, 8});
        ox::refPtr<iFbo> fbo = glFbo::createFbo(false);
        fbo->attachColorTexture(texture, 0);
        const GLuint names[] = {texture->handle(), renderbuffer->handle(), fbo->handle()};
        texture.reset();   // the framebuffer still holds it
        EXPECT_EQ(glIsTexture(names[0]), GL_TRUE);
        fbo.reset();
        renderbuffer.reset();
        EXPECT_EQ(glIsTexture(names[0]), GL_FALSE);
        EXPECT_EQ(glIsRenderbuffer(names[1]), GL_FALSE);
        EXPECT_EQ(glIsFramebuffer(names[2]), GL_FALSE);
    }

    // Owned by another context: released here, no GL call, the name stays in its context.
    auto other = createHeadlessContext({16, 16, false});
    ASSERT_TRUE(other);
    ox::refPtr<iTexture> foreign = glTexture::createTexture(describe(eTextureFormat::rgba8, eTextureKind::texture2d));
    const GLuint foreignName = foreign->handle();
    EXPECT_EQ(foreign->ownerContext(), other->nativeContext());
    ASSERT_TRUE(oxtest::sharedGlContext()->makeCurrent());
    foreign.reset();
    ASSERT_TRUE(other->makeCurrent());
    EXPECT_EQ(glIsTexture(foreignName), GL_TRUE);

    // Owned by a context that is gone: released with nothing current, nothing happens.
    foreign = glTexture::createTexture(describe(eTextureFormat::rgba8, eTextureKind::texture2d));
    other->destroy();
    EXPECT_EQ(currentNativeContext(), nullptr);
    foreign.reset();
    ASSERT_TRUE(oxtest::sharedGlContext()->makeCurrent());
}

} // namespace
