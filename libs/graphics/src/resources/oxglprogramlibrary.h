#pragma once
// The library's GLSL programs, looked up by name ("texturedScreenQuadShaderProgram") and built
// on first use from their GLSL sources.
//
// Where the sources come from: each stage is a file such as "texturedScreenQuad.vert.glsl".
//  1. When the file exists in the shader directory it is compiled from there, so a deployment
//     can patch a shader without rebuilding the library.
//  2. When it is absent, the built-in copy compiled into the library is used (generated at build
//     time from the same files, so the two agree unless someone edits an installed file).
//  3. When an installed file is empty, unreadable or does not compile, one log line names it and
//     the built-in copy is used; when a program whose sources came from files does not link, one
//     log line says so and it is built again from the built-in copies alone.
// The process-wide library reads <directory of libOxGraphics>/../config/shaders/.
//
// A program may be a variant of another one's sources, built with preprocessor definitions
// (such as "standardLightingBlendedOitShaderProgram", the standard program for the transparent
// pass): features are chosen when a program is built, not by uniforms its fragments test.
//
// Each program is built once per library and kept (a program that cannot be built is
// remembered as such and not tried again). Programs are GL objects of the context current at
// their first lookup, usable in every context that shares objects with it, so there is one
// library per context share group: forCurrentContext() finds the group of the current context
// (contexts made with a share context join their group; unshared contexts, headless or a
// host's, each get their own). With shaders off globally every lookup answers null and nothing
// is built, so the renderer draws fixed-function.
#include "oxfilesystem.h"
#include "oxshader.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace oxGraphics::openGL {

class glProgramLibrary {
public:
    /// A library that reads installed shader files from `shaderDirectory` (which need not exist).
    explicit glProgramLibrary(const ox::directory& shaderDirectory);
    /// Deletes the programs it built: call it with their context current.
    ~glProgramLibrary();
    glProgramLibrary(const glProgramLibrary&) = delete;
    glProgramLibrary& operator=(const glProgramLibrary&) = delete;

    /// The library of the share group of the context current on the calling thread, reading
    /// defaultShaderDirectory(); null when no context is current. Libraries live until the
    /// process ends and never delete their programs (their context may be gone by then).
    static glProgramLibrary* forCurrentContext();
    /// <directory of libOxGraphics>/../config/shaders (of the executable when the sources are
    /// linked into it); empty when the module cannot be found.
    static ox::directory defaultShaderDirectory();

    /// The program of that name, built on first use with a context current. Null for an
    /// unknown name (with one log line), for a program that cannot be built, and with shaders
    /// off globally.
    std::shared_ptr<shaderProgram> program(const std::string& name);

    const ox::directory& shaderDirectory() const { return mShaderDirectory; }

    /// The names of every program the library knows.
    static std::vector<std::string> programNames();
    /// The built-in copy of a shader source file; false when there is none.
    static bool builtinSource(const std::string& fileName, std::string& source);

private:
    /// The stages of one program: each stage with the file name of its source.
    using stageFiles = std::vector<std::pair<ePipelineStage, const char*>>;
    std::shared_ptr<shaderProgram> build(const std::string& name, const stageFiles& stages, const char* defines);
    std::shared_ptr<shaderStage> compileStage(ePipelineStage stage, const char* fileName, const char* defines,
                                              bool allowFile, bool& fromFile);

    ox::directory mShaderDirectory;
    std::mutex mMutex;
    std::map<std::string, std::shared_ptr<shaderProgram>> mPrograms;
};

/// The program of that name for the current context's share group (null without a context).
std::shared_ptr<shaderProgram> getShaderProgram(const std::string& name);

} // namespace oxGraphics::openGL
