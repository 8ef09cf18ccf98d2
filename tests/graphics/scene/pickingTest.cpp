#include "sceneTestSupport.h"

#include <gtest/gtest.h>

#include "oxlog.h"

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
    EXPECT_EQ(all[0], high);
    EXPECT_EQ(all[1], low);

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

} // namespace
