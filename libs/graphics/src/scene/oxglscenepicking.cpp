// glScene: rectangle selection, answered from the drawables' CPU captures (picking/) where they
// can answer, and with OpenGL selection mode for the rest or when asked to.
#include "oxglscene.h"

#include "drawing/glselectdrawer.h"
#include "picking/pickselection.h"
#include "glstate/glscopedstate.h"

#include <GL/glew.h>
#include <GL/glu.h>

#include <algorithm>
#include <limits>
#include <mutex>

namespace oxGraphics::openGL {
namespace {

constexpr GLsizei kSelectionBufferSize = 65535;

// One selection buffer for the process: GL keeps its address until the selection ends, so two
// selections must never overlap.
struct selectionBuffer_t {
    std::mutex mutex;
    GLuint words[kSelectionBufferSize];
};
selectionBuffer_t& selectionBuffer() {
    static selectionBuffer_t buffer;
    return buffer;
}

using pickRecords = std::vector<selectionEmulator::record_t>;

/// Selection mode over the drawables for which `draw` is true (all when it is empty), each under
/// its 1-based position; the pick projection and the camera must be loaded. Returns the records,
/// or false when the buffer overflowed.
bool selectWithGl(glScene& scene, const std::vector<ox::refPtr<iDrawable>>& drawables, const std::vector<bool>& draw,
                  pickRecords& records) {
    auto& buffer = selectionBuffer();
    std::lock_guard lock(buffer.mutex);
    std::fill(std::begin(buffer.words), std::end(buffer.words), 0u);
    glSelectBuffer(kSelectionBufferSize, buffer.words);
    glRenderMode(GL_SELECT);
    glInitNames();
    glPushName(kPickNoName);
    {
        glSelectDrawer drawer(&scene);
        GLuint name = 0;
        for (const auto& drawable : drawables) {
            ++name;
            if (!draw.empty() && !draw[name - 1]) continue;
            // A fresh stack for every drawable: names one left pushed, through the drawer or in a
            // recording it replayed, would otherwise carry its hits over to the next one.
            drawer.forgetNames();
            glInitNames();
            glPushName(name);
            drawer.setCurrentDrawable(drawable);
            drawer.pushMatrix();
            try {
                drawable->draw(&drawer, eRendermode::select, nullptr);
            } catch (...) {
            }
            drawer.popMatrix();
        }
        drawer.setCurrentDrawable({});
    }
    const GLint hitCount = glRenderMode(GL_RENDER); // -1 when the buffer overflowed
    records.clear();
    if (hitCount < 0) return false;
    records.reserve(static_cast<std::size_t>(hitCount));
    std::size_t at = 0;
    for (GLint hit = 0; hit < hitCount && at + 3 <= static_cast<std::size_t>(kSelectionBufferSize); ++hit) {
        const GLuint count = buffer.words[at];
        const std::size_t names = at + 3;
        at = names + count;
        if (at > static_cast<std::size_t>(kSelectionBufferSize)) break;
        records.push_back({std::vector<std::uint32_t>(buffer.words + names, buffer.words + at), buffer.words[names - 2],
                           buffer.words[names - 1]});
    }
    return true;
}

} // namespace

void glScene::pickSelectRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                             std::vector<pickHit_t>& hits, int flags) {
    hits.clear();
    if (!makeCurrent()) return;
    // Corners in either order. A rectangle without width or height picks the one pixel column or
    // row it names: with a zero size gluPickMatrix would leave the projection as it is and the
    // whole viewport would be picked.
    if (x2 < x1) std::swap(x1, x2);
    if (y2 < y1) std::swap(y1, y2);
    const unsigned int w = std::max(x2 - x1, 1u), h = std::max(y2 - y1, 1u);

    // The scene's own viewport, whatever another scene or the host left set; a view without
    // pixels shows nothing to pick.
    if (mViewportWidth <= 0 || mViewportHeight <= 0) return;
    GLint viewport[4] = {0, 0, mViewportWidth, mViewportHeight};
    // The caller's matrices are kept; the selection uses this view's projection and camera.
    GLdouble projection[16];
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    if (mProjection.hasExtents()) mProjection.applyProjection();
    glMatrixMode(GL_PROJECTION);
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // In double: a square reaching above the window's top edge has a negative centre row, which
    // unsigned arithmetic would turn into a huge one.
    gluPickMatrix(static_cast<double>(x1) + (w >> 1), static_cast<double>(viewport[3]) - (h >> 1) - y1, w, h,
                  viewport);
    glMultMatrixd(projection);
    glMatrixMode(GL_MODELVIEW);
    mCamera->applyModelView();

    // Depth clamping and a host's clip planes change what selection mode clips and reports; such
    // picks are left to selection mode.
    bool hostClipping = glIsEnabled(GL_DEPTH_CLAMP) == GL_TRUE;
    GLint clipPlanes = 0;
    glGetIntegerv(GL_MAX_CLIP_PLANES, &clipPlanes);
    for (GLint i = 0; i < clipPlanes && i < 32; ++i)
        hostClipping = hostClipping || glIsEnabled(static_cast<GLenum>(GL_CLIP_PLANE0 + i)) == GL_TRUE;
    const bool accelerate = mPickAccelerated && (flags & kPickSelectionMode) == 0 && !hostClipping;
    // A drawable's draw may change the scene; the pick works on the list as it was. Cut volumes
    // are never shown, so they cannot be picked either.
    std::vector<ox::refPtr<iDrawable>> drawables = mDrawables;
    std::erase_if(drawables, [](const ox::refPtr<iDrawable>& d) { return dynamic_cast<iCsgVolume*>(d.get()) != nullptr; });
    std::vector<bool> needsSelectionMode;
    pickRecords records;
    bool complete = true;
    if (accelerate) {
        pickView_t view;
        glGetDoublev(GL_PROJECTION_MATRIX, view.clipFromEye);
        glGetDoublev(GL_MODELVIEW_MATRIX, view.eyeFromWorld);
        GLfloat depthRange[2] = {0.0f, 1.0f};
        glGetFloatv(GL_DEPTH_RANGE, depthRange);
        view.depthScale = (depthRange[1] - depthRange[0]) * 0.5f;
        view.depthOffset = (depthRange[1] + depthRange[0]) * 0.5f;
        selectAccelerated(this, drawables, view, records, needsSelectionMode);
    }
    if (!accelerate || std::find(needsSelectionMode.begin(), needsSelectionMode.end(), true) != needsSelectionMode.end()) {
        constexpr unsigned int kIntMax = static_cast<unsigned int>(std::numeric_limits<GLint>::max());
        // Only the square is drawn; the host's scissor comes back afterwards.
        const glScissorBoxScope pickSquare(static_cast<GLint>(std::min(x1, kIntMax)), static_cast<GLint>(std::min(y1, kIntMax)),
                                           static_cast<GLsizei>(std::min(w, kIntMax)), static_cast<GLsizei>(std::min(h, kIntMax)));
        const glCapabilityScope scissorTest(GL_SCISSOR_TEST, true);
        pickRecords selected;
        complete = selectWithGl(*this, drawables, needsSelectionMode, selected);
        if (!accelerate) records = std::move(selected);
        else if (complete) complete = mergeSelections(records, std::move(selected), needsSelectionMode);
    }

    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();

    if (!complete) return;
    hits.reserve(records.size());
    for (auto& record : records) {
        // The first name is the drawable's position; records that name none give no hit.
        if (record.names.empty() || record.names[0] == 0 || record.names[0] > drawables.size()) continue;
        pickHit_t hit;
        hit.drawable = drawables[record.names[0] - 1];
        hit.minDepth = record.minDepth;
        hit.maxDepth = record.maxDepth;
        hit.names.assign(record.names.begin() + 1, record.names.end());
        hits.push_back(std::move(hit));
    }
}

} // namespace oxGraphics::openGL
