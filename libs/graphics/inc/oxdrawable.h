#pragma once
// iDrawable: everything a scene shows, and the optional interfaces the scene asks drawables for.
#include "oxgraphics_export.h"

#include "oxcolor.h"
#include "oxgeoboundbox.h"
#include "oxgeomatrix.h"
#include "oxrefobj.h"

namespace oxGraphics {

class iDrawer;
class shaderProgram;

/// The pass a scene is running when it asks a drawable to draw. The library's own entities
/// draw the same geometry in every pass; the drawer handed in carries what differs. A frame hands
/// them in this order: mask, opaque / selected / modifyEnabled / colorOverride, transparent,
/// blurred, outline. Picking hands select. The effect passes (mask, blurred, outline) draw through
/// an auxiliary render drawer whose auxTag() says which (eEffectTag in oxeffects.h).
enum class eRendermode : int {
    opaque = 0,         ///< main pass through the render drawer (transparent colours are deferred)
    transparent = 1,    ///< second pass over the deferred transparent drawables, blending on
    selected = 2,       ///< selected drawables, through the selection highlight drawer
    modifyEnabled = 3,  ///< drawables the manipulator may move, through the modify highlight drawer
    select = 4,         ///< GL selection-mode picking through the select drawer
    auxiliary = 5,      ///< host-defined passes through a tagged auxiliary render drawer
    mask = 6,           ///< the scene's mask drawables, into the mask (colours do not matter)
    outline = 7,        ///< outlined drawables, into the outline's coverage (colours do not matter)
    blurred = 8,        ///< blurred drawables, into the layer that is blurred
    colorOverride = 9,  ///< drawables drawn in an overriding colour (opaque or transparent pass)
};

/// Slots after the reference counting: draw, invalidate, setTransformation.
class OX_GRAPHICS_API iDrawable : public virtual ox::iRefObj {
public:
    /// Emits the drawable through `drawer`. `program` is the shader program bound for the pass,
    /// or null. Returns whether anything was drawn.
    virtual bool draw(iDrawer* drawer, eRendermode mode, shaderProgram* program) = 0;
    /// Drops every cached recording so the next draw rebuilds the geometry.
    virtual void invalidate() = 0;
    /// Extra placement on top of the drawable's own geometry. The identity (within 1e-12 per
    /// element) removes it.
    virtual void setTransformation(const oxGeo::matrix3d& transformation) = 0;
};

/// A drawable that knows its extent; the scene's fit and zoom operations use it.
class OX_GRAPHICS_API iBoundBoxProvider : public virtual ox::iRefObj {
public:
    /// Axis-aligned bounds in world space, including the drawable's transformation. An invalid
    /// (empty) box means the drawable has no extent and is left out of fitting.
    virtual oxGeo::boundBox3d worldBoundingBox() const = 0;
};

/// A drawable made of several independently coloured parts. Its parts stay told apart in every
/// pass: where a frame marks a drawable with one highlight colour (selected, modifyEnabled), each
/// part colour is mixed with the highlight instead (channel = round((highlight + part) / 2 * 0.85)),
/// and a part already in the highlight colour shows it plainly. Only an overriding colour
/// (drawableEffects_t) replaces them all.
class OX_GRAPHICS_API iMultiColorDrawable : public virtual ox::iRefObj {
public:
    virtual int colorCount() const = 0;
    virtual ox::rgbColor partColor(int index) const = 0;
    virtual void setPartColor(int index, const ox::rgbColor& color) = 0;
};

/// A closed solid that takes part in the stencil pass that shows cut volumes.
class OX_GRAPHICS_API iCsgSolid : public virtual ox::iRefObj {
public:
    /// Emits the closed boundary of the solid (front and back faces both needed).
    virtual bool drawCsgSolid(iDrawer* drawer) = 0;
};

/// A volume that is cut out of the solids it intersects. Up to 63 volumes may overlap at one
/// pixel: the stencil counts them modulo 64, so 64 coinciding volumes count as none there.
class OX_GRAPHICS_API iCsgVolume : public virtual ox::iRefObj {
public:
    /// Emits the closed boundary of the volume.
    virtual bool drawCsgVolume(iDrawer* drawer) = 0;
};

} // namespace oxGraphics
