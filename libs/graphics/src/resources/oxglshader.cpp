#include "oxglshader.h"

#include "oxassert.h"
#include "oxfilesystem.h"
#include "oxlog.h"

#include <GL/glew.h>

#include <atomic>

namespace oxGraphics {

shaderStage::~shaderStage() = default;
shaderProgram::~shaderProgram() = default;

void enableGlShadersGlobally(bool enable) { openGL::glShaderProgram::enableGlShadersGlobally(enable); }

namespace openGL {

namespace {

// A plain flag in effect; atomic only so that a host flipping it from another thread is no race.
std::atomic<bool> gShadersEnabled{true};

bool shadersEnabled() { return gShadersEnabled.load(std::memory_order_relaxed); }

// The logger names keep the form under which these diagnostics have always been filtered.
constexpr const char* kCompileLogger = "`anonymous-namespace'::checkCompileErrors";
constexpr const char* kLinkLogger = "`anonymous-namespace'::checkLinkErrors";
constexpr const char* kCreateLogger = "oxGraphics::openGL::glShaderStageObject::compile";

bool checkCompileErrors(GLuint shader, ePipelineStage stage, const std::string& label) {
    GLint compiled = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled == GL_TRUE) return true;

    GLint length = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
    if (length < 1) {
        OX_LOG_DEBUG(kCompileLogger, L"failed to get shader-stage compile error info");
        return false;
    }
    std::string infoLog(static_cast<std::size_t>(length), '\0');
    GLsizei written = 0;
    glGetShaderInfoLog(shader, length, &written, infoLog.data());
    infoLog.resize(static_cast<std::size_t>(written));
    OX_LOG_DEBUG(kCompileLogger, L"SHADER_COMPILATION_ERROR of %s (%s)\n%s\n -- \n",
                 glShaderStageObject::stageName(stage), label.c_str(), infoLog.c_str());
    return false;
}

bool checkLinkErrors(GLuint program) {
    GLint linked = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked == GL_TRUE) return true;

    GLint length = 0;
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
    if (length < 1) {
        OX_LOG_DEBUG(kLinkLogger, L"failed to get shader-program link error info");
        return false;
    }
    std::string infoLog(static_cast<std::size_t>(length), '\0');
    GLsizei written = 0;
    glGetProgramInfoLog(program, length, &written, infoLog.data());
    infoLog.resize(static_cast<std::size_t>(written));
    OX_LOG_DEBUG(kLinkLogger, L"SHADER_PROGRAM_LINKING_ERROR:\n%s\n -- \n", infoLog.c_str());
    return false;
}

} // namespace

// --- glShaderStageObject ---------------------------------------------------------------------

std::uint32_t glShaderStageObject::glShaderType(ePipelineStage stage) {
    switch (stage) {
    case ePipelineStage::vertex: return GL_VERTEX_SHADER;
    case ePipelineStage::tessellationControl: return GL_TESS_CONTROL_SHADER;
    case ePipelineStage::tessellationEvaluation: return GL_TESS_EVALUATION_SHADER;
    case ePipelineStage::geometry: return GL_GEOMETRY_SHADER;
    case ePipelineStage::fragment: return GL_FRAGMENT_SHADER;
    }
    return 0;
}

const char* glShaderStageObject::stageName(ePipelineStage stage) {
    switch (stage) {
    case ePipelineStage::vertex: return "VertexShader";
    case ePipelineStage::tessellationControl: return "TessellationControlShader";
    case ePipelineStage::tessellationEvaluation: return "TessellationEvaluationShader";
    case ePipelineStage::geometry: return "GeometryShader";
    case ePipelineStage::fragment: return "FragmentShader";
    }
    return "invalid shader stage!\n";
}

glShaderStageObject::~glShaderStageObject() { deleteShader(); }

void glShaderStageObject::deleteShader() {
    if (shadersEnabled() && mName != 0 && glIsShader(mName) == GL_TRUE) glDeleteShader(mName);
    mName = 0;
}

bool glShaderStageObject::compileFromFile(const ePipelineStage& stage, const ox::string& path) {
    std::string source;
    if (!ox::file(path).readAll(source) || source.empty()) {
        deleteShader();
        mStage = stage;
        return false;
    }
    return compile(stage, source, ox::getMBCS(path));
}

bool glShaderStageObject::compileFromString(const ePipelineStage& stage, const std::string& source) {
    return compile(stage, source, std::string());
}

bool glShaderStageObject::compile(ePipelineStage stage, const std::string& source, const std::string& label) {
    deleteShader();
    mStage = stage;
    if (!shadersEnabled()) return true;   // an empty stage: nothing to compile, nothing failed

    const GLenum type = glShaderType(stage);
    mName = glCreateShader(type);
    if (mName == 0) {
        // Type 0 (a stage outside the table) or a driver without that stage: the driver has
        // recorded the error; there is no object to compile into.
        OX_LOG_DEBUG(kCreateLogger, L"glCreateShader failed for %s (%s)", stageName(stage), label.c_str());
        return false;
    }
    const GLchar* text = source.c_str();
    glShaderSource(mName, 1, &text, nullptr);
    glCompileShader(mName);
    if (checkCompileErrors(mName, stage, label)) return true;
    glDeleteShader(mName);
    mName = 0;
    return false;
}

std::shared_ptr<shaderStage> glShaderStageObject::createShaderFromFile(const ePipelineStage& stage, const ox::string& path) {
    auto result = std::make_shared<glShaderStageObject>();
    if (!result->compileFromFile(stage, path)) return {};
    return result;
}

std::shared_ptr<shaderStage> glShaderStageObject::createShaderFromString(const ePipelineStage& stage, const std::string& source) {
    auto result = std::make_shared<glShaderStageObject>();
    if (!result->compileFromString(stage, source)) return {};
    return result;
}

// --- glShaderProgram -------------------------------------------------------------------------

void glShaderProgram::enableGlShadersGlobally(bool enable) { gShadersEnabled.store(enable, std::memory_order_relaxed); }

bool glShaderProgram::areGlShadersEnabledGlobally() { return shadersEnabled(); }

glShaderProgram::glShaderProgram(const std::vector<shaderStage*>& stages) { build(stages); }

glShaderProgram::~glShaderProgram() { release(); }

bool glShaderProgram::build(const std::vector<shaderStage*>& stages) {
    release();
    if (!shadersEnabled()) return false;

    mName = glCreateProgram();
    if (mName == 0) return false;
    for (shaderStage* stage : stages) {
        auto* glStage = dynamic_cast<glShaderStageObject*>(stage);
        if (glStage == nullptr) continue;
        glAttachShader(mName, glStage->handle());
        if (glStage->stage() == ePipelineStage::geometry) setProgramTag(kGeometryStageTag);
    }
    glLinkProgram(mName);
    if (checkLinkErrors(mName)) return true;
    glDeleteProgram(mName);
    mName = 0;
    return false;
}

void glShaderProgram::release() {
    if (shadersEnabled() && mName != 0 && glIsProgram(mName) == GL_TRUE) glDeleteProgram(mName);
    mName = 0;
    mIsActive = false;
}

void glShaderProgram::activate() {
    if (!shadersEnabled()) {
        glUseProgram(0);
        return;
    }
    glUseProgram(mName);
    mIsActive = true;
}

void glShaderProgram::deactivate() {
    glUseProgram(0);
    mIsActive = false;
}

template <class Setter> void glShaderProgram::setUniform(const char* name, Setter&& setter) {
    if (!shadersEnabled()) return;
    OX_ASSERT(mIsActive);
    // Program 0 has no uniforms; asking it would only raise GL_INVALID_VALUE.
    if (mName == 0 || name == nullptr) return;
    const GLint location = glGetUniformLocation(mName, name);
    if (location < 0) return;
    if (mIsActive) {
        setter(location);
        return;
    }
    // glUniform* writes to the program in use: use ours for this one call, then put back the
    // caller's (unless that one was deleted in the meantime).
    GLint previous = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &previous);
    glUseProgram(mName);
    setter(location);
    const GLuint restore = static_cast<GLuint>(previous);
    glUseProgram(restore != 0 && glIsProgram(restore) == GL_TRUE ? restore : 0);
}

void glShaderProgram::setUniformInt(const char* name, int value) {
    setUniform(name, [&](GLint location) { glUniform1i(location, value); });
}
void glShaderProgram::setUniformFloat(const char* name, float value) {
    setUniform(name, [&](GLint location) { glUniform1f(location, value); });
}
void glShaderProgram::setUniformInt2(const char* name, int x, int y) {
    setUniform(name, [&](GLint location) { glUniform2i(location, x, y); });
}
void glShaderProgram::setUniformFloat2(const char* name, float x, float y) {
    setUniform(name, [&](GLint location) { glUniform2f(location, x, y); });
}
void glShaderProgram::setUniformFloat3(const char* name, float x, float y, float z) {
    setUniform(name, [&](GLint location) { glUniform3f(location, x, y, z); });
}
void glShaderProgram::setUniformVec3(const char* name, const float* values) {
    setUniform(name, [&](GLint location) { glUniform3fv(location, 1, values); });
}
void glShaderProgram::setUniformFloat4(const char* name, float x, float y, float z, float w) {
    setUniform(name, [&](GLint location) { glUniform4f(location, x, y, z, w); });
}
void glShaderProgram::setUniformVec4(const char* name, const float* values) {
    setUniform(name, [&](GLint location) { glUniform4fv(location, 1, values); });
}
void glShaderProgram::setUniformVec4Array(const char* name, int count, const float* values) {
    setUniform(name, [&](GLint location) { glUniform4fv(location, count, values); });
}
void glShaderProgram::setUniformMat4(const char* name, const float* values) {
    setUniform(name, [&](GLint location) { glUniformMatrix4fv(location, 1, GL_FALSE, values); });
}

} // namespace openGL
} // namespace oxGraphics
