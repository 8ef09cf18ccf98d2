#include "glcoveragedraw.h"

#include "drawing/glrenderdrawer.h"
#include "glstate/glscopedstate.h"
#include "scene/glopaquepass.h"

namespace oxGraphics::openGL {

bool drawCoverage(glEffectTarget& target, const std::vector<ox::refPtr<iDrawable>>& drawables, shaderProgram& flat,
                  iDrawerHost* host, eEffectTag tag, eRendermode mode, int width, int height) {
    if (!target.bringTo(width, height)) return false;
    const glFramebufferBindingScope bound(GL_DRAW_FRAMEBUFFER, target.framebuffer());
    const glViewportScope viewport(0, 0, width, height);
    const glCapabilityScope noDepthTest(GL_DEPTH_TEST, false);
    const glColorMaskScope allChannels(true, true, true, true);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    flat.activate();
    flat.setUniformFloat4("u_outlineColor", 1.0f, 1.0f, 1.0f, 1.0f);
    {
        glAuxRenderDrawer drawer(host);
        drawer.setAuxTag(tag);
        // In its transparent pass a render drawer applies every colour: a transparent drawable
        // covers its pixels like an opaque one instead of being held back.
        drawer.beginTransparentPass(false);
        for (const auto& drawable : drawables)
            if (drawable) drawDrawable(drawer, drawable, mode, &flat);
        drawer.endTransparentPass(false);
        drawer.setCurrentDrawable({});
    }
    flat.deactivate();
    return true;
}

bool drawViewportQuad(std::unique_ptr<glScreenQuad>& quad, shaderProgram& program) {
    if (!quad) quad = std::make_unique<glScreenQuad>();
    if (!quad->isValid()) return false;
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);  // a drawable may have left lines
    program.setUniformFloat4("u_scaleVec2OffsetVec2", 1.0f, 1.0f, 0.0f, 0.0f);
    quad->draw();
    return true;
}

} // namespace oxGraphics::openGL
