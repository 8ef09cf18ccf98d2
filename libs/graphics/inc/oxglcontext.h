#pragma once
// OpenGL rendering contexts as the library sees them: something that can be made current on the
// calling thread, presented, and asked for its native handles. Scenes, recordings and GPU
// resources hold a context through refPtr<iGlContext> and make it current before any GL work.
//
// Implementations (one source per window system, chosen by the build):
//  - headless EGL on Mesa (Linux): createHeadlessContext
//  - the host's current EGL or GLX context (Linux), WGL context (Windows): adoptCurrentContext
//  - an HDC/HGLRC pair handed over by a Windows host: createWglContext
#include "oxgraphics_export.h"
#include "oxrefobj.h"
#include "oxrefptr.h"

namespace oxGraphics {

/// One OpenGL context together with the drawable it renders to.
///
/// A context either owns its native objects (headless contexts) or has adopted the host's
/// (adoptCurrentContext, createWglContext). Adopted objects are never destroyed by the library.
class OX_GRAPHICS_API iGlContext : public virtual ox::iRefObj {
public:
    /// Makes this context and its drawable current on the calling thread. Cheap when they are
    /// already current here. Returns false, and changes nothing, once the context or its
    /// drawable is gone (after destroy()); false as well when the window system refuses.
    virtual bool makeCurrent() = 0;
    /// Whether this context is the one current on the calling thread.
    virtual bool isCurrent() const = 0;
    /// Makes the context current and presents its back buffer. Pbuffer surfaces have nothing to
    /// present; the call then succeeds without effect. False when the context is gone.
    virtual bool swapBuffers() = 0;

    /// EGLContext, GLXContext or HGLRC; null once destroyed.
    virtual void* nativeContext() const = 0;
    /// EGLSurface, GLXDrawable (the XID) or HDC; null once destroyed or when there is none.
    virtual void* nativeDrawable() const = 0;
    /// EGLDisplay or X11 Display*; null on WGL and once destroyed.
    virtual void* nativeDisplay() const = 0;

    /// Size of the drawable in pixels, as the window system reports it now; 0 when unknown.
    virtual int width() const = 0;
    virtual int height() const = 0;

    /// False once destroy() ran.
    virtual bool isValid() const = 0;
    /// Destroys owned native objects now (releasing them first if they are current on this
    /// thread); an adopted context is only forgotten. The object stays usable as an inert
    /// handle: makeCurrent answers false and nothing else happens.
    virtual void destroy() = 0;
};

namespace openGL {

/// The native handle of the OpenGL context current on the calling thread, whoever made it
/// current (EGL or GLX on Linux, WGL on Windows); null when none is.
OX_GRAPHICS_API void* currentNativeContext();
/// Whether any OpenGL context is current on the calling thread.
OX_GRAPHICS_API bool isAnyContextCurrent();

/// Wraps the context the host has made current on the calling thread (EGL is looked at before
/// GLX) and loads the GL entry points. The host keeps ownership: destroy() and the last release
/// only forget the handles. Empty, with one log line, when no context is current.
OX_GRAPHICS_API ox::refPtr<iGlContext> adoptCurrentContext();

#if defined(_WIN32)
/// Wraps a host's device context and rendering context. Neither is ever deleted by the library.
/// Empty, with one log line, when either handle is null or the pair cannot be made current.
OX_GRAPHICS_API ox::refPtr<iGlContext> createWglContext(void* hdc, void* hglrc);
#else
/// Parameters of a headless context.
struct headlessContextDesc_t {
    int width = 256;            ///< pbuffer width in pixels (at least 1)
    int height = 256;           ///< pbuffer height in pixels (at least 1)
    bool debugContext = false;  ///< ask for a debug context (GL_CONTEXT_FLAG_DEBUG_BIT)
};

/// Creates an OpenGL 4.5 compatibility-profile context with an RGBA8, depth 24, stencil 8
/// pbuffer on Mesa's surfaceless EGL platform: no X server and no GPU needed. The new context is
/// current on the calling thread when this returns, and the GL entry points are loaded.
/// Several such contexts may live on one thread; they share one EGL display per process.
/// Empty, with one log line naming what failed, when EGL or the driver cannot provide it.
OX_GRAPHICS_API ox::refPtr<iGlContext> createHeadlessContext(const headlessContextDesc_t& desc = {});
#endif

} // namespace openGL
} // namespace oxGraphics
