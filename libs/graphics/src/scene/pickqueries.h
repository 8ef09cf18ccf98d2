#pragma once
// The scene's rectangle queries over the hit list of one rectangle selection: filtering, the
// nearest hit, the drawables each once, and how a rubber band changes the selection. The GL
// selection that finds the hits (glScene::pickSelectRect) stays the one primitive; everything
// here is plain data, so the rules are checked without a context.
#include "oxselectfilter.h"
#include "oxscenetypes.h"

#include "oxrefptr.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace oxGraphics::pickQueries {

/// Whether `hit` counts under `filter`: a null filter keeps every hit with a drawable; a hit
/// without one is never kept. A filter that throws rejects the hit, with a warning under
/// `logger` naming the query; nothing propagates.
bool accepts(const iSelectFilter* filter, const pickHit_t& hit, const char* logger);

/// The hits `filter` keeps, nearest first (by minimum depth; equal depths keep the driver's order).
std::vector<pickHit_t> acceptedNearestFirst(std::vector<pickHit_t> hits, const iSelectFilter* filter,
                                            const char* logger);

/// The index of the nearest hit `filter` keeps (the first in the driver's order among equally
/// near ones), or none. Every hit is put to the filter once, in the driver's order.
std::optional<std::size_t> nearestAccepted(const std::vector<pickHit_t>& hits, const iSelectFilter* filter,
                                           const char* logger);

/// The drawables of `hits` in their order, each once.
std::vector<ox::refPtr<iDrawable>> distinctDrawables(const std::vector<pickHit_t>& hits);

/// One change a rubber band makes to the selection.
struct selectionChange_t {
    ox::refPtr<iDrawable> drawable;
    bool selected = false;
};

/// The changes that give the selection `mode` applied with `inRectangle` (each once): for
/// replace, the selected drawables outside the rectangle are deselected first. Only real changes
/// are listed, so an empty answer means the selection stays as it is.
std::vector<selectionChange_t> selectionChanges(eSelectMode mode, const std::vector<ox::refPtr<iDrawable>>& inRectangle,
                                                const std::vector<ox::refPtr<iDrawable>>& selectedNow);

} // namespace oxGraphics::pickQueries
