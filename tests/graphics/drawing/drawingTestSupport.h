#pragma once
// Shared pieces of the drawing tests: a drawer host around the shared headless context, the
// scene's light set-up, and GL feedback capture to see what a drawer emitted.
#include "scene/glframelights.h"
#include "drawing/gldrawerhost.h"

#include "glTestFixture.h"

#include <GL/glew.h>

#include <functional>
#include <vector>

namespace oxtest {

class drawingHost : public oxGraphics::openGL::iDrawerHost {
public:
    explicit drawingHost(ox::refPtr<oxGraphics::iGlContext> context = sharedGlContext()) : mContext(std::move(context)) {}
    ox::refPtr<oxGraphics::iGlContext> glContext() const override { return mContext; }
    const ox::string& sceneName() const override { return mName; }
    bool getViewRayAt(int x, int y, oxGeo::ray3d& ray, int flags) const override {
        mLastFlags = flags;
        ray = oxGeo::ray3d({double(x), double(y), 0.0}, {0.0, 0.0, -1.0});
        return true;
    }

    ox::string mName = L"drawing test scene";
    mutable int mLastFlags = -1;

private:
    ox::refPtr<oxGraphics::iGlContext> mContext;
};

/// The fixed-function state a scene sets up for a frame: an orthographic view of [-2, 2]² in a
/// size×size viewport, one white light at its default position, two-sided lighting.
inline void setUpLitView(int size) {
    glViewport(0, 0, size, size);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-2, 2, -2, 2, -10, 10);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    oxGraphics::openGL::applyFrameLights();
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glLineWidth(1.0f);
    glPointSize(1.0f);
}

/// The feedback tokens of what `draw` rendered: per vertex window x, y, z (GL_3D), followed by
/// RGBA for GL_3D_COLOR.
inline std::vector<GLfloat> feedback(const std::function<void()>& draw, GLenum type = GL_3D) {
    static std::vector<GLfloat> buffer(1 << 22);
    glFeedbackBuffer(GLsizei(buffer.size()), type, buffer.data());
    glRenderMode(GL_FEEDBACK);
    draw();
    const GLint count = glRenderMode(GL_RENDER);
    return {buffer.begin(), buffer.begin() + std::max(count, 0)};
}

/// How many primitives of `token` (GL_POLYGON_TOKEN, GL_LINE_TOKEN, GL_POINT_TOKEN ...) a
/// GL_3D feedback buffer holds.
inline int countPrimitives(const std::vector<GLfloat>& tokens, GLfloat token) {
    int count = 0;
    for (std::size_t i = 0; i < tokens.size();) {
        const GLfloat t = tokens[i++];
        if (t == token) ++count;
        if (t == GL_POLYGON_TOKEN) i += 1 + std::size_t(tokens[i]) * 3;
        else if (t == GL_LINE_TOKEN || t == GL_LINE_RESET_TOKEN) i += 6;
        else if (t == GL_POINT_TOKEN || t == GL_BITMAP_TOKEN || t == GL_DRAW_PIXEL_TOKEN || t == GL_COPY_PIXEL_TOKEN) i += 3;
        else if (t == GL_PASS_THROUGH_TOKEN) i += 1;
    }
    return count;
}

} // namespace oxtest
