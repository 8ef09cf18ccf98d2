#include "glrenderdrawer.h"

#include "glcolorstate.h"

#include <GL/glew.h>

#include <cmath>

namespace oxGraphics::openGL {

glRenderDrawer::glRenderDrawer(iDrawerHost* host) : glDrawer(host) {
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
}

glRenderDrawer::~glRenderDrawer() = default;

void glRenderDrawer::setColor(const ox::rgbColor& color, float transparency) {
    if (std::fabs(transparency) <= kOpaqueTransparency || mTransparentPass) {
        setSkipping(false);
        applyColor(color, 1.0f - transparency);
        return;
    }
    if (currentDrawable()) mDeferred.insert(currentDrawable());
    setSkipping(true);
}

void glRenderDrawer::beginTransparentPass(bool applyGlState) {
    mTransparentPass = true;
    if (!applyGlState) return;
    glDepthMask(GL_FALSE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void glRenderDrawer::endTransparentPass(bool applyGlState) {
    mTransparentPass = false;
    if (!applyGlState) return;
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
}

} // namespace oxGraphics::openGL
