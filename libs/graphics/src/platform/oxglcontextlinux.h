#pragma once
// Pieces the Linux context sources share: the EGL and GLX halves adopt their own kind of
// context, and each can release the other's current context, because only one context of either
// kind can be current on a thread.
#include "oxglcontext.h"

namespace oxGraphics::openGL {

/// The current EGL context as an adopted iGlContext; empty when no EGL context is current.
ox::refPtr<iGlContext> adoptCurrentEglContext();
/// The current GLX context as an adopted iGlContext; empty when no GLX context is current.
ox::refPtr<iGlContext> adoptCurrentGlxContext();

/// The current EGL context (EGL_NO_CONTEXT as null).
void* currentEglContext();
/// The current GLX context, or null.
void* currentGlxContext();

/// Makes no EGL context current on this thread (nothing happens when none is).
void releaseCurrentEglContext();
/// Makes no GLX context current on this thread (nothing happens when none is).
void releaseCurrentGlxContext();

} // namespace oxGraphics::openGL
