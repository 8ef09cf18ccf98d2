#include "pickselection.h"

#include "glpickcapturedrawer.h"

#include <algorithm>

namespace oxGraphics::openGL {

void selectAccelerated(iDrawerHost* host, const std::vector<ox::refPtr<iDrawable>>& drawables, const pickView_t& view,
                       std::vector<selectionEmulator::record_t>& records, std::vector<bool>& needsSelectionMode) {
    selectionEmulator emulator;
    needsSelectionMode.assign(drawables.size(), false);
    emulator.initNames();
    emulator.pushName(kPickNoName);
    {
        glPickCaptureDrawer drawer(host, emulator, view.clipFromEye, view.eyeFromWorld, view.depthScale,
                                   view.depthOffset);
        std::uint32_t name = 0;
        for (const auto& drawable : drawables) {
            ++name;
            // The same sequence as the selection-mode loop: a fresh stack with the drawable's name.
            drawer.forgetNames();
            emulator.initNames();
            emulator.pushName(name);
            drawer.setCurrentDrawable(drawable);
            drawer.clearNeedsSelectionMode();
            drawer.pushMatrix();
            try {
                drawable->draw(&drawer, eRendermode::select, nullptr);
            } catch (...) {
            }
            drawer.popMatrix();
            needsSelectionMode[name - 1] = drawer.needsSelectionMode();
        }
        drawer.setCurrentDrawable({});
    }
    emulator.finish();
    records = std::move(emulator.records());
}

bool mergeSelections(std::vector<selectionEmulator::record_t>& records, std::vector<selectionEmulator::record_t> selected,
                     const std::vector<bool>& needsSelectionMode) {
    // Which drawable a record belongs to: its first name (drawable names are 1-based positions).
    const auto drawableOf = [&](const selectionEmulator::record_t& r) -> std::size_t {
        if (r.names.empty() || r.names[0] == 0 || r.names[0] > needsSelectionMode.size()) return 0;
        return r.names[0];
    };
    const auto fromSelection = [&](const selectionEmulator::record_t& r) {
        const std::size_t d = drawableOf(r);
        return d != 0 && needsSelectionMode[d - 1];
    };
    std::erase_if(records, fromSelection);
    std::erase_if(selected, [&](const selectionEmulator::record_t& r) { return !fromSelection(r); });
    if (selectionEmulator::wordsOf(records) + selectionEmulator::wordsOf(selected) > kPickBufferWords) {
        records.clear();
        return false;
    }
    // Records that name no drawable (a drawable popped below its own name) give no hit; without
    // them both runs are in drawable order, and each drawable's records come from one of them.
    std::erase_if(records, [&](const selectionEmulator::record_t& r) { return drawableOf(r) == 0; });
    if (!selected.empty()) {
        const auto accelerated = static_cast<std::ptrdiff_t>(records.size());
        records.insert(records.end(), std::make_move_iterator(selected.begin()), std::make_move_iterator(selected.end()));
        std::inplace_merge(records.begin(), records.begin() + accelerated, records.end(),
                           [&](const auto& a, const auto& b) { return drawableOf(a) < drawableOf(b); });
    }
    return true;
}

} // namespace oxGraphics::openGL
