#pragma once
// iDrawerHost: the little a drawer needs from the scene it draws for. glScene implements it; tests
// and benchmarks wrap a bare context in a host of their own.

#include "oxglcontext.h"

#include "oxgeoray.h"
#include "oxrefptr.h"
#include "oxstring.h"

namespace oxGraphics::openGL {

class iDrawerHost {
public:
    virtual ~iDrawerHost() = default;

    /// The context the scene draws into. Recordings begun by a drawer are compiled in it and
    /// belong to it. Empty when the scene has no context (then nothing can be recorded).
    virtual ox::refPtr<iGlContext> glContext() const = 0;
    /// The scene's name. The drawer hands out its character data, so the string must stay where
    /// it is while the host lives.
    virtual const ox::string& sceneName() const = 0;
    /// The viewing ray through window pixel (x, y), y counted downwards. Drawers pass flags 0.
    /// False, `ray` untouched, when the scene cannot compute one.
    virtual bool getViewRayAt(int x, int y, oxGeo::ray3d& ray, int flags) const = 0;
};

} // namespace oxGraphics::openGL
