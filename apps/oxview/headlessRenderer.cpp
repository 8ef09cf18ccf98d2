#include "headlessRenderer.h"

#include "multisampleLimit.h"
#include "partManipulation.h"
#include "pngFile.h"
#include "progressLine.h"
#include "standardView.h"

#include "oxglcontext.h"
#include "oxscene.h"

#include <GL/gl.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

namespace oxview {
namespace {

/// One whole frame, finished, so that the stage that ran it is timed honestly.
void paint(oxGraphics::scene& scene) {
    scene.setupForPainting();
    scene.renderBefore();
    scene.draw();
    scene.renderAfter();
    glFinish();
}

/// Builds the scene's targets with `samples`, or with fewer (halving, down to none) when the driver
/// cannot back the image size with that many (the memory of a multisampled target grows with
/// both). The count that worked, or -1 when not even a single-sampled target could be built.
int buildTargets(oxGraphics::scene& scene, int samples) {
    for (;;) {
        scene.setMultisamples(samples);
        scene.refreshFBOWithMultiSampling();
        if (scene.targetsComplete()) return samples;
        if (samples == 0) return -1;
        samples /= 2;
    }
}

} // namespace

int renderHeadless(const viewerOptions_t& options, const sceneContent_t& content, stageTimer& timer) {
    timer.start("setup");
    // Without multisampling the scene draws straight into the context's surface, so it must
    // have the size of the image.
    auto context = oxGraphics::openGL::createHeadlessContext({options.mWidth, options.mHeight, false});
    if (!context) {
        std::cerr << "oxview: cannot create a headless OpenGL context (EGL on Mesa)\n";
        return 1;
    }
    const int usable = usableSamples(options.mSamples, std::cerr);
    auto scene = oxGraphics::scene::create(context, /*presentToWindow*/ false, /*smoothViewEnabled*/ false);
    scene->setMultisamples(usable);
    scene->initGfxApiState();
    scene->resize(options.mWidth, options.mHeight, 100.0, 0, 0, 0, 0);
    // resize builds the targets with at least one sample; this builds them with the count asked for.
    const int samples = buildTargets(*scene, usable);
    if (samples < 0) {
        std::cerr << "oxview: cannot render a " << options.mWidth << "x" << options.mHeight
                  << " image: the OpenGL driver cannot allocate framebuffers of that size (try a smaller --size)\n";
        return 1;
    }
    if (samples != usable)
        std::cerr << "oxview: note: " << options.mWidth << "x" << options.mHeight << " with " << usable
                  << " samples does not fit the OpenGL driver; rendering with " << samples << "\n";
    for (const auto& drawable : content.mDrawables) scene->add(drawable);
    applyStandardView(*scene, options.mView, /*animate*/ false);
    scene->zoomAll();
    partManipulation parts(scene, content.mParts);
    if (content.mFeaturedPart) parts.showManipulatorOn(content.mFeaturedPart);

    // The first frame records every entity's geometry and draws it.
    timer.start("record");
    {
        const progressWatcher progress("drawing the first frame");
        paint(*scene);
    }
    if (options.mTimings) {
        // What every later frame of a window costs: the recordings replayed.
        timer.start("frame");
        paint(*scene);
    }

    timer.start("readback");
    std::unique_ptr<char[]> pixels(scene->writeToBuffer());
    if (!pixels) {
        std::cerr << "oxview: reading the rendered image back failed\n";
        return 1;
    }

    timer.start("png");
    const std::string error = writePngFile(options.mOutFile, reinterpret_cast<const unsigned char*>(pixels.get()),
                                           options.mWidth, options.mHeight);
    timer.stop();
    if (!error.empty()) {
        std::cerr << "oxview: " << error << "\n";
        return 1;
    }

    std::error_code ec;
    std::filesystem::path written = std::filesystem::canonical(options.mOutFile, ec);
    if (ec) written = std::filesystem::absolute(options.mOutFile).lexically_normal();
    std::cout << "oxview: wrote " << written.string() << " (" << options.mWidth << "x" << options.mHeight << ", "
              << standardViewName(options.mView) << " view, " << samples << " samples)" << std::endl;
    if (options.mTimings) {
        std::string counted;
        const std::pair<std::size_t, const char*> counts[] = {
            {content.mTriangles, " triangles"}, {content.mPoints, " points"}, {content.mPolylines, " polylines"}};
        for (const auto& [count, what] : counts)
            if (count) counted += (counted.empty() ? "" : ", ") + std::to_string(count) + what;
        std::cerr << "timings of " << (counted.empty() ? std::string("the sample scene") : counted) << ":\n";
        timer.print(std::cerr);
    }
    return 0;
}

} // namespace oxview
