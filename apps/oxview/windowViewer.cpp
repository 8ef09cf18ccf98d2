#include "windowViewer.h"

#include "multisampleLimit.h"
#include "outputTarget.h"
#include "partManipulation.h"
#include "pngFile.h"
#include "standardView.h"

#include "oxglcontext.h"
#include "oxscene.h"

#include "oxobservable.h"
#include "oxrefobj.h"

#include <GLFW/glfw3.h>

#if defined(__SANITIZE_ADDRESS__)
#include <dlfcn.h>
#include <link.h>
#include <string_view>
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace oxview {
namespace {

/// Repaint requests from the scene. View-transfer steps arrive on the scene's worker thread,
/// so the flag is atomic and the GUI thread is woken through GLFW's thread-safe empty event.
class repaintObserver : public ox::iObserver, public ox::refObj {
public:
    void onEvent(int, ox::iObservable*, const wchar_t*, ox::iEventParams*) override {
        mDirty = true;
        glfwPostEmptyEvent();
    }
    std::atomic<bool> mDirty{true};
};

/// glfwInit/glfwTerminate.
class glfwLibrary {
public:
    glfwLibrary() {
        glfwSetErrorCallback(
            [](int code, const char* text) { std::cerr << "oxview: GLFW error " << code << ": " << text << "\n"; });
        mOk = glfwInit() == GLFW_TRUE;
    }
    ~glfwLibrary() {
        if (mOk) glfwTerminate();
    }
    glfwLibrary(const glfwLibrary&) = delete;
    glfwLibrary& operator=(const glfwLibrary&) = delete;
    bool ok() const { return mOk; }

private:
    bool mOk = false;
};

/// Number keys 1..9, 0 in the order of the standard views.
constexpr std::array<eStandardView, 10> kKeyViews{
    eStandardView::front,     eStandardView::back,       eStandardView::left,     eStandardView::right,
    eStandardView::top,       eStandardView::bottom,     eStandardView::frontLeft, eStandardView::frontRight,
    eStandardView::backLeft,  eStandardView::backRight,
};

// A press and release closer than this (in pixels) is a click, not a drag.
constexpr double kClickSlop = 3.0;
constexpr unsigned int kPickHalfSize = 4;

/// What the mouse button that is down is doing.
enum class eDrag {
    none,       // no button down
    pending,    // down, not yet moved beyond the click slop
    camera,     // turning or panning the view
    grip,       // moving or turning the manipulated part
    cancelled,  // a part drag ended with Esc: the rest of it is ignored
};

class windowViewer {
public:
    windowViewer(GLFWwindow* window, const ox::refPtr<oxGraphics::scene>& scene, const sceneContent_t& content,
                 std::string frameFile)
        : mWindow(window), mScene(scene), mParts(scene, content.mParts), mFrameFile(std::move(frameFile)) {
        if (content.mFeaturedPart) mParts.toggleSelection(content.mFeaturedPart);
        glfwSetWindowUserPointer(window, this);
        glfwSetFramebufferSizeCallback(window, [](GLFWwindow* w, int width, int height) {
            self(w).onResize(width, height);
        });
        glfwSetMouseButtonCallback(window, [](GLFWwindow* w, int button, int action, int) {
            self(w).onButton(button, action);
        });
        glfwSetCursorPosCallback(window, [](GLFWwindow* w, double x, double y) { self(w).onCursor(x, y); });
        glfwSetScrollCallback(window, [](GLFWwindow* w, double, double dy) { self(w).onScroll(dy); });
        glfwSetKeyCallback(window, [](GLFWwindow* w, int key, int, int action, int) { self(w).onKey(key, action); });
        glfwGetCursorPos(window, &mCursorX, &mCursorY);
        toPixels(mCursorX, mCursorY);
        mScene->addObserver(mRepaint);
    }
    ~windowViewer() {
        // A running view transfer fires from its worker; let it end before the observer goes.
        while (mScene->smoothViewActive()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        mScene->removeObserver(mRepaint.get());
        glfwSetFramebufferSizeCallback(mWindow, nullptr);
        glfwSetMouseButtonCallback(mWindow, nullptr);
        glfwSetCursorPosCallback(mWindow, nullptr);
        glfwSetScrollCallback(mWindow, nullptr);
        glfwSetKeyCallback(mWindow, nullptr);
        glfwSetWindowUserPointer(mWindow, nullptr);
    }
    windowViewer(const windowViewer&) = delete;
    windowViewer& operator=(const windowViewer&) = delete;

    /// The event loop; with a frame limit it paints continuously and stops after that many.
    void run(int frameLimit) {
        int frames = 0;
        while (!glfwWindowShouldClose(mWindow)) {
            if (frameLimit > 0 || mRepaint->mDirty) glfwPollEvents();
            else glfwWaitEvents();
            if (!mRepaint->mDirty.exchange(false) && frameLimit == 0) continue;
            paint();
            if (frameLimit > 0 && ++frames >= frameLimit) break;
        }
    }

private:
    static windowViewer& self(GLFWwindow* w) { return *static_cast<windowViewer*>(glfwGetWindowUserPointer(w)); }

    void paint() {
        mScene->setupForPainting();
        mScene->renderBefore();
        mScene->draw();
        // Without samples the frame is only in the back buffer until the swap; with them it is
        // in the resolved target, which renderAfter fills.
        std::unique_ptr<char[]> pixels;
        if (mSaveFrame && mScene->multisamples() < 1) pixels.reset(mScene->writeToBuffer());
        mScene->renderAfter();  // presents the frame
        if (mSaveFrame && !pixels) pixels.reset(mScene->writeToBuffer());
        if (mSaveFrame) saveFrame(pixels.get());
        mSaveFrame = false;
    }

    /// Writes the frame to the --out file, as a headless run would, and says where it went.
    void saveFrame(const char* pixels) const {
        const outputTarget_t target = resolveOutputTarget(mFrameFile);
        std::string error = target.mError;
        if (error.empty() && pixels == nullptr) error = "reading the frame back failed";
        if (error.empty())
            error = writePngFile(target.mPath, reinterpret_cast<const unsigned char*>(pixels), mScene->viewportWidth(),
                                 mScene->viewportHeight());
        if (!error.empty()) {
            std::cerr << "oxview: " << error << "\n";
            return;
        }
        std::error_code ec;
        const std::filesystem::path written = std::filesystem::canonical(target.mPath, ec);
        std::cout << "oxview: wrote " << (ec ? target.mPath : written.string()) << std::endl;
    }

    /// Cursor positions are in screen coordinates; the scene works in framebuffer pixels.
    void toPixels(double& x, double& y) const {
        int ww = 0, wh = 0, fw = 0, fh = 0;
        glfwGetWindowSize(mWindow, &ww, &wh);
        glfwGetFramebufferSize(mWindow, &fw, &fh);
        if (ww > 0 && wh > 0) {
            x *= double(fw) / ww;
            y *= double(fh) / wh;
        }
    }

    void onResize(int width, int height) {
        if (width <= 0 || height <= 0) return;  // minimised
        mScene->resize(width, height, mScene->viewSize(), 0, 0, 0, 0);
        mScene->refreshFBOWithMultiSampling();
        mRepaint->mDirty = true;
    }

    void onButton(int button, int action) {
        // The position of the last cursor event, not glfwGetCursorPos: with events queued up
        // that would already be where the pointer went afterwards.
        const double x = mCursorX, y = mCursorY;
        if (action == GLFW_PRESS) {
            if (mDrag != eDrag::none) return;  // a second button during a drag
            mButton = button;
            mPressX = mLastX = x;
            mPressY = mLastY = y;
            // A press on a grip starts the part's drag at once, so a click there never selects.
            mDrag = button == GLFW_MOUSE_BUTTON_LEFT && mParts.beginDrag(x, y) ? eDrag::grip : eDrag::pending;
            return;
        }
        if (action != GLFW_RELEASE || button != mButton) return;
        const eDrag drag = mDrag;
        mButton = -1;
        mDrag = eDrag::none;
        if (drag == eDrag::grip) mParts.endDrag(x, y);
        else if (drag == eDrag::pending && button == GLFW_MOUSE_BUTTON_LEFT) pick(x, y);
        mParts.hover(x, y);
    }

    void onCursor(double x, double y) {
        toPixels(x, y);
        mCursorX = x;
        mCursorY = y;
        if (mDrag == eDrag::none) {
            mParts.hover(x, y);
            return;
        }
        if (mDrag == eDrag::grip) mParts.dragTo(x, y);
        if (mDrag == eDrag::grip || mDrag == eDrag::cancelled) return;
        if (mDrag == eDrag::pending && std::hypot(x - mPressX, y - mPressY) < kClickSlop) return;
        mDrag = eDrag::camera;
        const int x1 = int(std::lround(mLastX)), y1 = int(std::lround(mLastY));
        const int x2 = int(std::lround(x)), y2 = int(std::lround(y));
        if (mButton == GLFW_MOUSE_BUTTON_LEFT) mScene->rotateCamera(x1, y1, x2, y2);
        else if (mButton == GLFW_MOUSE_BUTTON_RIGHT || mButton == GLFW_MOUSE_BUTTON_MIDDLE)
            mScene->moveCamera(x1, y1, x2, y2);
        mLastX = x;
        mLastY = y;
    }

    void onScroll(double dy) {
        if (dy == 0.0) return;
        mScene->zoomWheel(int(std::lround(mCursorX)), int(std::lround(mCursorY)), dy > 0);
        mRepaint->mDirty = true;  // zooming fires no event of its own
    }

    /// A click selects the drawable under the cursor alone (a part gets the manipulator), or
    /// deselects it when it was selected; a click on nothing clears the selection.
    void pick(double x, double y) {
        ox::refPtr<ox::iRefObj> hit;
        const auto px = static_cast<unsigned int>(std::max(0L, std::lround(x)));
        const auto py = static_cast<unsigned int>(std::max(0L, std::lround(y)));
        mScene->pickSelect(px, py, kPickHalfSize, hit);
        mParts.toggleSelection(ox::dynamicRefCast<oxGraphics::iDrawable>(hit));
        mRepaint->mDirty = true;  // selection changes fire no event
    }

    void onKey(int key, int action) {
        if (action == GLFW_REPEAT) {
            // Held keys repeat the part's steps, nothing else.
            if (const auto step = partStepOf(key)) stepPart(*step);
            return;
        }
        if (action != GLFW_PRESS) return;
        if (key == GLFW_KEY_ESCAPE && mDrag == eDrag::grip) {
            mParts.cancelDrag();
            mDrag = eDrag::cancelled;
        } else if (key == GLFW_KEY_ESCAPE) {
            glfwSetWindowShouldClose(mWindow, GLFW_TRUE);
        } else if (const auto step = partStepOf(key)) {
            stepPart(*step);
        } else if (key == GLFW_KEY_S) {
            mSaveFrame = true;
            mRepaint->mDirty = true;
        } else if (key == GLFW_KEY_A) mScene->zoomAll();
        else if (key >= GLFW_KEY_1 && key <= GLFW_KEY_9) applyStandardView(*mScene, kKeyViews[key - GLFW_KEY_1], true);
        else if (key == GLFW_KEY_0) applyStandardView(*mScene, kKeyViews[9], true);
    }

    void stepPart(ePartStep step) {
        mParts.step(step);
        mParts.hover(mCursorX, mCursorY);  // the handle moved: the grip under the cursor may be another
    }

    static std::optional<ePartStep> partStepOf(int key) {
        switch (key) {
        case GLFW_KEY_LEFT: return ePartStep::left;
        case GLFW_KEY_RIGHT: return ePartStep::right;
        case GLFW_KEY_UP: return ePartStep::up;
        case GLFW_KEY_DOWN: return ePartStep::down;
        case GLFW_KEY_PAGE_UP: return ePartStep::turnLeft;
        case GLFW_KEY_PAGE_DOWN: return ePartStep::turnRight;
        default: return std::nullopt;
        }
    }

    GLFWwindow* mWindow;
    ox::refPtr<oxGraphics::scene> mScene;
    ox::refPtr<repaintObserver> mRepaint{new repaintObserver};
    partManipulation mParts;
    std::string mFrameFile;  // where 's' writes the frame
    int mButton = -1;
    eDrag mDrag = eDrag::none;
    double mCursorX = 0, mCursorY = 0;  // framebuffer pixels
    double mPressX = 0, mPressY = 0, mLastX = 0, mLastY = 0;
    bool mSaveFrame = false;
};

#if defined(__SANITIZE_ADDRESS__)
/// Keeps the GL driver's modules loaded until the process ends. Closing the X display unloads
/// the driver's rasteriser module, and the leak checker then reports that module's process-lifetime
/// allocations against an unknown module, which no suppression can name; pinned, they stay
/// attributed to the driver and its suppression applies, while our own leaks are still reported.
void pinGlDriverModules() {
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void*) {
            const std::string_view name = info->dlpi_name != nullptr ? info->dlpi_name : "";
            if (name.ends_with("_dri.so")) dlopen(info->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
            return 0;
        },
        nullptr);
}
#endif

/// glfwCreateWindow/glfwDestroyWindow.
struct windowDeleter {
    void operator()(GLFWwindow* w) const { glfwDestroyWindow(w); }
};

} // namespace

int runWindow(const viewerOptions_t& options, const sceneContent_t& content) {
    glfwLibrary glfw;
    if (!glfw.ok()) {
        std::cerr << "oxview: cannot open a window: GLFW failed to start (is a display available?)\n";
        return 1;
    }
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 4);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 5);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_COMPAT_PROFILE);
    glfwWindowHint(GLFW_DEPTH_BITS, 24);
    glfwWindowHint(GLFW_STENCIL_BITS, 8);
    std::unique_ptr<GLFWwindow, windowDeleter> window(
        glfwCreateWindow(options.mWidth, options.mHeight, "oxview", nullptr, nullptr));
    if (!window) {
        std::cerr << "oxview: cannot open a window with an OpenGL 4.5 compatibility context\n";
        return 1;
    }
    glfwMakeContextCurrent(window.get());
    glfwSwapInterval(1);
#if defined(__SANITIZE_ADDRESS__)
    pinGlDriverModules();
#endif

    // The window's context stays GLFW's: the scene adopts it and never destroys it.
    auto context = oxGraphics::openGL::adoptCurrentContext();
    if (!context) {
        std::cerr << "oxview: the window's OpenGL context could not be adopted\n";
        return 1;
    }
    int width = 0, height = 0;
    glfwGetFramebufferSize(window.get(), &width, &height);
    {
        auto scene = oxGraphics::scene::create(context, /*presentToWindow*/ true, /*smoothViewEnabled*/ true);
        const int samples = usableSamples(options.mSamples, std::cerr);
        scene->setMultisamples(samples);
        scene->initGfxApiState();
        scene->resize(width, height, 100.0, 0, 0, 0, 0);
        scene->refreshFBOWithMultiSampling();
        for (const auto& drawable : content.mDrawables) scene->add(drawable);
        applyStandardView(*scene, options.mView, /*animate*/ false);
        scene->zoomAll();

        windowViewer viewer(window.get(), scene, content, options.mOutFile);
        viewer.run(options.mFrames);
    }
    // The content's recordings outlive this function; with the context gone they are let go
    // without GL calls.
    context->destroy();
    return 0;
}

} // namespace oxview
