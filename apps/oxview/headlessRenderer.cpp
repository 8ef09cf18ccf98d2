#include "headlessRenderer.h"

#include "multisampleLimit.h"
#include "pngFile.h"
#include "standardView.h"

#include "oxglcontext.h"
#include "oxscene.h"

#include <GL/gl.h>

#include <filesystem>
#include <iostream>
#include <memory>

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

} // namespace

std::string checkOutputTarget(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::path target(path);
    if (fs::is_directory(target, ec)) return "cannot write '" + path + "': it is a directory";
    const fs::path directory = target.parent_path().empty() ? fs::path(".") : target.parent_path();
    if (!fs::is_directory(directory, ec))
        return "cannot write '" + path + "': the directory '" + directory.string() + "' does not exist";
    return {};
}

int renderHeadless(const viewerOptions_t& options, const sceneContent_t& content, stageTimer& timer) {
    timer.start("setup");
    // Without multisampling the scene draws straight into the context's surface, so it must
    // have the size of the image.
    auto context = oxGraphics::openGL::createHeadlessContext({options.mWidth, options.mHeight, false});
    if (!context) {
        std::cerr << "oxview: cannot create a headless OpenGL context (EGL on Mesa)\n";
        return 1;
    }
    const int samples = usableSamples(options.mSamples, std::cerr);
    auto scene = oxGraphics::scene::create(context, /*presentToWindow*/ false, /*smoothViewEnabled*/ false);
    scene->setMultisamples(samples);
    scene->initGfxApiState();
    scene->resize(options.mWidth, options.mHeight, 100.0, 0, 0, 0, 0);
    // resize builds the targets with at least one sample; this builds them with the count asked for.
    scene->refreshFBOWithMultiSampling();
    for (const auto& drawable : content.mDrawables) scene->add(drawable);
    applyStandardView(*scene, options.mView, /*animate*/ false);
    scene->zoomAll();

    // The first frame records every entity's geometry and draws it.
    timer.start("record");
    paint(*scene);
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
        std::cerr << "timings of " << (content.mTriangles ? std::to_string(content.mTriangles) + " triangles"
                                                          : std::string("the sample scene"))
                  << ":\n";
        timer.print(std::cerr);
    }
    return 0;
}

} // namespace oxview
