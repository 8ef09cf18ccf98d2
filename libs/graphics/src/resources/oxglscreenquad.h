#pragma once
// The geometry of a screen quad: a vertex array object with the four corners (-1, -1) .. (1, 1)
// as a vec2 at attribute location 0 and an index buffer of two triangles. Programs such as
// "texturedScreenQuadShaderProgram" place and texture it.

#include <cstdint>

namespace oxGraphics::openGL {

/// Owns its vertex array and buffers in the context current at construction (vertex arrays are
/// not shared between contexts). Like the other GL resources it deletes them only when that
/// context is current; elsewhere the names stay with their context until it is destroyed.
class glScreenQuad {
public:
    /// Creates the objects; the vertex-array and array-buffer bindings are left as found.
    glScreenQuad();
    ~glScreenQuad();
    glScreenQuad(const glScreenQuad&) = delete;
    glScreenQuad& operator=(const glScreenQuad&) = delete;

    /// Whether the objects exist (a context was current at construction).
    bool isValid() const { return mVertexArray != 0; }
    /// One indexed draw of the two triangles with whatever program is in use; the vertex-array
    /// binding is put back afterwards. Nothing happens unless the owning context is current.
    void draw() const;

    std::uint32_t vertexArray() const { return mVertexArray; }

private:
    bool ownerIsCurrent() const;

    void* mContext = nullptr;
    std::uint32_t mVertexArray = 0;
    std::uint32_t mVertexBuffer = 0;
    std::uint32_t mIndexBuffer = 0;
};

} // namespace oxGraphics::openGL
