// glScene: picking with OpenGL selection mode.
#include "oxglscene.h"

#include "drawing/glselectdrawer.h"
#include "glstate/glscopedstate.h"

#include <GL/glew.h>
#include <GL/glu.h>

#include <algorithm>
#include <limits>
#include <map>
#include <mutex>

namespace oxGraphics::openGL {
namespace {

constexpr GLsizei kSelectionBufferSize = 65535;
constexpr GLuint kNoName = 0xFFFFFFFFu;

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

} // namespace

void glScene::pickSelectRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                             std::vector<pickHit_t>& hits, int /*flags*/) {
    hits.clear();
    if (!makeCurrent()) return;
    // Corners in either order. A rectangle without width or height picks the one pixel column or
    // row it names: with a zero size gluPickMatrix would leave the projection as it is and the
    // whole viewport would be picked.
    if (x2 < x1) std::swap(x1, x2);
    if (y2 < y1) std::swap(y1, y2);
    const unsigned int w = std::max(x2 - x1, 1u), h = std::max(y2 - y1, 1u);
    auto& buffer = selectionBuffer();
    std::lock_guard lock(buffer.mutex);
    std::fill(std::begin(buffer.words), std::end(buffer.words), 0u);
    glSelectBuffer(kSelectionBufferSize, buffer.words);

    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
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

    glRenderMode(GL_SELECT);
    glInitNames();
    glPushName(kNoName);

    glLoadIdentity();
    // In double: a square reaching above the window's top edge has a negative centre row, which
    // unsigned arithmetic would turn into a huge one.
    gluPickMatrix(static_cast<double>(x1) + (w >> 1), static_cast<double>(viewport[3]) - (h >> 1) - y1, w, h,
                  viewport);
    glMultMatrixd(projection);
    glMatrixMode(GL_MODELVIEW);
    mCamera->applyModelView();

    constexpr unsigned int kIntMax = static_cast<unsigned int>(std::numeric_limits<GLint>::max());
    // Only the square is drawn; the host's scissor comes back afterwards.
    const glScissorBoxScope pickSquare(static_cast<GLint>(std::min(x1, kIntMax)), static_cast<GLint>(std::min(y1, kIntMax)),
                                       static_cast<GLsizei>(std::min(w, kIntMax)), static_cast<GLsizei>(std::min(h, kIntMax)));
    const glCapabilityScope scissorTest(GL_SCISSOR_TEST, true);

    // Each drawable is named by its position; its own names (grips, parts) follow on the stack.
    std::map<GLuint, ox::refPtr<iDrawable>> nameMap;
    {
        glSelectDrawer drawer(this);
        GLuint name = 0;
        for (const auto& drawable : mDrawables) {
            ++name;
            nameMap.emplace(name, drawable);
            // Names a drawable left pushed would otherwise carry its hits over to the next one.
            while (drawer.nameDepth() > 0) drawer.popName();
            glLoadName(name);
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
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();

    if (hitCount <= 0) return;
    hits.reserve(static_cast<std::size_t>(hitCount));
    std::size_t at = 0;
    for (GLint hit = 0; hit < hitCount && at + 3 < static_cast<std::size_t>(kSelectionBufferSize); ++hit) {
        const GLuint count = buffer.words[at];
        const GLuint minDepth = buffer.words[at + 1];
        const GLuint maxDepth = buffer.words[at + 2];
        const GLuint* names = &buffer.words[at + 3];
        at += 3 + count;
        if (count == 0 || at > static_cast<std::size_t>(kSelectionBufferSize)) continue;
        const auto found = nameMap.find(names[0]);
        if (found == nameMap.end()) continue;
        pickHit_t record;
        record.drawable = found->second;
        record.minDepth = minDepth;
        record.maxDepth = maxDepth;
        record.names.assign(names + 1, names + count);
        hits.push_back(std::move(record));
    }
}

} // namespace oxGraphics::openGL
