#pragma once
// Small value types shared by the scene facade, its renderer and the host.
#include "oxdrawable.h"

#include "oxgeoquaternion.h"
#include "oxgeovector.h"
#include "oxrefptr.h"

#include <cstdint>
#include <vector>

namespace oxGraphics {

/// The scene's colour slots, a bit mask: setColor assigns a colour to every slot whose bit is set.
enum eColorId : unsigned int {
    kColorBackgroundTop = 1,       ///< top of the background gradient (default (0, 78, 152))
    kColorBackgroundBottom = 2,    ///< bottom of the background gradient (default (0, 78, 152))
    kColorOutline = 4,             ///< object outlines (default white)
    kColorAnnotation = 8,          ///< host annotations and text (default white)
    kColorSelection = 16,          ///< highlight of selected drawables (default (255, 255, 0))
    kColorModifyEnabled = 32,      ///< highlight of drawables the manipulator may move (default (255, 220, 0))
    kColorOutsideBlank = 64,       ///< faces a cut volume cuts into a solid (default (230, 120, 40))
};
/// How many colour slots there are (the highest bit is 1 << (kColorSlotCount - 1)).
constexpr int kColorSlotCount = 7;

/// Codes of the events a scene fires to its observers.
enum eSceneEvent : int {
    kEventSceneChanged = 1000,  ///< what is shown changed: repaint
    kEventViewChanged = 2000,   ///< one step of an animated view transfer (fired on its thread)
};

/// The camera's model transform: rotation, translation and per-axis scale.
struct cameraModelState_t {
    oxGeo::quaternion rotation;
    oxGeo::vector3d translation;
    oxGeo::vector3d scale{1.0, 1.0, 1.0};
};

/// Flag of the rectangle selection: ask OpenGL selection mode itself instead of answering from
/// the CPU captures of the drawables' recordings (both give the same records; see
/// scene::setPickAccelerated).
inline constexpr int kPickSelectionMode = 1;

/// One selection hit that maps to a drawable.
struct pickHit_t {
    ox::refPtr<iDrawable> drawable;
    std::vector<std::uint32_t> names;  ///< the hit's further selection names, in the driver's order
    std::uint32_t minDepth = 0;        ///< scaled window depth, 0 (near) to 0xFFFFFFFF (far)
    std::uint32_t maxDepth = 0;
};

/// The GL names and size of a scene's own offscreen targets; all zero when it draws straight
/// into the window.
struct offscreenTargets_t {
    unsigned int multisampledFramebuffer = 0;
    unsigned int resolveFramebuffer = 0;
    unsigned int resolveTexture = 0;
    int width = 0;
    int height = 0;
};

} // namespace oxGraphics
