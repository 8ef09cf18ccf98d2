#pragma once
// The built-in sample scene: a few machine parts on a base plate, a tool path, drill points and a
// coordinate-system triad, in distinct colours.
#include "sceneContent.h"

namespace oxview {

/// The sample's drawables, each wrapped so that the scene's fit operations frame it. World units
/// are millimetres; the plate's top face lies in z = 0. The plate and the three parts on it are
/// movable; the shaft is featured with the manipulator.
sceneContent_t buildSampleScene();

} // namespace oxview
