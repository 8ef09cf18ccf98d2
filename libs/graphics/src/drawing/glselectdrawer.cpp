#include "glselectdrawer.h"

#include "glcolorstate.h"

namespace oxGraphics::openGL {

glSelectDrawer::glSelectDrawer(iDrawerHost* host) : glDrawer(host) {}

glSelectDrawer::~glSelectDrawer() {
    while (nameDepth() > 0) popName();
}

void glSelectDrawer::setColor(const ox::rgbColor& color, float /*transparency*/) { applyColor3(color); }

} // namespace oxGraphics::openGL
