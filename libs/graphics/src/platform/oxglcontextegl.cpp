// EGL contexts on Linux.
// Supports:
//  - headless contexts on Mesa's surfaceless platform (EGL_MESA_platform_surfaceless): a pbuffer
//    surface of the requested size, desktop OpenGL 4.5 compatibility profile, RGBA8 + depth 24 +
//    stencil 8, optional debug flag. No X server or GPU needed (llvmpipe rasterises).
//  - adoption of whatever EGL context a host made current (window, pbuffer or no surface).
// The surfaceless display is initialised once per process and never terminated: terminating it
// would pull the display from under every other context and any host that shares it.
#include "oxglcontextlinux.h"

#include "oxglentrypoints.h"
#include "oxlog.h"
#include "oxstring.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace oxGraphics::openGL {

namespace {

constexpr const char* kCreateLoggerName = "oxGraphics::openGL::createHeadlessContext";

std::string eglErrorText() {
    char text[32];
    std::snprintf(text, sizeof text, "EGL error 0x%04X", static_cast<unsigned>(eglGetError()));
    return text;
}

bool hasExtension(const char* extensions, const char* name) {
    if (extensions == nullptr) return false;
    const std::size_t length = std::strlen(name);
    for (const char* p = std::strstr(extensions, name); p != nullptr; p = std::strstr(p + length, name)) {
        const bool startsWord = p == extensions || p[-1] == ' ';
        const bool endsWord = p[length] == ' ' || p[length] == '\0';
        if (startsWord && endsWord) return true;
    }
    return false;
}

struct surfacelessDisplay {
    EGLDisplay display = EGL_NO_DISPLAY;
    std::string failure;   // why there is no display
};

surfacelessDisplay openSurfacelessDisplay() {
    const char* clientExtensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (!hasExtension(clientExtensions, "EGL_MESA_platform_surfaceless"))
        return {EGL_NO_DISPLAY, "no EGL display: EGL offers no EGL_MESA_platform_surfaceless (install Mesa's EGL "
                                "and software driver: libegl-mesa0, libgl1-mesa-dri)"};
    const auto getPlatformDisplay =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (getPlatformDisplay == nullptr)
        return {EGL_NO_DISPLAY, "no EGL display: eglGetPlatformDisplayEXT is missing"};
    const EGLDisplay display = getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (display == EGL_NO_DISPLAY)
        return {EGL_NO_DISPLAY, "no EGL display for EGL_PLATFORM_SURFACELESS_MESA (" + eglErrorText() + ")"};
    EGLint major = 0, minor = 0;
    if (eglInitialize(display, &major, &minor) != EGL_TRUE)
        return {EGL_NO_DISPLAY, "eglInitialize failed on the surfaceless EGL display (" + eglErrorText() + ")"};
    return {display, {}};
}

const surfacelessDisplay& sharedSurfacelessDisplay() {
    static const surfacelessDisplay shared = openSurfacelessDisplay();
    return shared;
}

EGLint configAttrib(EGLDisplay display, EGLConfig config, EGLint attribute) {
    EGLint value = 0;
    eglGetConfigAttrib(display, config, attribute, &value);
    return value;
}

/// A pbuffer-capable desktop-GL config with at least RGBA8, depth 24, stencil 8; an exact match
/// is preferred so that readback and depth precision are the same on every driver.
bool chooseConfig(EGLDisplay display, EGLConfig& chosen) {
    const EGLint attribs[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
                              EGL_RED_SIZE, 8, EGL_GREEN_SIZE, 8, EGL_BLUE_SIZE, 8, EGL_ALPHA_SIZE, 8,
                              EGL_DEPTH_SIZE, 24, EGL_STENCIL_SIZE, 8, EGL_NONE};
    EGLint count = 0;
    if (eglChooseConfig(display, attribs, nullptr, 0, &count) != EGL_TRUE || count < 1) return false;
    std::vector<EGLConfig> configs(static_cast<std::size_t>(count));
    if (eglChooseConfig(display, attribs, configs.data(), count, &count) != EGL_TRUE || count < 1) return false;
    chosen = configs[0];
    for (EGLConfig config : configs) {
        if (configAttrib(display, config, EGL_RED_SIZE) == 8 && configAttrib(display, config, EGL_GREEN_SIZE) == 8 &&
            configAttrib(display, config, EGL_BLUE_SIZE) == 8 && configAttrib(display, config, EGL_ALPHA_SIZE) == 8 &&
            configAttrib(display, config, EGL_DEPTH_SIZE) == 24 && configAttrib(display, config, EGL_STENCIL_SIZE) == 8) {
            chosen = config;
            break;
        }
    }
    return true;
}

class glEglContext final : public iGlContext, public ox::refObj {
public:
    glEglContext(EGLDisplay display, EGLContext context, EGLSurface draw, EGLSurface read, bool owned)
        : mDisplay(display), mContext(context), mDraw(draw), mRead(read), mOwned(owned) {}
    ~glEglContext() override { destroy(); }

    bool makeCurrent() override {
        if (mContext == EGL_NO_CONTEXT) return false;
        if (isCurrent()) return true;
        // Only one context of either API can be current on a thread.
        releaseCurrentGlxContext();
        return eglMakeCurrent(mDisplay, mDraw, mRead, mContext) == EGL_TRUE;
    }

    bool isCurrent() const override {
        return mContext != EGL_NO_CONTEXT && eglGetCurrentContext() == mContext &&
               eglGetCurrentSurface(EGL_DRAW) == mDraw && eglGetCurrentSurface(EGL_READ) == mRead;
    }

    bool swapBuffers() override {
        if (!makeCurrent()) return false;
        if (mDraw == EGL_NO_SURFACE) return true;   // surfaceless: nothing to present
        return eglSwapBuffers(mDisplay, mDraw) == EGL_TRUE;
    }

    void* nativeContext() const override { return mContext; }
    void* nativeDrawable() const override { return mDraw; }
    void* nativeDisplay() const override { return mDisplay; }

    int width() const override { return surfaceSize(EGL_WIDTH); }
    int height() const override { return surfaceSize(EGL_HEIGHT); }

    bool isValid() const override { return mContext != EGL_NO_CONTEXT; }

    void destroy() override {
        if (mContext == EGL_NO_CONTEXT) return;
        if (mOwned) {
            // Released first so that nothing on this thread keeps pointing at a dead context.
            if (eglGetCurrentContext() == mContext)
                eglMakeCurrent(mDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
            eglDestroyContext(mDisplay, mContext);
            if (mDraw != EGL_NO_SURFACE) eglDestroySurface(mDisplay, mDraw);
            if (mRead != EGL_NO_SURFACE && mRead != mDraw) eglDestroySurface(mDisplay, mRead);
        }
        mDisplay = EGL_NO_DISPLAY;
        mContext = EGL_NO_CONTEXT;
        mDraw = mRead = EGL_NO_SURFACE;
    }

private:
    int surfaceSize(EGLint attribute) const {
        EGLint value = 0;
        if (mDraw == EGL_NO_SURFACE || eglQuerySurface(mDisplay, mDraw, attribute, &value) != EGL_TRUE) return 0;
        return value;
    }

    EGLDisplay mDisplay;
    EGLContext mContext;
    EGLSurface mDraw;
    EGLSurface mRead;
    bool mOwned;   // false: the host's objects, only forgotten
};

ox::refPtr<iGlContext> creationFailed(const std::string& what) {
    oxlog::logManager::getLogger(kCreateLoggerName)
        ->log(oxlog::eLevel::error, ox::string::fromMBCtoWC(what), __FILE__, __LINE__, __func__);
    return {};
}

} // namespace

ox::refPtr<iGlContext> createHeadlessContext(const headlessContextDesc_t& desc) {
    if (desc.width < 1 || desc.height < 1)
        return creationFailed("invalid pbuffer size " + std::to_string(desc.width) + "x" + std::to_string(desc.height));
    const surfacelessDisplay& shared = sharedSurfacelessDisplay();
    if (shared.display == EGL_NO_DISPLAY) return creationFailed(shared.failure);
    const EGLDisplay display = shared.display;

    EGLConfig config{};
    if (!chooseConfig(display, config))
        return creationFailed("no EGL config with RGBA8, depth 24, stencil 8, pbuffer and desktop OpenGL support");

    // The API binding is per thread; put back whatever the caller had bound.
    const EGLenum previousApi = eglQueryAPI();
    if (eglBindAPI(EGL_OPENGL_API) != EGL_TRUE)
        return creationFailed("EGL cannot bind the desktop OpenGL API (" + eglErrorText() + ")");
    const EGLint contextAttribs[] = {EGL_CONTEXT_MAJOR_VERSION, 4,
                                     EGL_CONTEXT_MINOR_VERSION, 5,
                                     EGL_CONTEXT_OPENGL_PROFILE_MASK, EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT,
                                     EGL_CONTEXT_OPENGL_DEBUG, desc.debugContext ? EGL_TRUE : EGL_FALSE,
                                     EGL_NONE};
    const EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, contextAttribs);
    const std::string contextError = context == EGL_NO_CONTEXT ? eglErrorText() : std::string();
    if (previousApi != EGL_OPENGL_API && previousApi != EGL_NONE) eglBindAPI(previousApi);
    if (context == EGL_NO_CONTEXT)
        return creationFailed("no OpenGL 4.5 compatibility profile context (" + contextError + ")");

    const EGLint surfaceAttribs[] = {EGL_WIDTH, desc.width, EGL_HEIGHT, desc.height, EGL_NONE};
    const EGLSurface surface = eglCreatePbufferSurface(display, config, surfaceAttribs);
    if (surface == EGL_NO_SURFACE) {
        const std::string error = eglErrorText();
        eglDestroyContext(display, context);
        return creationFailed("no " + std::to_string(desc.width) + "x" + std::to_string(desc.height) +
                              " pbuffer surface (" + error + ")");
    }

    ox::refPtr<iGlContext> result(new glEglContext(display, context, surface, surface, true));
    if (!result->makeCurrent()) return creationFailed("the new context cannot be made current (" + eglErrorText() + ")");
    if (!loadGlEntryPoints()) return creationFailed("GLEW could not load the OpenGL entry points");
    return result;
}

ox::refPtr<iGlContext> adoptCurrentEglContext() {
    const EGLContext context = eglGetCurrentContext();
    if (context == EGL_NO_CONTEXT) return {};
    return ox::refPtr<iGlContext>(new glEglContext(eglGetCurrentDisplay(), context, eglGetCurrentSurface(EGL_DRAW),
                                                   eglGetCurrentSurface(EGL_READ), false));
}

void* currentEglContext() { return eglGetCurrentContext(); }

void releaseCurrentEglContext() {
    if (eglGetCurrentContext() != EGL_NO_CONTEXT)
        eglMakeCurrent(eglGetCurrentDisplay(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

} // namespace oxGraphics::openGL
