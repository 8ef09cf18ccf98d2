// drawMeshBench: what recording a large flat-shaded mesh into a display list costs, and how its
// replay compares with drawing the same triangles from a vertex buffer object.
//
// On one headless context (1024x768 by default) and under the same fixed-function lighting, for a
// tessellated surface of about 100k and 1M triangles, each starting from the same oxGeo::mesh3d:
//  - display list: record through glRenderDrawer::drawMesh into a glRecording (normals computed,
//    list compiled), the first replay, then the replay frame time;
//  - two other ways of putting the same triangles into a list, for comparison with the drawer's
//    own emission: one unbroken glBegin block, and client arrays drawn with glDrawArrays;
//  - VBO: build the interleaved normals+positions from the mesh, upload them with glBufferData,
//    the first frame, then the frame time.
// Every frame is glClear + draw + glFinish; frame times are the median of --frames frames. Each
// figure is the median of --repeat runs, the variants taking turns, because on a shared machine
// single runs scatter. Printed at the end: replay / VBO frame (target <= 1.15) and
// (record + first replay) / (VBO build + upload + first frame) (target <= 1.25).
//
// Then the first frame of a whole scene, as a host sees it, for about 1M and 4M triangles: a
// multisampled offscreen scene (the default sample count) that has already drawn one empty frame
// (programs built, targets made), the mesh added, then one frame (setupForPainting, renderBefore,
// draw, renderAfter, glFinish) timed. Two drawables take turns in the same scene setup: a
// meshEntity (recording through the drawer) and a bare display list that a host could write
// itself (glNewList; one glBegin(GL_TRIANGLES) with glNormal3f once per triangle and three
// glVertex3f; glEndList; glCallList), in pairs, each first every other time. Printed: both
// medians and the median of the pairs' entity / bare ratios (target <= 1.15); for reference the
// same with the process's CPU time, which a busy machine disturbs less.
//
// The exit code is 3 when a target is missed.
//
//     drawMeshBench [--width W] [--height H] [--frames N] [--repeat R] [--sizes 100000,1000000]
//                   [--frame-sizes 1000000,4000000] [--only list|frame]
#include "scene/glframelights.h"
#include "drawing/gldrawerhost.h"
#include "drawing/glrecording.h"
#include "drawing/glrenderdrawer.h"

#include "oxboundeddrawable.h"
#include "oxdrawer.h"
#include "oxglcontext.h"
#include "oxglentrypoints.h"
#include "oxmeshentity.h"
#include "oxscene.h"

#include "oxgeomesh.h"

#include <GL/glew.h>

#include "benchSurface.h"
#include "benchTiming.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

using oxbench::clock_type;
using oxbench::median;
using oxbench::millisecondsSince;
using oxGraphics::openGL::glRecording;
using oxGraphics::openGL::glRenderDrawer;

class benchHost : public oxGraphics::openGL::iDrawerHost {
public:
    explicit benchHost(ox::refPtr<oxGraphics::iGlContext> context) : mContext(std::move(context)) {}
    ox::refPtr<oxGraphics::iGlContext> glContext() const override { return mContext; }
    const ox::string& sceneName() const override { return mName; }
    bool getViewRayAt(int, int, oxGeo::ray3d&, int) const override { return false; }

private:
    ox::refPtr<oxGraphics::iGlContext> mContext;
    ox::string mName = L"drawMeshBench";
};

/// The benchmark surface over [-0.9, 0.9]².
oxGeo::mesh3d makeSurface(std::size_t triangles) { return oxbench::wavySurface(triangles, -0.9, -0.9, 1.8, 1.8, 0.15); }

/// Flat-shaded triangles of the mesh, the way the drawer computes them, for the alternatives.
template <class Emit> void forEachFlatTriangle(const oxGeo::mesh3d& mesh, Emit&& emit) {
    for (const auto& patch : mesh.patches()) {
        const oxGeo::vector3d n = patch.calculatePatchNormalNotNormalized();
        const double length = n.length();
        if (length <= 1e-6) continue;
        const float normal[3] = {float(n.x() / length), float(n.y() / length), float(n.z() / length)};
        emit(normal, patch.corner(0), patch.corner(1), patch.corner(2));
        if (patch.isQuad()) emit(normal, patch.corner(2), patch.corner(3), patch.corner(0));
    }
}

/// Alternative 1: the same content as one unbroken glBegin(GL_TRIANGLES) block.
void emitOneBlock(const oxGeo::mesh3d& mesh) {
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glDisable(GL_CULL_FACE);
    glBegin(GL_TRIANGLES);
    forEachFlatTriangle(mesh, [](const float* n, const oxGeo::point3d& a, const oxGeo::point3d& b,
                                 const oxGeo::point3d& c) {
        for (const oxGeo::point3d* p : {&a, &b, &c}) {
            glNormal3f(n[0], n[1], n[2]);
            glVertex3f(float(p->x()), float(p->y()), float(p->z()));
        }
    });
    glEnd();
}

/// Alternative 2: interleaved client arrays (GL_N3F_V3F) drawn with glDrawArrays per 4096 triangles.
void emitClientArrays(const oxGeo::mesh3d& mesh) {
    constexpr std::size_t kChunk = 4096 * 3;
    static std::vector<float> chunk(kChunk * 6);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glDisable(GL_CULL_FACE);
    glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
    std::size_t used = 0;
    const auto flush = [&] {
        if (used == 0) return;
        glInterleavedArrays(GL_N3F_V3F, 0, chunk.data());
        glDrawArrays(GL_TRIANGLES, 0, GLsizei(used));
        used = 0;
    };
    forEachFlatTriangle(mesh, [&](const float* n, const oxGeo::point3d& a, const oxGeo::point3d& b,
                                  const oxGeo::point3d& c) {
        for (const oxGeo::point3d* p : {&a, &b, &c}) {
            float* v = &chunk[used++ * 6];
            v[0] = n[0], v[1] = n[1], v[2] = n[2];
            v[3] = float(p->x()), v[4] = float(p->y()), v[5] = float(p->z());
        }
        if (used == kChunk) flush();
    });
    flush();
    glPopClientAttrib();
}

/// Positions and per-face normals, interleaved (normal first), for the VBO: written straight
/// into an uninitialised array, as a host preparing a vertex buffer would.
struct interleaved {
    std::unique_ptr<float[]> data;
    std::size_t floats = 0;
};
interleaved buildInterleaved(const oxGeo::mesh3d& mesh) {
    std::size_t triangles = 0;
    for (const auto& patch : mesh.patches()) triangles += patch.isQuad() ? 2 : 1;
    interleaved result{std::unique_ptr<float[]>(new float[triangles * 18]), 0};
    float* out = result.data.get();
    forEachFlatTriangle(mesh, [&](const float* n, const oxGeo::point3d& a, const oxGeo::point3d& b,
                                  const oxGeo::point3d& c) {
        for (const oxGeo::point3d* p : {&a, &b, &c}) {
            out[0] = n[0], out[1] = n[1], out[2] = n[2];
            out[3] = float(p->x()), out[4] = float(p->y()), out[5] = float(p->z());
            out += 6;
        }
    });
    result.floats = std::size_t(out - result.data.get());
    return result;
}

void setUpFrameState(int width, int height) {
    glViewport(0, 0, width, height);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    const double aspect = double(width) / height;
    glOrtho(-aspect, aspect, -1, 1, -10, 10);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glRotated(-50, 1, 0, 0);
    glRotated(20, 0, 0, 1);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glShadeModel(GL_SMOOTH);
    oxGraphics::openGL::applyFrameLights();
    const float grey[4] = {0.7f, 0.7f, 0.75f, 1.0f};
    glColor4fv(grey);
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, grey);
    glMateriali(GL_FRONT_AND_BACK, GL_SHININESS, 48);
    glClearColor(0.1f, 0.1f, 0.15f, 1.0f);
}

template <class Draw> double frame(Draw&& draw) {
    const auto start = clock_type::now();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    draw();
    glFinish();
    return millisecondsSince(start);
}

template <class Draw> double medianFrame(int frames, Draw&& draw) {
    std::vector<double> times;
    for (int i = 0; i < frames; ++i) times.push_back(frame(draw));
    return median(times);
}

struct listFigures {
    double record = 0, firstReplay = 0, replay = 0;
};

struct vboFigures {
    double build = 0, upload = 0, firstFrame = 0, frame = 0;
};

listFigures medianOf(const std::vector<listFigures>& runs) {
    listFigures m;
    std::vector<double> a, b, c;
    for (const auto& r : runs) a.push_back(r.record), b.push_back(r.firstReplay), c.push_back(r.replay);
    m.record = median(a), m.firstReplay = median(b), m.replay = median(c);
    return m;
}

vboFigures medianOf(const std::vector<vboFigures>& runs) {
    vboFigures m;
    std::vector<double> a, b, c, d;
    for (const auto& r : runs) a.push_back(r.build), b.push_back(r.upload), c.push_back(r.firstFrame), d.push_back(r.frame);
    m.build = median(a), m.upload = median(b), m.firstFrame = median(c), m.frame = median(d);
    return m;
}

template <class Emit>
listFigures measureList(const ox::refPtr<oxGraphics::iGlContext>& context, int frames, Emit&& emit) {
    listFigures figures;
    glFinish();
    auto start = clock_type::now();
    ox::refPtr<glRecording> recording = glRecording::create(context);
    emit();
    recording->endCompiling();
    glFinish();
    figures.record = millisecondsSince(start);
    const GLuint list = recording->listId();
    figures.firstReplay = frame([&] { glCallList(list); });
    figures.replay = medianFrame(frames, [&] { glCallList(list); });
    return figures;
}

vboFigures measureVbo(const oxGeo::mesh3d& mesh, int frames) {
    vboFigures figures;
    glFinish();
    auto start = clock_type::now();
    const interleaved data = buildInterleaved(mesh);
    figures.build = millisecondsSince(start);
    start = clock_type::now();
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(data.floats * sizeof(float)), data.data.get(), GL_STATIC_DRAW);
    glFinish();
    figures.upload = millisecondsSince(start);
    const auto vertices = GLsizei(data.floats / 6);
    const auto draw = [&] {
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        glEnableClientState(GL_NORMAL_ARRAY);
        glEnableClientState(GL_VERTEX_ARRAY);
        glNormalPointer(GL_FLOAT, 6 * sizeof(float), nullptr);
        glVertexPointer(3, GL_FLOAT, 6 * sizeof(float), reinterpret_cast<const void*>(3 * sizeof(float)));
        glDrawArrays(GL_TRIANGLES, 0, vertices);
        glDisableClientState(GL_VERTEX_ARRAY);
        glDisableClientState(GL_NORMAL_ARRAY);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    };
    figures.firstFrame = frame(draw);
    figures.frame = medianFrame(frames, draw);
    glDeleteBuffers(1, &buffer);
    return figures;
}

// ---- the first frame of a scene -----------------------------------------------------------

/// The reference a host could write with GL alone: the same flat triangles in one display list,
/// the normal sent once per triangle. It takes the colour through the drawer as the entity does,
/// so both frames show the same picture.
class bareListDrawable : public oxGraphics::iDrawable, public ox::refObj {
public:
    bareListDrawable(std::shared_ptr<const oxGeo::mesh3d> mesh, ox::rgbColor color)
        : mMesh(std::move(mesh)), mColor(color) {}
    bool draw(oxGraphics::iDrawer* drawer, oxGraphics::eRendermode, oxGraphics::shaderProgram*) override {
        drawer->setColor(mColor, 0.0f);
        if (mList == 0) {
            mList = glGenLists(1);
            glNewList(mList, GL_COMPILE);
            glBegin(GL_TRIANGLES);
            forEachFlatTriangle(*mMesh, [](const float* n, const oxGeo::point3d& a, const oxGeo::point3d& b,
                                           const oxGeo::point3d& c) {
                glNormal3f(n[0], n[1], n[2]);
                for (const oxGeo::point3d* p : {&a, &b, &c}) glVertex3f(float(p->x()), float(p->y()), float(p->z()));
            });
            glEnd();
            glEndList();
        }
        glCallList(mList);
        return true;
    }
    void invalidate() override {}
    void setTransformation(const oxGeo::matrix3d&) override {}

protected:
    ~bareListDrawable() override {
        if (mList != 0) glDeleteLists(mList, 1);
    }

private:
    std::shared_ptr<const oxGeo::mesh3d> mMesh;
    ox::rgbColor mColor;
    GLuint mList = 0;
};

/// Wall and process CPU time (every thread, the rasteriser's too) of one piece of work, in ms.
/// CPU time counts the work done whoever else runs on the machine; wall time is what a user sees.
struct frameTimes {
    double wall = 0, cpu = 0;
};

double processCpuMs() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) * 1e-6;
}

/// One scene frame as a host draws it, glFinish included.
frameTimes sceneFrame(oxGraphics::scene& view) {
    const auto start = clock_type::now();
    const double cpuStart = processCpuMs();
    view.setupForPainting();
    view.renderBefore();
    view.draw();
    view.renderAfter();
    glFinish();
    return {millisecondsSince(start), processCpuMs() - cpuStart};
}

/// The first frame that shows `drawable` in a fresh multisampled scene that has drawn once before.
frameTimes firstSceneFrame(const ox::refPtr<oxGraphics::iGlContext>& context, int width, int height,
                           const ox::refPtr<oxGraphics::iDrawable>& drawable, const oxGeo::boundBox3d& box) {
    auto view = oxGraphics::scene::create(context, false, false);
    view->initGfxApiState();
    view->resize(width, height, 10.0, 0, 0, 0, 0);
    view->refreshFBOWithMultiSampling();
    view->setTopView(false, oxGeo::matrix3d(), oxGeo::point3d(), oxGeo::vector3d(0, 1, 0));
    view->zoomTo(box);
    sceneFrame(*view);
    view->add(drawable);
    const frameTimes times = sceneFrame(*view);
    view->remove(drawable, true);
    return times;
}

/// First frames of a meshEntity and of the bare list in pairs, each first every other time;
/// true when the target is met.
bool measureFirstFrames(const ox::refPtr<oxGraphics::iGlContext>& context, int width, int height, int repeats,
                        std::size_t size) {
    const auto mesh = std::make_shared<oxGeo::mesh3d>(makeSurface(size));
    const oxGeo::boundBox3d box(oxGeo::point3d(-1, -1, -0.2), oxGeo::point3d(1, 1, 0.2));
    const ox::rgbColor color(180, 180, 200);
    const auto entityFrame = [&] {
        auto entity = oxGraphics::meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d>(mesh));
        entity->setColor(color);
        return firstSceneFrame(context, width, height, ox::refPtr<oxGraphics::iDrawable>(entity), box);
    };
    const auto bareFrame = [&] {
        return firstSceneFrame(context, width, height, ox::refPtr<oxGraphics::iDrawable>(new bareListDrawable(mesh, color)), box);
    };
    std::vector<double> entityRuns, bareRuns, ratios, entityCpu, bareCpu, cpuRatios;
    for (int r = 0; r < repeats; ++r) {
        frameTimes entity, bare;
        if (r % 2 == 0) entity = entityFrame(), bare = bareFrame();
        else bare = bareFrame(), entity = entityFrame();
        entityRuns.push_back(entity.wall);
        bareRuns.push_back(bare.wall);
        ratios.push_back(entity.wall / bare.wall);
        entityCpu.push_back(entity.cpu);
        bareCpu.push_back(bare.cpu);
        cpuRatios.push_back(entity.cpu / bare.cpu);
    }
    // The pairs' ratios rather than the ratio of medians: a pair sees the same machine, which
    // drifts while others share it.
    const double ratio = median(ratios);
    std::printf("\n%zu triangles, first scene frame (%d pairs), ms\n", mesh->patchCount(), repeats);
    std::printf("  %-40s %9s %9s\n", "", "wall", "cpu");
    std::printf("  %-40s %9.1f %9.1f\n", "meshEntity (drawer recording)", median(entityRuns), median(entityCpu));
    std::printf("  %-40s %9.1f %9.1f\n", "bare display list", median(bareRuns), median(bareCpu));
    std::printf("  for reference, CPU time of all threads, median of the pairs: %.3f\n", median(cpuRatios));
    std::printf("  meshEntity / bare first frame, median of the pairs: %.3f (target <= 1.15)\n", ratio);
    return ratio <= 1.15;
}

std::vector<std::size_t> parseSizes(const char* text) {
    std::vector<std::size_t> sizes;
    for (const char* p = text; *p != '\0';) {
        char* end = nullptr;
        sizes.push_back(std::strtoull(p, &end, 10));
        p = (*end == ',') ? end + 1 : end;
        if (end == p && *p != '\0') break;
    }
    return sizes;
}

} // namespace

int main(int argc, char** argv) {
    int width = 1024, height = 768, frames = 15, repeats = 3;
    std::vector<std::size_t> sizes = {100000, 1000000};
    std::vector<std::size_t> frameSizes = {1000000, 4000000};
    std::string only;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--width") width = std::atoi(argv[i + 1]);
        else if (option == "--height") height = std::atoi(argv[i + 1]);
        else if (option == "--frames") frames = std::max(1, std::atoi(argv[i + 1]));
        else if (option == "--sizes") sizes = parseSizes(argv[i + 1]);
        else if (option == "--repeat") repeats = std::max(1, std::atoi(argv[i + 1]));
        else if (option == "--frame-sizes") frameSizes = parseSizes(argv[i + 1]);
        else if (option == "--only") only = argv[i + 1];
        else {
            std::fprintf(stderr, "unknown option %s\n", argv[i]);
            return 2;
        }
    }

    const auto context = oxGraphics::openGL::createHeadlessContext({width, height, false});
    if (!context || !oxGraphics::openGL::loadGlEntryPoints()) {
        std::fprintf(stderr, "no headless OpenGL context\n");
        return 1;
    }
    benchHost host(context);
    setUpFrameState(width, height);
    std::printf("renderer: %s, %dx%d, median of %d frames, times in ms\n",
                reinterpret_cast<const char*>(glGetString(GL_RENDERER)), width, height, frames);

    // Both paths once on a small mesh first, so the driver's state-dependent code generation is
    // not charged to the first figure measured.
    {
        const oxGeo::mesh3d warmUp = makeSurface(2000);
        glRenderDrawer drawer(&host);
        measureList(context, 2, [&] { drawer.drawMesh(warmUp, 0); });
        measureList(context, 2, [&] { emitOneBlock(warmUp); });
        measureList(context, 2, [&] { emitClientArrays(warmUp); });
        measureVbo(warmUp, 2);
    }

    int failures = 0;
    for (const std::size_t size : only == "frame" ? std::vector<std::size_t>{} : sizes) {
        const oxGeo::mesh3d mesh = makeSurface(size);
        std::printf("\n%zu triangles (each figure the median of %d runs, the variants taking turns)\n",
                    mesh.patchCount(), repeats);

        glRenderDrawer drawer(&host);
        std::vector<listFigures> drawerRuns, blockRuns, arrayRuns;
        std::vector<vboFigures> vboRuns;
        const std::function<void()> variants[] = {
            [&] { drawerRuns.push_back(measureList(context, frames, [&] { drawer.drawMesh(mesh, 0); })); },
            [&] { blockRuns.push_back(measureList(context, frames, [&] { emitOneBlock(mesh); })); },
            [&] { arrayRuns.push_back(measureList(context, frames, [&] { emitClientArrays(mesh); })); },
            [&] { vboRuns.push_back(measureVbo(mesh, frames)); },
        };
        // Each round starts with another variant, so none always follows the same one.
        for (int r = 0; r < repeats; ++r)
            for (std::size_t v = 0; v < std::size(variants); ++v) variants[(r + v) % std::size(variants)]();
        const listFigures list = medianOf(drawerRuns);
        const vboFigures vbo = medianOf(vboRuns);

        std::printf("  %-40s %9s %13s %9s\n", "display list", "record", "first replay", "replay");
        const auto row = [](const char* name, const listFigures& f) {
            std::printf("  %-40s %9.1f %13.1f %9.2f\n", name, f.record, f.firstReplay, f.replay);
        };
        row("drawMesh (glRenderDrawer)", list);
        row("  alternative: one glBegin block", medianOf(blockRuns));
        row("  alternative: client arrays, glDrawArrays", medianOf(arrayRuns));
        std::printf("  %-40s %9s %9s %13s %9s\n", "VBO", "build", "upload", "first frame", "frame");
        std::printf("  %-40s %9.1f %9.1f %13.1f %9.2f\n", "glBufferData + glDrawArrays", vbo.build, vbo.upload,
                    vbo.firstFrame, vbo.frame);

        const double frameRatio = list.replay / vbo.frame;
        const double setupRatio = (list.record + list.firstReplay) / (vbo.build + vbo.upload + vbo.firstFrame);
        std::printf("  replay / VBO frame: %.3f (target <= 1.15)\n", frameRatio);
        std::printf("  (record + first replay) / (VBO build + upload + first frame): %.3f (target <= 1.25)\n",
                    setupRatio);
        std::printf("  for reference, leaving the VBO's array build out: %.3f\n",
                    (list.record + list.firstReplay) / (vbo.upload + vbo.firstFrame));
        if (frameRatio > 1.15 || setupRatio > 1.25) ++failures;
    }
    if (only != "list")
        for (const std::size_t size : frameSizes)
            if (!measureFirstFrames(context, width, height, repeats, size)) ++failures;
    return failures == 0 ? 0 : 3;
}
