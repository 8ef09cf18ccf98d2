#pragma once
// The interactive window: the content in a GLFW window the user turns, pans, zooms and picks in.
#include "sceneContent.h"
#include "viewerOptions.h"

namespace oxview {

/// Opens a window of the options' size with an OpenGL 4.5 compatibility context, shows the
/// content in the options' view and runs until the window is closed, Esc is pressed or, with
/// --frames N, N frames have been shown. Returns the process exit code.
int runWindow(const viewerOptions_t& options, const sceneContent_t& content);

} // namespace oxview
