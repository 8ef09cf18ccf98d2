#pragma once
// What the library's entities share: the optional placement transformation with its identity rule,
// and the record-once step of their draw operation.
#include "oxdrawer.h"
#include "oxrecorded.h"

#include "oxgeoboundbox.h"
#include "oxgeomatrix.h"
#include "oxgeopoint.h"

#include "oxrefptr.h"

#include <memory>
#include <vector>

namespace oxGraphics::entityScheme {

/// Within this distance of the identity in every element a transformation counts as none.
inline constexpr double kIdentityTolerance = 1e-12;

/// Stores `m` in `slot`: the identity (within kIdentityTolerance) frees the slot; any other matrix
/// is copied into it, allocating only on first use. A matrix with a non-finite element is refused
/// with a warning (false) and the slot keeps what it had.
bool assignTransformation(std::unique_ptr<oxGeo::matrix3d>& slot, const oxGeo::matrix3d& m);

/// Multiplies the stored transformation onto the drawer matrix; nothing when there is none.
void applyTransformation(iDrawer& drawer, const std::unique_ptr<oxGeo::matrix3d>& transformation);

/// The box of `points` mapped through `transformation` (untransformed when null), leaving out
/// points that are not usable coordinates (oxGeo::isUsable) before or after the mapping. Invalid
/// when no point is left.
oxGeo::boundBox3d transformedBox(const std::vector<oxGeo::point3d>& points, const oxGeo::matrix3d* transformation);

/// Makes sure `recording` can be replayed: when the drawer says it cannot, it is released,
/// `emit` runs between beginRecording and endRecording, and the result is kept. `canEmit` is asked
/// before anything is begun; when it answers false nothing is recorded and the function returns
/// false (the recording stays empty, so the next draw tries again).
template <class CanEmit, class Emit>
bool ensureRecording(iDrawer& drawer, ox::refPtr<iRecorded>& recording, CanEmit canEmit, Emit emit) {
    if (drawer.isRecordingValid(recording)) return true;
    recording.reset();
    if (!canEmit()) return false;
    drawer.beginRecording();
    emit();
    recording = drawer.endRecording();
    return true;
}

template <class Emit>
bool ensureRecording(iDrawer& drawer, ox::refPtr<iRecorded>& recording, Emit emit) {
    return ensureRecording(drawer, recording, [] { return true; }, emit);
}

} // namespace oxGraphics::entityScheme
