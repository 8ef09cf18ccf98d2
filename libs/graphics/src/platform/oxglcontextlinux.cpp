// The Linux side of the context interface that does not belong to one window system: adoption
// picks EGL before GLX, and "the current context" is whichever of the two is current.
#include "oxglcontextlinux.h"

#include "oxglentrypoints.h"
#include "oxlog.h"

namespace oxGraphics::openGL {

namespace {
constexpr const char* kAdoptLoggerName = "oxGraphics::openGL::adoptCurrentContext";

void logAdoptionFailure(const wchar_t* what) {
    oxlog::logManager::getLogger(kAdoptLoggerName)->log(oxlog::eLevel::warn, what, __FILE__, __LINE__, __func__);
}
} // namespace

void* currentNativeContext() {
    if (void* context = currentEglContext()) return context;
    return currentGlxContext();
}

bool isAnyContextCurrent() { return currentNativeContext() != nullptr; }

ox::refPtr<iGlContext> adoptCurrentContext() {
    ox::refPtr<iGlContext> adopted = adoptCurrentEglContext();
    if (!adopted) adopted = adoptCurrentGlxContext();
    if (!adopted) {
        logAdoptionFailure(L"no EGL or GLX context is current on this thread; nothing to adopt");
        return {};
    }
    if (!loadGlEntryPoints()) {
        logAdoptionFailure(L"GLEW could not load the OpenGL entry points of the adopted context");
        return {};
    }
    return adopted;
}

} // namespace oxGraphics::openGL
