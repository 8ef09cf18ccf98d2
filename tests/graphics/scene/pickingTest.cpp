#include "sceneTestSupport.h"

#include <gtest/gtest.h>

#include "oxboundeddrawable.h"
#include "oxlog.h"
#include "oxmeshentity.h"
#include "oxmoverotationcontrol.h"

#include <memory>
#include <set>
#include <typeinfo>

namespace {

using oxGeo::point3d;
using oxtest::testSquare;

// A square that pushes a name of its own and, like a careless host drawable, leaves it pushed.
class namedSquare : public testSquare {
public:
    using testSquare::testSquare;
    bool draw(oxGraphics::iDrawer* drawer, oxGraphics::eRendermode mode, oxGraphics::shaderProgram* program) override {
        drawer->pushName(42);
        return testSquare::draw(drawer, mode, program);
    }
};

class pickingTest : public oxtest::glTest {};

// The view is 10 units wide on 100 pixels (0.1 unit a pixel), looking down -Z.
ox::refPtr<oxGraphics::scene> pickScene() { return oxtest::makeScene(100, 100, 0); }

TEST_F(pickingTest, theTopmostDrawableUnderTheCursorWins) {
    auto view = pickScene();
    ox::refPtr<oxGraphics::iDrawable> low(new testSquare({0, 0, 0}, 4, {255, 0, 0}));
    ox::refPtr<oxGraphics::iDrawable> high(new testSquare({0, 0, 3}, 2, {0, 255, 0}));
    ox::refPtr<oxGraphics::iDrawable> aside(new testSquare({-3.5, -3.5, 5}, 1, {0, 0, 255}));
    view->add(low);
    view->add(high);
    view->add(aside);

    ox::refPtr<ox::iRefObj> picked;
    view->pickSelect(50, 50, 2, picked);
    EXPECT_EQ(picked.get(), static_cast<ox::iRefObj*>(high.get())); // nearer the viewer
    view->pickSelect(35, 65, 2, picked);
    EXPECT_EQ(picked.get(), static_cast<ox::iRefObj*>(low.get()));  // only the low one there
    view->pickSelect(5, 5, 2, picked);
    EXPECT_FALSE(picked);

    const auto all = view->pickSelectInRect(40, 40, 60, 60);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].drawable, high);
    EXPECT_EQ(all[1].drawable, low);

    ox::refPtr<oxGraphics::iDrawable> hit;
    point3d where;
    ASSERT_TRUE(view->pickSelectGetFirstHitPointInRect(48, 48, 52, 52, hit, where));
    EXPECT_EQ(hit, high);
    EXPECT_TRUE(where.isEqualTo(point3d(0, 0, 3), 0.05)) << where.x() << " " << where.y() << " " << where.z();
}

TEST_F(pickingTest, pickSelectClampsTheSquareAndLogsItsSteps) {
    auto view = pickScene();
    view->add(ox::refPtr<oxGraphics::iDrawable>(new testSquare({-4.5, 4.5, 0}, 1, {255, 0, 0})));
    oxlog::logCapture capture;
    ox::refPtr<ox::iRefObj> picked;
    view->pickSelect(3, 5, 10, picked); // the square (0, 0)-(20, 20)
    EXPECT_TRUE(picked);
    const auto lines = capture.messages("oxGraphics::scene::pickSelect");
    const std::vector<std::wstring> expected = {L"pickSelect entered", L"initial px=3, py=5, hsize=10",
                                                L"adjusted px=10, py=10", L"1 hits found",
                                                L"viewscaling = (1, 1, 1)", L"topmost found"};
    EXPECT_EQ(lines, expected);
}

TEST_F(pickingTest, degenerateReversedAndOversizedSquaresPickWhatTheyCover) {
    auto view = pickScene(); // the square covers pixels 40 to 59 each way
    ox::refPtr<oxGraphics::iDrawable> square(new testSquare({0, 0, 0}, 2, {255, 0, 0}));
    view->add(square);
    struct pick_t {
        unsigned int px, py, hsize;
        bool hits;
    };
    const pick_t picks[] = {
        {50, 50, 0, true},          // a single pixel on the square
        {5, 5, 0, false},           // a single pixel beside it, not the whole viewport
        {0, 0, 1000, true},         // clamped to (0, 0)-(2000, 2000): the square moved, never lost
        {3, 95, 60, true},          // reaching past the top-left corner
        {50, 50, 0xFFFFFFFFu, true}, // the far corner held at the largest position
        {0xFFFFFFFFu, 0xFFFFFFFFu, 10, false},
    };
    for (const auto& pick : picks) {
        ox::refPtr<ox::iRefObj> picked;
        view->pickSelect(pick.px, pick.py, pick.hsize, picked);
        EXPECT_EQ(static_cast<bool>(picked), pick.hits) << pick.px << ", " << pick.py << " / " << pick.hsize;
    }
    EXPECT_EQ(view->pickSelectRect(59, 59, 41, 41).size(), 1u); // corners in either order
    EXPECT_EQ(view->pickSelectRect(45, 10, 45, 90).size(), 1u);  // a zero-width column
    EXPECT_TRUE(view->pickSelectRect(10, 10, 10, 10).empty());
}

TEST_F(pickingTest, preferredTypesWinWithinTheToleranceAndNamesStayWithTheirDrawable) {
    auto view = pickScene();
    // Both within the band: hsize 1 · 40000 · scale z 1 = 40000 of 2^32 window depth units,
    // about a thousandth of a unit of this scene's 2000-unit depth range.
    ox::refPtr<oxGraphics::iDrawable> plain(new testSquare({0, 0, 0.0001}, 2, {255, 0, 0}));
    ox::refPtr<oxGraphics::iDrawable> named(new namedSquare({0, 0, 0}, 2, {0, 255, 0}));
    view->add(plain);
    view->add(named);
    ox::refPtr<ox::iRefObj> picked;
    view->pickSelect(50, 50, 1, picked);
    EXPECT_EQ(picked.get(), static_cast<ox::iRefObj*>(plain.get())); // strictly nearer

    const oxGraphics::iDrawable& namedObject = *named.get();
    view->setPreferredPickTypes({typeid(namedObject).name()});
    view->pickSelect(50, 50, 1, picked);
    EXPECT_EQ(picked.get(), static_cast<ox::iRefObj*>(named.get())); // preferred within the band

    // The named square's own name follows its hit; the plain square added after it is not
    // credited with the name left pushed.
    view->add(ox::refPtr<oxGraphics::iDrawable>(new testSquare({3, 3, 1}, 1, {0, 0, 255})));
    const auto hits = view->pickSelectRect(0, 0, 100, 100);
    ASSERT_EQ(hits.size(), 3u);
    for (const auto& hit : hits) {
        if (hit.drawable == named) EXPECT_EQ(hit.names, (std::vector<std::uint32_t>{42}));
        else EXPECT_TRUE(hit.names.empty());
    }
}

// A rubber band in each mode, with and without a type filter, over four squares and a small cap
// lying above the mesh at the top right. Pixels: x = 50 + 10·wx, y = 50 − 10·wy.
TEST_F(pickingTest, rubberBandsSelectInEachModeAndFiltersByType) {
    using oxGraphics::eSelectMode;
    using drawables_t = std::vector<ox::refPtr<oxGraphics::iDrawable>>;
    auto view = pickScene();
    const auto meshSquare = [](double x, double y) {
        auto mesh = std::make_shared<oxGeo::mesh3d>();
        mesh->addQuad(mesh->addVertex({x - 1, y - 1, 0}), mesh->addVertex({x + 1, y - 1, 0}),
                      mesh->addVertex({x + 1, y + 1, 0}), mesh->addVertex({x - 1, y + 1, 0}));
        return oxGraphics::meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d>(std::move(mesh)));
    };
    ox::refPtr<oxGraphics::iDrawable> topLeft(new testSquare({-3, 3, 0}, 1, {255, 0, 0}));
    ox::refPtr<oxGraphics::iDrawable> bottomLeft(new testSquare({-3, -3, 0}, 1, {255, 0, 0}));
    ox::refPtr<oxGraphics::iDrawable> cap(new testSquare({3, 3, 2}, 0.5, {0, 0, 255}));
    const ox::refPtr<oxGraphics::iDrawable> topRight(oxGraphics::boundedDrawable::create(meshSquare(3, 3)));
    const ox::refPtr<oxGraphics::iDrawable> bottomRight(meshSquare(3, -3));
    for (const auto& d : {topLeft, bottomLeft, cap, topRight, bottomRight}) view->add(d);
    ox::refPtr<oxtest::eventCounter> events(new oxtest::eventCounter);
    view->addObserver(events);

    const auto meshes = oxGraphics::typeNameSelectFilter::create({typeid(oxGraphics::meshEntity).name()});
    const testSquare& squareObject = static_cast<const testSquare&>(*cap.get());
    const auto squares = oxGraphics::typeNameSelectFilter::create({typeid(squareObject).name()});
    const struct {
        const char* what;
        unsigned int x1, y1, x2, y2;
        eSelectMode mode;
        ox::refPtr<oxGraphics::iSelectFilter> filter;
        drawables_t inBand;  // nearest first; equally near ones in the order they were added
        drawables_t selectedAfter;
    } steps[] = {
        {"replace: the top half", 0, 0, 100, 45, eSelectMode::replace, {}, {cap, topLeft, topRight},
         {topLeft, cap, topRight}},
        {"add: the left half", 0, 0, 45, 100, eSelectMode::add, {}, {topLeft, bottomLeft},
         {topLeft, bottomLeft, cap, topRight}},
        {"toggle, corners swapped", 45, 100, 0, 0, eSelectMode::toggle, {}, {topLeft, bottomLeft}, {cap, topRight}},
        {"remove squares only", 0, 0, 100, 45, eSelectMode::remove, squares, {cap, topLeft}, {topRight}},
        {"replace with meshes, also through the adapter", 0, 0, 100, 100, eSelectMode::replace, meshes,
         {topRight, bottomRight}, {topRight, bottomRight}},
        {"replace with an empty zero-size band clears", 10, 90, 10, 90, eSelectMode::replace, {}, {}, {}},
    };
    for (const auto& step : steps) {
        const int eventsBefore = events->changed;
        EXPECT_EQ(view->selectMultiple(step.x1, step.y1, step.x2, step.y2, step.mode, step.filter), step.inBand)
            << step.what;
        drawables_t selected;
        for (const auto& d : {topLeft, bottomLeft, cap, topRight, bottomRight})
            if (view->isSelected(d)) selected.push_back(d);
        EXPECT_EQ(selected, step.selectedAfter) << step.what;
        EXPECT_EQ(events->changed, eventsBefore + 1) << step.what; // each step changed the selection
    }
    // The same band again changes nothing and says so by staying quiet; so does a mode that is none.
    view->addToSelection(topLeft);
    const int eventsBefore = events->changed;
    EXPECT_TRUE(view->selectMultiple(0, 0, 45, 45, eSelectMode::add).size() == 1 && view->isSelected(topLeft));
    oxlog::logCapture capture;
    EXPECT_TRUE(view->selectMultiple(0, 0, 100, 100, static_cast<eSelectMode>(7)).empty());
    EXPECT_EQ(capture.messages("oxGraphics::scene::selectMultiple"),
              std::vector<std::wstring>{L"refused the unknown select mode 7"});
    EXPECT_EQ(events->changed, eventsBefore);
    EXPECT_TRUE(view->isSelected(topLeft));

    // A band across the manipulator's handle selects what lies there, not the handle.
    auto control = oxGraphics::moveRotationControl::create(view, oxGeo::matrix3d(), true);
    control->attachToScene();
    std::set<const oxGraphics::iDrawable*> everything;
    for (const auto& hit : view->pickSelectInRect(0, 0, 100, 100)) everything.insert(hit.drawable.get());
    EXPECT_EQ(everything.size(), 6u); // the handle is hit
    ox::refPtr<oxGraphics::iDrawable> stranger(new oxtest::testSquare({0, 0, 0}, 1, {1, 2, 3}));
    view->addToSelection(stranger);  // never added to the scene
    EXPECT_EQ(view->selectMultiple(0, 0, 100, 100, eSelectMode::replace).size(), 5u);
    EXPECT_FALSE(view->isSelected(stranger)) << "a replace leaves exactly the band selected";
    control->detachFromScene();

    // The first hit above the top-right mesh is the cap, unless only meshes count.
    ox::refPtr<oxGraphics::iDrawable> hit;
    point3d where;
    ASSERT_TRUE(view->pickSelectGetFirstHitPointInRect(82, 22, 78, 18, hit, where));
    EXPECT_EQ(hit, cap);
    EXPECT_NEAR(where.z(), 2.0, 0.05);
    ASSERT_TRUE(view->pickSelectGetFirstHitPointInRect(78, 18, 82, 22, hit, where, meshes));
    EXPECT_EQ(hit, topRight);
    EXPECT_TRUE(where.isEqualTo(point3d(3, 3, 0), 0.05)) << where.x() << " " << where.y() << " " << where.z();
    EXPECT_FALSE(view->getFirstHitPointInRect(20, 70, 40, 90, where, meshes)); // only a square there
    const auto all = view->pickSelectInRect(0, 0, 100, 100, squares);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].drawable, cap);
}

} // namespace
