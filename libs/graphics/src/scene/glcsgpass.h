#pragma once
// The cut pass of a frame: solids (iCsgSolid) shown with the volumes (iCsgVolume) taken out of
// them, as a stock with the tool's swept volumes cut away, and the faces the volumes cut into the
// solids shown in the scene's outside-blank colour ("u_outsideBlankColor").
//
// Place: after the opaque pass, before the transparent pass, and only when the scene holds at
// least one solid and one volume (the modified drawable takes no part). Then the opaque pass
// leaves every solid to this pass; otherwise nothing here runs and solids are ordinary
// drawables. A volume is never drawn visibly, with or without solids: the frame does not call
// its iDrawable::draw, only drawCsgVolume here, and picking leaves volumes out.
// Solids go through the drawer the opaque pass would have used (selection or modify-enabled
// highlight, or the render drawer, which defers a solid in a transparent colour to the
// transparent pass: that one is shown whole); volumes through a highlight drawer in the
// outside-blank colour.
//
// The stencil, per sample: bit 6 "the nearest surface is a solid's", bit 7 "a volume's far side
// was found behind it", bits 0..5 a counter of surfaces behind a depth (modulo 64).
//  1. The stencil is cleared to 0. Solids, depth only (culling off): the depth becomes the
//     nearest solid surface wherever a solid is nearer than what the opaque pass drew, and those
//     samples get bit 6. Another drawable in front of a solid (a tool inside its own swept
//     volume) keeps its depth and is never cut.
//  2. Count: volumes with depth clamping on (a volume reaching past the near or far plane stays
//     closed), culling off, colour and depth writes off, depth GL_LESS, stencil GL_ALWAYS; where
//     the depth test fails, front faces decrement-wrap and back faces increment-wrap the counter.
//     It ends as the number of volumes that contain the nearest surface.
//  3. Far side: where bit 6 is set and the counter is not 0, volumes with depth GL_GREATER and
//     depth writes on: the depth becomes the farthest volume surface behind the removed solid
//     surface (a closed volume's farthest surface is a back face) and bit 7 is set.
//  4. The counter is cleared; solids are counted as in 2 behind that far side, where bit 7 is
//     set: the counter becomes the number of solids that contain the far side.
//  5. The opaque pass's depth again where bit 7 is set: a screen quad puts the far plane where
//     the counter is 0 (the volume went through every solid), then the other drawables of the
//     opaque pass, depth only, GL_LESS: one in front of the far side (a tool in the pocket it
//     cut, a fixture below a hole) takes its depth back and clears the counter, so neither a cut
//     face nor the solid covers it. This draws them a second time, but only in frames with cuts.
//  6. Cut faces: where bit 7 is set and the counter is not 0, volumes with depth GL_EQUAL, lit in
//     the outside-blank colour. Where the counter is 0 the volume went through every solid (or
//     another drawable lies in the cut): the colour drawn before the pass stays.
//  7. Visible: culling on, depth GL_LEQUAL, colour writes on, stencil GL_EQUAL 0 over bit 7 and
//     the counter (cleared), polygon offset (-1, -1) on filled polygons, solids in their own
//     colours, the counter incremented on depth pass so each sample is drawn once. The offset
//     lets a solid pass against its own depth from step 1, which another program or none may
//     have computed a little differently.
// Correctness does not rest on culling: drawers switch it off for meshes (and record that into
// display lists), and steps 3 and 6 find the right faces by depth alone.
//
// Lighting of the cut faces: the frame's head light on the face turned towards the viewer (a cut
// face is a volume's back face), with the light model's ambient at kCutFaceFloor, GL_LIGHT0's
// ambient off and its diffuse at kCutFaceFull - kCutFaceFloor. A cut face therefore shows between
// 0.1 of the outside-blank colour (turned away from the light: the walls of a hole seen at a
// grazing angle keep the colour's hue instead of going black) and 0.99 of it (facing the light:
// the colour the host chose, within 8-bit rounding, where the standard light, ambient 0.2 plus
// diffuse 1, would push it to 1.2 times and clip channels, shifting the hue). The shader path
// ("csgCutFaceShaderProgram") and fixed function read the same light, per pixel and per vertex.
//
// Limits: only the nearest solid surface is tested. A solid surface behind a removed one is not
// shown even where no volume covers it (a second solid behind the first, or the far wall of a
// non-convex solid seen through a cut). Exact for one convex volume per sample, and for volumes
// that overlap along the view ray as one span; for volumes one behind the other the far one's
// far side is taken. Surfaces of a volume and a solid in one plane make the cut flicker (let a
// volume reach past the faces it opens). Volumes that are not closed, or that throw in one step and not in another,
// give wrong counts and so wrong pictures, nothing worse. Without 8 stencil bits in the frame
// buffer the solids are drawn whole.
//
// GL state afterwards: as before the pass, the standard program (or none) still active; depth
// clamping, culling, polygon offset, the stencil state, the colour and depth masks and the depth
// function are put back. Lights and materials are put back too.
#include "glopaquepass.h"

#include "oxcolor.h"
#include "oxdrawable.h"

#include <set>
#include <vector>

namespace oxGraphics::openGL {

class glCsgPass {
public:
    /// Share of the outside-blank colour on a cut face turned away from the light.
    static constexpr float kCutFaceFloor = 0.1f;
    /// Share of the outside-blank colour on a cut face facing the light.
    static constexpr float kCutFaceFull = 0.99f;

    /// The solids and volumes of a frame.
    struct participants_t {
        struct solid_t {
            ox::refPtr<iDrawable> drawable;
            iCsgSolid* solid;
        };
        struct volume_t {
            ox::refPtr<iDrawable> drawable;
            iCsgVolume* volume;
        };
        std::vector<solid_t> solids;
        std::vector<volume_t> volumes;
        std::set<ox::refPtr<iDrawable>> members;  ///< what the opaque pass leaves out

        bool active() const { return !solids.empty(); }
    };

    /// The solids and volumes among `drawables`, except `modified`. Without a volume there are
    /// no solids either, and without a solid the volumes are only left out of the frame. A
    /// drawable that is both counts as a volume.
    static participants_t collect(const std::vector<ox::refPtr<iDrawable>>& drawables,
                                  const ox::refPtr<iDrawable>& modified);

    /// Solids and the other drawables go through the drawer the opaque pass chooses for them.
    explicit glCsgPass(const frameDrawers_t& drawers) : mDrawers(drawers) {}

    /// Runs the pass when `participants` is active. `programs.standard` is the standard program,
    /// active on entry, or null (fixed function); a solid that is a multilayer blank is shown
    /// with `programs.multilayer` (layers measured through the camera's `worldToEye`) and an
    /// overriding colour as in the opaque pass; `content` says which solids are marked how.
    void draw(const participants_t& participants, const frameContent_t& content, const glOpaquePass::programs_t& programs,
              const oxGeo::matrix3d& worldToEye, const ox::rgbColor& outsideBlank);

private:
    /// The solids through their drawers; with `look`, as they show (blank layers, overriding
    /// colours), else only for their depth.
    void drawSolids(const participants_t& participants, const frameContent_t& content, shaderProgram* standard,
                    const glOpaquePass::programs_t* look = nullptr, const oxGeo::matrix3d* worldToEye = nullptr);
    /// The drawables of the opaque pass, as it drew them.
    void drawOthers(const participants_t& participants, const frameContent_t& content, shaderProgram* standard);
    void drawVolumes(const participants_t& participants, glDrawer& drawer);

    frameDrawers_t mDrawers;
};

} // namespace oxGraphics::openGL
