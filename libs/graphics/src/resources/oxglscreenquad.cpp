#include "oxglscreenquad.h"

#include "glstate/glscopedstate.h"
#include "oxglcontext.h"

#include <GL/glew.h>

namespace oxGraphics::openGL {

namespace {

constexpr GLfloat kCorners[] = {-1.0f, -1.0f, 1.0f, -1.0f, 1.0f, 1.0f, -1.0f, 1.0f};
constexpr GLushort kIndices[] = {0, 1, 2, 0, 2, 3};

} // namespace

glScreenQuad::glScreenQuad() : mContext(currentNativeContext()) {
    if (mContext == nullptr) return;
    glGenVertexArrays(1, &mVertexArray);
    glGenBuffers(1, &mVertexBuffer);
    glGenBuffers(1, &mIndexBuffer);
    const glVertexArrayBindingScope vertexArray(mVertexArray);
    const glBufferBindingScope vertices(GL_ARRAY_BUFFER, mVertexBuffer);
    glBufferData(GL_ARRAY_BUFFER, sizeof kCorners, kCorners, GL_STATIC_DRAW);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 2 * sizeof(GLfloat), nullptr);
    // The element-array binding is state of the vertex array, so it stays with it.
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mIndexBuffer);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof kIndices, kIndices, GL_STATIC_DRAW);
}

glScreenQuad::~glScreenQuad() {
    if (mVertexArray == 0 || !ownerIsCurrent()) return;
    glDeleteVertexArrays(1, &mVertexArray);
    glDeleteBuffers(1, &mVertexBuffer);
    glDeleteBuffers(1, &mIndexBuffer);
}

bool glScreenQuad::ownerIsCurrent() const { return mContext != nullptr && currentNativeContext() == mContext; }

void glScreenQuad::draw() const {
    if (mVertexArray == 0 || !ownerIsCurrent()) return;
    const glVertexArrayBindingScope vertexArray(mVertexArray);
    glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, nullptr);
}

} // namespace oxGraphics::openGL
