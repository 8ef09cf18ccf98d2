#pragma once
// The light set-up of every frame: GL_LIGHT0 white (diffuse and specular), both faces lit, the
// light left at its default position so it moves with the camera. Tests and benchmarks that draw
// without a scene light their geometry with this too, so they see what a frame shows.
#include <GL/glew.h>

namespace oxGraphics::openGL {

inline void applyFrameLights() {
    const GLfloat white[] = {1.0f, 1.0f, 1.0f, 1.0f};
    glLightfv(GL_LIGHT0, GL_DIFFUSE, white);
    glLightfv(GL_LIGHT0, GL_SPECULAR, white);
    glLightModelf(GL_LIGHT_MODEL_TWO_SIDE, 1.0f);
    glEnable(GL_LIGHT0);
    glEnable(GL_LIGHTING);
    glEnable(GL_NORMALIZE);
}

} // namespace oxGraphics::openGL
