#pragma once
// The accelerated rectangle selection: the same hit records as OpenGL selection mode, answered
// from the CPU captures of the drawables' recordings.
//
// Every drawable is drawn on every pick, exactly as selection mode re-draws it, through a
// glPickCaptureDrawer: recordings are referenced, not copied, so this costs little and answers
// always reflect the current scene. Drawables are named by their 1-based position with a load
// onto the name stack, as in selection mode, so all records of a drawable carry its name first
// and come in drawable order. A drawable the CPU cannot answer for (GLU quadrics and the like,
// glpickcapturedrawer.h) is drawn again by the caller in selection mode, alone among the others;
// mergeSelections puts its records in its place.
//
// Precision: the drawables, names and record order are those of selection mode. Depths are those
// of selection mode within 2^-16 of the depth range (65536 in the records' 32-bit scale): the driver
// transforms and clips in single precision, where this code clips in double and only forms the
// final window depth in single precision, so the two differ by a few float steps of the clip
// coordinates (about 2^-23 of their magnitude, more where clipping interpolates along a primitive
// that is long against the pick square). The bound leaves a wide margin over what the property test
// observes, and it is far finer than the depth band pickSelect's choice works with.
#include "selectionemulator.h"

#include "oxdrawable.h"
#include "oxrefptr.h"

#include <cstdint>
#include <vector>

namespace oxGraphics::openGL {

class iDrawerHost;

/// What the pick sees: the pick projection and the view's model-view (column-major, as the
/// driver holds them) and the depth range mapping (glDepthRange(n, f): (f − n) / 2, (f + n) / 2).
struct pickView_t {
    double clipFromEye[16];
    double eyeFromWorld[16];
    float depthScale = 0.5f;
    float depthOffset = 0.5f;
};

/// The name selection mode's stack starts with, below each drawable's own.
inline constexpr std::uint32_t kPickNoName = 0xFFFFFFFFu;
/// Selection mode's buffer: records that need more words make the selection overflow (no hits).
inline constexpr std::size_t kPickBufferWords = 65535;

/// Draws every drawable through a glPickCaptureDrawer. `records` gets the hit records; entry i of
/// `needsSelectionMode` says whether drawable i (name i + 1) must be asked of selection mode.
void selectAccelerated(iDrawerHost* host, const std::vector<ox::refPtr<iDrawable>>& drawables, const pickView_t& view,
                       std::vector<selectionEmulator::record_t>& records, std::vector<bool>& needsSelectionMode);

/// Replaces the records of the drawables that need selection mode by `selected` (selection mode's
/// records of those drawables), keeping drawable order. False when the result would not fit
/// selection mode's buffer: then, as selection mode would, there are no records.
bool mergeSelections(std::vector<selectionEmulator::record_t>& records, std::vector<selectionEmulator::record_t> selected,
                     const std::vector<bool>& needsSelectionMode);

} // namespace oxGraphics::openGL
