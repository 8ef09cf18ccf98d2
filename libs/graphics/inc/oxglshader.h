#pragma once
// OpenGL shader stages and programs (GLSL through the GL 2.0 entry points GLEW loads).
//
// A process-wide switch turns all shader work off: stages and programs are then created as empty
// objects that never touch OpenGL, activating a program selects program 0 and every uniform
// setter does nothing, so the renderer draws fixed-function.
//
// Compile and link failures are logged at debug level with the driver's info log, under the
// loggers "`anonymous-namespace'::checkCompileErrors" and "`anonymous-namespace'::checkLinkErrors";
// nothing is thrown.
#include "oxgraphics_export.h"
#include "oxshader.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace oxGraphics {

/// Same as openGL::glShaderProgram::enableGlShadersGlobally.
OX_GRAPHICS_API void enableGlShadersGlobally(bool enable);

namespace openGL {

/// A GLSL shader object. Stage table (value, GL type, name used in logs):
/// 0 GL_VERTEX_SHADER "VertexShader", 1 GL_TESS_CONTROL_SHADER "TessellationControlShader",
/// 2 GL_TESS_EVALUATION_SHADER "TessellationEvaluationShader", 3 GL_GEOMETRY_SHADER
/// "GeometryShader", 4 GL_FRAGMENT_SHADER "FragmentShader"; any other value has type 0 and the
/// name "invalid shader stage!\n" and never compiles.
class OX_GRAPHICS_API glShaderStageObject : public shaderStage {
public:
    glShaderStageObject() = default;
    /// Deletes the shader object (only with shaders enabled, a non-zero name and glIsShader true).
    ~glShaderStageObject() override;                                                   // 0
    std::uint32_t handle() const override { return mName; }                            // 1
    ePipelineStage stage() const override { return mStage; }                           // 2
    bool compileFromFile(const ePipelineStage& stage, const ox::string& path) override;       // 3
    bool compileFromString(const ePipelineStage& stage, const std::string& source) override;  // 4

    /// Reads and compiles the file; the path labels the compile-error log line. Empty when the
    /// file is empty or unreadable (no GL call is made then) or does not compile. With shaders
    /// off globally the result is an empty stage object (name 0) that never touches OpenGL.
    static std::shared_ptr<shaderStage> createShaderFromFile(const ePipelineStage& stage, const ox::string& path);
    /// Compiles `source`; the compile-error log line has an empty label. Empty when it does not
    /// compile; an empty stage object with shaders off globally.
    static std::shared_ptr<shaderStage> createShaderFromString(const ePipelineStage& stage, const std::string& source);

    /// The stage's GL shader type, 0 outside the table.
    static std::uint32_t glShaderType(ePipelineStage stage);
    /// The stage's name as logged, "invalid shader stage!\n" outside the table.
    static const char* stageName(ePipelineStage stage);

private:
    bool compile(ePipelineStage stage, const std::string& source, const std::string& label);
    void deleteShader();

    std::uint32_t mName = 0;
    ePipelineStage mStage = ePipelineStage::vertex;
};

/// A linked GLSL program. Uniform setters look the location up on every call (no caching) and
/// skip names the program does not use. Setting a uniform while the program is not active
/// raises the assertion "mIsActive" and then still sets it: the program is made current for the
/// call and the previous program is restored.
class OX_GRAPHICS_API glShaderProgram : public shaderProgram {
public:
    glShaderProgram() = default;
    /// Links the stages at once (see build).
    explicit glShaderProgram(const std::vector<shaderStage*>& stages);
    ~glShaderProgram() override;                                                       // 0
    /// With shaders enabled: creates a program, attaches every glShaderStageObject of the list in
    /// order (other implementations are skipped; a geometry stage sets the program tag to 8) and
    /// links. The stages stay attached and stay owned by their shared pointers.
    bool build(const std::vector<shaderStage*>& stages) override;                      // 1
    /// With shaders enabled, a non-zero name and glIsProgram true: glDeleteProgram. The name is
    /// 0 afterwards and the program inactive.
    void release() override;                                                           // 2
    bool isActive() const override { return mIsActive; }                               // 3
    /// glUseProgram(name) and active; with shaders off glUseProgram(0) and the state unchanged.
    void activate() override;                                                          // 4
    /// glUseProgram(0); inactive.
    void deactivate() override;                                                        // 5

    void setUniformInt(const char* name, int value) override;                          // 6
    void setUniformFloat(const char* name, float value) override;                      // 7
    void setUniformInt2(const char* name, int x, int y) override;                      // 8
    void setUniformFloat2(const char* name, float x, float y) override;                // 9
    void setUniformFloat3(const char* name, float x, float y, float z) override;       // 10
    void setUniformVec3(const char* name, const float* values) override;               // 11
    void setUniformFloat4(const char* name, float x, float y, float z, float w) override; // 12
    void setUniformVec4(const char* name, const float* values) override;               // 13
    void setUniformVec4Array(const char* name, int count, const float* values) override; // 14
    void setUniformMat4(const char* name, const float* values) override;               // 15

    std::uint32_t handle() const override { return mName; }                            // 16
    const ox::string& name() const override { return mProgramName; }                   // 17
    void setName(const ox::string& name) override { mProgramName = name; }             // 18
    std::uint64_t userValue() const override { return mUserValue; }                    // 19
    void setUserValue(std::uint64_t value) override { mUserValue = value; }            // 20
    std::uint8_t programTag() const override { return mProgramTag; }                   // 21
    void setProgramTag(std::uint8_t tag) override { mProgramTag = tag; }               // 22

    /// The process-wide switch (initially on). Off: no shader object is created or used.
    static void enableGlShadersGlobally(bool enable);
    static bool areGlShadersEnabledGlobally();

private:
    template <class Setter> void setUniform(const char* name, Setter&& setter);

    std::uint32_t mName = 0;
    std::uint8_t mProgramTag = kUntagged;
    bool mIsActive = false;
    ox::string mProgramName;
    std::uint64_t mUserValue = 0;
};

} // namespace openGL
} // namespace oxGraphics
