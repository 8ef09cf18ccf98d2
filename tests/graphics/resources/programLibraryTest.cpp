// The program library: the screen-quad program from installed files and from the built-in
// copies, file overrides and fallbacks, unknown names and the global switch.
#include "resourceTestSupport.h"

#include "glTestFixture.h"
#include "resources/oxglprogramlibrary.h"
#include "resources/oxglscreenquad.h"
#include "oxlog.h"

#include <fstream>
#include <optional>
#include <sstream>

using namespace oxGraphics;
using namespace oxGraphics::openGL;

namespace {

constexpr const char* kScreenQuad = "texturedScreenQuadShaderProgram";
constexpr const char* kLogger = "oxGraphics::openGL::glProgramLibrary::program";
constexpr int kSize = oxtest::kSharedContextSize;

// Texels of a 2×2 texture, bottom row first: one colour per quadrant of the viewport.
constexpr oxtest::rgba8 kTexels[4] = {{255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}, {255, 255, 255, 128}};

class glProgramLibraryTest : public oxtest::glTest {
protected:
    void SetUp() override {
        oxtest::glTest::SetUp();
        glGenTextures(1, &mTexture);
        glBindTexture(GL_TEXTURE_2D, mTexture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, kTexels);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glBindTexture(GL_TEXTURE_2D, 0);
        mQuad.emplace();   // needs the context the fixture has just made current
    }
    void TearDown() override {
        mQuad.reset();
        glDeleteTextures(1, &mTexture);
        oxtest::glTest::TearDown();
    }

    // The program drawn over the whole viewport with the test texture.
    oxtest::rgbaImage draw(shaderProgram& program) {
        glViewport(0, 0, kSize, kSize);
        oxtest::clearTo(0, 0, 0, 0);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, mTexture);
        program.activate();
        program.setUniformInt("u_texture", 0);
        program.setUniformFloat4("u_scaleVec2OffsetVec2", 1.0f, 1.0f, 0.0f, 0.0f);
        mQuad->draw();
        program.deactivate();
        glBindTexture(GL_TEXTURE_2D, 0);
        return oxtest::readRegion(0, 0, kSize, kSize);
    }

    static std::string readFile(const std::string& path) {
        std::ostringstream content;
        content << std::ifstream(path, std::ios::binary).rdbuf();
        return content.str();
    }

    GLuint mTexture = 0;
    std::optional<glScreenQuad> mQuad;
};

TEST_F(glProgramLibraryTest, installedFilesAndBuiltinCopiesDrawTheSamePixels) {
    // The build tree mirrors the installation: the files sit in <lib>/../config/shaders.
    const ox::directory installed = glProgramLibrary::defaultShaderDirectory();
    const std::string installedVertex = ox::getMBCS(installed.path()) + "/texturedScreenQuad.vert.glsl";
    std::string builtin;
    ASSERT_TRUE(glProgramLibrary::builtinSource("texturedScreenQuad.vert.glsl", builtin));
    EXPECT_EQ(builtin, readFile(installedVertex));
    EXPECT_EQ(builtin, readFile(OX_TEST_DATA_DIR "/../../libs/graphics/shaders/GLSL/texturedScreenQuad.vert.glsl"));

    oxlog::logCapture capture;
    glProgramLibrary fromFiles(installed);
    const oxtest::scratchDirectory empty;
    glProgramLibrary fromBuiltins{ox::directory(ox::string::fromMBCtoWC(empty.path()))};
    const auto filesProgram = fromFiles.program(kScreenQuad);
    const auto builtinProgram = fromBuiltins.program(kScreenQuad);
    ASSERT_TRUE(filesProgram && builtinProgram);
    EXPECT_EQ(filesProgram->name(), L"texturedScreenQuadShaderProgram");
    EXPECT_EQ(fromFiles.program(kScreenQuad), filesProgram);   // built once

    const oxtest::rgbaImage fromFile = draw(*filesProgram);
    EXPECT_EQ(fromFile.pixels, draw(*builtinProgram).pixels);
    // Top row of the image first: the quadrants show the texels.
    const std::pair<int, int> quadrants[4] = {{64, 192}, {192, 192}, {64, 64}, {192, 64}};
    for (int i = 0; i < 4; ++i) {
        const std::uint8_t* pixel = fromFile.at(quadrants[i].first, quadrants[i].second);
        EXPECT_EQ((oxtest::rgba8{pixel[0], pixel[1], pixel[2], pixel[3]}), kTexels[i]) << "quadrant " << i;
    }
    EXPECT_TRUE(capture.lines().empty());
}

TEST_F(glProgramLibraryTest, installedFileOverridesAndBrokenFileFallsBackToBuiltinCopy) {
    glDebugMessageControl(GL_DEBUG_SOURCE_SHADER_COMPILER, GL_DONT_CARE, GL_DONT_CARE, 0, nullptr, GL_FALSE);
    const oxtest::scratchDirectory patched;
    patched.write("texturedScreenQuad.frag.glsl",
                  "#version 330 compatibility\nout vec4 o_color;\nvoid main() { o_color = vec4(1.0, 0.0, 1.0, 1.0); }\n");
    glProgramLibrary patchedLibrary{ox::directory(ox::string::fromMBCtoWC(patched.path()))};
    const auto patchedProgram = patchedLibrary.program(kScreenQuad);
    ASSERT_TRUE(patchedProgram);
    const oxtest::rgbaImage magenta = draw(*patchedProgram);
    EXPECT_EQ((oxtest::rgba8{magenta.at(5, 5)[0], magenta.at(5, 5)[1], magenta.at(5, 5)[2], magenta.at(5, 5)[3]}),
              (oxtest::rgba8{255, 0, 255, 255}));

    const oxtest::scratchDirectory broken;
    const std::string brokenPath = broken.write("texturedScreenQuad.frag.glsl", "#version 330 compatibility\nnot glsl\n");
    oxlog::logCapture capture;
    glProgramLibrary brokenLibrary{ox::directory(ox::string::fromMBCtoWC(broken.path()))};
    const auto fallback = brokenLibrary.program(kScreenQuad);
    ASSERT_TRUE(fallback);
    EXPECT_EQ(capture.messages(kLogger),
              std::vector<std::wstring>{L"shader file " + ox::string::fromMBCtoWC(brokenPath) +
                                        L" is empty, unreadable or does not compile; using the built-in copy"});
    glProgramLibrary builtinLibrary{ox::directory()};
    EXPECT_EQ(draw(*fallback).pixels, draw(*builtinLibrary.program(kScreenQuad)).pixels);
}

TEST_F(glProgramLibraryTest, everyProgramBuildsFromItsInstalledFilesAndFromTheBuiltinCopies) {
    glProgramLibrary builtinLibrary{ox::directory()};
    for (const std::string& name : glProgramLibrary::programNames()) {
        EXPECT_TRUE(getShaderProgram(name)) << name;
        EXPECT_TRUE(builtinLibrary.program(name)) << name;
    }
}

TEST_F(glProgramLibraryTest, unknownNamesAndSwitchedOffShadersGiveNoProgram) {
    {
        oxlog::logCapture capture;
        EXPECT_FALSE(getShaderProgram("noSuchShaderProgram"));
        EXPECT_EQ(capture.messages(kLogger), std::vector<std::wstring>{L"unknown shader program \"noSuchShaderProgram\""});
    }
    const auto shared = getShaderProgram(kScreenQuad);
    ASSERT_TRUE(shared);
    EXPECT_EQ(getShaderProgram(kScreenQuad), shared);
    {
        const oxtest::shadersSwitchedOff off;
        EXPECT_FALSE(getShaderProgram(kScreenQuad));
        glProgramLibrary fresh{ox::directory()};
        EXPECT_FALSE(fresh.program(kScreenQuad));
    }
    EXPECT_EQ(getShaderProgram(kScreenQuad), shared);
}

} // namespace
