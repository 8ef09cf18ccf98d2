#pragma once
// Diagnostics for hosts and builds that want them: a drain-and-print check of the OpenGL error
// queue and a debug-output callback that turns each driver message into one log line. The
// library itself neither runs the check nor installs the callback.
#include "oxgraphics_export.h"

#include <GL/glew.h>

#include <string>

namespace oxGraphics::openGL {

/// "OX_GL_INVALID_ENUM" and the like for the eight standard codes (GL_NO_ERROR included);
/// "OX_GL_UNKNOWN_ERROR" for any other code.
OX_GRAPHICS_API std::string glErrorName(GLenum code);

/// Reads glGetError until the queue is empty and writes one line per error to std::cerr, in
/// queue order: "OpenGL error @<location> (<file>, L<line>): <name>". Returns the last code
/// read, which is always GL_NO_ERROR. Needs a current context.
OX_GRAPHICS_API GLenum checkGlErrors(const char* file, unsigned line, const char* location);

/// The debug-output callback (GL_KHR_debug signature). It logs every message at debug level
/// under the logger "`anonymous-namespace'::glDebugMessagePrint" and keeps no state, so the
/// driver may call it on any thread. Install it with
///     glDebugMessageCallback(oxGraphics::openGL::debugMessageCallback(), nullptr);
OX_GRAPHICS_API GLDEBUGPROC debugMessageCallback();

} // namespace oxGraphics::openGL

/// Drains and prints the GL error queue, naming this source line and `location`.
#define OX_CHECK_GL_ERRORS(location) ::oxGraphics::openGL::checkGlErrors(__FILE__, __LINE__, (location))
