#pragma once
// The fixture of every GL test: one headless OpenGL 4.5 compatibility context per test executable,
// made current before each test, a synchronous debug-output callback that fails the test on any
// GL error it was not told to expect, and a check that no glGetError is left at the end.
// Helpers read pixels and GL state and compare regions with reference images (referenceImage.h).
//
//     class myGlTest : public oxtest::glTest {};
//     TEST_F(myGlTest, clearsToRed) {
//         oxtest::clearTo(1, 0, 0, 1);
//         EXPECT_EQ(oxtest::readPixel(0, 0), (oxtest::rgba8{255, 0, 0, 255}));
//     }
#include "oxglcontext.h"
#include "oxglentrypoints.h"
#include "oxglerrorchecking.h"
#include "referenceImage.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace oxtest {

inline constexpr const char* kGlInstallHint =
    "no headless OpenGL 4.5 context: install Mesa's EGL and software driver "
    "(apt-get install libegl-mesa0 libegl1 libgl1-mesa-dri) - see the log line above for what failed";

inline constexpr int kSharedContextSize = 256;

/// The context all GL tests of this executable share, created on first use. It is deliberately
/// never destroyed: tearing it down during static destruction would race with the EGL driver's own
/// exit handlers.
inline ox::refPtr<oxGraphics::iGlContext> sharedGlContext() {
    static auto* context = new ox::refPtr<oxGraphics::iGlContext>(oxGraphics::openGL::createHeadlessContext(
        {kSharedContextSize, kSharedContextSize, /*debugContext*/ true}));
    return *context;
}

/// One message the driver sent through GL_KHR_debug during a test.
struct glDebugRecord {
    GLenum source;
    GLenum type;
    GLuint id;
    GLenum severity;
    std::string message;
};

class glTest : public ::testing::Test {
protected:
    void SetUp() override {
        const auto context = sharedGlContext();
        ASSERT_TRUE(context) << kGlInstallHint;
        ASSERT_TRUE(context->makeCurrent()) << "the shared GL context cannot be made current";
        ASSERT_TRUE(oxGraphics::openGL::loadGlEntryPoints()) << "GLEW could not load the GL entry points";
        ASSERT_TRUE(GLEW_KHR_debug) << "the driver offers no GL_KHR_debug; GL errors could not be caught";
        while (glGetError() != GL_NO_ERROR) {}   // left by an earlier test, which has already failed for it
        glDebugMessageControl(GL_DONT_CARE, GL_DONT_CARE, GL_DONT_CARE, 0, nullptr, GL_TRUE);
        glDebugMessageCallback(&glTest::recordDebugMessage, this);
        glEnable(GL_DEBUG_OUTPUT);
        glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS);
        mActive = true;
    }

    void TearDown() override {
        if (!mActive) return;
        mActive = false;
        if (!sharedGlContext()->makeCurrent()) {
            ADD_FAILURE() << "the shared GL context cannot be made current again";
            return;
        }
        std::vector<GLenum> leftErrors;
        for (GLenum code = glGetError(); code != GL_NO_ERROR && leftErrors.size() < 64; code = glGetError())
            leftErrors.push_back(code);
        glDebugMessageCallback(nullptr, nullptr);
        glDisable(GL_DEBUG_OUTPUT);

        for (GLenum code : leftErrors)
            if (!allowError([code](GLenum expected) { return expected == code; }))
                ADD_FAILURE() << "GL error left in the queue: " << oxGraphics::openGL::glErrorName(code);
        for (const auto& record : mDebugMessages) {
            if (record.type != GL_DEBUG_TYPE_ERROR) continue;
            if (!allowError([&](GLenum expected) { return record.message.find(glName(expected)) != std::string::npos; }))
                ADD_FAILURE() << "unexpected GL error reported by the driver: " << record.message;
        }
        for (const auto& expectation : mExpectedErrors)
            if (!expectation.seen)
                ADD_FAILURE() << "expected GL error " << glName(expectation.code) << " did not occur";
    }

    /// This test provokes `code` on purpose: it is neither a failure when the driver reports it nor
    /// when it is left in the queue. Not seeing it at all fails the test.
    void expectGlError(GLenum code) { mExpectedErrors.push_back({code, false}); }

    /// Every debug message of the test so far, in order.
    const std::vector<glDebugRecord>& debugMessages() const { return mDebugMessages; }

private:
    struct expectedError {
        GLenum code;
        bool seen;
    };

    // "GL_INVALID_ENUM": the drivers name the error this way in their message texts.
    static std::string glName(GLenum code) { return oxGraphics::openGL::glErrorName(code).substr(3); }

    template <class Matches> bool allowError(Matches matches) {
        for (auto& expectation : mExpectedErrors)
            if (matches(expectation.code)) return expectation.seen = true;
        return false;
    }

    static void GLAPIENTRY recordDebugMessage(GLenum source, GLenum type, GLuint id, GLenum severity, GLsizei length,
                                              const GLchar* message, const void* self) {
        auto* test = static_cast<glTest*>(const_cast<void*>(self));
        test->mDebugMessages.push_back({source, type, id, severity, message != nullptr ? message : ""});
    }

    bool mActive = false;
    std::vector<expectedError> mExpectedErrors;
    std::vector<glDebugRecord> mDebugMessages;
};

// --- reading GL state -------------------------------------------------------------------------

inline GLint readGlInteger(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}
inline std::vector<GLint> readGlIntegers(GLenum name, int count) {
    std::vector<GLint> values(static_cast<std::size_t>(count), 0);
    glGetIntegerv(name, values.data());
    return values;
}
inline GLfloat readGlFloat(GLenum name) {
    GLfloat value = 0;
    glGetFloatv(name, &value);
    return value;
}
inline std::vector<GLfloat> readGlFloats(GLenum name, int count) {
    std::vector<GLfloat> values(static_cast<std::size_t>(count), 0.0f);
    glGetFloatv(name, values.data());
    return values;
}
inline bool readGlBoolean(GLenum name) {
    GLboolean value = GL_FALSE;
    glGetBooleanv(name, &value);
    return value == GL_TRUE;
}

// --- pixels -------------------------------------------------------------------------------------

using rgba8 = std::array<std::uint8_t, 4>;

/// Reads a region of the current read buffer as RGBA8, top row first. The pack state it needs
/// (alignment 1, no pack buffer) is restored afterwards.
inline rgbaImage readRegion(int x, int y, int width, int height) {
    rgbaImage image(width, height);
    const GLint alignment = readGlInteger(GL_PACK_ALIGNMENT);
    const GLint packBuffer = readGlInteger(GL_PIXEL_PACK_BUFFER_BINDING);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    std::vector<std::uint8_t> bottomUp(image.pixels.size());
    glReadPixels(x, y, width, height, GL_RGBA, GL_UNSIGNED_BYTE, bottomUp.data());
    glPixelStorei(GL_PACK_ALIGNMENT, alignment);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, static_cast<GLuint>(packBuffer));
    const std::size_t row = static_cast<std::size_t>(width) * 4;
    for (int r = 0; r < height; ++r)
        std::copy_n(bottomUp.begin() + static_cast<std::ptrdiff_t>(row * (height - 1 - r)), row,
                    image.pixels.begin() + static_cast<std::ptrdiff_t>(row * r));
    return image;
}

/// The RGBA8 value of one pixel of the current read buffer (GL window coordinates, y up).
inline rgba8 readPixel(int x, int y) {
    const rgbaImage image = readRegion(x, y, 1, 1);
    return {image.pixels[0], image.pixels[1], image.pixels[2], image.pixels[3]};
}

/// Clears colour, depth and stencil of the current draw buffer; the colour is left as clear colour.
inline void clearTo(float red, float green, float blue, float alpha) {
    glClearColor(red, green, blue, alpha);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

/// Writes a region of the current read buffer to a PNG file, for looking at while debugging.
inline bool saveRegionPng(const std::filesystem::path& path, int x, int y, int width, int height) {
    return writePng(path, readRegion(x, y, width, height));
}

/// The current context's GL_RENDERER, which reference images are tied to (referenceImage.h).
inline std::string currentRenderer() {
    const GLubyte* renderer = glGetString(GL_RENDERER);
    return renderer != nullptr ? reinterpret_cast<const char*>(renderer) : "";
}

/// Compares `actual`, rendered by the current context's renderer, with the reference image
/// tests/data/<name>.png (see referenceImage.h for tolerances, failure images, renderers and
/// OX_UPDATE_REFERENCE_IMAGES).
inline ::testing::AssertionResult matchesReferenceImage(const rgbaImage& actual, const std::string& name,
                                                        int maxTolerance, double meanTolerance) {
    return matchesReferenceImage(actual, name, maxTolerance, meanTolerance, currentRenderer());
}

/// Compares a region of the current read buffer with the reference image tests/data/<name>.png.
inline ::testing::AssertionResult regionMatchesReference(const std::string& name, int x, int y, int width, int height,
                                                         int maxTolerance, double meanTolerance) {
    return matchesReferenceImage(readRegion(x, y, width, height), name, maxTolerance, meanTolerance);
}

} // namespace oxtest
