// oxview: renders meshes or a built-in sample scene with oxGraphics, headless to a PNG file or
// in an interactive window.
#include "headlessRenderer.h"
#include "outputTarget.h"
#include "sceneContent.h"
#include "stageTimer.h"
#include "viewerOptions.h"
#include "windowViewer.h"

#include "oxglshader.h"

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    const oxview::parsedOptions_t parsed = oxview::parseOptions(args);
    if (!parsed.mOptions) {
        std::cerr << "oxview: " << parsed.mError << "\n";
        return 2;
    }
    oxview::viewerOptions_t options = *parsed.mOptions;
    if (options.mHelp) {
        std::cout << oxview::usageText();
        return 0;
    }
    if (!options.mWindow) {
        const oxview::outputTarget_t target = oxview::resolveOutputTarget(options.mOutFile);
        if (!target.mError.empty()) {
            std::cerr << "oxview: " << target.mError << "\n";
            return 1;
        }
        options.mOutFile = target.mPath;
    }

    oxGraphics::enableGlShadersGlobally(options.mShaders);

    // Files are loaded before any GL context or thread exists: each import runs in a forked
    // child process, and a fork copies only the calling thread.
    oxview::stageTimer timer;
    timer.start("load");
    const oxview::contentResult_t content = oxview::buildContent(options.mMeshFiles);
    if (!content.mError.empty()) {
        std::cerr << "oxview: " << content.mError << "\n";
        return 1;
    }
    for (const std::string& warning : content.mWarnings) std::cerr << "oxview: warning: " << warning << "\n";
    if (options.mWindow) return oxview::runWindow(options, content.mContent);
    return oxview::renderHeadless(options, content.mContent, timer);
}
