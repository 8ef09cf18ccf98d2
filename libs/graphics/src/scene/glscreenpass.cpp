#include "glscreenpass.h"

#include "glstate/glscopedstate.h"

#include <GL/glew.h>

namespace oxGraphics::openGL {
namespace {

void rectangleLoop(const glScreenPass::rectangle_t& r, int width, int height, bool setPolygonMode) {
    const glScreenMatrices screen(width, height);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glColor3f(1.0f, 1.0f, 1.0f);
    if (setPolygonMode) glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    glLineWidth(2.0f);
    const double h = height;
    glBegin(GL_LINE_LOOP);
    glVertex2d(r[0], h - r[1]);
    glVertex2d(r[2], h - r[1]);
    glVertex2d(r[2], h - r[3]);
    glVertex2d(r[0], h - r[3]);
    glEnd();
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_LIGHTING);
    glLineWidth(1.0f);
}

} // namespace

void glScreenPass::showFrame(unsigned int rectangleTexture, int width, int height) {
    glViewport(0, 0, width, height);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    const glScreenMatrices screen;
    glPushAttrib(GL_CURRENT_BIT | GL_POLYGON_BIT);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL); // a rubber band leaves GL_LINE behind
    glDisable(GL_LIGHTING);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    glEnable(GL_TEXTURE_RECTANGLE);
    glBindTexture(GL_TEXTURE_RECTANGLE, rectangleTexture);

    // A new list every time, compiled into whichever of the two names does not hold the previous
    // list. Fresh names every frame would keep all earlier lists alive, or, deleted, still grow
    // the driver's name tables with every frame of a session.
    if (!mQuadLists) mQuadLists = glDisplayListRange::generate(2);
    const unsigned int first = mQuadLists.get().base;
    mLastList = mLastList == first ? first + 1 : first;
    const float w = static_cast<float>(width), h = static_cast<float>(height);
    glNewList(mLastList, GL_COMPILE_AND_EXECUTE);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 0); glVertex3f(-1, -1, -1);
    glTexCoord2f(w, 0); glVertex3f(1, -1, -1);
    glTexCoord2f(w, h); glVertex3f(1, 1, -1);
    glTexCoord2f(0, h); glVertex3f(-1, 1, -1);
    glEnd();
    glEndList();

    glBindTexture(GL_TEXTURE_RECTANGLE, 0);
    glDisable(GL_TEXTURE_RECTANGLE);
    glPopAttrib();
}

void glScreenPass::drawRectangles(const std::vector<rectangle_t>& rectangles, int width, int height) {
    // Plain white into the frame: it is drawn anew every time, so there is nothing to erase.
    for (const rectangle_t& r : rectangles) rectangleLoop(r, width, height, false);
}

void glScreenPass::drawRectangleXor(const rectangle_t& rectangle, int width, int height) {
    glDrawBuffer(GL_FRONT);
    glEnable(GL_COLOR_LOGIC_OP);
    glLogicOp(GL_XOR);
    rectangleLoop(rectangle, width, height, true);
    glFlush();
    glDisable(GL_COLOR_LOGIC_OP);
    glDrawBuffer(GL_BACK);
}

void glScreenPass::release() {
    mQuadLists.reset();
    mLastList = 0;
}

void glScreenPass::abandon() {
    mQuadLists.abandon();
    mLastList = 0;
}

} // namespace oxGraphics::openGL
