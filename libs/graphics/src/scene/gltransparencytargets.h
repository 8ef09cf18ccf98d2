#pragma once
// The offscreen targets of the blended transparency pass, described at the viewport size and at
// the scene's sample count. Their storage is made only when a transparent drawable is first
// drawn: a scene without transparency never pays for it (at 4 samples the two float targets and
// their depth cost 14 bytes per sample). Each target carries its name as a GL object label, so
// it can be told apart in a GL debugger.
#include "oxtexture.h"
#include "oxtexturemanager.h"

namespace oxGraphics::openGL {

class glTransparencyTargets {
public:
    static constexpr const char* kAccumTexture = "blendedOitAccumTex";
    static constexpr const char* kRevealageTexture = "blendedOitRevealageTex";
    static constexpr const char* kDepthRenderbuffer = "blendedOitRb_";
    static constexpr const char* kFramebuffer = "blendedOitFbo";
    static constexpr const char* kAccumResolveTexture = "blendedOitAccumResolveTex";
    static constexpr const char* kRevealageResolveTexture = "blendedOitRevealageResolveTex";
    static constexpr const char* kResolveFramebuffer = "blendedOitResolveFbo";

    explicit glTransparencyTargets(textureManager& manager);

    /// Describes every target at width × height with `samples` samples (1 = single-sampled
    /// textures). When the description is already that, nothing changes and false is returned.
    /// Targets that exist are rebuilt at once (they are in use); otherwise storage waits for
    /// allocate(). Resolve textures exist only for 2 samples or more. Needs the owning context
    /// current.
    bool bringTo(int width, int height, int samples);
    /// Makes the described storage when it does not exist yet; true when the targets are
    /// complete and ready to draw into.
    bool allocate();
    bool isAllocated() const { return static_cast<bool>(mFramebuffer); }
    /// Drops every target and the description (with the owning context current, their GL names
    /// are deleted).
    void release();

    const texDesc_t& accumDesc() const { return mAccumDesc; }
    const ox::refPtr<iTexture>& accumTexture() const { return mAccum; }
    const ox::refPtr<iTexture>& revealageTexture() const { return mRevealage; }
    const ox::refPtr<iTexture>& accumResolveTexture() const { return mAccumResolve; }
    const ox::refPtr<iTexture>& revealageResolveTexture() const { return mRevealageResolve; }
    const ox::refPtr<iRenderbuffer>& depthRenderbuffer() const { return mDepth; }
    const ox::refPtr<iFbo>& framebuffer() const { return mFramebuffer; }
    const ox::refPtr<iFbo>& resolveFramebuffer() const { return mResolveFramebuffer; }
    /// How often storage was built (for tests and diagnostics).
    int rebuildCount() const { return mRebuilds; }

private:
    void describe(texDesc_t& desc, int width, int height, int samples) const;
    ox::refPtr<iTexture> create(const texDesc_t& desc, const char* label);
    void build();
    bool fitDriverLimits() const;

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
