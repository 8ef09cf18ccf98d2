#include "glpixelreadback.h"

#include "glstate/glscopedstate.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace oxGraphics::openGL {

char* readBgraPixels(GLuint framebuffer, int width, int height, int sourceWidth, int sourceHeight) {
    if (width <= 0 || height <= 0) return nullptr;
    const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    char* buffer = new char[size];
    const int readWidth = std::clamp(sourceWidth, 0, width);
    const int readHeight = std::clamp(sourceHeight, 0, height);
    if (readWidth < width || readHeight < height) std::memset(buffer, 0, size);
    if (readWidth == 0 || readHeight == 0) return buffer;

    const glPixelStore tightRows(glPixelStore::eDirection::pack);
    glPixelStorei(GL_PACK_ROW_LENGTH, width); // rows of the image's width, whatever is read of them
    const glFramebufferBindingScope source(GL_READ_FRAMEBUFFER, framebuffer);
    glReadPixels(0, 0, readWidth, readHeight, GL_BGRA, GL_UNSIGNED_BYTE, buffer);
    return buffer;
}

} // namespace oxGraphics::openGL
