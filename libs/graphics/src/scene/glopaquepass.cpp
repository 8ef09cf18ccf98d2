#include "glopaquepass.h"

#include "oxlog.h"

namespace oxGraphics::openGL {

void drawDrawable(glDrawer& drawer, const ox::refPtr<iDrawable>& drawable, eRendermode mode, shaderProgram* program) {
    drawer.setCurrentDrawable(drawable);
    drawer.pushMatrix();
    try {
        drawable->draw(&drawer, mode, program);
    } catch (...) {
        OX_LOG_DEBUG("oxGraphics::openGL::glScene::draw", L"a drawable threw while drawing; it was skipped");
    }
    drawer.popMatrix();
}

void glOpaquePass::draw(const frameContent_t& content, shaderProgram* program) {
    if (program) {
        program->setUniformInt("u_maskTexture", 1);
        program->setUniformInt("u_isSelected", 0);
        program->setUniformInt("u_packedTopBtmColorAndEnable", 0);
        program->setUniformInt("u_numLayerDescriptions", 0);
        program->setUniformInt("u_forceColorFromVertexAttrib", 0);
    }
    for (const auto& drawable : content.drawables) {
        if (drawable == content.modified || (content.leftOut && content.leftOut->contains(drawable))) continue;
        if (content.selection.contains(drawable)) {
            if (program) program->setUniformInt("u_isSelected", 1);
            drawDrawable(mSelection, drawable, eRendermode::selected, program);
            if (program) program->setUniformInt("u_isSelected", 0);
        } else if (content.modifyEnabled.contains(drawable)) {
            drawDrawable(mModifyEnabled, drawable, eRendermode::modifyEnabled, program);
        } else {
            drawDrawable(mRender, drawable, eRendermode::opaque, program);
        }
    }
}

} // namespace oxGraphics::openGL
