// WGL contexts on Windows.
// Supports the host's own device context and rendering context (createWglContext) and the pair
// that is current on the calling thread (adoptCurrentContext). Both stay the host's: the library
// never calls wglDeleteContext or ReleaseDC on them. Size is the client area of the DC's window.
#include "oxglcontext.h"

#include "oxglentrypoints.h"
#include "oxlog.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace oxGraphics::openGL {

namespace {

class glWglContext final : public iGlContext, public ox::refObj {
public:
    glWglContext(HDC dc, HGLRC rc) : mDc(dc), mRc(rc) {}
    ~glWglContext() override { destroy(); }

    bool makeCurrent() override {
        if (mRc == nullptr) return false;
        if (isCurrent()) return true;
        return wglMakeCurrent(mDc, mRc) != FALSE;
    }
    bool isCurrent() const override {
        return mRc != nullptr && wglGetCurrentContext() == mRc && wglGetCurrentDC() == mDc;
    }
    bool swapBuffers() override {
        if (!makeCurrent()) return false;
        return SwapBuffers(mDc) != FALSE;
    }

    void* nativeContext() const override { return mRc; }
    void* nativeDrawable() const override { return mDc; }
    void* nativeDisplay() const override { return nullptr; }

    int width() const override { return clientSize().right; }
    int height() const override { return clientSize().bottom; }

    bool isValid() const override { return mRc != nullptr; }
    void destroy() override {
        mDc = nullptr;
        mRc = nullptr;
    }

private:
    RECT clientSize() const {
        RECT rect{0, 0, 0, 0};
        if (mDc != nullptr)
            if (HWND window = WindowFromDC(mDc)) GetClientRect(window, &rect);
        return rect;
    }

    HDC mDc;
    HGLRC mRc;
};

ox::refPtr<iGlContext> wrapAndLoad(HDC dc, HGLRC rc, const char* loggerName) {
    if (dc == nullptr || rc == nullptr) {
        oxlog::logManager::getLogger(loggerName)->log(oxlog::eLevel::warn, L"no device context or rendering context",
                                                      __FILE__, __LINE__, __func__);
        return {};
    }
    ox::refPtr<iGlContext> context(new glWglContext(dc, rc));
    if (!context->makeCurrent() || !loadGlEntryPoints()) {
        oxlog::logManager::getLogger(loggerName)->log(
            oxlog::eLevel::warn, L"the context cannot be made current or its entry points cannot be loaded", __FILE__,
            __LINE__, __func__);
        return {};
    }
    return context;
}

} // namespace

void* currentNativeContext() { return wglGetCurrentContext(); }

bool isAnyContextCurrent() { return wglGetCurrentContext() != nullptr; }

ox::refPtr<iGlContext> createWglContext(void* hdc, void* hglrc) {
    return wrapAndLoad(static_cast<HDC>(hdc), static_cast<HGLRC>(hglrc), "oxGraphics::openGL::createWglContext");
}

ox::refPtr<iGlContext> adoptCurrentContext() {
    return wrapAndLoad(wglGetCurrentDC(), wglGetCurrentContext(), "oxGraphics::openGL::adoptCurrentContext");
}

} // namespace oxGraphics::openGL
