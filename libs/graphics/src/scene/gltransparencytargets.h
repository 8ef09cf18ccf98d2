#pragma once
// The offscreen targets of the blended transparency pass, kept at the viewport size and at the
// scene's sample count. Each target carries its name as a GL object label, so it can be told
// apart in a GL debugger.
#include "oxgraphics_export.h"
#include "oxtexture.h"
#include "oxtexturemanager.h"

namespace oxGraphics::openGL {

class OX_GRAPHICS_API glTransparencyTargets {
public:
    static constexpr const char* kAccumTexture = "blendedOitAccumTex";
    static constexpr const char* kRevealageTexture = "blendedOitRevealageTex";
    static constexpr const char* kDepthRenderbuffer = "blendedOitRb_";
    static constexpr const char* kFramebuffer = "blendedOitFbo";
    static constexpr const char* kAccumResolveTexture = "blendedOitAccumResolveTex";
    static constexpr const char* kRevealageResolveTexture = "blendedOitRevealageResolveTex";
    static constexpr const char* kResolveFramebuffer = "blendedOitResolveFbo";

    explicit glTransparencyTargets(textureManager& manager);

    /// Brings every target to width × height with `samples` samples (1 = single-sampled
    /// textures). When the accumulation texture already has that size and count nothing is
    /// rebuilt and false is returned. Resolve textures exist only for 2 samples or more. Needs
    /// the owning context current.
    bool bringTo(int width, int height, int samples);
    /// Drops every target (with the owning context current, their GL names are deleted).
    void release();

    const texDesc_t& accumDesc() const { return mAccumDesc; }
    const ox::refPtr<iTexture>& accumTexture() const { return mAccum; }
    const ox::refPtr<iTexture>& revealageTexture() const { return mRevealage; }
    const ox::refPtr<iTexture>& accumResolveTexture() const { return mAccumResolve; }
    const ox::refPtr<iTexture>& revealageResolveTexture() const { return mRevealageResolve; }
    const ox::refPtr<iRenderbuffer>& depthRenderbuffer() const { return mDepth; }
    const ox::refPtr<iFbo>& framebuffer() const { return mFramebuffer; }
    const ox::refPtr<iFbo>& resolveFramebuffer() const { return mResolveFramebuffer; }
    /// How often bringTo rebuilt the targets (for tests and diagnostics).
    int rebuildCount() const { return mRebuilds; }

private:
    ox::refPtr<iTexture> create(texDesc_t& desc, int width, int height, int samples, const char* label);

    textureManager& mManager;
    texDesc_t mAccumDesc{eTextureFormat::rgba16f, eTextureKind::texture2d};
    texDesc_t mRevealageDesc{eTextureFormat::r16f, eTextureKind::texture2d};
    texDesc_t mAccumResolveDesc{eTextureFormat::rgba16f, eTextureKind::texture2d};
    texDesc_t mRevealageResolveDesc{eTextureFormat::r16f, eTextureKind::texture2d};
    rbDesc_t mDepthDesc{eRenderbufferFormat::depth24Stencil8};
    ox::refPtr<iTexture> mAccum, mRevealage, mAccumResolve, mRevealageResolve;
    ox::refPtr<iRenderbuffer> mDepth;
    ox::refPtr<iFbo> mFramebuffer, mResolveFramebuffer;
    int mRebuilds = 0;
};

} // namespace oxGraphics::openGL
