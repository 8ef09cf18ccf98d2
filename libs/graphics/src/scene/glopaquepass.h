#pragma once
// The opaque pass of a frame: every drawable but the one being modified interactively, each
// through the drawer its state calls for. The render drawers hold back whatever sets a
// transparent colour, for the transparent pass.
//
// Which drawer and which mode, first match:
//   selected (unless the selection style is outline only)  selection highlight drawer, selected
//   modify-enabled                                         modify highlight drawer, modifyEnabled
//   overriding colour                                      override-colour drawer, colorOverride
//   otherwise                                              render drawer, opaque
// A multi-colour drawable in a highlight drawer has its part colours mixed with the highlight.
// A multilayer blank drawn through the render drawer is drawn with the multilayer program instead
// of the standard one (highlighted or overridden, it shows the highlight or override). Blurred
// drawables are left to the blur pass when there is one (unless highlighted).
#include "drawing/glhighlightdrawer.h"
#include "drawing/gloverridecolordrawer.h"
#include "drawing/glrenderdrawer.h"
#include "oxeffects.h"
#include "oxgeomatrix.h"
#include "oxshader.h"

#include <map>
#include <set>
#include <vector>

namespace oxGraphics::openGL {

using drawableEffectsMap = std::map<ox::refPtr<iDrawable>, drawableEffects_t>;

/// What a frame draws and how each drawable is marked.
struct frameContent_t {
    const std::vector<ox::refPtr<iDrawable>>& drawables;
    const std::set<ox::refPtr<iDrawable>>& selection;
    const std::set<ox::refPtr<iDrawable>>& modifyEnabled;
    const ox::refPtr<iDrawable>& modified;  ///< drawn by its manipulator, not here
    const drawableEffectsMap& effects;
    eSelectionStyle selectionStyle = eSelectionStyle::highlight;
    bool blurApart = false;  ///< blurred drawables are drawn by the blur pass
    const std::set<ox::refPtr<iDrawable>>* leftOut = nullptr;  ///< drawn by a later pass (cut solids and volumes)

    /// The drawable's effects, or null when it has none.
    const drawableEffects_t* effectsOf(const ox::refPtr<iDrawable>& drawable) const {
        if (effects.empty()) return nullptr;
        const auto found = effects.find(drawable);
        return found == effects.end() ? nullptr : &found->second;
    }
    bool highlightsSelection() const { return selectionStyle != eSelectionStyle::outline; }
    /// Whether the drawable is left to the blur pass: blurred, with a blur pass, and not marked
    /// by a highlight (a highlighted drawable is shown sharp, as the host's attention is on it).
    bool drawsBlurred(const ox::refPtr<iDrawable>& drawable, const drawableEffects_t* drawableEffects) const {
        return drawableEffects && drawableEffects->blur && blurApart &&
               !(highlightsSelection() && selection.contains(drawable)) && !modifyEnabled.contains(drawable);
    }
};

/// Logs that a drawable threw while drawing and was skipped.
void logSkippedDrawable();

/// What `emit` draws of `drawable` through `drawer`, between a push and a pop of the model-view
/// matrix, so a placement it multiplies on stays its own. A drawable that throws is logged and
/// skipped; the frame goes on.
template <class emitter> void drawGuarded(glDrawer& drawer, const ox::refPtr<iDrawable>& drawable, const emitter& emit) {
    drawer.setCurrentDrawable(drawable);
    drawer.pushMatrix();
    try {
        emit();
    } catch (...) {
        logSkippedDrawable();
    }
    drawer.popMatrix();
}

/// iDrawable::draw guarded as above.
void drawDrawable(glDrawer& drawer, const ox::refPtr<iDrawable>& drawable, eRendermode mode, shaderProgram* program);

/// Sets the standard program's colour override for `effects` (null or no override: off).
void applyColorOverride(shaderProgram* program, const drawableEffects_t* effects);

/// Activates the multilayer program with the layers of `blank`; `worldToEye` is the camera's
/// transform (the layers are measured in world space).
void activateMultilayer(shaderProgram& program, const multilayerBlank_t& blank, const oxGeo::matrix3d& worldToEye);

/// The drawers of a frame's opaque drawing, and which of them draws a drawable.
struct frameDrawers_t {
    glRenderDrawer& render;
    glHighlightDrawer& selection;
    glHighlightDrawer& modifyEnabled;
    glOverrideColorDrawer& overrideColor;

    struct choice_t {
        glDrawer* drawer;
        eRendermode mode;
        glHighlightDrawer* highlight;  ///< the drawer again when it is a highlight, else null
    };
    /// The first match of the table above; choosing the override drawer sets its colour.
    choice_t choose(const frameContent_t& content, const ox::refPtr<iDrawable>& drawable,
                    const drawableEffects_t* effects) const;
};

class glOpaquePass {
public:
    struct programs_t {
        shaderProgram* standard = nullptr;    ///< active on entry and on exit; null: fixed function
        shaderProgram* multilayer = nullptr;  ///< "multilayerBlankShaderProgram"
    };

    explicit glOpaquePass(const frameDrawers_t& drawers) : mDrawers(drawers) {}

    /// `worldToEye` is the camera's transform (the multilayer program measures heights in world space).
    void draw(const frameContent_t& content, const programs_t& programs, const oxGeo::matrix3d& worldToEye);

private:
    frameDrawers_t mDrawers;
};

} // namespace oxGraphics::openGL
