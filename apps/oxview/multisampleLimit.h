#pragma once
// How many multisamples the current OpenGL context can give a framebuffer.
#include <ostream>

namespace oxview {

/// `requested`, or the current context's GL_MAX_SAMPLES when that is lower, with one line to
/// `notes` saying so: a request above the limit would leave the scene's multisampled target
/// incomplete and every frame black. Needs a current context.
int usableSamples(int requested, std::ostream& notes);

} // namespace oxview
