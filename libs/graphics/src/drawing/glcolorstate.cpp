#include "glcolorstate.h"

#include <GL/glew.h>

namespace oxGraphics::openGL {

namespace {
constexpr GLint kShininess = 48;
} // namespace

void applyColor(const float rgba[4]) {
    glColor4fv(rgba);
    glSecondaryColor3fv(rgba);
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, rgba);
    glMateriali(GL_FRONT_AND_BACK, GL_SHININESS, kShininess);
}

void applyColor(const ox::rgbColor& color, float alpha) {
    const float rgba[4] = {color.red() * kByteToFloat, color.green() * kByteToFloat, color.blue() * kByteToFloat,
                           alpha};
    applyColor(rgba);
}

void applyColor3(const ox::rgbColor& color) {
    const float rgba[4] = {color.red() * kByteToFloat, color.green() * kByteToFloat, color.blue() * kByteToFloat,
                           1.0f};
    glColor3fv(rgba);
    glSecondaryColor3fv(rgba);
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, rgba);
    glMateriali(GL_FRONT_AND_BACK, GL_SHININESS, kShininess);
}

} // namespace oxGraphics::openGL
