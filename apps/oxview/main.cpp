// oxview: renders meshes or a built-in sample scene with oxGraphics, headless to a PNG file or
// in an interactive window.
#include "headlessRenderer.h"
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
    const oxview::viewerOptions_t& options = *parsed.mOptions;
    if (options.mHelp) {
        std::cout << oxview::usageText();
        return 0;
    }
    if (!options.mWindow) {
        if (const std::string error = oxview::checkOutputTarget(options.mOutFile); !error.empty()) {
            std::cerr << "oxview: " << error << "\n";
            return 1;
        }
    }

    oxGraphics::enableGlShadersGlobally(options.mShaders);

    oxview::stageTimer timer;
    timer.start("load");
    const oxview::contentResult_t content = oxview::buildContent(options.mMeshFiles);
    if (!content.mError.empty()) {
        std::cerr << "oxview: " << content.mError << "\n";
        return 1;
    }
    if (options.mWindow) return oxview::runWindow(options, content.mContent);
    return oxview::renderHeadless(options, content.mContent, timer);
}
