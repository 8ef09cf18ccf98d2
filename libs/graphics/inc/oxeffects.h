#pragma once
// Object effects: what a host can ask the scene to do to a drawable beyond drawing it (an
// outline, one overriding colour, height layers of a stock, blur) and to the frame as a whole
// (a mask, blur, how the selection is marked).
//
// Every effect is off by default and costs nothing while off: the frame runs the extra passes
// only for drawables that ask for them. The effects need GLSL; with shaders switched off
// (glShaderProgram::enableGlShadersGlobally(false)) the frame shows instead:
//   outline           nothing extra; selected drawables keep the flat highlight whatever the style
//   colour override   the overriding colour for every colour the drawable sets through the drawer
//                     (colours it recorded into a display list stay its own)
//   multilayer blank  the drawable in its own colours
//   blur              the drawables and the frame sharp
//   mask              nothing hidden
#include "oxcolor.h"
#include "oxgeovector.h"

#include <cstdint>
#include <vector>

namespace oxGraphics {

/// How the scene marks selected drawables.
enum class eSelectionStyle : int {
    highlight = 0,            ///< drawn in the selection colour (kColorSelection)
    outline = 1,              ///< drawn in their own colours, with an outline (kColorOutline)
    highlightAndOutline = 2,  ///< both
};

/// What the mask drawables of a scene hide.
enum class eMaskMode : int {
    hideCovered = 0,    ///< the parts of the frame the mask drawables cover show the background
    hideUncovered = 1,  ///< only the parts they cover show the scene
};

/// One height band of a multilayer blank: heights in [from, to) along the blank's axis.
struct blankLayer_t {
    double from = 0.0;
    double to = 0.0;
    ox::rgbColor color;
};

/// A CAM blank (stock) shown in height layers: each fragment takes the colour of the layer its
/// world height falls in (the first that contains it), and faces that look along the axis
/// (within 0.99 of it as a cosine) take the top or bottom colour. Fragments in no layer keep the
/// drawable's own colour. At most kMaxLayers layers are used; the rest are ignored. A highlighted
/// (selected, modify-enabled) or colour-overridden blank shows that instead of its layers.
struct multilayerBlank_t {
    static constexpr int kMaxLayers = 16;
    oxGeo::vector3d axis{0.0, 0.0, 1.0};  ///< world direction heights are measured along; normalised when used
    std::vector<blankLayer_t> layers;
    bool colorTopAndBottom = false;       ///< whether the top and bottom colours apply
    ox::rgbColor top;
    ox::rgbColor bottom;
};

/// The effects of one drawable (scene::setDrawableEffects). Default-constructed: none.
struct drawableEffects_t {
    /// A silhouette outline in kColorOutline, whether the drawable is selected or not.
    bool outline = false;
    /// Drawn in `overrideColor` with `overrideTransparency` whatever colours it sets: ghosted parts
    /// (a transparency such as 0.7 puts it in the transparent pass), fixtures in one colour.
    bool overrideColors = false;
    ox::rgbColor overrideColor;
    float overrideTransparency = 0.0f;
    /// Drawn out of focus: blurred by the scene's blur radius and laid over the frame. A
    /// highlighted (selected, modify-enabled) drawable is drawn sharp.
    bool blur = false;
    /// Shown in height layers (see multilayerBlank_t).
    bool multilayer = false;
    multilayerBlank_t blank;

    bool any() const { return outline || overrideColors || blur || multilayer; }
};

/// The effects of a whole scene (scene::setSceneEffects). Default-constructed: none, and the
/// selection drawn in its highlight colour.
struct sceneEffects_t {
    eSelectionStyle selectionStyle = eSelectionStyle::highlight;
    int outlineWidth = 2;    ///< outline width in pixels, 1..16
    bool blurFrame = false;  ///< blur the whole frame (rubber rectangles stay sharp)
    int blurRadius = 4;      ///< blur radius in pixels, 1..32, for the frame and blurred drawables
    eMaskMode maskMode = eMaskMode::hideCovered;  ///< what the mask drawables hide, when there are any
};

/// The tags the scene's own effect passes give their auxiliary render drawers (iDrawer::auxTag),
/// so a drawable can tell them apart from the frame's other passes. Host passes use other values.
enum eEffectTag : std::int64_t {
    kEffectTagMask = 1,     ///< mask drawables drawn into the mask
    kEffectTagOutline = 2,  ///< outlined drawables drawn into the outline's coverage
    kEffectTagBlur = 3,     ///< blurred drawables drawn into the layer that is blurred
};

} // namespace oxGraphics
