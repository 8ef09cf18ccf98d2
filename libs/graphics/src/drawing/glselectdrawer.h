#pragma once
// glSelectDrawer: the drawer of GL selection-mode picking. Colours do not matter to selection, but
// the colour calls are still made (without alpha). Names still pushed when it dies are popped,
// so the name stack is balanced for the next drawable.
#include "gldrawer.h"

namespace oxGraphics::openGL {

class glSelectDrawer : public glDrawer {
public:
    explicit glSelectDrawer(iDrawerHost* host);
    /// glPopName for every name this drawer still has pushed.
    ~glSelectDrawer() override;

    /// Ignores the transparency: glColor3fv and the material calls.
    void setColor(const ox::rgbColor& color, float transparency) override;
};

} // namespace oxGraphics::openGL
