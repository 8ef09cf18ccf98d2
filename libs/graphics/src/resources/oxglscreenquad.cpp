#include "oxglscreenquad.h"

#include "oxglcontext.h"

#include <GL/glew.h>

namespace oxGraphics::openGL {

namespace {

constexpr GLfloat kCorners[] = {-1.0f, -1.0f, 1.0f, -1.0f, 1.0f, 1.0f, -1.0f, 1.0f};
constexpr GLushort kIndices[] = {0, 1, 2, 0, 2, 3};

GLuint readBinding(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return static_cast<GLuint>(value);
}

} // namespace

glScreenQuad::glScreenQuad() : mContext(currentNativeContext()) {
    if (mContext == nullptr) return;
    const GLuint previousVertexArray = readBinding(GL_VERTEX_ARRAY_BINDING);
    const GLuint previousArrayBuffer = readBinding(GL_ARRAY_BUFFER_BINDING);

    glGenVertexArrays(1, &mVertexArray);
    glGenBuffers(1, &mVertexBuffer);
    glGenBuffers(1, &mIndexBuffer);
    glBindVertexArray(mVertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, mVertexBuffer);
    glBufferData(GL_ARRAY_BUFFER, sizeof kCorners, kCorners, GL_STATIC_DRAW);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 2 * sizeof(GLfloat), nullptr);
    // The element-array binding is state of the vertex array, so it stays with it.
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mIndexBuffer);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof kIndices, kIndices, GL_STATIC_DRAW);

    glBindVertexArray(previousVertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, previousArrayBuffer);
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
    const GLuint previousVertexArray = readBinding(GL_VERTEX_ARRAY_BINDING);
    glBindVertexArray(mVertexArray);
    glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, nullptr);
    glBindVertexArray(previousVertexArray);
}

} // namespace oxGraphics::openGL
