#pragma once
// One frame of the content rendered without a window and written to a PNG file.
#include "sceneContent.h"
#include "stageTimer.h"
#include "viewerOptions.h"

#include <string>

namespace oxview {

/// Renders the content at the options' size, samples and view (fitted to the window) on a
/// headless context and writes the PNG. Prints the absolute path of the file on success, one
/// error line otherwise. Returns the process exit code.
int renderHeadless(const viewerOptions_t& options, const sceneContent_t& content, stageTimer& timer);

} // namespace oxview
