#include "glTestFixture.h"

#include "oxglerrorchecking.h"
#include "oxlog.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <deque>
#include <sstream>
#include <string>

namespace {

// Mesa keeps a single error flag, so a real driver never queues several errors. While this queue
// is not empty, glGetError answers from it after the driver's own error.
std::deque<GLenum> gScriptedErrors;

} // namespace

extern "C" __attribute__((visibility("default"))) GLenum GLAPIENTRY glGetError(void) {
    using getErrorFn = GLenum(GLAPIENTRY*)(void);
    static const auto driverGetError = reinterpret_cast<getErrorFn>(dlsym(RTLD_NEXT, "glGetError"));
    const GLenum driverError = driverGetError();
    if (driverError != GL_NO_ERROR || gScriptedErrors.empty()) return driverError;
    const GLenum scripted = gScriptedErrors.front();
    gScriptedErrors.pop_front();
    return scripted;
}

namespace {

using oxGraphics::openGL::debugMessageCallback;

constexpr const char* kDebugLogger = "`anonymous-namespace'::glDebugMessagePrint";

class capturedCerr {
public:
    capturedCerr() : mPrevious(std::cerr.rdbuf(mText.rdbuf())) {}
    ~capturedCerr() { std::cerr.rdbuf(mPrevious); }
    std::string text() const { return mText.str(); }

private:
    std::ostringstream mText;
    std::streambuf* mPrevious;
};

class glErrorCheckingTest : public oxtest::glTest {};

TEST_F(glErrorCheckingTest, printsEveryQueuedErrorInOrderAndNothingForAnEmptyQueue) {
    expectGlError(GL_INVALID_ENUM);
    glEnable(0xFFFF);   // the driver's own error comes first
    gScriptedErrors = {GL_INVALID_VALUE, GL_INVALID_OPERATION, GL_INVALID_FRAMEBUFFER_OPERATION, GL_OUT_OF_MEMORY,
                       GL_STACK_UNDERFLOW, GL_STACK_OVERFLOW, 0x0507 /* GL_CONTEXT_LOST: not in the table */};
    std::string printed;
    GLenum last = 1;
    unsigned line = 0;
    {
        capturedCerr cerr;
        line = __LINE__; last = OX_CHECK_GL_ERRORS("drawFrame");
        printed = cerr.text();
    }
    EXPECT_EQ(last, 0u);
    EXPECT_TRUE(gScriptedErrors.empty());
    const std::string prefix = "OpenGL error @drawFrame (tests/graphics/glErrorCheckingTest.cpp, L" + std::to_string(line) + "): ";
    std::string expected;
    for (const char* name : {"OX_GL_INVALID_ENUM", "OX_GL_INVALID_VALUE", "OX_GL_INVALID_OPERATION",
                             "OX_GL_INVALID_FRAMEBUFFER_OPERATION", "OX_GL_OUT_OF_MEMORY", "OX_GL_STACK_UNDERFLOW",
                             "OX_GL_STACK_OVERFLOW", "OX_GL_UNKNOWN_ERROR"})
        expected += prefix + name + "\n";
    EXPECT_EQ(printed, expected);

    capturedCerr cerr;
    EXPECT_EQ(oxGraphics::openGL::checkGlErrors("file.cpp", 7, "empty"), 0u);
    EXPECT_EQ(cerr.text(), "");
    EXPECT_EQ(oxGraphics::openGL::glErrorName(GL_NO_ERROR), "OX_GL_NO_ERROR");
}

TEST_F(glErrorCheckingTest, installedCallbackLogsTheDriversErrors) {
    expectGlError(GL_INVALID_ENUM);
    oxlog::logCapture capture;
    glDebugMessageCallback(debugMessageCallback(), nullptr);
    glEnable(0xFFFF);
    const auto lines = capture.messages(kDebugLogger);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind(L"GL_DEBUG_MESSAGE  *** ERROR *** : \"", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find(L"GL_INVALID_ENUM"), std::wstring::npos) << lines[0];
    EXPECT_NE(lines[0].find(L"\"\nSource: GL_DEBUG_SOURCE_API Type: GL_DEBUG_TYPE_ERROR Severity: GL_DEBUG_SEVERITY_HIGH\n"),
              std::wstring::npos)
        << lines[0];
}

} // namespace
