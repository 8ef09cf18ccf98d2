#pragma once
// The opaque pass of a frame: every drawable but the one being modified interactively, the
// selected ones through the selection highlight drawer and the modify-enabled ones through
// theirs. The render drawer holds back whatever sets a transparent colour, for the transparent
// pass.
#include "drawing/glhighlightdrawer.h"
#include "drawing/glrenderdrawer.h"
#include "oxshader.h"

#include <set>
#include <vector>

namespace oxGraphics::openGL {

/// What a frame draws and how each drawable is marked.
struct frameContent_t {
    const std::vector<ox::refPtr<iDrawable>>& drawables;
    const std::set<ox::refPtr<iDrawable>>& selection;
    const std::set<ox::refPtr<iDrawable>>& modifyEnabled;
    const ox::refPtr<iDrawable>& modified;  ///< drawn by its manipulator, not here
    const std::set<ox::refPtr<iDrawable>>* leftOut = nullptr;  ///< drawn by a later pass (cut solids and volumes)
};

/// One drawable between a push and a pop of the model-view matrix, so a placement it multiplies
/// on stays its own. A drawable that throws is logged and skipped; the frame goes on.
void drawDrawable(glDrawer& drawer, const ox::refPtr<iDrawable>& drawable, eRendermode mode, shaderProgram* program);

class glOpaquePass {
public:
    glOpaquePass(glRenderDrawer& render, glHighlightDrawer& selection, glHighlightDrawer& modifyEnabled)
        : mRender(render), mSelection(selection), mModifyEnabled(modifyEnabled) {}

    /// `program` is the active standard program or null (fixed function); its uniforms for the
    /// pass are set here.
    void draw(const frameContent_t& content, shaderProgram* program);

private:
    glRenderDrawer& mRender;
    glHighlightDrawer& mSelection;
    glHighlightDrawer& mModifyEnabled;
};

} // namespace oxGraphics::openGL
