#include "oxglentrypoints.h"

#include "oxglcontext.h"
#include "oxlog.h"

#include <GL/glew.h>

#include <atomic>
#include <mutex>

namespace oxGraphics::openGL {

namespace {
constexpr const char* kLoggerName = "oxGraphics::openGL::loadGlEntryPoints";
}

bool loadGlEntryPoints() {
    static std::atomic<bool> loaded{false};
    static std::mutex loading;
    if (loaded.load(std::memory_order_acquire)) return true;

    std::lock_guard lock(loading);
    if (loaded.load(std::memory_order_relaxed)) return true;
    if (!isAnyContextCurrent()) {
        OX_LOG_DEBUG(kLoggerName, L"no OpenGL context is current; entry points not loaded");
        return false;
    }

    // glewInit() is the only loader the system libGLEW exports (its glewContextInit is internal).
    // It loads every GL entry point first and then looks for GLX; under EGL that second part
    // answers GLEW_ERROR_NO_GLX_DISPLAY although the GL part succeeded. Only the two codes of the
    // GL part mean failure.
    glewExperimental = GL_TRUE;
    const GLenum result = glewInit();
    if (result == GLEW_ERROR_NO_GL_VERSION || result == GLEW_ERROR_GL_VERSION_10_ONLY || !GLEW_VERSION_1_1) {
        OX_LOG_DEBUG(kLoggerName, L"GLEW could not load the OpenGL entry points: %s",
                     reinterpret_cast<const char*>(glewGetErrorString(result)));
        return false;
    }
    loaded.store(true, std::memory_order_release);
    return true;
}

} // namespace oxGraphics::openGL
