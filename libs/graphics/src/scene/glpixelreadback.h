#pragma once
// Reading a frame back as BGRA bytes for a host.
#include <GL/glew.h>

namespace oxGraphics::openGL {

/// width·height·4 bytes B, G, R, A, bottom row first, in a new array the caller frees with
/// delete[]. Read from `framebuffer` (0: the window's), which holds sourceWidth × sourceHeight
/// pixels: a source smaller than the image leaves the rest black, a larger one is cut to the
/// image, so the caller always gets exactly the bytes the image size promises. The read
/// framebuffer binding and the pack state are left as they were.
char* readBgraPixels(GLuint framebuffer, int width, int height, int sourceWidth, int sourceHeight);

} // namespace oxGraphics::openGL
