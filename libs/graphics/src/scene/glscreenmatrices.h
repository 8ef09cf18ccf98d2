#pragma once
// Screen-space drawing inside a frame: saves the projection and model-view matrices, loads a
// screen projection and an identity model-view, and puts both back when it goes out of scope.
#include <GL/glew.h>

namespace oxGraphics::openGL {

class glScreenMatrices {
public:
    /// Normalised device coordinates (-1..1) without a size; window pixels (0..width, 0..height,
    /// y up) with one.
    explicit glScreenMatrices(int width = 0, int height = 0) {
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glLoadIdentity();
        if (width > 0 && height > 0) glOrtho(0, width, 0, height, -1, 1);
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glLoadIdentity();
    }
    ~glScreenMatrices() {
        glMatrixMode(GL_MODELVIEW);
        glPopMatrix();
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
    }
    glScreenMatrices(const glScreenMatrices&) = delete;
    glScreenMatrices& operator=(const glScreenMatrices&) = delete;
};

} // namespace oxGraphics::openGL
