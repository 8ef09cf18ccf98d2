#pragma once
// Loading of the OpenGL core and extension entry points through GLEW.
//
// The library links the system's shared libGLEW, so GLEW's function pointers and extension
// flags (glewIsSupported, GLEW_VERSION_4_5, glGenFramebuffers, ...) are one set per process:
// a host that includes <GL/glew.h> and links the same library sees what the library loaded.
#include "oxgraphics_export.h"

namespace oxGraphics::openGL {

/// Loads the entry points once per process, with a context current on the calling thread.
/// Safe to call from every scene and from several threads; later calls return at once. A
/// failed attempt (no context current, no usable GL version) is retried by the next call.
/// Every context factory of the library calls it after making its context current.
OX_GRAPHICS_API bool loadGlEntryPoints();

} // namespace oxGraphics::openGL
