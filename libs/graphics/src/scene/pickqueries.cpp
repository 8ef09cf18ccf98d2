#include "pickqueries.h"

#include "oxlog.h"

#include <algorithm>
#include <exception>
#include <set>
#include <string>

namespace oxGraphics::pickQueries {

bool accepts(const iSelectFilter* filter, const pickHit_t& hit, const char* logger) {
    if (!hit.drawable) return false;
    if (filter == nullptr) return true;
    // The filter is host code: whatever it throws ends here, as a drawable's throw ends at its pass.
    try {
        return filter->accept(hit.drawable, hit);
    } catch (const std::exception& error) {
        OX_LOG_WARN(logger, L"the select filter threw (%s); the hit is left out", error.what());
    } catch (...) {
        OX_LOG_WARN(logger, L"the select filter threw; the hit is left out");
    }
    return false;
}

std::vector<pickHit_t> acceptedNearestFirst(std::vector<pickHit_t> hits, const iSelectFilter* filter,
                                            const char* logger) {
    std::erase_if(hits, [&](const pickHit_t& hit) { return !accepts(filter, hit, logger); });
    std::stable_sort(hits.begin(), hits.end(),
                     [](const pickHit_t& a, const pickHit_t& b) { return a.minDepth < b.minDepth; });
    return hits;
}

std::optional<std::size_t> nearestAccepted(const std::vector<pickHit_t>& hits, const iSelectFilter* filter,
                                           const char* logger) {
    std::optional<std::size_t> nearest;
    for (std::size_t i = 0; i < hits.size(); ++i) {
        if (!accepts(filter, hits[i], logger)) continue;
        if (!nearest || hits[i].minDepth < hits[*nearest].minDepth) nearest = i;
    }
    return nearest;
}

std::vector<ox::refPtr<iDrawable>> distinctDrawables(const std::vector<pickHit_t>& hits) {
    std::vector<ox::refPtr<iDrawable>> drawables;
    std::set<const iDrawable*> seen;
    for (const auto& hit : hits)
        if (hit.drawable && seen.insert(hit.drawable.get()).second) drawables.push_back(hit.drawable);
    return drawables;
}

std::vector<selectionChange_t> selectionChanges(eSelectMode mode, const std::vector<ox::refPtr<iDrawable>>& inRectangle,
                                                const std::vector<ox::refPtr<iDrawable>>& selectedNow) {
    std::set<const iDrawable*> selected;
    for (const auto& drawable : selectedNow) selected.insert(drawable.get());
    std::set<const iDrawable*> inside;
    std::vector<selectionChange_t> changes;
    if (mode == eSelectMode::replace) {
        for (const auto& drawable : inRectangle) inside.insert(drawable.get());
        for (const auto& drawable : selectedNow)
            if (drawable && !inside.contains(drawable.get())) changes.push_back({drawable, false});
        inside.clear();
    }
    for (const auto& drawable : inRectangle) {
        if (!drawable || !inside.insert(drawable.get()).second) continue;
        const bool isSelected = selected.contains(drawable.get());
        bool wanted = isSelected;
        switch (mode) {
        case eSelectMode::replace:
        case eSelectMode::add: wanted = true; break;
        case eSelectMode::toggle: wanted = !isSelected; break;
        case eSelectMode::remove: wanted = false; break;
        }
        if (wanted != isSelected) changes.push_back({drawable, wanted});
    }
    return changes;
}

} // namespace oxGraphics::pickQueries
