#pragma once
// OpenGL textures, renderbuffers and framebuffer objects.
//
// Ownership and contexts: each object records the native context current at its creation
// (currentNativeContext()) and owns exactly one GL name in it. GL work happens only while that
// context is current on the calling thread; otherwise an operation does nothing. In particular
// the destructor deletes the name only when the owning context is current: released anywhere
// else (another context current, none current, or the context already destroyed) it makes no GL
// call, and the name stays allocated in its context until that context is destroyed, which
// frees it with everything else. Release GPU resources with their context current to reclaim
// them earlier.
//
// Bad enumerations raise the assertion "false" and go on with GL_INVALID_ENUM, which the driver
// then reports as a GL error.
#include "oxgraphics_export.h"
#include "oxrefobj.h"
#include "oxrefptr.h"
#include "oxtexture.h"

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace oxGraphics::openGL {

/// A GL texture. Creation (on texture unit 0, which is active afterwards as before):
/// storage for kinds 0 to 2 (multisampled for kinds 1 and 2 when numSamples != 1), no data;
/// sampler state (linear filtering, mipmapped when asked) except for kind 2; with depth compare,
/// compare mode GL_COMPARE_REF_TO_TEXTURE / GL_LEQUAL and clamp-to-border with border 1 on the
/// GL_TEXTURE_2D binding of unit 0, whatever the kind. The bindings of unit 0 and the active
/// unit found at creation are put back afterwards.
class OX_GRAPHICS_API glTexture : public oxGraphics::iTexture, public ox::refObj {
public:
    static ox::refPtr<oxGraphics::iTexture> createTexture(const texDesc_t& desc);

    const texDesc_t& desc() const override { return mTexDesc; }
    std::uint32_t handle() const override { return mName; }
    void bind() override;
    void unbind() override;
    bool isBound() const override { return mBound; }
    void* ownerContext() const override { return mContext; }

    /// GL target of a texture kind; GL_INVALID_ENUM (after the assertion "false") outside the table.
    static std::uint32_t glTarget(eTextureKind kind);
    /// GL internal format; GL_INVALID_ENUM (after the assertion "false") outside the table.
    static std::uint32_t glInternalFormat(eTextureFormat format);

protected:
    explicit glTexture(const texDesc_t& desc);
    ~glTexture() override;

private:
    void allocate();
    bool ownerIsCurrent() const;

    std::uint32_t mName = 0;
    texDesc_t mTexDesc;
    void* mContext = nullptr;
    bool mBound = false;
    std::uint32_t mTarget = 0;   // from the kind, looked up once so a bad kind asserts once
    // What bind() replaced: the unit it bound on and that unit's previous texture.
    std::uint32_t mBoundUnit = 0;
    std::uint32_t mPreviousTexture = 0;
};

/// A GL renderbuffer. Creation allocates its storage (multisampled when numSamples != 1) and
/// leaves the renderbuffer binding as it was.
class OX_GRAPHICS_API glRenderbuffer : public oxGraphics::iRenderbuffer, public ox::refObj {
public:
    static ox::refPtr<oxGraphics::iRenderbuffer> createRenderbuffer(const rbDesc_t& desc);

    const rbDesc_t& desc() const override { return mRbDesc; }
    std::uint32_t handle() const override { return mName; }
    void bind() override;
    void unbind() override;
    bool isBound() const override { return mBound; }
    void* ownerContext() const override { return mContext; }

    /// GL internal format; GL_INVALID_ENUM (after the assertion "false") outside the table.
    static std::uint32_t glInternalFormat(eRenderbufferFormat format);

protected:
    explicit glRenderbuffer(const rbDesc_t& desc);
    ~glRenderbuffer() override;

private:
    bool ownerIsCurrent() const;

    std::uint32_t mName = 0;
    rbDesc_t mRbDesc;
    void* mContext = nullptr;
    bool mBound = false;
    std::uint32_t mPreviousRenderbuffer = 0;
};

/// A GL framebuffer object. Creation leaves the new framebuffer bound (as GL_FRAMEBUFFER) with
/// the viewport (0, 0, 0, 0), ready for its attachments; unbind() puts back the framebuffer
/// bindings and viewport found at creation. Created without colour buffers, its draw and read
/// buffers are GL_NONE.
class OX_GRAPHICS_API glFbo : public oxGraphics::iFbo, public ox::refObj {
public:
    /// Empty when no GL name could be generated (no context current).
    static ox::refPtr<oxGraphics::iFbo> createFbo(bool noColorBuffer);

    std::uint32_t handle() const override { return mName; }
    void bind(int width, int height) override;
    void unbind() override;
    bool isBound() const override { return mBound; }
    bool attachColorTexture(const ox::refPtr<iTexture>& texture, std::uint8_t index) override;
    bool attachDepthTexture(const ox::refPtr<iTexture>& texture) override;
    bool attachDepthRenderbuffer(const ox::refPtr<iRenderbuffer>& renderbuffer) override;
    bool isComplete() override;
    bool hasNoColorBuffer() const override { return mNoColorBuffer; }
    void* ownerContext() const override { return mContext; }

protected:
    explicit glFbo(bool noColorBuffer);
    ~glFbo() override;

private:
    class scopedBinding;
    bool ownerIsCurrent() const;
    void saveBindingAndViewport();
    void keepTexture(std::uint32_t attachment, const ox::refPtr<iTexture>& texture);

    std::uint32_t mName = 0;
    void* mContext = nullptr;
    std::uint32_t mSavedDrawFramebuffer = 0;
    std::uint32_t mSavedReadFramebuffer = 0;
    std::array<int, 4> mSavedViewport{};
    bool mNoColorBuffer = false;
    bool mBound = false;
    // The attached objects, by attachment point. Holding them keeps their names valid for as
    // long as this framebuffer draws into them, even after their users let go.
    std::vector<std::pair<std::uint32_t, ox::refPtr<iTexture>>> mTextures;
    ox::refPtr<iRenderbuffer> mDepthRenderbuffer;
};

} // namespace oxGraphics::openGL
