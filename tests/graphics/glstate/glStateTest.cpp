// Scoped GL state and GL name owners on the headless context: every scope puts back what the code
// inside it changed, and owners delete exactly the names they own.
#include "glTestFixture.h"
#include "glstate/globjectname.h"
#include "glstate/glscopedstate.h"

#include <map>
#include <vector>

using namespace oxGraphics::openGL;

namespace {

class glStateTest : public oxtest::glTest {};

// Everything the scopes save, by query; the 2D texture binding is read on unit 2, where it is scoped.
std::map<GLenum, std::vector<GLfloat>> snapshot() {
    const GLenum queries[] = {GL_DRAW_FRAMEBUFFER_BINDING, GL_READ_FRAMEBUFFER_BINDING, GL_ACTIVE_TEXTURE,
                              GL_CURRENT_PROGRAM, GL_RENDERBUFFER_BINDING, GL_VERTEX_ARRAY_BINDING,
                              GL_ARRAY_BUFFER_BINDING, GL_DEPTH_TEST, GL_PACK_ALIGNMENT, GL_PACK_SKIP_ROWS,
                              GL_PIXEL_PACK_BUFFER_BINDING, GL_DEPTH_WRITEMASK, GL_BLEND, GL_BLEND_EQUATION_RGB,
                              GL_BLEND_EQUATION_ALPHA, GL_BLEND_SRC_RGB, GL_BLEND_DST_RGB, GL_BLEND_SRC_ALPHA,
                              GL_BLEND_DST_ALPHA, GL_MATRIX_MODE};
    std::map<GLenum, std::vector<GLfloat>> state;
    for (const GLenum name : queries) state[name] = oxtest::readGlFloats(name, 1);
    state[GL_VIEWPORT] = oxtest::readGlFloats(GL_VIEWPORT, 4);
    state[GL_COLOR_WRITEMASK] = oxtest::readGlFloats(GL_COLOR_WRITEMASK, 4);
    state[GL_PROJECTION_MATRIX] = oxtest::readGlFloats(GL_PROJECTION_MATRIX, 16);
    state[GL_MODELVIEW_MATRIX] = oxtest::readGlFloats(GL_MODELVIEW_MATRIX, 16);
    const GLint unit = oxtest::readGlInteger(GL_ACTIVE_TEXTURE);
    glActiveTexture(GL_TEXTURE2);
    state[GL_TEXTURE2] = oxtest::readGlFloats(GL_TEXTURE_BINDING_2D, 1);
    glActiveTexture(static_cast<GLenum>(unit));
    return state;
}

// Every scope, each changing its state on opening where it can; they close in reverse order.
struct everyScope {
    glFramebufferBindingScope framebuffers{GL_FRAMEBUFFER, 0};
    glTextureBindingScope texture{GL_TEXTURE2, GL_TEXTURE_2D, 0};
    glProgramScope program{0};
    glRenderbufferBindingScope renderbuffer{0};
    glVertexArrayBindingScope vertexArray{0};
    glBufferBindingScope arrayBuffer{GL_ARRAY_BUFFER, 0};
    glCapabilityScope depthTest{GL_DEPTH_TEST, false};
    glPixelStore pack{glPixelStore::eDirection::pack};
    glViewportScope viewport{0, 0, 1, 1};
    glDepthMaskScope depthMask{true};
    glColorMaskScope colorMask{true, true, true, true};
    glBlendScope blend;
    glScreenMatrices matrices{10, 20};
};

GLuint linkedProgram() {
    const char* source = "void main() { gl_Position = vec4(0.0); }";
    const GLuint shader = glCreateShader(GL_VERTEX_SHADER), program = glCreateProgram();
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    glAttachShader(program, shader);
    glLinkProgram(program);
    glDeleteShader(shader);
    return program;
}

TEST_F(glStateTest, everyScopeRestoresWhatItSaved) {
    const auto drawFramebuffer = glFramebufferName::generate(), readFramebuffer = glFramebufferName::generate();
    const auto texture = glTextureName::generate();
    const auto renderbuffer = glRenderbufferName::generate();
    const auto vertexArray = glVertexArrayName::generate();
    const auto arrayBuffer = glBufferName::generate(), packBuffer = glBufferName::generate();
    const GLuint program = linkedProgram();
    {
        const everyScope defaults;   // the shared context goes back to its state for the next tests
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, drawFramebuffer.get());
        glBindFramebuffer(GL_READ_FRAMEBUFFER, readFramebuffer.get());
        glBindTexture(GL_TEXTURE_2D, texture.get());   // on unit 2, which the scope made active
        glActiveTexture(GL_TEXTURE5);
        glUseProgram(program);
        glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer.get());
        glBindVertexArray(vertexArray.get());
        glBindBuffer(GL_ARRAY_BUFFER, arrayBuffer.get());
        glBindBuffer(GL_PIXEL_PACK_BUFFER, packBuffer.get());
        glEnable(GL_DEPTH_TEST);
        glPixelStorei(GL_PACK_ALIGNMENT, 8);
        glPixelStorei(GL_PACK_SKIP_ROWS, 3);
        glViewport(1, 2, 30, 40);
        glDepthMask(GL_FALSE);
        glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
        glEnable(GL_BLEND);
        glBlendEquationSeparate(GL_FUNC_SUBTRACT, GL_MAX);
        glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_DST_COLOR);
        glTranslatef(1, 2, 3);   // the model-view matrix
        glMatrixMode(GL_PROJECTION);
        glScalef(2, 3, 4);
        const auto before = snapshot();
        {
            const everyScope scopes;
            glDisable(GL_BLEND);
            glBlendEquation(GL_FUNC_ADD);
            glBlendFunc(GL_ONE, GL_ZERO);
            EXPECT_NE(snapshot(), before);
        }
        EXPECT_EQ(snapshot(), before);
    }
    glDeleteProgram(program);
}

// A texture name becomes a texture object when it is first bound.
GLuint bound(GLuint texture) {
    const glTextureBindingScope binding(GL_TEXTURE0, GL_TEXTURE_2D, texture);
    return texture;
}

TEST_F(glStateTest, ownersDeleteExactlyTheNamesTheyOwn) {
    GLuint name = 0;
    {
        const auto owner = glTextureName::generate();
        name = bound(owner.get());
        EXPECT_TRUE(glIsTexture(name));
    }
    EXPECT_FALSE(glIsTexture(name)) << "an owner deletes its name";

    glTextureName target;
    {
        auto source = glTextureName::generate();
        name = bound(source.get());
        target = std::move(source);
    }
    EXPECT_TRUE(glIsTexture(name)) << "a moved-from owner deletes nothing";
    target.reset();
    EXPECT_FALSE(glIsTexture(name)) << "reset deletes";

    {
        auto owner = glTextureName::generate();
        name = bound(owner.get());
        owner.abandon();
    }
    EXPECT_TRUE(glIsTexture(name)) << "an abandoned name is not deleted";
    {
        glAdoptedName<glTextureNames> adopted(name);
        glAdoptedName<glTextureNames> moved = std::move(adopted);
        moved.reset();
    }
    EXPECT_TRUE(glIsTexture(name)) << "an adopted name is never deleted";
    glDeleteTextures(1, &name);

    glListRange_t range;
    {
        const auto lists = glDisplayListRange::generate(3);
        range = lists.get();
        ASSERT_EQ(range.count, 3);
        glNewList(range.base + 2, GL_COMPILE);
        glEndList();
        EXPECT_TRUE(glIsList(range.base + 2));
    }
    EXPECT_FALSE(glIsList(range.base + 2)) << "a range deletes all of its lists";
}

} // namespace
