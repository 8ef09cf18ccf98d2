#include "oxglprogramlibrary.h"

#include "oxbuiltinshaders.h"
#include "glsharegroups.h"
#include "oxglshader.h"
#include "oxlog.h"

#include <algorithm>

namespace oxGraphics::openGL {

namespace {

constexpr const char* kLoggerName = "oxGraphics::openGL::glProgramLibrary::program";

struct programRecipe {
    const char* name;
    std::vector<std::pair<ePipelineStage, const char*>> stages;
    const char* defines = ""; // "#define" lines put after the #version line of every stage
};

// The source with `defines` after its #version line (GLSL wants that line first).
std::string withDefines(std::string source, const char* defines) {
    if (*defines == '\0') return source;
    std::size_t at = 0;
    if (source.compare(0, 8, "#version") == 0) {
        at = source.find('\n');
        at = at == std::string::npos ? source.size() : at + 1;
    }
    return source.insert(at, defines);
}

// Every program of the library with the source files of its stages, in link order.
const std::vector<programRecipe>& recipes() {
    static const std::vector<programRecipe> table = {
        {"standardLightingShaderProgram",
         {{ePipelineStage::vertex, "standardLighting.vert.glsl"},
          {ePipelineStage::fragment, "standardLighting.frag.glsl"}}},
        {"standardLightingBlendedOitShaderProgram",
         {{ePipelineStage::vertex, "standardLighting.vert.glsl"},
          {ePipelineStage::fragment, "standardLighting.frag.glsl"}},
         "#define OX_BLENDED_OIT 1\n"},
        {"objectOutlineShaderProgram",
         {{ePipelineStage::vertex, "objectOutline.vert.glsl"}, {ePipelineStage::fragment, "objectOutline.frag.glsl"}}},
        {"blendedOit2dShaderProgram",
         {{ePipelineStage::vertex, "texturedScreenQuad.vert.glsl"},
          {ePipelineStage::fragment, "blendedOit2d.frag.glsl"}}},
        {"texturedScreenQuadShaderProgram",
         {{ePipelineStage::vertex, "texturedScreenQuad.vert.glsl"},
          {ePipelineStage::fragment, "texturedScreenQuad.frag.glsl"}}},
        {"blendedOitDebugVisShaderProgram",
         {{ePipelineStage::vertex, "texturedScreenQuad.vert.glsl"},
          {ePipelineStage::fragment, "blendedOitDebugVis.frag.glsl"}}},
        {"backgroundShaderProgram",
         {{ePipelineStage::vertex, "texturedScreenQuad.vert.glsl"}, {ePipelineStage::fragment, "background.frag.glsl"}}},
        {"multilayerBlankShaderProgram",
         {{ePipelineStage::vertex, "standardLighting.vert.glsl"},
          {ePipelineStage::fragment, "standardLighting.frag.glsl"}},
         "#define OX_MULTILAYER_BLANK 1\n"},
        {"coverageMaskShaderProgram",
         {{ePipelineStage::vertex, "texturedScreenQuad.vert.glsl"}, {ePipelineStage::fragment, "coverageMask.frag.glsl"}}},
        {"outlineRingShaderProgram",
         {{ePipelineStage::vertex, "texturedScreenQuad.vert.glsl"}, {ePipelineStage::fragment, "outlineRing.frag.glsl"}}},
        {"gaussianBlurShaderProgram",
         {{ePipelineStage::vertex, "texturedScreenQuad.vert.glsl"}, {ePipelineStage::fragment, "gaussianBlur.frag.glsl"}}},
        {"csgCutFaceShaderProgram",
         {{ePipelineStage::vertex, "standardLighting.vert.glsl"}, {ePipelineStage::fragment, "csgCutFace.frag.glsl"}}},
    };
    return table;
}
} // namespace

glProgramLibrary::glProgramLibrary(const ox::directory& shaderDirectory) : mShaderDirectory(shaderDirectory) {}

glProgramLibrary::~glProgramLibrary() = default;

glProgramLibrary* glProgramLibrary::forCurrentContext() {
    // Never destroyed: at process exit the programs' contexts may already be gone.
    static auto* groups = new glShareGroups();
    return groups->libraryOfCurrentContext([] { return std::make_unique<glProgramLibrary>(defaultShaderDirectory()); });
}

ox::directory glProgramLibrary::defaultShaderDirectory() {
    ox::directory moduleDirectory;
    // Without libOxGraphics loaded the code was linked into the executable (the test suites link
    // the library's sources statically); in the build tree bin/ sits next to lib/.
    if (!ox::getModulePath(L"OxGraphics", moduleDirectory) && !ox::getModulePath(L"", moduleDirectory)) return {};
    return moduleDirectory.parent().append(L"config").append(L"shaders");
}

std::vector<std::string> glProgramLibrary::programNames() {
    std::vector<std::string> names;
    for (const programRecipe& recipe : recipes()) names.emplace_back(recipe.name);
    return names;
}

bool glProgramLibrary::builtinSource(const std::string& fileName, std::string& source) {
    for (const builtinShader_t& shader : builtinShaders())
        if (fileName == shader.fileName) {
            source.assign(shader.source, shader.size);
            return true;
        }
    source.clear();
    return false;
}

std::shared_ptr<shaderProgram> glProgramLibrary::program(const std::string& name) {
    if (!glShaderProgram::areGlShadersEnabledGlobally()) return {};

    const auto recipe = std::find_if(recipes().begin(), recipes().end(),
                                     [&](const programRecipe& r) { return name == r.name; });
    if (recipe == recipes().end()) {
        OX_LOG_DEBUG(kLoggerName, L"unknown shader program \"%s\"", name.c_str());
        return {};
    }

    std::lock_guard lock(mMutex);
    const auto known = mPrograms.find(name);
    if (known != mPrograms.end()) return known->second;
    return mPrograms[name] = build(name, recipe->stages, recipe->defines);
}

std::shared_ptr<shaderStage> glProgramLibrary::compileStage(ePipelineStage stage, const char* fileName,
                                                           const char* defines, bool allowFile, bool& fromFile) {
    fromFile = false;
    if (allowFile && !mShaderDirectory.path().empty()) {
        const ox::file installed(mShaderDirectory, ox::string::fromMBCtoWC(fileName));
        if (installed.exists()) {
            std::shared_ptr<shaderStage> compiled;
            std::string text;
            if (*defines == '\0')
                compiled = glShaderStageObject::createShaderFromFile(stage, installed.path());
            else if (installed.readAll(text) && !text.empty())
                compiled = glShaderStageObject::createShaderFromString(stage, withDefines(std::move(text), defines));
            if (compiled) {
                fromFile = true;
                return compiled;
            }
            OX_LOG_DEBUG(kLoggerName, L"shader file %ls is empty, unreadable or does not compile; using the built-in copy",
                         installed.path().c_str());
        }
    }
    std::string text;
    if (!builtinSource(fileName, text)) {
        OX_LOG_DEBUG(kLoggerName, L"no source for shader %s", fileName);
        return {};
    }
    return glShaderStageObject::createShaderFromString(stage, withDefines(std::move(text), defines));
}

std::shared_ptr<shaderProgram> glProgramLibrary::build(const std::string& name, const stageFiles& sources,
                                                       const char* defines) {
    for (const bool allowFiles : {true, false}) {
        // The stages live until the program is linked; the program does not keep them.
        std::vector<std::shared_ptr<shaderStage>> stages;
        std::vector<shaderStage*> stagePointers;
        bool anyFromFile = false;
        for (const auto& [pipelineStage, fileName] : sources) {
            bool fromFile = false;
            auto stage = compileStage(pipelineStage, fileName, defines, allowFiles, fromFile);
            anyFromFile = anyFromFile || fromFile;
            if (!stage) break;
            stagePointers.push_back(stage.get());
            stages.push_back(std::move(stage));
        }
        if (stages.size() == sources.size()) {
            auto program = std::make_shared<glShaderProgram>(stagePointers);
            if (program->handle() != 0) {
                program->setName(ox::string::fromMBCtoWC(name));
                return program;
            }
        }
        // A built-in copy that fails fails again: only a file can make a second try worthwhile.
        if (!anyFromFile) break;
        OX_LOG_DEBUG(kLoggerName, L"shader program %s does not build from the installed shader files; using the built-in copies",
                     name.c_str());
    }
    OX_LOG_DEBUG(kLoggerName, L"shader program %s could not be built", name.c_str());
    return {};
}

std::shared_ptr<shaderProgram> getShaderProgram(const std::string& name) {
    glProgramLibrary* library = glProgramLibrary::forCurrentContext();
    return library != nullptr ? library->program(name) : nullptr;
}

} // namespace oxGraphics::openGL
