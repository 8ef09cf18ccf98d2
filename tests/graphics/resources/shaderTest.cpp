// Shader stages and programs on the headless context: compiling, linking, drawing through
// uniforms, the logged failure texts, and the global switch.
#include "glCallCounter.h"
#include "resourceTestSupport.h"

#include "assertRecorder.h"
#include "glTestFixture.h"
#include "resources/oxglscreenquad.h"
#include "oxglshader.h"
#include "oxlog.h"

using namespace oxGraphics;
using namespace oxGraphics::openGL;

namespace {

const std::string kVertex = R"(#version 330 compatibility
layout(location = 0) in vec2 a_position;
void main() { gl_Position = vec4(a_position, 0.0, 1.0); }
)";
const std::string kGeometry = R"(#version 330 compatibility
layout(triangles) in;
layout(triangle_strip, max_vertices = 3) out;
void main() {
    for (int i = 0; i < 3; ++i) { gl_Position = gl_in[i].gl_Position; EmitVertex(); }
    EndPrimitive();
}
)";
const std::string kFragment = R"(#version 330 compatibility
uniform int u_enabled;
uniform vec4 u_color;
out vec4 o_color;
void main() { o_color = u_enabled != 0 ? u_color : vec4(0.0); }
)";
const std::string kBroken = "#version 330 compatibility\nvoid main() { this is not glsl; }\n";

constexpr const char* kCompileLogger = "`anonymous-namespace'::checkCompileErrors";
constexpr const char* kLinkLogger = "`anonymous-namespace'::checkLinkErrors";

// The info log the driver gives for `source`, compiled without the library.
std::string driverCompileLog(GLenum type, const std::string& source) {
    const GLuint shader = glCreateShader(type);
    const char* text = source.c_str();
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    char log[4096] = {};
    glGetShaderInfoLog(shader, sizeof log, nullptr, log);
    glDeleteShader(shader);
    return log;
}

class glShaderTest : public oxtest::glTest {
protected:
    // The driver repeats every compile error as a debug message; tests that compile broken
    // sources on purpose silence that source (the fixture turns it on again for the next test).
    static void muteShaderCompilerMessages() {
        glDebugMessageControl(GL_DEBUG_SOURCE_SHADER_COMPILER, GL_DONT_CARE, GL_DONT_CARE, 0, nullptr, GL_FALSE);
    }
    std::unique_ptr<glShaderProgram> link(const std::vector<std::shared_ptr<shaderStage>>& stages) {
        std::vector<shaderStage*> pointers;
        for (const auto& stage : stages) pointers.push_back(stage.get());
        return std::make_unique<glShaderProgram>(pointers);
    }
    std::unique_ptr<glShaderProgram> colourProgram(bool withGeometry = false) {
        std::vector<std::shared_ptr<shaderStage>> stages{
            glShaderStageObject::createShaderFromString(ePipelineStage::vertex, kVertex),
            glShaderStageObject::createShaderFromString(ePipelineStage::fragment, kFragment)};
        if (withGeometry) stages.push_back(glShaderStageObject::createShaderFromString(ePipelineStage::geometry, kGeometry));
        return link(stages);
    }
};

TEST_F(glShaderTest, linkedProgramDrawsItsUniformColourAndDeletesItsObjects) {
    glViewport(0, 0, oxtest::kSharedContextSize, oxtest::kSharedContextSize);
    auto quad = std::make_unique<glScreenQuad>();
    const GLuint vertexArray = quad->vertexArray();
    EXPECT_EQ(glIsVertexArray(vertexArray), GL_TRUE);
    for (const bool withGeometry : {false, true}) {
        SCOPED_TRACE(withGeometry ? "with geometry stage" : "vertex and fragment");
        auto vertex = glShaderStageObject::createShaderFromString(ePipelineStage::vertex, kVertex);
        ASSERT_TRUE(vertex);
        const GLuint vertexName = vertex->handle();
        auto program = colourProgram(withGeometry);
        ASSERT_NE(program->handle(), 0u);
        EXPECT_EQ(program->programTag(), withGeometry ? 8 : 255);

        oxtest::clearTo(0, 0, 0, 1);
        program->activate();
        EXPECT_TRUE(program->isActive());
        EXPECT_EQ(oxtest::readGlInteger(GL_CURRENT_PROGRAM), static_cast<GLint>(program->handle()));
        program->setUniformInt("u_enabled", 1);
        program->setUniformFloat4("u_color", 0.2f, 0.4f, 0.6f, 1.0f);
        quad->draw();
        EXPECT_EQ(oxtest::readPixel(128, 128), (oxtest::rgba8{51, 102, 153, 255}));
        program->deactivate();
        EXPECT_FALSE(program->isActive());
        EXPECT_EQ(oxtest::readGlInteger(GL_CURRENT_PROGRAM), 0);

        const GLuint programName = program->handle();
        program.reset();
        vertex.reset();
        EXPECT_EQ(glIsProgram(programName), GL_FALSE);
        EXPECT_EQ(glIsShader(vertexName), GL_FALSE);
    }
    quad.reset();
    EXPECT_EQ(glIsVertexArray(vertexArray), GL_FALSE);
}

TEST_F(glShaderTest, compileErrorsAreLoggedWithStageNameAndLabel) {
    const struct {
        ePipelineStage stage;
        GLenum type;
        const char* name;
    } stages[] = {
        {ePipelineStage::vertex, GL_VERTEX_SHADER, "VertexShader"},
        {ePipelineStage::tessellationControl, GL_TESS_CONTROL_SHADER, "TessellationControlShader"},
        {ePipelineStage::tessellationEvaluation, GL_TESS_EVALUATION_SHADER, "TessellationEvaluationShader"},
        {ePipelineStage::geometry, GL_GEOMETRY_SHADER, "GeometryShader"},
        {ePipelineStage::fragment, GL_FRAGMENT_SHADER, "FragmentShader"},
    };
    muteShaderCompilerMessages();
    for (const auto& entry : stages) {
        SCOPED_TRACE(entry.name);
        oxlog::logCapture capture;
        EXPECT_FALSE(glShaderStageObject::createShaderFromString(entry.stage, kBroken));
        const std::string expected = std::string("SHADER_COMPILATION_ERROR of ") + entry.name + " ()\n" +
                                     driverCompileLog(entry.type, kBroken) + "\n -- \n";
        EXPECT_EQ(capture.messages(kCompileLogger), std::vector<std::wstring>{ox::string::fromMBCtoWC(expected)});
    }

    // From a file the path is the label.
    const oxtest::scratchDirectory directory;
    const std::string path = directory.write("broken.frag.glsl", kBroken);
    oxlog::logCapture capture;
    EXPECT_FALSE(glShaderStageObject::createShaderFromFile(ePipelineStage::fragment, ox::string::fromMBCtoWC(path)));
    const std::string expected = "SHADER_COMPILATION_ERROR of FragmentShader (" + path + ")\n" +
                                 driverCompileLog(GL_FRAGMENT_SHADER, kBroken) + "\n -- \n";
    EXPECT_EQ(capture.messages(kCompileLogger), std::vector<std::wstring>{ox::string::fromMBCtoWC(expected)});
}

TEST_F(glShaderTest, stageOutsideTheTableCreatesNoShader) {
    expectGlError(GL_INVALID_ENUM);   // glCreateShader(0)
    oxlog::logCapture capture;
    EXPECT_FALSE(glShaderStageObject::createShaderFromString(static_cast<ePipelineStage>(5), kVertex));
    EXPECT_EQ(glShaderStageObject::glShaderType(static_cast<ePipelineStage>(5)), 0u);
    EXPECT_STREQ(glShaderStageObject::stageName(static_cast<ePipelineStage>(5)), "invalid shader stage!\n");
    EXPECT_TRUE(capture.messages(kCompileLogger).empty());
}

TEST_F(glShaderTest, emptyOrMissingFileYieldsNoStageAndNoGlCall) {
    const oxtest::scratchDirectory directory;
    const std::string empty = directory.write("empty.vert.glsl", "");
    const oxtest::glCallCounter<&__glewCreateShader> createShader;
    EXPECT_FALSE(glShaderStageObject::createShaderFromFile(ePipelineStage::vertex, ox::string::fromMBCtoWC(empty)));
    EXPECT_FALSE(glShaderStageObject::createShaderFromFile(ePipelineStage::vertex,
                                                           ox::string::fromMBCtoWC(directory.path() + "/missing.glsl")));
    EXPECT_EQ(createShader.calls(), 0);
}

TEST_F(glShaderTest, failedLinkIsLoggedAndActivatesProgramZero) {
    const auto good = colourProgram();
    // A vertex stage without main() compiles but cannot link.
    auto noMain = glShaderStageObject::createShaderFromString(ePipelineStage::vertex,
                                                              "#version 330 compatibility\nvoid helper() {}\n");
    ASSERT_TRUE(noMain);
    oxlog::logCapture capture;
    auto failed = link({noMain});
    EXPECT_EQ(failed->handle(), 0u);
    const auto messages = capture.messages(kLinkLogger);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].rfind(L"SHADER_PROGRAM_LINKING_ERROR:\n", 0), 0u);
    EXPECT_GT(messages[0].size(), std::wstring(L"SHADER_PROGRAM_LINKING_ERROR:\n\n -- \n").size());
    EXPECT_TRUE(messages[0].ends_with(L"\n -- \n"));

    good->activate();
    failed->activate();
    EXPECT_EQ(oxtest::readGlInteger(GL_CURRENT_PROGRAM), 0);
    failed->setUniformInt("u_enabled", 1);   // nothing to set, no GL error
    failed->deactivate();
}

TEST_F(glShaderTest, uniformSettersSkipUnknownNamesAndSetWhileInactive) {
    const auto program = colourProgram();
    program->activate();
    {
        const oxtest::glCallCounter<&__glewUniform1i> uniform1i;
        program->setUniformInt("u_enabled", 1);
        program->setUniformInt("u_notInTheProgram", 1);
        EXPECT_EQ(uniform1i.calls(), 1);
    }
    program->deactivate();

    const auto other = colourProgram();
    other->activate();
    const oxtest::assertRecorder asserts;
    program->setUniformInt("u_enabled", 7);
    EXPECT_EQ(asserts.conditions(), std::vector<std::wstring>{L"mIsActive"});
    GLint value = 0;
    glGetUniformiv(program->handle(), glGetUniformLocation(program->handle(), "u_enabled"), &value);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(oxtest::readGlInteger(GL_CURRENT_PROGRAM), static_cast<GLint>(other->handle()));
    other->deactivate();
}

TEST_F(glShaderTest, globalSwitchOffMakesShadersInertObjects) {
    const auto before = colourProgram();
    before->activate();
    {
        const oxtest::shadersSwitchedOff off;
        const oxtest::glCallCounter<&__glewCreateShader> createShader;
        const oxtest::glCallCounter<&__glewCreateProgram> createProgram;
        const oxtest::glCallCounter<&__glewGetUniformLocation> uniformLocation;
        EXPECT_FALSE(glShaderProgram::areGlShadersEnabledGlobally());

        auto stage = glShaderStageObject::createShaderFromString(ePipelineStage::vertex, kVertex);
        ASSERT_TRUE(stage);   // an empty stage object
        EXPECT_EQ(stage->handle(), 0u);
        glShaderProgram program({stage.get()});
        EXPECT_EQ(program.handle(), 0u);
        program.activate();
        EXPECT_FALSE(program.isActive());
        EXPECT_EQ(oxtest::readGlInteger(GL_CURRENT_PROGRAM), 0);

        const oxtest::assertRecorder asserts;
        program.setUniformInt("u_enabled", 1);
        before->setUniformInt("u_enabled", 1);
        EXPECT_EQ(asserts.count(), 0u);
        EXPECT_EQ(createShader.calls() + createProgram.calls() + uniformLocation.calls(), 0);
    }
    EXPECT_TRUE(glShaderProgram::areGlShadersEnabledGlobally());
    before->deactivate();
}

} // namespace
