#pragma once
// glOverrideColorDrawer: a render drawer that draws every colour a drawable sets in one
// overriding colour and transparency (ghosted parts, fixtures). A transparent override is held
// back for the transparent pass like any transparent colour. Colours a drawable recorded into a
// display list are not set through the drawer; on the shader path the standard program replaces
// those too (its u_overrideColor), on the fixed-function path they stay the drawable's own.
#include "glrenderdrawer.h"

namespace oxGraphics::openGL {

class glOverrideColorDrawer : public glRenderDrawer {
public:
    using glRenderDrawer::glRenderDrawer;

    /// The colour and transparency for the drawable drawn next.
    void setOverride(const ox::rgbColor& color, float transparency) {
        mColor = color;
        mTransparency = transparency;
    }
    void setColor(const ox::rgbColor& /*color*/, float /*transparency*/) override {
        glRenderDrawer::setColor(mColor, mTransparency);
    }

private:
    ox::rgbColor mColor;
    float mTransparency = 0.0f;
};

} // namespace oxGraphics::openGL
