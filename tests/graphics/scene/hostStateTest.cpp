// A host's GL state around a frame, a pick and a read-back in its own (adopted) context: only
// the leftovers the scene documents may differ afterwards.
#include "sceneTestSupport.h"

#include "oxglcontext.h"
#include "scene/oxglscene.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace oxGraphics;

using stateValues = std::vector<double>;

struct stateProbe_t {
    std::string name;
    std::function<void()> set;          // puts in a value a host might have, unlike the defaults
    std::function<stateValues()> read;
};

stateValues readDoubles(GLenum name, int count) {
    std::vector<GLdouble> values(16, 0.0);
    glGetDoublev(name, values.data());
    return stateValues(values.begin(), values.begin() + count);
}

stateProbe_t capability(const char* name, GLenum cap, bool enabled) {
    return {name, [=] { enabled ? glEnable(cap) : glDisable(cap); },
            [=] { return stateValues{static_cast<double>(glIsEnabled(cap))}; }};
}

stateProbe_t value(const char* name, GLenum query, int count, std::function<void()> set) {
    return {name, std::move(set), [=] { return readDoubles(query, count); }};
}

// The host's own objects the state points at.
struct hostObjects_t {
    GLuint textures[2] = {0, 0};
    GLuint framebuffer = 0, renderbuffer = 0, buffers[3] = {0, 0, 0}, vertexArray = 0, program = 0;
    hostObjects_t() {
        glGenTextures(2, textures);
        for (GLuint t : textures) {
            glBindTexture(GL_TEXTURE_2D, t);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        }
        glBindTexture(GL_TEXTURE_2D, 0);
        glGenRenderbuffers(1, &renderbuffer);
        glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, 8, 8);
        glBindRenderbuffer(GL_RENDERBUFFER, 0);
        glGenFramebuffers(1, &framebuffer);
        glGenBuffers(3, buffers);
        glGenVertexArrays(1, &vertexArray);
        const char* source = "#version 330\nout vec4 color;\nvoid main() { color = vec4(1.0); }\n";
        program = glCreateShaderProgramv(GL_FRAGMENT_SHADER, 1, &source);
    }
    ~hostObjects_t() {
        glDeleteTextures(2, textures);
        glDeleteRenderbuffers(1, &renderbuffer);
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteBuffers(3, buffers);
        glDeleteVertexArrays(1, &vertexArray);
        glDeleteProgram(program);
    }
};

std::vector<stateProbe_t> hostState(const hostObjects_t& host) {
    return {
        capability("GL_BLEND", GL_BLEND, true),
        capability("GL_CULL_FACE", GL_CULL_FACE, true),
        capability("GL_DEPTH_TEST", GL_DEPTH_TEST, false),
        capability("GL_SCISSOR_TEST", GL_SCISSOR_TEST, false),
        capability("GL_STENCIL_TEST", GL_STENCIL_TEST, true),
        capability("GL_POLYGON_OFFSET_FILL", GL_POLYGON_OFFSET_FILL, true),
        capability("GL_LINE_SMOOTH", GL_LINE_SMOOTH, true),
        capability("GL_TEXTURE_2D", GL_TEXTURE_2D, true),
        capability("GL_LIGHTING", GL_LIGHTING, false),
        capability("GL_LIGHT0", GL_LIGHT0, false),
        capability("GL_NORMALIZE", GL_NORMALIZE, false),
        capability("GL_COLOR_LOGIC_OP", GL_COLOR_LOGIC_OP, false),
        capability("GL_DITHER", GL_DITHER, false),
        capability("GL_COLOR_MATERIAL", GL_COLOR_MATERIAL, true),
        value("GL_BLEND_SRC_RGB", GL_BLEND_SRC_RGB, 1, [] { glBlendFuncSeparate(GL_DST_COLOR, GL_ZERO, GL_ONE, GL_ONE); }),
        value("GL_BLEND_DST_RGB", GL_BLEND_DST_RGB, 1, [] {}),
        value("GL_BLEND_SRC_ALPHA", GL_BLEND_SRC_ALPHA, 1, [] {}),
        value("GL_BLEND_DST_ALPHA", GL_BLEND_DST_ALPHA, 1, [] {}),
        value("GL_BLEND_EQUATION_RGB", GL_BLEND_EQUATION_RGB, 1, [] { glBlendEquation(GL_MAX); }),
        value("GL_DEPTH_FUNC", GL_DEPTH_FUNC, 1, [] { glDepthFunc(GL_GREATER); }),
        value("GL_DEPTH_WRITEMASK", GL_DEPTH_WRITEMASK, 1, [] { glDepthMask(GL_FALSE); }),
        value("GL_COLOR_WRITEMASK", GL_COLOR_WRITEMASK, 4, [] { glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_TRUE); }),
        value("GL_STENCIL_WRITEMASK", GL_STENCIL_WRITEMASK, 1, [] { glStencilMask(0x0F); }),
        value("GL_STENCIL_FUNC", GL_STENCIL_FUNC, 1, [] { glStencilFunc(GL_NOTEQUAL, 3, 0xFF); }),
        value("GL_VIEWPORT", GL_VIEWPORT, 4, [] { glViewport(3, 4, 50, 40); }),
        value("GL_SCISSOR_BOX", GL_SCISSOR_BOX, 4, [] { glScissor(1, 2, 30, 20); }),
        value("GL_COLOR_CLEAR_VALUE", GL_COLOR_CLEAR_VALUE, 4, [] { glClearColor(0.25f, 0.5f, 0.75f, 1.0f); }),
        value("GL_CURRENT_COLOR", GL_CURRENT_COLOR, 4, [] { glColor4f(0.1f, 0.2f, 0.3f, 0.4f); }),
        value("GL_SHADE_MODEL", GL_SHADE_MODEL, 1, [] { glShadeModel(GL_FLAT); }),
        value("GL_POLYGON_MODE", GL_POLYGON_MODE, 2, [] { glPolygonMode(GL_FRONT_AND_BACK, GL_POINT); }),
        value("GL_LINE_WIDTH", GL_LINE_WIDTH, 1, [] { glLineWidth(3.0f); }),
        value("GL_POINT_SIZE", GL_POINT_SIZE, 1, [] { glPointSize(4.0f); }),
        value("GL_CULL_FACE_MODE", GL_CULL_FACE_MODE, 1, [] { glCullFace(GL_FRONT); }),
        value("GL_FRONT_FACE", GL_FRONT_FACE, 1, [] { glFrontFace(GL_CW); }),
        value("GL_MATRIX_MODE", GL_MATRIX_MODE, 1, [] { glMatrixMode(GL_TEXTURE); }),
        value("GL_MODELVIEW_MATRIX", GL_MODELVIEW_MATRIX, 16, [] {
            glMatrixMode(GL_MODELVIEW);
            glLoadIdentity();
            glTranslated(1, 2, 3);
            glMatrixMode(GL_TEXTURE);
        }),
        value("GL_PROJECTION_MATRIX", GL_PROJECTION_MATRIX, 16, [] {
            glMatrixMode(GL_PROJECTION);
            glLoadIdentity();
            glScaled(2, 2, 2);
            glMatrixMode(GL_TEXTURE);
        }),
        value("GL_ACTIVE_TEXTURE", GL_ACTIVE_TEXTURE, 1, [] { glActiveTexture(GL_TEXTURE3); }),
        value("GL_TEXTURE_BINDING_2D unit 0", GL_TEXTURE_BINDING_2D, 1, [&host] {
            glActiveTexture(GL_TEXTURE0);
            glBindTexture(GL_TEXTURE_2D, host.textures[0]);
            glActiveTexture(GL_TEXTURE1);
            glBindTexture(GL_TEXTURE_2D, host.textures[1]);
            glActiveTexture(GL_TEXTURE3);
        }),
        {"GL_TEXTURE_BINDING_2D unit 1", [] {}, [] {
             GLint active = 0;
             glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
             glActiveTexture(GL_TEXTURE1);
             const stateValues v = readDoubles(GL_TEXTURE_BINDING_2D, 1);
             glActiveTexture(static_cast<GLenum>(active));
             return v;
         }},
        value("GL_CURRENT_PROGRAM", GL_CURRENT_PROGRAM, 1, [&host] { glUseProgram(host.program); }),
        value("GL_VERTEX_ARRAY_BINDING", GL_VERTEX_ARRAY_BINDING, 1, [&host] { glBindVertexArray(host.vertexArray); }),
        value("GL_ARRAY_BUFFER_BINDING", GL_ARRAY_BUFFER_BINDING, 1, [&host] { glBindBuffer(GL_ARRAY_BUFFER, host.buffers[0]); }),
        value("GL_PIXEL_PACK_BUFFER_BINDING", GL_PIXEL_PACK_BUFFER_BINDING, 1,
              [&host] { glBindBuffer(GL_PIXEL_PACK_BUFFER, host.buffers[1]); }),
        value("GL_PIXEL_UNPACK_BUFFER_BINDING", GL_PIXEL_UNPACK_BUFFER_BINDING, 1,
              [&host] { glBindBuffer(GL_PIXEL_UNPACK_BUFFER, host.buffers[2]); }),
        value("GL_PACK_ALIGNMENT", GL_PACK_ALIGNMENT, 1, [] { glPixelStorei(GL_PACK_ALIGNMENT, 8); }),
        value("GL_UNPACK_ROW_LENGTH", GL_UNPACK_ROW_LENGTH, 1, [] { glPixelStorei(GL_UNPACK_ROW_LENGTH, 7); }),
        value("GL_RENDERBUFFER_BINDING", GL_RENDERBUFFER_BINDING, 1, [&host] { glBindRenderbuffer(GL_RENDERBUFFER, host.renderbuffer); }),
        value("GL_READ_FRAMEBUFFER_BINDING", GL_READ_FRAMEBUFFER_BINDING, 1,
              [&host] { glBindFramebuffer(GL_READ_FRAMEBUFFER, host.framebuffer); }),
    };
}

class hostStateTest : public oxtest::glTest {};

TEST_F(hostStateTest, aFrameAPickAndAReadBackLeaveOnlyTheDocumentedLeftovers) {
    for (const int samples : {0, 4}) {
        auto adopted = openGL::adoptCurrentContext();
        ASSERT_TRUE(adopted);
        auto view = scene::create(adopted, false, false);
        view->setMultisamples(samples);
        view->initGfxApiState();
        view->resize(64, 48, 10.0, 0, 0, 0, 0);
        view->refreshFBOWithMultiSampling();
        view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({0, 0, 0}, 6, {0, 0, 255})));
        view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({1, 1, 1}, 4, {255, 0, 0}, 0.5f)));
        // Every effect pass runs too.
        ox::refPtr<iDrawable> effected(new oxtest::testSquare({-1, -1, 2}, 3, {0, 255, 0}));
        view->add(effected);
        drawableEffects_t effects;
        effects.outline = effects.blur = effects.multilayer = effects.overrideColors = true;
        view->setDrawableEffects(effected, effects);
        sceneEffects_t frameEffects;
        frameEffects.blurFrame = true;
        view->setSceneEffects(frameEffects);
        view->setMaskDrawables({ox::refPtr<iDrawable>(new oxtest::testSquare({2, 2, 3}, 1, {0, 0, 0}))});

        const hostObjects_t host;
        const auto probes = hostState(host);
        for (const auto& probe : probes) probe.set();
        std::map<std::string, stateValues> before;
        for (const auto& probe : probes) before[probe.name] = probe.read();

        oxtest::paint(*view);
        (void)view->pickSelectInRect(20, 20, 40, 30);
        std::unique_ptr<char[]> pixels(view->writeToBuffer());
        ASSERT_TRUE(pixels);

        std::set<std::string> changed;
        for (const auto& probe : probes)
            if (probe.read() != before[probe.name]) changed.insert(probe.name);
        const std::set<std::string> documented(std::begin(openGL::glScene::kHostStateLeftovers),
                                               std::end(openGL::glScene::kHostStateLeftovers));
        std::set<std::string> undocumented;
        std::set_difference(changed.begin(), changed.end(), documented.begin(), documented.end(),
                            std::inserter(undocumented, undocumented.end()));
        EXPECT_TRUE(undocumented.empty()) << samples << " samples: " << ::testing::PrintToString(undocumented);
        // The frame really ran over the host's state: the leftovers it documents did change.
        EXPECT_TRUE(changed.contains("GL_VIEWPORT") && changed.contains("GL_CURRENT_PROGRAM"));
        EXPECT_GE(probes.size(), 40u);

        // The host's own state back, for the tests that follow.
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glUseProgram(0);
        glBindVertexArray(0);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
        glBindRenderbuffer(GL_RENDERBUFFER, 0);
        glActiveTexture(GL_TEXTURE0);
        glMatrixMode(GL_MODELVIEW);
        glDisable(GL_BLEND);
        glDisable(GL_STENCIL_TEST);
        glDisable(GL_CULL_FACE);
        glDisable(GL_POLYGON_OFFSET_FILL);
        glDisable(GL_COLOR_MATERIAL);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_LINE_SMOOTH);
        glEnable(GL_DITHER);
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        glDepthMask(GL_TRUE);
        glStencilMask(0xFFFFFFFF);
        glBlendEquation(GL_FUNC_ADD);
        glBlendFunc(GL_ONE, GL_ZERO);
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        glCullFace(GL_BACK);
        glFrontFace(GL_CCW);
    }
}

} // namespace
