#pragma once
// What the mask and the outline share: drawables drawn flat into a coverage target, and a screen
// quad over the whole viewport.
#include "gleffecttarget.h"

#include "oxdrawable.h"
#include "oxeffects.h"
#include "oxrefptr.h"
#include "oxshader.h"
#include "resources/oxglscreenquad.h"

#include <memory>
#include <vector>

namespace oxGraphics::openGL {

class iDrawerHost;

/// Clears `target` (width × height) to 0 and draws `drawables` into it in red 1 with `flat`
/// ("objectOutlineShaderProgram"), depth test off, so the target says which pixels they cover
/// whatever their colours, transparency or what lies in front of them. They are drawn through an
/// auxiliary render drawer tagged `tag`, in `mode`. False when the target could not be made.
bool drawCoverage(glEffectTarget& target, const std::vector<ox::refPtr<iDrawable>>& drawables, shaderProgram& flat,
                  iDrawerHost* host, eEffectTag tag, eRendermode mode, int width, int height);

/// The quad over the whole viewport with `program` (whose vertex stage is the textured screen
/// quad's), in filled polygons; made on first use in the current context. False when it cannot
/// be made.
bool drawViewportQuad(std::unique_ptr<glScreenQuad>& quad, shaderProgram& program);

} // namespace oxGraphics::openGL
