#pragma once
// The built-in copies of the library's GLSL sources (libs/graphics/shaders/GLSL), compiled into
// the library from the very files that are installed, by a source file generated at build time.
#include <cstddef>
#include <span>

namespace oxGraphics::openGL {

struct builtinShader_t {
    const char* fileName;  ///< "texturedScreenQuad.vert.glsl"
    const char* source;    ///< the file's bytes, zero-terminated
    std::size_t size;      ///< bytes without the terminator
};

/// Every built-in source, sorted by file name.
std::span<const builtinShader_t> builtinShaders();

} // namespace oxGraphics::openGL
