#include "oxglerrorchecking.h"

#include "oxlog.h"
#include "oxstring.h"

#include <cstdint>
#include <iostream>
#include <unordered_map>

namespace oxGraphics::openGL {

namespace {

struct glErrorNameEntry {
    GLenum code;
    const char* name;
};

constexpr glErrorNameEntry kGlErrorNames[] = {
    {GL_NO_ERROR, "OX_GL_NO_ERROR"},
    {GL_INVALID_ENUM, "OX_GL_INVALID_ENUM"},
    {GL_INVALID_VALUE, "OX_GL_INVALID_VALUE"},
    {GL_INVALID_OPERATION, "OX_GL_INVALID_OPERATION"},
    {GL_INVALID_FRAMEBUFFER_OPERATION, "OX_GL_INVALID_FRAMEBUFFER_OPERATION"},
    {GL_OUT_OF_MEMORY, "OX_GL_OUT_OF_MEMORY"},
    {GL_STACK_UNDERFLOW, "OX_GL_STACK_UNDERFLOW"},
    {GL_STACK_OVERFLOW, "OX_GL_STACK_OVERFLOW"},
};

constexpr const char* kUnknownGlErrorName = "OX_GL_UNKNOWN_ERROR";

const std::unordered_map<std::uint32_t, std::string>& glErrorNameMap() {
    // Built once under the thread-safe static initialisation, only read afterwards.
    static const std::unordered_map<std::uint32_t, std::string> map = [] {
        std::unordered_map<std::uint32_t, std::string> m;
        for (const auto& entry : kGlErrorNames) m.emplace(entry.code, entry.name);
        return m;
    }();
    return map;
}

const wchar_t* debugSourceText(GLenum source) {
    switch (source) {
    case GL_DEBUG_SOURCE_API: return L"Source: GL_DEBUG_SOURCE_API";
    case GL_DEBUG_SOURCE_WINDOW_SYSTEM: return L"Source: GL_DEBUG_SOURCE_WINDOW_SYSTEM";
    case GL_DEBUG_SOURCE_SHADER_COMPILER: return L"Source: GL_DEBUG_SOURCE_SHADER_COMPILER";
    case GL_DEBUG_SOURCE_THIRD_PARTY: return L"Source: GL_DEBUG_SOURCE_THIRD_PARTY";
    case GL_DEBUG_SOURCE_APPLICATION: return L"Source: GL_DEBUG_SOURCE_APPLICATION";
    case GL_DEBUG_SOURCE_OTHER: return L"Source: GL_DEBUG_SOURCE_OTHER";
    default: return L"";
    }
}

const wchar_t* debugTypeText(GLenum type) {
    switch (type) {
    case GL_DEBUG_TYPE_ERROR: return L"Type: GL_DEBUG_TYPE_ERROR";
    case GL_DEBUG_TYPE_DEPRECATED_BEHAVIOR: return L"Type: GL_DEBUG_TYPE_DEPRECATED_BEHAVIOR";
    case GL_DEBUG_TYPE_UNDEFINED_BEHAVIOR: return L"Type: GL_DEBUG_TYPE_UNDEFINED_BEHAVIOR";
    case GL_DEBUG_TYPE_PORTABILITY: return L"Type: GL_DEBUG_TYPE_PORTABILITY";
    case GL_DEBUG_TYPE_PERFORMANCE: return L"Type: GL_DEBUG_TYPE_PERFORMANCE";
    case GL_DEBUG_TYPE_OTHER: return L"Type: GL_DEBUG_TYPE_OTHER";
    case GL_DEBUG_TYPE_MARKER: return L"Type: GL_DEBUG_TYPE_MARKER";
    case GL_DEBUG_TYPE_PUSH_GROUP: return L"Type: GL_DEBUG_TYPE_PUSH_GROUP";
    case GL_DEBUG_TYPE_POP_GROUP: return L"Type: GL_DEBUG_TYPE_POP_GROUP";
    default: return L"";
    }
}

const wchar_t* debugSeverityText(GLenum severity) {
    switch (severity) {
    case GL_DEBUG_SEVERITY_HIGH: return L"Severity: GL_DEBUG_SEVERITY_HIGH";
    case GL_DEBUG_SEVERITY_MEDIUM: return L"Severity: GL_DEBUG_SEVERITY_MEDIUM";
    case GL_DEBUG_SEVERITY_LOW: return L"Severity: GL_DEBUG_SEVERITY_LOW";
    case GL_DEBUG_SEVERITY_NOTIFICATION: return L"Severity: GL_DEBUG_SEVERITY_NOTIFICATION";
    default: return L"";
    }
}

void GLAPIENTRY glDebugMessagePrint(GLenum source, GLenum type, GLuint id, GLenum severity, GLsizei length,
                                    const GLchar* message, const void* userParam) {
    std::wstring text = L"GL_DEBUG_MESSAGE ";
    // An error keeps the quoted message on the first line; a warning puts it on a line of its own.
    text += type == GL_DEBUG_TYPE_ERROR ? L" *** ERROR *** : \"" : L" *** WARNING *** : \n\"";
    text += ox::string::fromMBCtoWC(message != nullptr ? message : "");
    text += L"\"\n";
    text += debugSourceText(source);
    text += L' ';
    text += debugTypeText(type);
    text += L' ';
    text += debugSeverityText(severity);
    text += L'\n';
    OX_LOG_DEBUG("`anonymous-namespace'::glDebugMessagePrint", L"%ls", text.c_str());
}

} // namespace

std::string glErrorName(GLenum code) {
    const auto& map = glErrorNameMap();
    const auto it = map.find(code);
    return it != map.end() ? it->second : kUnknownGlErrorName;
}

GLenum checkGlErrors(const char* file, unsigned line, const char* location) {
    GLenum code = glGetError();
    while (code != GL_NO_ERROR) {
        std::cerr << "OpenGL error @" << (location ? location : "") << " (" << (file ? file : "") << ", L" << line
                  << "): " << glErrorName(code) << std::endl;
        code = glGetError();
    }
    return code;
}

GLDEBUGPROC debugMessageCallback() { return &glDebugMessagePrint; }

} // namespace oxGraphics::openGL
