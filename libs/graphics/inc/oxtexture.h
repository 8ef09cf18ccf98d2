#pragma once
// GPU textures, renderbuffers and framebuffer objects, described by small descriptor records and
// shared through refPtr. The OpenGL implementations are in oxgltexture.h.
//
// Every object belongs to the rendering context that was current when it was created; its
// operations do their GL work only while that context is current on the calling thread.
#include "oxgraphics_export.h"
#include "oxrefobj.h"
#include "oxrefptr.h"

#include <cstdint>

namespace oxGraphics {

/// Internal texel formats.
enum class eTextureFormat : std::uint32_t {
    r8 = 0,        ///< GL_R8
    r16f = 1,      ///< GL_R16F
    r32i = 2,      ///< GL_R32I
    r32ui = 3,     ///< GL_R32UI
    rgb8 = 4,      ///< GL_RGB8
    rgba8 = 5,     ///< GL_RGBA8
    rgba16f = 6,   ///< GL_RGBA16F
    r32f = 7,      ///< GL_R32F
    rgb32f = 8,    ///< GL_RGB32F
    rgba32f = 9,   ///< GL_RGBA32F
    depth24 = 10,  ///< GL_DEPTH_COMPONENT24
    depth32f = 11, ///< GL_DEPTH_COMPONENT32F
};

/// Whether textures of this format are attached as depth rather than colour.
constexpr bool isDepthFormat(eTextureFormat format) {
    return format == eTextureFormat::depth24 || format == eTextureFormat::depth32f;
}

/// Texture targets.
enum class eTextureKind : std::uint32_t {
    texture1d = 0,            ///< GL_TEXTURE_1D
    texture2d = 1,            ///< GL_TEXTURE_2D
    texture2dMultisample = 2, ///< GL_TEXTURE_2D_MULTISAMPLE
    rectangle = 3,            ///< GL_TEXTURE_RECTANGLE
    texture3d = 4,            ///< GL_TEXTURE_3D
    cubeMap = 5,              ///< GL_TEXTURE_CUBE_MAP
};

/// Description of a texture. Kinds 0 to 2 get storage at creation; kinds 3 to 5 get an empty
/// texture object whose storage the user provides.
struct texDesc_t {
    eTextureFormat format = eTextureFormat::rgba8;
    eTextureKind kind = eTextureKind::texture2d;
    /// 1 for ordinary textures; any other count makes kinds 1 and 2 multisampled.
    std::uint8_t numSamples = 1;
    /// Mipmapped minification (with mipmaps generated at creation).
    bool mipmaps = false;
    /// Depth-comparison sampling (shadow lookups) with border 1: outside the texture, compares pass.
    bool depthCompare = false;
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    /// Depth of a 3D texture; carried with the description, not read at creation.
    std::uint32_t depth = 0;

    friend bool operator==(const texDesc_t&, const texDesc_t&) = default;
};

/// Renderbuffer formats (all of them depth or depth-stencil).
enum class eRenderbufferFormat : std::uint32_t {
    depth32f = 0,         ///< GL_DEPTH_COMPONENT32F
    depth32 = 1,          ///< GL_DEPTH_COMPONENT32
    depth24 = 2,          ///< GL_DEPTH_COMPONENT24
    depth32fStencil8 = 3, ///< GL_DEPTH32F_STENCIL8
    depth24Stencil8 = 4,  ///< GL_DEPTH24_STENCIL8
};

struct rbDesc_t {
    eRenderbufferFormat format = eRenderbufferFormat::depth24Stencil8;
    /// 1 for single-sampled storage; any other count asks for multisampled storage.
    std::uint8_t numSamples = 1;
    std::uint16_t width = 0;
    std::uint16_t height = 0;

    friend bool operator==(const rbDesc_t&, const rbDesc_t&) = default;
};

/// A texture. Operations after the reference counting, in slot order: desc, handle, bind,
/// unbind, isBound, ownerContext.
class OX_GRAPHICS_API iTexture : public virtual ox::iRefObj {
public:
    virtual const texDesc_t& desc() const = 0;
    /// The API object (the GL texture name); 0 when there is none.
    virtual std::uint32_t handle() const = 0;
    /// Binds the texture to its target on the active texture unit, remembering what was bound
    /// there. Binding an already bound texture changes nothing.
    virtual void bind() = 0;
    /// Puts back what bind() found, on the unit bind() used; the active unit is left as it is.
    virtual void unbind() = 0;
    virtual bool isBound() const = 0;
    /// The native rendering context the texture was created in.
    virtual void* ownerContext() const = 0;
};

/// A renderbuffer. Operations after the reference counting, in slot order: desc, handle, bind,
/// unbind, isBound, ownerContext.
class OX_GRAPHICS_API iRenderbuffer : public virtual ox::iRefObj {
public:
    virtual const rbDesc_t& desc() const = 0;
    /// The API object (the GL renderbuffer name); 0 when there is none.
    virtual std::uint32_t handle() const = 0;
    /// Binds the renderbuffer, remembering the previous binding.
    virtual void bind() = 0;
    /// Rebinds what bind() found.
    virtual void unbind() = 0;
    virtual bool isBound() const = 0;
    virtual void* ownerContext() const = 0;
};

/// A framebuffer object. Operations after the reference counting, in slot order: handle, bind,
/// unbind, isBound, attachColorTexture, attachDepthTexture, attachDepthRenderbuffer, isComplete,
/// hasNoColorBuffer, ownerContext.
///
/// Attachments are kept alive by the framebuffer. Attaching and the completeness test work on
/// this framebuffer whether or not it is bound: when it is not, it is bound for the call and
/// the previous bindings are put back.
class OX_GRAPHICS_API iFbo : public virtual ox::iRefObj {
public:
    /// The API object (the GL framebuffer name); 0 when there is none.
    virtual std::uint32_t handle() const = 0;
    /// Makes this the draw and read framebuffer with the viewport (0, 0, width, height),
    /// remembering the previous bindings and viewport. Bound again, only the viewport changes.
    virtual void bind(int width, int height) = 0;
    /// Puts back the bindings and viewport that bind() (or creation) found.
    virtual void unbind() = 0;
    virtual bool isBound() const = 0;
    /// Attaches the texture at colour attachment `index` (kinds 1, 2 and 3 only; other kinds
    /// raise the assertion "false" and attach nothing). False when nothing was attached.
    virtual bool attachColorTexture(const ox::refPtr<iTexture>& texture, std::uint8_t index) = 0;
    /// Attaches a depth texture (kinds 1, 2 and 3) as the depth attachment.
    virtual bool attachDepthTexture(const ox::refPtr<iTexture>& texture) = 0;
    /// Attaches the renderbuffer as the depth attachment, and as the stencil attachment too when
    /// its format has stencil bits.
    virtual bool attachDepthRenderbuffer(const ox::refPtr<iRenderbuffer>& renderbuffer) = 0;
    /// Whether the framebuffer is complete. False as well when its context is not current.
    virtual bool isComplete() = 0;
    /// Created without colour buffers: draw and read buffers are GL_NONE.
    virtual bool hasNoColorBuffer() const = 0;
    virtual void* ownerContext() const = 0;
};

} // namespace oxGraphics
