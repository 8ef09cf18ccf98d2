#pragma once
// Outlines: the outlined drawables are drawn flat into a coverage target ("outlineFbo"), and a
// screen pass paints the outline colour on the pixels outside that coverage within the outline
// width of it: one clean ring around their joint silhouette, drawn over everything else of the
// frame (a mask still hides it). Runs on the shader path only.
#include "glcoveragedraw.h"

#include "oxcolor.h"

namespace oxGraphics::openGL {

class glOutlinePass {
public:
    struct programs_t {
        shaderProgram* flat = nullptr;  ///< "objectOutlineShaderProgram"
        shaderProgram* ring = nullptr;  ///< "outlineRingShaderProgram"
    };

    /// Outlines `drawables` in `color`, `widthPixels` wide, in the frame of width × height pixels
    /// bound for drawing. Does nothing without drawables or programs. Ends with no program bound;
    /// every other state it changes is put back.
    void draw(const std::vector<ox::refPtr<iDrawable>>& drawables, const ox::rgbColor& color, int widthPixels,
              const programs_t& programs, iDrawerHost* host, int width, int height);

    void release();
    void abandon();

private:
    glEffectTarget mCoverage{"outlineFbo", glEffectTarget::eFormat::coverage, false};
    std::unique_ptr<glScreenQuad> mQuad;
};

} // namespace oxGraphics::openGL
