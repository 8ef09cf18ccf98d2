#pragma once
// glHighlightDrawer: draws everything in one highlight colour (the scene keeps one for the
// selection and one for the modify-enabled drawables).
//
// With the mix flag set, a colour other than the exempt colour is blended with the highlight
// instead: each channel round((highlight + c) · 0.5 · 0.85), ties to even, clamped to 0..255 —
// so a highlighted part keeps a hint of its own colour. The scene's frame leaves the flag off, so
// its highlights are plain; a renderer that wants mixing sets the flag and the exempt colour (a
// colour that must always show plainly) on its own highlight drawer.
// Transparency is applied as alpha and never defers: transparent drawables are drawn at once.
#include "gldrawer.h"

namespace oxGraphics::openGL {

class glHighlightDrawer : public glDrawer {
public:
    glHighlightDrawer(iDrawerHost* host, const ox::rgbColor& highlightColor);
    ~glHighlightDrawer() override;

    void setColor(const ox::rgbColor& color, float transparency) override;

    /// The colour setColor will use for `color` (alpha aside).
    ox::rgbColor resultingColor(const ox::rgbColor& color) const;

    const ox::rgbColor& highlightColor() const { return mHighlightColor; }
    bool mixColors() const { return mMix; }
    void setMixColors(bool mix) { mMix = mix; }
    const ox::rgbColor& exemptColor() const { return mExemptColor; }
    void setExemptColor(const ox::rgbColor& color) { mExemptColor = color; }

private:
    ox::rgbColor mHighlightColor;
    ox::rgbColor mExemptColor;
    bool mMix = false;
};

} // namespace oxGraphics::openGL
