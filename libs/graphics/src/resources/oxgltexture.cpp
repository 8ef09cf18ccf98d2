#include "oxgltexture.h"

#include "glstate/glscopedstate.h"
#include "oxassert.h"
#include "oxglcontext.h"

#include <GL/glew.h>

#include <optional>

namespace oxGraphics::openGL {

namespace {

using glstate::readInteger;

bool isIntegerFormat(eTextureFormat format) {
    return format == eTextureFormat::r32i || format == eTextureFormat::r32ui;
}

// Framebuffer targets may only be attached from these kinds.
bool isAttachableKind(eTextureKind kind) {
    return kind == eTextureKind::texture2d || kind == eTextureKind::texture2dMultisample ||
           kind == eTextureKind::rectangle;
}

} // namespace

// --- glTexture ---------------------------------------------------------------------------------

std::uint32_t glTexture::glTarget(eTextureKind kind) {
    switch (kind) {
    case eTextureKind::texture1d: return GL_TEXTURE_1D;
    case eTextureKind::texture2d: return GL_TEXTURE_2D;
    case eTextureKind::texture2dMultisample: return GL_TEXTURE_2D_MULTISAMPLE;
    case eTextureKind::rectangle: return GL_TEXTURE_RECTANGLE;
    case eTextureKind::texture3d: return GL_TEXTURE_3D;
    case eTextureKind::cubeMap: return GL_TEXTURE_CUBE_MAP;
    }
    OX_ASSERT(false);
    return GL_INVALID_ENUM;
}

std::uint32_t glTexture::glInternalFormat(eTextureFormat format) {
    switch (format) {
    case eTextureFormat::r8: return GL_R8;
    case eTextureFormat::r16f: return GL_R16F;
    case eTextureFormat::r32i: return GL_R32I;
    case eTextureFormat::r32ui: return GL_R32UI;
    case eTextureFormat::rgb8: return GL_RGB8;
    case eTextureFormat::rgba8: return GL_RGBA8;
    case eTextureFormat::rgba16f: return GL_RGBA16F;
    case eTextureFormat::r32f: return GL_R32F;
    case eTextureFormat::rgb32f: return GL_RGB32F;
    case eTextureFormat::rgba32f: return GL_RGBA32F;
    case eTextureFormat::depth24: return GL_DEPTH_COMPONENT24;
    case eTextureFormat::depth32f: return GL_DEPTH_COMPONENT32F;
    }
    OX_ASSERT(false);
    return GL_INVALID_ENUM;
}

ox::refPtr<iTexture> glTexture::createTexture(const texDesc_t& desc) { return ox::refPtr<iTexture>(new glTexture(desc)); }

glTexture::glTexture(const texDesc_t& desc) : mTexDesc(desc), mContext(currentNativeContext()) {
    if (mContext == nullptr) return;   // no context: nothing can be created

    const GLenum target = mTarget = glTarget(mTexDesc.kind);
    const glTextureBindingScope binding(GL_TEXTURE0, target);
    // A null pointer means "no data" only while no unpack buffer is bound; a host's would be read.
    const glBufferBindingScope noUnpackBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    glGenTextures(1, &mName);
    glBindTexture(target, mName);
    allocate();
}

// Runs with the new texture bound to its target on unit 0.
void glTexture::allocate() {
    const GLenum target = mTarget;
    const GLenum internalFormat = glInternalFormat(mTexDesc.format);
    // No data is uploaded, but the pixel format must still suit the internal format: depth
    // formats take depth components and integer formats integer components.
    const GLenum pixelFormat = isDepthFormat(mTexDesc.format) ? GL_DEPTH_COMPONENT
                               : isIntegerFormat(mTexDesc.format) ? GL_RED_INTEGER
                                                                  : GL_RED;
    const GLsizei width = mTexDesc.width;
    const GLsizei height = mTexDesc.height;

    switch (mTexDesc.kind) {
    case eTextureKind::texture1d:
        OX_ASSERT(mTexDesc.numSamples == 1);
        glTexImage1D(target, 0, static_cast<GLint>(internalFormat), width, 0, pixelFormat, GL_UNSIGNED_BYTE, nullptr);
        break;
    case eTextureKind::texture2d:
    case eTextureKind::texture2dMultisample:
        if (mTexDesc.numSamples != 1) {
            glTexImage2DMultisample(target, mTexDesc.numSamples, internalFormat, width, height, GL_TRUE);
            glTexParameteri(target, GL_TEXTURE_BASE_LEVEL, 0);
        } else {
            glTexImage2D(target, 0, static_cast<GLint>(internalFormat), width, height, 0, pixelFormat, GL_UNSIGNED_BYTE,
                         nullptr);
        }
        break;
    default:
        break;   // rectangle, 3D and cube-map storage is the user's
    }

    // A multisample texture cannot be sampled with filters: it has no sampler state.
    if (mTexDesc.kind == eTextureKind::texture2dMultisample) return;

    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    if (mTexDesc.mipmaps) {
        glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
        glGenerateMipmap(target);
    } else {
        glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    }

    if (mTexDesc.depthCompare) {
        // Set on the 2D binding whatever the kind: the shadow lookups that use it sample 2D
        // textures. A border of 1 makes lookups outside the texture compare as passing.
        static constexpr GLfloat kBorder[4] = {1.0f, 1.0f, 1.0f, 1.0f};
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_REF_TO_TEXTURE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);
        glTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, kBorder);
    }
}

glTexture::~glTexture() {
    if (mName == 0 || !ownerIsCurrent()) return;   // see the header: the context keeps the name
    unbind();
    glDeleteTextures(1, &mName);
}

bool glTexture::ownerIsCurrent() const { return mContext != nullptr && currentNativeContext() == mContext; }

void glTexture::bind() {
    if (mBound || mName == 0 || !ownerIsCurrent()) return;
    const GLenum query = glstate::textureBindingQuery(mTarget);
    if (query == 0) return;
    mBoundUnit = static_cast<std::uint32_t>(readInteger(GL_ACTIVE_TEXTURE));
    mPreviousTexture = static_cast<std::uint32_t>(readInteger(query));
    glBindTexture(mTarget, mName);
    mBound = true;
}

void glTexture::unbind() {
    if (!mBound || !ownerIsCurrent()) return;
    const GLenum activeUnit = static_cast<GLenum>(readInteger(GL_ACTIVE_TEXTURE));
    if (activeUnit != mBoundUnit) glActiveTexture(mBoundUnit);
    // A texture deleted since bind() cannot be bound again; its binding had reverted to 0.
    const GLuint previous = glIsTexture(mPreviousTexture) == GL_TRUE ? mPreviousTexture : 0;
    glBindTexture(mTarget, previous);
    if (activeUnit != mBoundUnit) glActiveTexture(activeUnit);
    mBound = false;
}

// --- glRenderbuffer ----------------------------------------------------------------------------

std::uint32_t glRenderbuffer::glInternalFormat(eRenderbufferFormat format) {
    switch (format) {
    case eRenderbufferFormat::depth32f: return GL_DEPTH_COMPONENT32F;
    case eRenderbufferFormat::depth32: return GL_DEPTH_COMPONENT32;
    case eRenderbufferFormat::depth24: return GL_DEPTH_COMPONENT24;
    case eRenderbufferFormat::depth32fStencil8: return GL_DEPTH32F_STENCIL8;
    case eRenderbufferFormat::depth24Stencil8: return GL_DEPTH24_STENCIL8;
    }
    OX_ASSERT(false);
    return GL_INVALID_ENUM;
}

ox::refPtr<iRenderbuffer> glRenderbuffer::createRenderbuffer(const rbDesc_t& desc) {
    return ox::refPtr<iRenderbuffer>(new glRenderbuffer(desc));
}

glRenderbuffer::glRenderbuffer(const rbDesc_t& desc) : mRbDesc(desc), mContext(currentNativeContext()) {
    if (mContext == nullptr) return;
    glGenRenderbuffers(1, &mName);
    const glRenderbufferBindingScope binding(mName);
    const GLenum format = glInternalFormat(mRbDesc.format);
    if (mRbDesc.numSamples != 1)
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, mRbDesc.numSamples, format, mRbDesc.width, mRbDesc.height);
    else
        glRenderbufferStorage(GL_RENDERBUFFER, format, mRbDesc.width, mRbDesc.height);
}

glRenderbuffer::~glRenderbuffer() {
    if (mName == 0 || !ownerIsCurrent()) return;
    unbind();
    glDeleteRenderbuffers(1, &mName);
}

bool glRenderbuffer::ownerIsCurrent() const { return mContext != nullptr && currentNativeContext() == mContext; }

void glRenderbuffer::bind() {
    if (mBound || mName == 0 || !ownerIsCurrent()) return;
    mPreviousRenderbuffer = static_cast<std::uint32_t>(readInteger(GL_RENDERBUFFER_BINDING));
    glBindRenderbuffer(GL_RENDERBUFFER, mName);
    mBound = true;
}

void glRenderbuffer::unbind() {
    if (!mBound || !ownerIsCurrent()) return;
    const GLuint previous = glIsRenderbuffer(mPreviousRenderbuffer) == GL_TRUE ? mPreviousRenderbuffer : 0;
    glBindRenderbuffer(GL_RENDERBUFFER, previous);
    mBound = false;
}

// --- glFbo -------------------------------------------------------------------------------------

// Makes the framebuffer the GL_FRAMEBUFFER binding for one operation when it is not bound, and
// puts the draw and read bindings back afterwards.
class glFbo::scopedBinding {
public:
    explicit scopedBinding(const glFbo& fbo) {
        if (!fbo.mBound) mScope.emplace(GL_FRAMEBUFFER, fbo.mName);
    }

private:
    std::optional<glFramebufferBindingScope> mScope;
};

ox::refPtr<iFbo> glFbo::createFbo(bool noColorBuffer) {
    ox::refPtr<iFbo> fbo(new glFbo(noColorBuffer));
    if (fbo->handle() == 0) return {};
    return fbo;
}

glFbo::glFbo(bool noColorBuffer) : mContext(currentNativeContext()), mNoColorBuffer(noColorBuffer) {
    if (mContext == nullptr) return;
    glGenFramebuffers(1, &mName);
    if (ownerIsCurrent()) {
        // Bound with an empty viewport until the user binds it with its size.
        saveBindingAndViewport();
        glViewport(0, 0, 0, 0);
        glBindFramebuffer(GL_FRAMEBUFFER, mName);
        mBound = true;
    }
    if (mNoColorBuffer) {
        glDrawBuffer(GL_NONE);
        glReadBuffer(GL_NONE);
    }
}

glFbo::~glFbo() {
    if (mName == 0 || !ownerIsCurrent()) return;
    unbind();
    glDeleteFramebuffers(1, &mName);
}

bool glFbo::ownerIsCurrent() const { return mContext != nullptr && currentNativeContext() == mContext; }

void glFbo::saveBindingAndViewport() {
    mSavedDrawFramebuffer = static_cast<std::uint32_t>(readInteger(GL_DRAW_FRAMEBUFFER_BINDING));
    mSavedReadFramebuffer = static_cast<std::uint32_t>(readInteger(GL_READ_FRAMEBUFFER_BINDING));
    glGetIntegerv(GL_VIEWPORT, mSavedViewport.data());
}

void glFbo::bind(int width, int height) {
    if (mName == 0 || !ownerIsCurrent()) return;
    if (!mBound) saveBindingAndViewport();   // bound again: keep what the first bind found
    glViewport(0, 0, width, height);
    glBindFramebuffer(GL_FRAMEBUFFER, mName);
    mBound = true;
}

void glFbo::unbind() {
    if (!mBound || !ownerIsCurrent()) return;
    glViewport(mSavedViewport[0], mSavedViewport[1], mSavedViewport[2], mSavedViewport[3]);
    // A framebuffer deleted since bind() cannot be bound again; its binding had reverted to 0.
    const auto restorable = [](std::uint32_t name) { return name == 0 || glIsFramebuffer(name) == GL_TRUE ? name : 0u; };
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, restorable(mSavedDrawFramebuffer));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, restorable(mSavedReadFramebuffer));
    mBound = false;
}

void glFbo::keepTexture(std::uint32_t attachment, const ox::refPtr<iTexture>& texture) {
    for (auto& [point, kept] : mTextures)
        if (point == attachment) {
            kept = texture;
            return;
        }
    mTextures.emplace_back(attachment, texture);
}

bool glFbo::attachColorTexture(const ox::refPtr<iTexture>& texture, std::uint8_t index) {
    if (!texture || !isAttachableKind(texture->desc().kind)) {
        OX_ASSERT(false);
        return false;
    }
    if (mName == 0 || !ownerIsCurrent()) return false;
    const scopedBinding binding(*this);
    const GLenum attachment = GL_COLOR_ATTACHMENT0 + index;
    glFramebufferTexture2D(GL_FRAMEBUFFER, attachment, glTexture::glTarget(texture->desc().kind), texture->handle(), 0);
    keepTexture(attachment, texture);
    return true;
}

bool glFbo::attachDepthTexture(const ox::refPtr<iTexture>& texture) {
    if (!texture || !isAttachableKind(texture->desc().kind)) {
        OX_ASSERT(false);
        return false;
    }
    if (mName == 0 || !ownerIsCurrent()) return false;
    const scopedBinding binding(*this);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, glTexture::glTarget(texture->desc().kind),
                           texture->handle(), 0);
    keepTexture(GL_DEPTH_ATTACHMENT, texture);
    return true;
}

bool glFbo::attachDepthRenderbuffer(const ox::refPtr<iRenderbuffer>& renderbuffer) {
    if (!renderbuffer) {
        OX_ASSERT(false);
        return false;
    }
    if (mName == 0 || !ownerIsCurrent()) return false;
    const eRenderbufferFormat format = renderbuffer->desc().format;
    const bool hasStencil =
        format == eRenderbufferFormat::depth24Stencil8 || format == eRenderbufferFormat::depth32fStencil8;
    const scopedBinding binding(*this);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, hasStencil ? GL_DEPTH_STENCIL_ATTACHMENT : GL_DEPTH_ATTACHMENT,
                              GL_RENDERBUFFER, renderbuffer->handle());
    mDepthRenderbuffer = renderbuffer;
    return true;
}

bool glFbo::isComplete() {
    if (mName == 0 || !ownerIsCurrent()) return false;
    const scopedBinding binding(*this);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

} // namespace oxGraphics::openGL
