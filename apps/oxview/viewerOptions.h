#pragma once
// The command line of oxview.
#include "standardView.h"

#include <optional>
#include <string>
#include <vector>

namespace oxview {

struct viewerOptions_t {
    std::vector<std::string> mMeshFiles;  ///< none: the built-in sample scene
    eStandardView mView = eStandardView::frontRight;
    int mWidth = 800;
    int mHeight = 600;
    int mSamples = 4;
    std::string mOutFile = "oxview.png";
    bool mShaders = true;
    bool mWindow = false;
    int mFrames = 0;                       ///< window: close after this many frames; 0 = run until closed
    bool mTimings = false;
    bool mHelp = false;
};

/// The options, or the one-line reason why the command line is not valid.
struct parsedOptions_t {
    std::optional<viewerOptions_t> mOptions;
    std::string mError;
};

parsedOptions_t parseOptions(const std::vector<std::string>& args);

/// The --help text.
std::string usageText();

} // namespace oxview
