// A real window: an X11 window with a GLX 4.5 compatibility context (Mesa llvmpipe under Xvfb),
// adopted the way a GLFW, Qt or SDL host hands its context to the library.
#include "glTestFixture.h"

#include "oxglcontext.h"
#include "oxscene.h"

#include <GL/glew.h>
#include <GL/glx.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using oxGraphics::openGL::adoptCurrentContext;
using oxGraphics::openGL::currentNativeContext;
using oxGraphics::openGL::isAnyContextCurrent;

std::vector<std::string> gXErrors;

int recordXError(Display* display, XErrorEvent* event) {
    char text[256] = {};
    XGetErrorText(display, event->error_code, text, sizeof text);
    gXErrors.push_back(text);
    return 0;
}

// One X connection for the executable: Xvfb resets when its last client disconnects and refuses
// connections meanwhile, so a second XOpenDisplay right after an XCloseDisplay can fail.
Display* sharedDisplay() {
    static Display* display = XOpenDisplay(nullptr);
    return display;
}

// The host's side: window, colormap and context, all owned here and destroyed here.
class glxWindow {
public:
    static constexpr int kWidth = 320;
    static constexpr int kHeight = 240;

    glxWindow() {
        mDisplay = sharedDisplay();
        if (mDisplay == nullptr) return;
        const int attribs[] = {GLX_X_RENDERABLE, True, GLX_DRAWABLE_TYPE, GLX_WINDOW_BIT, GLX_RENDER_TYPE, GLX_RGBA_BIT,
                               GLX_RED_SIZE, 8, GLX_GREEN_SIZE, 8, GLX_BLUE_SIZE, 8, GLX_DEPTH_SIZE, 24,
                               GLX_STENCIL_SIZE, 8, GLX_DOUBLEBUFFER, True, None};
        int count = 0;
        GLXFBConfig* configs = glXChooseFBConfig(mDisplay, DefaultScreen(mDisplay), attribs, &count);
        if (configs == nullptr || count < 1) return;
        const GLXFBConfig config = configs[0];
        XFree(configs);
        XVisualInfo* visual = glXGetVisualFromFBConfig(mDisplay, config);
        if (visual == nullptr) return;
        const Window root = RootWindow(mDisplay, visual->screen);
        XSetWindowAttributes windowAttribs{};
        mColormap = XCreateColormap(mDisplay, root, visual->visual, AllocNone);
        windowAttribs.colormap = mColormap;
        windowAttribs.event_mask = StructureNotifyMask;
        mWindow = XCreateWindow(mDisplay, root, 0, 0, kWidth, kHeight, 0, visual->depth, InputOutput, visual->visual,
                                CWColormap | CWEventMask, &windowAttribs);
        XFree(visual);
        XMapWindow(mDisplay, mWindow);
        XEvent event;
        do XNextEvent(mDisplay, &event); while (event.type != MapNotify);

        using createContextFn = GLXContext (*)(Display*, GLXFBConfig, GLXContext, Bool, const int*);
        const auto createContext = reinterpret_cast<createContextFn>(
            glXGetProcAddressARB(reinterpret_cast<const GLubyte*>("glXCreateContextAttribsARB")));
        const int contextAttribs[] = {GLX_CONTEXT_MAJOR_VERSION_ARB, 4, GLX_CONTEXT_MINOR_VERSION_ARB, 5,
                                      GLX_CONTEXT_PROFILE_MASK_ARB, GLX_CONTEXT_COMPATIBILITY_PROFILE_BIT_ARB, None};
        if (createContext != nullptr) mContext = createContext(mDisplay, config, nullptr, True, contextAttribs);
    }
    ~glxWindow() {
        if (mDisplay == nullptr) return;
        glXMakeCurrent(mDisplay, None, nullptr);
        if (mContext != nullptr) glXDestroyContext(mDisplay, mContext);
        if (mWindow != None) XDestroyWindow(mDisplay, mWindow);
        if (mColormap != None) XFreeColormap(mDisplay, mColormap);
        XSync(mDisplay, False);
    }
    glxWindow(const glxWindow&) = delete;
    glxWindow& operator=(const glxWindow&) = delete;

    /// The colour of a window pixel as it reached the X server (x right, y down).
    std::uint32_t serverPixel(int x, int y) const {
        XSync(mDisplay, False);
        XImage* image = XGetImage(mDisplay, mWindow, x, y, 1, 1, AllPlanes, ZPixmap);
        if (image == nullptr) return 0xDEADBEEF;
        const auto pixel = static_cast<std::uint32_t>(XGetPixel(image, 0, 0)) & 0xFFFFFFu;
        XDestroyImage(image);
        return pixel;
    }

    Display* mDisplay = nullptr;
    Window mWindow = None;
    Colormap mColormap = None;
    GLXContext mContext = nullptr;
};

class glxWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        gXErrors.clear();
        mPreviousHandler = XSetErrorHandler(&recordXError);
        ASSERT_NE(mWindow.mDisplay, nullptr) << "no X display: run under xvfb-run (install xvfb)";
        ASSERT_NE(mWindow.mContext, nullptr) << "no GLX 4.5 compatibility context on this X server";
        ASSERT_TRUE(glXMakeCurrent(mWindow.mDisplay, mWindow.mWindow, mWindow.mContext));
    }
    void TearDown() override {
        if (mWindow.mDisplay != nullptr) XSync(mWindow.mDisplay, False);
        EXPECT_TRUE(gXErrors.empty()) << gXErrors.front();
        XSetErrorHandler(mPreviousHandler);
    }
    glxWindow mWindow;
    XErrorHandler mPreviousHandler = nullptr;
};

TEST_F(glxWindowTest, adoptedContextClearsSwapsAndPresents) {
    auto adopted = adoptCurrentContext();
    ASSERT_TRUE(adopted);
    EXPECT_EQ(adopted->nativeContext(), mWindow.mContext);
    EXPECT_EQ(adopted->nativeDisplay(), mWindow.mDisplay);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(adopted->nativeDrawable()), mWindow.mWindow);
    EXPECT_EQ(adopted->width(), glxWindow::kWidth);
    EXPECT_EQ(adopted->height(), glxWindow::kHeight);

    glXMakeCurrent(mWindow.mDisplay, None, nullptr);
    EXPECT_FALSE(adopted->isCurrent());
    EXPECT_FALSE(isAnyContextCurrent());
    ASSERT_TRUE(adopted->makeCurrent());
    EXPECT_EQ(glXGetCurrentContext(), mWindow.mContext);
    EXPECT_EQ(currentNativeContext(), mWindow.mContext);

    oxtest::clearTo(0, 1, 0, 1);
    EXPECT_EQ(oxtest::readPixel(10, 10), (oxtest::rgba8{0, 255, 0, 255}));
    EXPECT_TRUE(adopted->swapBuffers());
    glFinish();
    EXPECT_EQ(mWindow.serverPixel(10, 10), 0x00FF00u);
    EXPECT_EQ(mWindow.serverPixel(glxWindow::kWidth - 1, glxWindow::kHeight - 1), 0x00FF00u);
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));

    // Forgetting the adopted context leaves the host's context current and alive.
    adopted->destroy();
    EXPECT_FALSE(adopted->makeCurrent());
    EXPECT_EQ(glXGetCurrentContext(), mWindow.mContext);
    oxtest::clearTo(0, 0, 1, 1);
    EXPECT_EQ(oxtest::readPixel(1, 1), (oxtest::rgba8{0, 0, 255, 255}));
}

TEST_F(glxWindowTest, switchesBetweenTheWindowAndAHeadlessContext) {
    auto window = adoptCurrentContext();
    ASSERT_TRUE(window);
    oxtest::clearTo(0, 1, 0, 1);

    auto headless = oxGraphics::openGL::createHeadlessContext({16, 16, false});
    ASSERT_TRUE(headless) << oxtest::kGlInstallHint;
    EXPECT_EQ(glXGetCurrentContext(), nullptr);
    EXPECT_EQ(currentNativeContext(), headless->nativeContext());
    oxtest::clearTo(1, 0, 0, 1);

    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(window->makeCurrent());
        EXPECT_EQ(currentNativeContext(), mWindow.mContext);
        EXPECT_FALSE(headless->isCurrent());
        EXPECT_EQ(oxtest::readPixel(5, 5), (oxtest::rgba8{0, 255, 0, 255}));
        ASSERT_TRUE(headless->makeCurrent());
        EXPECT_EQ(glXGetCurrentContext(), nullptr);
        EXPECT_EQ(oxtest::readPixel(5, 5), (oxtest::rgba8{255, 0, 0, 255}));
    }
    headless->destroy();
    EXPECT_FALSE(isAnyContextCurrent());
    EXPECT_TRUE(window->makeCurrent());
}

TEST_F(glxWindowTest, rubberRectangleDrawnTwiceLeavesTheFrontBufferAsItWas) {
    auto view = oxGraphics::scene::create(adoptCurrentContext(), /*presentToWindow*/ true, false);
    ASSERT_TRUE(view);
    view->resize(glxWindow::kWidth, glxWindow::kHeight, 10.0, 0, 0, 0, 0);
    oxtest::clearTo(0.2f, 0.4f, 0.6f, 1.0f);
    ASSERT_TRUE(glXGetCurrentContext() != nullptr);
    glXSwapBuffers(mWindow.mDisplay, mWindow.mWindow);
    glFinish();

    auto frontBuffer = [] {
        glReadBuffer(GL_FRONT);
        auto image = oxtest::readRegion(0, 0, glxWindow::kWidth, glxWindow::kHeight);
        glReadBuffer(GL_BACK);
        return image;
    };
    const auto before = frontBuffer();
    view->drawRubberRect(20, 30, 200, 150);
    const auto drawn = frontBuffer();
    // The left edge runs through x = 20 (window y 30..150, y counted downwards).
    EXPECT_NE(std::vector<std::uint8_t>(drawn.at(20, 90), drawn.at(20, 90) + 3),
              std::vector<std::uint8_t>(before.at(20, 90), before.at(20, 90) + 3));
    EXPECT_EQ(std::vector<std::uint8_t>(drawn.at(100, 90), drawn.at(100, 90) + 4),
              std::vector<std::uint8_t>(before.at(100, 90), before.at(100, 90) + 4)); // inside: untouched
    view->drawRubberRect(20, 30, 200, 150);
    EXPECT_EQ(frontBuffer().pixels, before.pixels);
    // The state the rectangle needed is put back.
    EXPECT_EQ(oxtest::readGlInteger(GL_DRAW_BUFFER), GL_BACK);
    EXPECT_FALSE(glIsEnabled(GL_COLOR_LOGIC_OP));
    EXPECT_EQ(oxtest::readGlFloat(GL_LINE_WIDTH), 1.0f);
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

} // namespace
