#pragma once
// A cached piece of drawing (an OpenGL display list) that a drawable keeps between frames.
#include "oxgraphics_export.h"
#include "oxrefobj.h"

namespace oxGraphics {

class OX_GRAPHICS_API iRecorded : public virtual ox::iRefObj {
public:
    /// Whether the recording can still be replayed. Drawables record anew when it answers false
    /// (the context was lost, or the recording was never completed).
    virtual bool isValid() = 0;
};

} // namespace oxGraphics
