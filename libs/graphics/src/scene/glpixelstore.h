#pragma once
// Tightly packed pixel transfers whatever pixel-store state the host left in its context: saves
// the pack or unpack parameters and the pixel buffer bound for them, sets byte alignment with no
// row length, skips or buffer, and puts every one of them back when it goes out of scope.
#include <GL/glew.h>

#include <array>

namespace oxGraphics::openGL {

class glPixelStore {
public:
    enum class eDirection { pack, unpack };

    explicit glPixelStore(eDirection direction) : mDirection(direction) {
        const auto& names = parameterNames();
        for (std::size_t i = 0; i < names.size(); ++i) {
            glGetIntegerv(names[i], &mSaved[i]);
            glPixelStorei(names[i], names[i] == alignmentName() ? 1 : 0);
        }
        glGetIntegerv(bufferBindingName(), &mSavedBuffer);
        glBindBuffer(bufferTarget(), 0);
    }
    ~glPixelStore() {
        const auto& names = parameterNames();
        for (std::size_t i = 0; i < names.size(); ++i) glPixelStorei(names[i], mSaved[i]);
        glBindBuffer(bufferTarget(), static_cast<GLuint>(mSavedBuffer));
    }
    glPixelStore(const glPixelStore&) = delete;
    glPixelStore& operator=(const glPixelStore&) = delete;

private:
    const std::array<GLenum, 8>& parameterNames() const {
        static const std::array<GLenum, 8> pack = {GL_PACK_SWAP_BYTES,  GL_PACK_LSB_FIRST,   GL_PACK_ROW_LENGTH,
                                                   GL_PACK_IMAGE_HEIGHT, GL_PACK_SKIP_ROWS,   GL_PACK_SKIP_PIXELS,
                                                   GL_PACK_SKIP_IMAGES,  GL_PACK_ALIGNMENT};
        static const std::array<GLenum, 8> unpack = {GL_UNPACK_SWAP_BYTES,  GL_UNPACK_LSB_FIRST, GL_UNPACK_ROW_LENGTH,
                                                     GL_UNPACK_IMAGE_HEIGHT, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS,
                                                     GL_UNPACK_SKIP_IMAGES,  GL_UNPACK_ALIGNMENT};
        return mDirection == eDirection::pack ? pack : unpack;
    }
    GLenum alignmentName() const { return mDirection == eDirection::pack ? GL_PACK_ALIGNMENT : GL_UNPACK_ALIGNMENT; }
    GLenum bufferTarget() const { return mDirection == eDirection::pack ? GL_PIXEL_PACK_BUFFER : GL_PIXEL_UNPACK_BUFFER; }
    GLenum bufferBindingName() const {
        return mDirection == eDirection::pack ? GL_PIXEL_PACK_BUFFER_BINDING : GL_PIXEL_UNPACK_BUFFER_BINDING;
    }

    eDirection mDirection;
    std::array<GLint, 8> mSaved{};
    GLint mSavedBuffer = 0;
};

} // namespace oxGraphics::openGL
