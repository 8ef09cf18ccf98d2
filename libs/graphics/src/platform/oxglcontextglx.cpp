// GLX contexts on Linux (X11).
// Supports adoption only: the context, display and draw/read drawables that a host (GLFW, Qt,
// SDL, plain Xlib) made current. Nothing is created or destroyed here; the drawable size is read
// with glXQueryDrawable (GLX 1.3).
#include "oxglcontextlinux.h"

#include <GL/glx.h>

#include <cstdint>

namespace oxGraphics::openGL {

namespace {

class glGlxContext final : public iGlContext, public ox::refObj {
public:
    glGlxContext(Display* display, GLXContext context, GLXDrawable draw, GLXDrawable read)
        : mDisplay(display), mContext(context), mDraw(draw), mRead(read) {}
    ~glGlxContext() override { destroy(); }

    bool makeCurrent() override {
        if (mContext == nullptr) return false;
        if (isCurrent()) return true;
        // Only one context of either API can be current on a thread, and GLX reports the clash
        // through the X error handler, so the EGL one goes first.
        releaseCurrentEglContext();
        const Bool made = mRead == mDraw ? glXMakeCurrent(mDisplay, mDraw, mContext)
                                         : glXMakeContextCurrent(mDisplay, mDraw, mRead, mContext);
        return made == True;
    }

    bool isCurrent() const override {
        return mContext != nullptr && glXGetCurrentContext() == mContext && glXGetCurrentDrawable() == mDraw &&
               glXGetCurrentReadDrawable() == mRead;
    }

    bool swapBuffers() override {
        if (!makeCurrent()) return false;
        glXSwapBuffers(mDisplay, mDraw);
        return true;
    }

    void* nativeContext() const override { return mContext; }
    void* nativeDrawable() const override { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(mDraw)); }
    void* nativeDisplay() const override { return mDisplay; }

    int width() const override { return drawableSize(GLX_WIDTH); }
    int height() const override { return drawableSize(GLX_HEIGHT); }

    bool isValid() const override { return mContext != nullptr; }

    // The host owns every GLX object: forgetting the handles is all there is to do.
    void destroy() override {
        mDisplay = nullptr;
        mContext = nullptr;
        mDraw = mRead = None;
    }

private:
    int drawableSize(int attribute) const {
        if (mContext == nullptr || mDraw == None) return 0;
        unsigned int value = 0;
        glXQueryDrawable(mDisplay, mDraw, attribute, &value);
        return static_cast<int>(value);
    }

    Display* mDisplay;
    GLXContext mContext;
    GLXDrawable mDraw;
    GLXDrawable mRead;
};

} // namespace

ox::refPtr<iGlContext> adoptCurrentGlxContext() {
    const GLXContext context = glXGetCurrentContext();
    if (context == nullptr) return {};
    return ox::refPtr<iGlContext>(
        new glGlxContext(glXGetCurrentDisplay(), context, glXGetCurrentDrawable(), glXGetCurrentReadDrawable()));
}

void* currentGlxContext() { return glXGetCurrentContext(); }

void releaseCurrentGlxContext() {
    if (glXGetCurrentContext() != nullptr) glXMakeCurrent(glXGetCurrentDisplay(), None, nullptr);
}

} // namespace oxGraphics::openGL
