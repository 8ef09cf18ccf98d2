// The texts the library's GL debug callback logs, called directly: no GL context involved. The
// callback installed on a real context is checked in glErrorCheckingTest.cpp.
#include "oxglerrorchecking.h"
#include "oxlog.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <iterator>
#include <string>

namespace {

using oxGraphics::openGL::debugMessageCallback;

constexpr const char* kDebugLogger = "`anonymous-namespace'::glDebugMessagePrint";

TEST(glDebugMessagePrint, logsTheLibraryTextsAtDebugLevel) {
    const struct {
        GLenum source, type, severity;
        const char* message;
        const wchar_t* expected;
    } cases[] = {
        {GL_DEBUG_SOURCE_API, GL_DEBUG_TYPE_ERROR, GL_DEBUG_SEVERITY_HIGH, "GL_INVALID_ENUM in glEnable(0xffff)",
         L"GL_DEBUG_MESSAGE  *** ERROR *** : \"GL_INVALID_ENUM in glEnable(0xffff)\"\n"
         L"Source: GL_DEBUG_SOURCE_API Type: GL_DEBUG_TYPE_ERROR Severity: GL_DEBUG_SEVERITY_HIGH\n"},
        {GL_DEBUG_SOURCE_SHADER_COMPILER, GL_DEBUG_TYPE_PERFORMANCE, GL_DEBUG_SEVERITY_MEDIUM, "shader recompiled",
         L"GL_DEBUG_MESSAGE  *** WARNING *** : \n\"shader recompiled\"\n"
         L"Source: GL_DEBUG_SOURCE_SHADER_COMPILER Type: GL_DEBUG_TYPE_PERFORMANCE Severity: GL_DEBUG_SEVERITY_MEDIUM\n"},
        {GL_DEBUG_SOURCE_OTHER, GL_DEBUG_TYPE_POP_GROUP, GL_DEBUG_SEVERITY_NOTIFICATION, "",
         L"GL_DEBUG_MESSAGE  *** WARNING *** : \n\"\"\n"
         L"Source: GL_DEBUG_SOURCE_OTHER Type: GL_DEBUG_TYPE_POP_GROUP Severity: GL_DEBUG_SEVERITY_NOTIFICATION\n"},
        {0x1234, 0x5678, 0x9ABC, "\xC3\x9C" "berlauf", L"GL_DEBUG_MESSAGE  *** WARNING *** : \n\"\u00DCberlauf\"\n  \n"},
    };
    oxlog::logCapture capture;
    for (const auto& c : cases)
        debugMessageCallback()(c.source, c.type, 1, c.severity, GLsizei(std::char_traits<char>::length(c.message)),
                               c.message, nullptr);
    const auto lines = capture.lines();
    ASSERT_EQ(lines.size(), std::size(cases));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].loggerName, kDebugLogger);
        EXPECT_EQ(lines[i].level, oxlog::eLevel::debug);
        EXPECT_EQ(lines[i].message, cases[i].expected) << "case " << i;
    }
}

} // namespace
