// The rectangle queries over a hit list (no GL): filters, nearest first, the nearest kept hit,
// and how each rubber-band mode changes a selection. pickingTest.cpp runs them on real hits.
#include "scene/pickqueries.h"

#include "oxboundeddrawable.h"

#include <gtest/gtest.h>

#include "oxlog.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using namespace oxGraphics;
using drawables_t = std::vector<ox::refPtr<iDrawable>>;

class part : public iDrawable, public ox::refObj {
public:
    bool draw(iDrawer*, eRendermode, shaderProgram*) override { return true; }
    void invalidate() override {}
    void setTransformation(const oxGeo::matrix3d&) override {}
};
class other : public part {};

constexpr const char* kLogger = "pickQueriesTest";

TEST(pickQueriesTest, filtersKeepHitsNearestFirstAndAThrowingFilterRejects) {
    const ox::refPtr<iDrawable> a(new part), b(new other), c(new part);
    const ox::refPtr<iDrawable> wrappedOther(boundedDrawable::create(ox::refPtr<iDrawable>(new other), {}));
    const auto hit = [](const ox::refPtr<iDrawable>& d, std::uint32_t depth) { return pickHit_t{d, {}, depth, depth}; };
    // Driver order; a and c tie at 300, b is nearest, the wrapped one farthest, one hit is empty.
    const std::vector<pickHit_t> hits = {hit(a, 300), hit(b, 100), hit(c, 300), hit({}, 50), hit(wrappedOther, 900)};

    const other& otherObject = static_cast<const other&>(*b.get());
    const auto otherType = typeNameSelectFilter::create({typeid(otherObject).name()});
    const auto noType = typeNameSelectFilter::create({});
    const auto nearOnly = predicateSelectFilter::create([](const ox::refPtr<iDrawable>&, const pickHit_t& h) {
        return h.minDepth < 500;
    });
    const auto throwsOnA = predicateSelectFilter::create([&](const ox::refPtr<iDrawable>& d, const pickHit_t&) {
        if (d == a) throw std::runtime_error("layer table gone");
        if (d == c) throw 7;
        return true;
    });
    const auto everything = predicateSelectFilter::create({});

    const struct {
        const char* what;
        const iSelectFilter* filter;
        drawables_t nearestFirst;
        int warnings;
    } cases[] = {
        {"no filter: all with a drawable, ties in driver order", nullptr, {b, a, c, wrappedOther}, 0},
        {"an empty predicate keeps all", everything.get(), {b, a, c, wrappedOther}, 0},
        {"type name, also through the adapter", otherType.get(), {b, wrappedOther}, 0},
        {"no type names keep nothing", noType.get(), {}, 0},
        {"predicate on the hit's depth", nearOnly.get(), {b, a, c}, 0},
        {"a throw rejects that hit only", throwsOnA.get(), {b, wrappedOther}, 2},
    };
    for (const auto& test : cases) {
        oxlog::logCapture capture;
        drawables_t kept;
        for (const auto& h : pickQueries::acceptedNearestFirst(hits, test.filter, kLogger)) kept.push_back(h.drawable);
        EXPECT_EQ(kept, test.nearestFirst) << test.what;
        const auto nearest = pickQueries::nearestAccepted(hits, test.filter, kLogger);
        const ox::refPtr<iDrawable> none;
        EXPECT_EQ(nearest ? hits[*nearest].drawable : none, test.nearestFirst.empty() ? none : test.nearestFirst[0])
            << test.what;
        // Both queries ask the filter once per hit.
        EXPECT_EQ(capture.messages(kLogger).size(), std::size_t(2 * test.warnings)) << test.what;
    }

    oxlog::logCapture capture;
    (void)pickQueries::nearestAccepted(hits, throwsOnA.get(), kLogger);
    const std::vector<std::wstring> expected = {L"the select filter threw (layer table gone); the hit is left out",
                                                L"the select filter threw; the hit is left out"};
    EXPECT_EQ(capture.messages(kLogger), expected);
    EXPECT_EQ(pickQueries::distinctDrawables({hit(a, 1), hit(b, 2), hit(a, 3), hit({}, 4)}), (drawables_t{a, b}));
}

TEST(pickQueriesTest, eachSelectModeChangesOnlyWhatItMust) {
    const ox::refPtr<iDrawable> a(new part), b(new part), c(new part), d(new part);
    const struct {
        const char* what;
        eSelectMode mode;
        drawables_t selected, inRectangle, after;
        std::size_t changes;
    } cases[] = {
        {"replace", eSelectMode::replace, {a, b}, {b, c}, {b, c}, 2},
        {"replace with an empty band clears", eSelectMode::replace, {a, b}, {}, {}, 2},
        {"replace with the same set changes nothing", eSelectMode::replace, {a, b}, {b, a}, {a, b}, 0},
        {"add", eSelectMode::add, {a}, {a, c}, {a, c}, 1},
        {"toggle", eSelectMode::toggle, {a, b}, {b, c}, {a, c}, 2},
        {"toggle counts a drawable hit twice once", eSelectMode::toggle, {}, {c, c}, {c}, 1},
        {"remove", eSelectMode::remove, {a, b, d}, {b, c}, {a, d}, 1},
        {"empty entries are ignored", eSelectMode::add, {}, {{}, a}, {a}, 1},
        {"an unknown mode changes nothing", static_cast<eSelectMode>(9), {a}, {b}, {a}, 0},
    };
    for (const auto& test : cases) {
        const auto changes = pickQueries::selectionChanges(test.mode, test.inRectangle, test.selected);
        std::set<iDrawable*> selection;
        for (const auto& s : test.selected) selection.insert(s.get());
        for (const auto& change : changes) {
            EXPECT_NE(selection.contains(change.drawable.get()), change.selected) << test.what << ": not a change";
            if (change.selected) selection.insert(change.drawable.get());
            else selection.erase(change.drawable.get());
        }
        std::set<iDrawable*> expected;
        for (const auto& s : test.after) expected.insert(s.get());
        EXPECT_EQ(selection, expected) << test.what;
        EXPECT_EQ(changes.size(), test.changes) << test.what;
    }
}

} // namespace
