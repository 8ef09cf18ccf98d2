// Object effects: one reference frame per effect on the shader path, what the fixed-function
// path shows instead, and which pass hands which mode and tag to a drawable.
#include "../scene/sceneTestSupport.h"

#include "oxeffects.h"
#include "oxgeomeshfactory.h"
#include "oxgeoquaternion.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace oxGraphics;

constexpr int kSize = 96;

// A flat square of two coloured halves that writes down every pass it is drawn in.
class twoToneSquare : public iDrawable, public iMultiColorDrawable, public ox::refObj {
public:
    twoToneSquare(const oxGeo::point3d& centre, double side, ox::rgbColor left, ox::rgbColor right,
                  float transparency = 0.0f)
        : mColors{left, right}, mTransparency(transparency) {
        const double h = side / 2;
        for (int half = 0; half < 2; ++half) {
            const double x0 = centre.x() - h + half * h, x1 = x0 + h;
            mHalves[half].addQuad(mHalves[half].addVertex({x0, centre.y() - h, centre.z()}),
                                  mHalves[half].addVertex({x1, centre.y() - h, centre.z()}),
                                  mHalves[half].addVertex({x1, centre.y() + h, centre.z()}),
                                  mHalves[half].addVertex({x0, centre.y() + h, centre.z()}));
        }
    }
    bool draw(iDrawer* drawer, eRendermode mode, shaderProgram*) override {
        passes.emplace_back(mode, drawer->auxTag());
        for (int half = 0; half < 2; ++half) {
            drawer->setColor(mColors[half], mTransparency);
            drawer->drawMesh(mHalves[half], 0);
        }
        return true;
    }
    void invalidate() override {}
    void setTransformation(const oxGeo::matrix3d&) override {}
    int colorCount() const override { return 2; }
    ox::rgbColor partColor(int index) const override { return mColors[index & 1]; }
    void setPartColor(int index, const ox::rgbColor& color) override { mColors[index & 1] = color; }

    std::vector<std::pair<eRendermode, std::int64_t>> passes;

private:
    oxGeo::mesh3d mHalves[2];
    ox::rgbColor mColors[2];
    float mTransparency;
};

// A grey closed box, 4 × 3 × 2, centred at `centre`.
class greyBox : public iDrawable, public ox::refObj {
public:
    explicit greyBox(const oxGeo::point3d& centre) {
        oxGeo::meshfactory::appendBoxMesh(4, 3, 2, mMesh, true);
        mPlacement.setTranslation(centre - oxGeo::point3d());
    }
    bool draw(iDrawer* drawer, eRendermode, shaderProgram*) override {
        drawer->multMatrix(mPlacement);
        drawer->setColor({150, 150, 150}, 0.0f);
        drawer->drawMesh(mMesh, 0);
        return true;
    }
    void invalidate() override {}
    void setTransformation(const oxGeo::matrix3d&) override {}

private:
    oxGeo::mesh3d mMesh;
    oxGeo::matrix3d mPlacement;
};

struct sceneParts_t {
    ox::refPtr<scene> view;
    ox::refPtr<greyBox> box;
    ox::refPtr<twoToneSquare> square;
};

// The box on the left, the two-tone square on the right, seen from above and in front.
sceneParts_t effectsScene() {
    sceneParts_t parts{oxtest::makeScene(kSize, kSize, 4), ox::refPtr<greyBox>(new greyBox({-2.2, 0, 0})),
                       ox::refPtr<twoToneSquare>(new twoToneSquare({2.6, 0, 0.5}, 3, {200, 40, 40}, {40, 40, 200}))};
    parts.view->setColor({30, 30, 40}, kColorBackgroundTop | kColorBackgroundBottom);
    parts.view->camera()->setRotation(oxGeo::quaternion({1, 0, 0}, ox::angle::fromDegree(-55)));
    parts.view->add(parts.box);
    parts.view->add(parts.square);
    return parts;
}

// Each effect as a host switches it on.
const std::vector<std::pair<std::string, std::function<void(sceneParts_t&)>>>& effectCases() {
    static const std::vector<std::pair<std::string, std::function<void(sceneParts_t&)>>> cases = {
        {"outline", [](sceneParts_t& s) {
             s.view->setSceneEffects({eSelectionStyle::outline});
             s.view->addToSelection(s.box);
         }},
        {"highlightAndOutline", [](sceneParts_t& s) {
             sceneEffects_t effects{eSelectionStyle::highlightAndOutline};
             effects.outlineWidth = 3;
             s.view->setSceneEffects(effects);
             s.view->setColor({0, 255, 255}, kColorOutline);
             s.view->addToSelection(s.square);  // two tones mixed with the highlight
             drawableEffects_t outlined;
             outlined.outline = true;
             s.view->setDrawableEffects(s.box, outlined);
         }},
        {"maskHidesCovered", [](sceneParts_t& s) {
             s.view->setMaskDrawables({ox::refPtr<iDrawable>(new oxtest::testSquare({-1, 0, 2}, 3, {0, 0, 0}))});
         }},
        {"maskHidesUncovered", [](sceneParts_t& s) {
             sceneEffects_t effects;
             effects.maskMode = eMaskMode::hideUncovered;
             s.view->setSceneEffects(effects);
             s.view->setMaskDrawables({ox::refPtr<iDrawable>(new oxtest::testSquare({-1, 0, 2}, 3, {0, 0, 0}))});
         }},
        {"colorOverride", [](sceneParts_t& s) {
             drawableEffects_t ghost;
             ghost.overrideColors = true;
             ghost.overrideColor = {120, 170, 255};
             ghost.overrideTransparency = 0.6f;
             s.view->setDrawableEffects(s.box, ghost);
             drawableEffects_t fixture;
             fixture.overrideColors = true;
             fixture.overrideColor = {0, 160, 0};
             s.view->setDrawableEffects(s.square, fixture);
         }},
        {"multilayerBlank", [](sceneParts_t& s) {
             drawableEffects_t stock;
             stock.multilayer = true;
             stock.blank.layers = {{-1.0, -0.3, {200, 60, 60}}, {-0.3, 0.4, {60, 200, 60}}, {0.4, 1.0, {60, 60, 200}}};
             stock.blank.colorTopAndBottom = true;
             stock.blank.top = {255, 255, 255};
             stock.blank.bottom = {255, 0, 255};
             s.view->setDrawableEffects(s.box, stock);
         }},
        {"blurredDrawable", [](sceneParts_t& s) {
             drawableEffects_t soft;
             soft.blur = true;
             s.view->setDrawableEffects(s.square, soft);
         }},
        {"blurredFrame", [](sceneParts_t& s) {
             sceneEffects_t effects;
             effects.blurFrame = true;
             effects.blurRadius = 3;
             s.view->setSceneEffects(effects);
         }},
    };
    return cases;
}

class effectsTest : public oxtest::shaderSwitchTest {};

TEST_F(effectsTest, everyEffectMatchesItsReferenceFrame) {
    for (const auto& [name, apply] : effectCases()) {
        sceneParts_t s = effectsScene();
        apply(s);
        EXPECT_TRUE(oxtest::matchesReferenceImage(oxtest::frameImage(*s.view), "effects/" + name, 24, 0.5)) << name;
    }
}

TEST_F(effectsTest, withoutShadersTheFrameShowsTheDocumentedFallbacks) {
    openGL::glShaderProgram::enableGlShadersGlobally(false);
    const auto plainFrame = [](bool selectBox) {
        sceneParts_t s = effectsScene();
        if (selectBox) s.view->addToSelection(s.box);
        return oxtest::frameImage(*s.view);
    };
    const oxtest::rgbaImage plain = plainFrame(false);
    const oxtest::rgbaImage boxHighlighted = plainFrame(true);
    for (const auto& [name, apply] : effectCases()) {
        sceneParts_t s = effectsScene();
        apply(s);
        const oxtest::rgbaImage image = oxtest::frameImage(*s.view);
        if (name == "colorOverride") {
            // The override colour replaces the colours set through the drawer: the square is green.
            const unsigned char* p = image.at(kSize * 3 / 4, kSize / 2);
            EXPECT_GT(p[1], p[0] + 40) << name;
            EXPECT_GT(p[1], p[2] + 40) << name;
            continue;
        }
        // A selection outline falls back to the highlight; every other effect shows nothing.
        if (name == "highlightAndOutline") continue;  // its selection differs from both references
        const oxtest::rgbaImage& expected = name == "outline" ? boxHighlighted : plain;
        EXPECT_EQ(oxtest::compareImages(image, expected).maxDelta, 0) << name;
    }
}

TEST_F(effectsTest, eachPassHandsItsModeAndTag) {
    for (const bool shaders : {true, false}) {
        openGL::glShaderProgram::enableGlShadersGlobally(shaders);
        auto view = oxtest::makeScene(kSize, kSize, 4);
        const auto square = [&](double x) {
            ox::refPtr<twoToneSquare> s(new twoToneSquare({x, 0, 0}, 1.5, {255, 0, 0}, {0, 0, 255}));
            view->add(s);
            return s;
        };
        auto selectedOutlined = square(-3), blurred = square(-1), overridden = square(1), plain = square(3);
        ox::refPtr<twoToneSquare> glass(new twoToneSquare({0, -3, 0}, 1, {0, 255, 0}, {0, 255, 0}, 0.5f));
        view->add(glass);
        ox::refPtr<twoToneSquare> mask(new twoToneSquare({0, 4, 0}, 1, {0, 0, 0}, {0, 0, 0}));
        view->setSceneEffects({eSelectionStyle::highlightAndOutline});
        view->addToSelection(selectedOutlined);
        drawableEffects_t effects;
        effects.blur = true;
        view->setDrawableEffects(blurred, effects);
        view->setDrawableEffects(selectedOutlined, effects);  // highlighted, so drawn sharp
        effects = {};
        effects.overrideColors = true;
        view->setDrawableEffects(overridden, effects);
        view->setMaskDrawables({mask});
        oxtest::paint(*view);
        ox::refPtr<ox::iRefObj> picked;
        const oxGeo::point2d atPlain = view->worldToWinCoordinates({3, 0, 0});
        view->pickSelect(static_cast<unsigned>(atPlain.x()), static_cast<unsigned>(atPlain.y()), 2, picked);

        using pass = std::pair<eRendermode, std::int64_t>;
        const pass select{eRendermode::select, 0};
        if (shaders) {
            EXPECT_EQ(selectedOutlined->passes, (std::vector<pass>{{eRendermode::selected, 0},
                                                                   {eRendermode::outline, kEffectTagOutline},
                                                                   select}));
            EXPECT_EQ(blurred->passes, (std::vector<pass>{{eRendermode::blurred, kEffectTagBlur}, select}));
            EXPECT_EQ(mask->passes, (std::vector<pass>{{eRendermode::mask, kEffectTagMask}}));
        } else {
            EXPECT_EQ(selectedOutlined->passes, (std::vector<pass>{{eRendermode::selected, 0}, select}));
            EXPECT_EQ(blurred->passes, (std::vector<pass>{{eRendermode::opaque, 0}, select}));
            EXPECT_TRUE(mask->passes.empty());
        }
        EXPECT_EQ(overridden->passes, (std::vector<pass>{{eRendermode::colorOverride, 0}, select}));
        EXPECT_EQ(plain->passes, (std::vector<pass>{{eRendermode::opaque, 0}, select}));
        EXPECT_EQ(glass->passes, (std::vector<pass>{{eRendermode::opaque, 0}, {eRendermode::transparent, 0}, select}));
        EXPECT_EQ(picked.get(), static_cast<ox::iRefObj*>(plain.get()));
    }
}

} // namespace

namespace {

TEST_F(effectsTest, hostileSettingsAreClampedOrIgnoredAndDrawCleanly) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    sceneParts_t s = effectsScene();
    sceneEffects_t frame{eSelectionStyle::highlightAndOutline, -5, true, 100000, static_cast<eMaskMode>(7)};
    s.view->setSceneEffects(frame);
    EXPECT_EQ(s.view->sceneEffects().outlineWidth, 1);
    EXPECT_EQ(s.view->sceneEffects().blurRadius, 32);

    drawableEffects_t wild;
    wild.outline = wild.blur = wild.multilayer = wild.overrideColors = true;
    wild.overrideTransparency = std::numeric_limits<float>::quiet_NaN();
    wild.blank.axis = {nan, inf, 0};
    wild.blank.layers.assign(40, blankLayer_t{nan, inf, {1, 2, 3}});
    s.view->setDrawableEffects(s.box, wild);
    s.view->setDrawableEffects({}, wild);  // no drawable: ignored
    ox::refPtr<iDrawable> stranger(new oxtest::testSquare({0, 0, 0}, 1, {0, 0, 0}));
    s.view->setDrawableEffects(stranger, wild);  // not in the scene: kept, never drawn
    s.view->setMaskDrawables({ox::refPtr<iDrawable>(), s.square});
    EXPECT_EQ(s.view->maskDrawables().size(), 1u);
    s.view->addToSelection(s.square);
    oxtest::paint(*s.view);  // the fixture fails the test on any GL error

    s.view->resize(0, 0, 10.0, 0, 0, 0, 0);  // no viewport: the effect targets cannot be made
    oxtest::paint(*s.view);

    s.view->setDrawableEffects(s.box, {});  // default effects remove the entry
    EXPECT_FALSE(s.view->drawableEffects(s.box).any());
    s.view->remove(stranger, true);
    EXPECT_FALSE(s.view->drawableEffects(stranger).any());
}

} // namespace

namespace {

TEST_F(effectsTest, aHighlightOrAnOverrideShowsInsteadOfTheBlanksLayers) {
    sceneParts_t s = effectsScene();
    drawableEffects_t stock;
    stock.multilayer = true;
    stock.blank.layers = {{-5.0, 5.0, {200, 60, 200}}};  // one magenta layer over the whole box
    s.view->setDrawableEffects(s.box, stock);
    const auto boxPixel = [&] {
        const oxtest::rgbaImage image = oxtest::frameImage(*s.view);
        const oxGeo::point2d at = s.view->worldToWinCoordinates({-2.2, -1.5, 0.0});  // the front face
        const unsigned char* p = image.at(static_cast<int>(at.x()), static_cast<int>(at.y()));
        return std::array<int, 3>{p[0], p[1], p[2]};
    };
    const auto layered = boxPixel();
    EXPECT_GT(layered[2], layered[1] + 40) << "magenta layer";
    s.view->addToSelection(s.box);
    const auto highlighted = boxPixel();
    EXPECT_GT(highlighted[1], highlighted[2] + 40) << "selection yellow";
    s.view->clearSelection();
    stock.overrideColors = true;
    stock.overrideColor = {0, 160, 0};
    s.view->setDrawableEffects(s.box, stock);
    const auto overridden = boxPixel();
    EXPECT_GT(overridden[1], overridden[0] + 40) << "override green";
    EXPECT_GT(overridden[1], overridden[2] + 40) << "override green";
}

} // namespace

namespace {

TEST_F(effectsTest, blurredDrawablesStayBehindNearerOnesAndUnderTheMaskAtEverySampleCount) {
    for (const int samples : {0, 4}) {
        SCOPED_TRACE(std::to_string(samples) + " samples");
        auto view = oxtest::makeScene(64, 64, samples);
        view->setColor({20, 30, 40}, kColorBackgroundTop | kColorBackgroundBottom);
        ox::refPtr<iDrawable> near(new oxtest::testSquare({0, 0, 1}, 4, {255, 0, 0}));
        ox::refPtr<iDrawable> far(new oxtest::testSquare({0, 0, -1}, 8, {0, 0, 255}));
        view->add(near);
        view->add(far);
        drawableEffects_t soft;
        soft.blur = true;
        view->setDrawableEffects(far, soft);
        const oxtest::rgbaImage image = oxtest::frameImage(*view);
        EXPECT_GT(image.at(32, 32)[0], image.at(32, 32)[2] + 100) << "the sharp square in front";
        view->setMaskDrawables({ox::refPtr<iDrawable>(new oxtest::testSquare({0, 0, 2}, 10, {0, 0, 0}))});
        const oxtest::rgbaImage masked = oxtest::frameImage(*view);
        EXPECT_LT(std::abs(masked.at(32, 32)[2] - 40), 8) << "the background where the mask hides the frame";
        EXPECT_LT(std::abs(masked.at(8, 32)[2] - 40), 8) << "the background where the mask hides the frame";
    }
}

} // namespace
