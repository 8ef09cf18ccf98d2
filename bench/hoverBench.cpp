// hoverBench: what the manipulator's hover costs beside a large mesh, against the scene's bare
// rectangle selection over the same square.
//
// One headless offscreen scene (800x600 by default) holds a wavy surface of about 1M triangles
// (recorded by a first frame, as a host's view would have it) and the manipulator beside it. For
// four cursor positions (on a grip, over empty space, just beside the Z arrow seen end-on from
// above, over the mesh) it times moveRotationControl::hover and scene::pickSelectRect over the
// same square (the median of --calls calls each, the two taking turns) and prints the time per
// call and their ratio.
// Every selection draws the whole scene, so the hover's price is the number of selections it
// makes: one when the first finds something or the cursor is far from the Z arrow, two when the
// first misses near it (the second looks for the catch zone around the arrow).
//
//     hoverBench [--width W] [--height H] [--triangles N] [--calls N] [--pick S]
#include "oxmeshentity.h"
#include "oxmoverotationcontrol.h"
#include "oxscene.h"

#include "oxglcontext.h"

#include "oxgeomesh.h"

#include "benchSurface.h"
#include "benchTiming.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using oxbench::clock_type;
using oxbench::median;
using oxbench::millisecondsSince;

/// The benchmark surface over the square [x0, x0 + side] x [y0, y0 + side].
std::shared_ptr<oxGeo::mesh3d> makeSurface(std::size_t triangles, double x0, double y0, double side) {
    return std::make_shared<oxGeo::mesh3d>(oxbench::wavySurface(triangles, x0, y0, side, side, 0.5));
}

int intOption(int argc, char** argv, const char* name, int fallback) {
    for (int i = 1; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], name) == 0) return std::max(1, std::atoi(argv[i + 1]));
    return fallback;
}

} // namespace

int main(int argc, char** argv) {
    const int width = intOption(argc, argv, "--width", 800);
    const int height = intOption(argc, argv, "--height", 600);
    const int triangles = intOption(argc, argv, "--triangles", 1000000);
    const int calls = intOption(argc, argv, "--calls", 15);
    const int pick = intOption(argc, argv, "--pick", 6);

    auto context = oxGraphics::openGL::createHeadlessContext({width, height, false});
    if (!context) {
        std::fprintf(stderr, "hoverBench: no headless OpenGL context\n");
        return 1;
    }
    auto view = oxGraphics::scene::create(context, false, false);
    view->setMultisamples(0);
    view->initGfxApiState();
    view->resize(width, height, 40.0, 0, 0, 0, 0);
    view->refreshFBOWithMultiSampling();

    // The mesh fills the left half of the view, the manipulator sits in the right half.
    auto surface = oxGraphics::meshEntity::create(makeSurface(std::size_t(triangles), -19.0, -14.0, 18.0));
    surface->setColor({180, 180, 200});
    view->add(ox::refPtr<oxGraphics::iDrawable>(surface));
    auto control = oxGraphics::moveRotationControl::create(view, oxGeo::matrix3d().setToTranslation({6, -5, 0}), true);
    control->attachToScene();
    const auto recordStart = clock_type::now();
    view->setupForPainting();
    view->renderBefore();
    view->draw();
    view->renderAfter();
    const double firstFrame = millisecondsSince(recordStart);

    struct position_t {
        const char* what;
        oxGeo::point3d world;
    };
    const position_t positions[] = {
        {"on the X arrow", {6 + 5, -5, 0}},
        {"over empty space", {6 - 4, 10, 0}},
        {"beside the Z arrow", {6 - 1, -5 - 1, 0}},  // missed by the first pick, caught by the second
        {"over the mesh", {-10, -5, 0}},
    };
    std::printf("hoverBench: %d x %d, %d triangles, pick square %d, median of %d calls (first frame %.1f ms)\n",
                width, height, triangles, pick, calls, firstFrame);
    std::printf("%-20s %6s %14s %18s %8s\n", "cursor", "hot", "hover [ms]", "pickSelectRect [ms]", "ratio");
    for (const auto& position : positions) {
        const oxGeo::point2d p = view->worldToWinCoordinates(position.world);
        const auto half = static_cast<unsigned int>(pick / 2);
        const auto px = static_cast<unsigned int>(std::lround(p.x())), py = static_cast<unsigned int>(std::lround(p.y()));
        std::vector<double> hoverTimes, pickTimes;
        for (int i = 0; i < calls; ++i) {
            auto start = clock_type::now();
            control->hover(p.x(), p.y(), pick);
            hoverTimes.push_back(millisecondsSince(start));
            start = clock_type::now();
            const auto hits = view->pickSelectRect(px - half, py - half, px + half, py + half);
            pickTimes.push_back(millisecondsSince(start));
        }
        const double hover = median(hoverTimes), bare = median(pickTimes);
        std::printf("%-20s %6d %14.2f %18.2f %8.2f\n", position.what, int(control->hotOperation()), hover, bare,
                    bare > 0.0 ? hover / bare : 0.0);
    }
    return 0;
}
