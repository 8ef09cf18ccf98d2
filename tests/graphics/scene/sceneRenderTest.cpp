// Whole frames of a scene with the library's own entities, on both shading paths, compared with
// reference images; and a long run that must not leak.
#include "sceneTestSupport.h"

#include "oxboundeddrawable.h"
#include "oxcsentity.h"
#include "oxglshader.h"
#include "oxmeshentity.h"
#include "oxpointentity.h"
#include "oxpolylineentity.h"
#include "scene/oxglscene.h"

#include "oxgeomeshfactory.h"
#include "oxgeopolylinefactory.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <malloc.h>

#include <algorithm>
#include <memory>
#include <set>
#include <vector>
#include <string>

namespace {

using namespace oxGraphics;
using oxGeo::matrix3d;
using oxGeo::point3d;

constexpr int kWidth = 160;
constexpr int kHeight = 120;

// A box, a triad, a tool path and its points, in a front-right view fitted to all of them.
ox::refPtr<scene> makeWorkshopScene(int samples) {
    auto view = oxtest::makeScene(kWidth, kHeight, samples);
    view->setColor({40, 40, 60}, kColorBackgroundTop);
    view->setColor({140, 140, 160}, kColorBackgroundBottom);

    auto box = std::make_shared<oxGeo::mesh3d>();
    oxGeo::meshfactory::appendBoxMesh(4, 3, 2, *box, true);
    auto part = meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d>(box));
    part->setColor({70, 130, 200});
    view->add(ox::refPtr<iDrawable>(boundedDrawable::create(part)));

    matrix3d placement;
    placement.setToTranslation({-2, -1.5, 1});
    auto triad = csEntity::create(placement);
    triad->setSize(2.5);
    view->add(ox::refPtr<iDrawable>(boundedDrawable::create(triad)));

    auto path = std::make_shared<oxGeo::polyline3d>();
    oxGeo::polylinefactory::generateArcPolyline(3.0, ox::angle::fromDegree(270), 0.05, point3d(0, 0, 1.5), *path);
    auto toolPath = polylineEntity::create(ox::const_sharedPtr<oxGeo::polyline3d>(path));
    toolPath->setColor({255, 140, 0});
    toolPath->setLineWidth(2);
    view->add(ox::refPtr<iDrawable>(boundedDrawable::create(toolPath)));

    auto stops = pointEntity::create(std::vector<point3d>{{3, 0, 1.5}, {0, 3, 1.5}, {-3, 0, 1.5}});
    stops->setColor({255, 255, 255});
    stops->setPointSize(6);
    view->add(ox::refPtr<iDrawable>(boundedDrawable::create(stops)));

    view->setFrontRightView(false, matrix3d(), point3d());
    view->zoomAll();
    return view;
}

using sceneRenderTest = oxtest::shaderSwitchTest;

TEST_F(sceneRenderTest, framesMatchTheirReferenceOnBothShadingPaths) {
    for (const bool shaders : {false, true}) {
        openGL::glShaderProgram::enableGlShadersGlobally(shaders);
        std::vector<oxtest::rgbaImage> bySamples;
        for (const int samples : {0, 1, 4}) {
            auto view = makeWorkshopScene(samples);
            const auto image = oxtest::frameImage(*view);
            const std::string name = std::string("scene/workshop_") + (shaders ? "shader" : "fixed") + "_" +
                                     std::to_string(samples) + "samples";
            EXPECT_TRUE(oxtest::matchesReferenceImage(image, name, 24, 0.5)) << name;
            bySamples.push_back(image);
        }
        // Multisampling only changes edges.
        const auto difference = oxtest::compareImages(bySamples[0], bySamples[2]);
        EXPECT_LT(difference.meanDelta, 4.0) << shaders;
    }
    // The shader reproduces the fixed-function light: the two paths differ only slightly.
    openGL::glShaderProgram::enableGlShadersGlobally(false);
    const auto fixed = oxtest::frameImage(*makeWorkshopScene(4));
    openGL::glShaderProgram::enableGlShadersGlobally(true);
    const auto shaded = oxtest::frameImage(*makeWorkshopScene(4));
    const auto difference = oxtest::compareImages(fixed, shaded);
    EXPECT_LT(difference.meanDelta, 1.0);
}

// Bytes the process has allocated and not freed (the allocator's own count: unlike the resident
// size it does not move with fragmentation and returned pages).
std::size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// The next name the driver would hand out for each kind: leaked names push it up.
// (Lists are counted directly: the driver hands out list names above the highest ever used.)
struct glNames {
    GLuint texture = 0, framebuffer = 0, renderbuffer = 0, list = 0;
    static glNames next() {
        glNames n;
        glGenTextures(1, &n.texture);
        glGenFramebuffers(1, &n.framebuffer);
        glGenRenderbuffers(1, &n.renderbuffer);
        n.list = glGenLists(1);
        glDeleteTextures(1, &n.texture);
        glDeleteFramebuffers(1, &n.framebuffer);
        glDeleteRenderbuffers(1, &n.renderbuffer);
        glDeleteLists(n.list, 1);
        return n;
    }
};

TEST_F(sceneRenderTest, tenThousandMultisampledFramesKeepGlObjectsAndMemoryFlat) {
    constexpr int kFrames = 10000, kSampleEvery = 500;
    auto view = makeWorkshopScene(4);
    auto renderer = ox::dynamicRefCast<openGL::glScene>(view->implementation());
    for (int i = 0; i < 50; ++i) oxtest::paint(*view); // warm up: recordings, programs, driver caches
    const glNames before = glNames::next();
    std::set<unsigned int> quadNames;
    // The heap in use every 500 frames after the first thousand.
    std::vector<std::size_t> heap;
    for (int i = 1; i <= kFrames; ++i) {
        oxtest::paint(*view);
        const unsigned int quad = renderer->screenQuadList();
        quadNames.insert(quad);
        EXPECT_TRUE(glIsList(quad));
        if (i % kSampleEvery == 0 && i > kFrames / 10) {
            glFinish();
            heap.push_back(heapInUse());
        }
    }
    const glNames after = glNames::next();

    // A window never resized gets no release: its quads take turns in two names, and no texture,
    // framebuffer, renderbuffer or list name piles up (new names grow the driver's tables).
    EXPECT_EQ(quadNames.size(), 2u);
    EXPECT_LE(after.texture, before.texture + 4);
    EXPECT_LE(after.framebuffer, before.framebuffer + 4);
    EXPECT_LE(after.renderbuffer, before.renderbuffer + 4);
    EXPECT_LE(after.list, before.list + 2);
    view->refreshFBOWithMultiSampling(); // the release deletes both
    for (const unsigned int name : quadNames) EXPECT_FALSE(glIsList(name));

    // Transient blocks of the driver's worker threads come and go by half a megabyte, and once in
    // a while the driver keeps one for good (a single step, at a frame that depends on what ran
    // before). A leak is steady: it lifts the lowest sample of each third of the run above that
    // of the third before, by 64 KiB each for a leak of 22 bytes a frame.
    const std::size_t third = heap.size() / 3;
    std::size_t lowestOfThird[3];
    for (std::size_t t = 0; t < 3; ++t)
        lowestOfThird[t] = *std::min_element(heap.begin() + t * third, heap.begin() + (t + 1) * third);
    const long firstRise = static_cast<long>(lowestOfThird[1]) - static_cast<long>(lowestOfThird[0]);
    const long secondRise = static_cast<long>(lowestOfThird[2]) - static_cast<long>(lowestOfThird[1]);
    const auto [lowest, highest] = std::minmax_element(heap.begin(), heap.end());
    std::cout << "[ soak ] " << kFrames << " frames: lowest heap of each third rose by " << firstRise << " and "
              << secondRise << " bytes, samples within " << (*highest - *lowest) << " bytes, "
              << quadNames.size() << " screen-quad names\n";
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // The sanitizers' allocators keep their own books; the leak checker covers this build instead.
#else
    EXPECT_FALSE(firstRise > (64 << 10) && secondRise > (64 << 10));
    EXPECT_LT(*highest - *lowest, std::size_t(8) << 20);
#endif
}

} // namespace
