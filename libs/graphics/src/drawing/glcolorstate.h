#pragma once
// The colour calls every drawer's setColor ends with: current colour, front-and-back ambient and
// diffuse material, shininess 48. Colours go to GL as component/255.
//
// Every material colour a drawer sets is also sent as a vertex colour: the current colour equals
// the front material's ambient and diffuse, the secondary colour (RGB) the back material's. The
// shading program lights with these, since drivers keep glMaterial per vertex and their material
// uniforms cannot follow it; fixed-function lighting uses the material and ignores both.
#include "oxcolor.h"

namespace oxGraphics::openGL {

inline constexpr float kByteToFloat = 0.003921569f;

/// glColor4fv, glSecondaryColor3fv, glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE),
/// glMateriali(GL_SHININESS, 48).
void applyColor(const float rgba[4]);
void applyColor(const ox::rgbColor& color, float alpha);
/// The same with glColor3fv (selection drawing); the material gets alpha 1.
void applyColor3(const ox::rgbColor& color);

} // namespace oxGraphics::openGL
