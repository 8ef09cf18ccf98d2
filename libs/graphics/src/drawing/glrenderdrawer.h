#pragma once
// glRenderDrawer: the drawer of normal shaded rendering, with transparent drawables held back for
// a second, blended pass; glAuxRenderDrawer: the same carrying an integer tag for host passes.
//
// Two-pass transparency, as the scene drives it:
//  1. Opaque pass: every drawable is drawn. A drawable that sets a colour with transparency above
//     0.0001 is entered in the deferred set and the rest of its geometry is skipped (until an
//     opaque setColor clears the skip flag).
//  2. When the deferred set is not empty: beginTransparentPass(true), each deferred drawable drawn
//     in set order through the same drawer, endTransparentPass(true).
#include "gldrawer.h"

#include <cstdint>
#include <set>

namespace oxGraphics::openGL {

class glRenderDrawer : public glDrawer {
public:
    /// Drawables deferred to the transparent pass, ordered by address, each once.
    using deferredSet = std::set<ox::refPtr<iDrawable>>;

    static constexpr float kOpaqueTransparency = 0.0001f;

    /// Also disables blending and enables depth writes in the current context.
    explicit glRenderDrawer(iDrawerHost* host);
    ~glRenderDrawer() override;

    /// Opaque colours (|t| <= 0.0001), and every colour in the transparent pass, are applied and
    /// clear the skip flag. A transparent colour in the opaque pass defers the current drawable
    /// and sets the skip flag instead.
    void setColor(const ox::rgbColor& color, float transparency) override;
    bool isTransparentPass() const override { return mTransparentPass; }

    /// With `applyGlState`: depth writes off, blending on with (src alpha, 1 − src alpha).
    void beginTransparentPass(bool applyGlState);
    /// With `applyGlState`: blending off, depth writes on.
    void endTransparentPass(bool applyGlState);

    const deferredSet& deferredDrawables() const { return mDeferred; }
    void clearDeferredDrawables() { mDeferred.clear(); }

private:
    bool mTransparentPass = false;
    deferredSet mDeferred;
};

class glAuxRenderDrawer : public glRenderDrawer {
public:
    using glRenderDrawer::glRenderDrawer;
    std::int64_t auxTag() const override { return mTag; }
    /// Set by the creator right after construction.
    void setAuxTag(std::int64_t tag) { mTag = tag; }

private:
    std::int64_t mTag = 0;
};

} // namespace oxGraphics::openGL
