#pragma once
// Shader stages and linked shader programs, independent of the graphics API. The OpenGL
// implementations are glShaderStageObject and glShaderProgram (oxglshader.h).
//
// Both interfaces list their operations in a fixed slot order; implementations override all of
// them and add nothing virtual, so the order of the vtable is the order written here.
#include "oxgraphics_export.h"
#include "oxstring.h"

#include <cstdint>
#include <string>
#include <vector>

namespace oxGraphics {

/// The programmable stages of the pipeline. Other values are accepted by the compile operations
/// and fail there (the OpenGL implementation names them "invalid shader stage!\n").
enum class ePipelineStage : std::uint32_t {
    vertex = 0,
    tessellationControl = 1,
    tessellationEvaluation = 2,
    geometry = 3,
    fragment = 4,
};

/// One compiled stage. Stages are shared through std::shared_ptr: a program links them but does
/// not own them.
class OX_GRAPHICS_API shaderStage {
public:
    virtual ~shaderStage();                                                            // 0
    /// The API object of the stage (the GL shader name); 0 when there is none.
    virtual std::uint32_t handle() const = 0;                                          // 1
    virtual ePipelineStage stage() const = 0;                                          // 2
    /// Reads the whole file and compiles it as `stage`, replacing what was compiled before.
    /// False, with nothing compiled, for an empty or unreadable file or a compile error.
    virtual bool compileFromFile(const ePipelineStage& stage, const ox::string& path) = 0;   // 3
    /// Compiles `source` as `stage`, replacing what was compiled before. False on a compile error.
    virtual bool compileFromString(const ePipelineStage& stage, const std::string& source) = 0; // 4

protected:
    shaderStage() = default;
    shaderStage(const shaderStage&) = delete;
    shaderStage& operator=(const shaderStage&) = delete;
};

/// A linked program. Uniforms may be set only while the program is active; uniform names are
/// narrow strings and a name the linked program does not use is ignored.
class OX_GRAPHICS_API shaderProgram {
public:
    virtual ~shaderProgram();                                                          // 0
    /// Links the stages into a new program, replacing the previous one. False on a link error
    /// (the program then has no API object and activating it selects fixed-function drawing).
    virtual bool build(const std::vector<shaderStage*>& stages) = 0;                   // 1
    /// Deletes the API object now; the object remains usable as an empty program.
    virtual void release() = 0;                                                        // 2
    virtual bool isActive() const = 0;                                                 // 3
    virtual void activate() = 0;                                                       // 4
    virtual void deactivate() = 0;                                                     // 5

    virtual void setUniformInt(const char* name, int value) = 0;                       // 6
    virtual void setUniformFloat(const char* name, float value) = 0;                   // 7
    virtual void setUniformInt2(const char* name, int x, int y) = 0;                   // 8
    virtual void setUniformFloat2(const char* name, float x, float y) = 0;             // 9
    virtual void setUniformFloat3(const char* name, float x, float y, float z) = 0;    // 10
    /// `values` points at 3 floats.
    virtual void setUniformVec3(const char* name, const float* values) = 0;            // 11
    virtual void setUniformFloat4(const char* name, float x, float y, float z, float w) = 0; // 12
    /// `values` points at 4 floats.
    virtual void setUniformVec4(const char* name, const float* values) = 0;            // 13
    /// `values` points at count × 4 floats, for a vec4 array uniform.
    virtual void setUniformVec4Array(const char* name, int count, const float* values) = 0; // 14
    /// `values` points at 16 floats, column-major, not transposed.
    virtual void setUniformMat4(const char* name, const float* values) = 0;            // 15

    /// The API object of the program (the GL program name); 0 when there is none.
    virtual std::uint32_t handle() const = 0;                                          // 16
    virtual const ox::string& name() const = 0;                                        // 17
    virtual void setName(const ox::string& name) = 0;                                  // 18
    /// A value the renderer may attach to the program; 0 by default.
    virtual std::uint64_t userValue() const = 0;                                       // 19
    virtual void setUserValue(std::uint64_t value) = 0;                                // 20
    /// Classifies the program for the renderer: 255 (kUntagged) by default, 8 (kGeometryStageTag)
    /// once a geometry stage was linked in, since such a program takes its primitives through
    /// that stage rather than straight from the drawing calls.
    virtual std::uint8_t programTag() const = 0;                                       // 21
    virtual void setProgramTag(std::uint8_t tag) = 0;                                  // 22

    static constexpr std::uint8_t kUntagged = 255;
    static constexpr std::uint8_t kGeometryStageTag = 8;

protected:
    shaderProgram() = default;
    shaderProgram(const shaderProgram&) = delete;
    shaderProgram& operator=(const shaderProgram&) = delete;
};

} // namespace oxGraphics
