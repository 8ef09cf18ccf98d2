# Writes the GLSL sources of SHADER_DIR (*.glsl) into OUTPUT as a C++ table of built-in copies.
# Run at build time: cmake -DSHADER_DIR=<dir> -DOUTPUT=<file.cpp> -P embedShaders.cmake
# The sources are emitted as byte arrays, so no character of a shader needs escaping and no
# compiler limit on string-literal length applies.
if(NOT SHADER_DIR OR NOT OUTPUT)
  message(FATAL_ERROR "embedShaders.cmake needs SHADER_DIR and OUTPUT")
endif()

file(GLOB shader_files RELATIVE ${SHADER_DIR} ${SHADER_DIR}/*.glsl)
list(SORT shader_files)

set(arrays "")
set(entries "")
set(index 0)
foreach(name IN LISTS shader_files)
  file(READ ${SHADER_DIR}/${name} hex HEX)
  string(LENGTH "${hex}" hex_length)
  math(EXPR size "${hex_length} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  # 16 bytes per line keeps the generated file readable in a debugger.
  string(REPEAT "0x[0-9a-f][0-9a-f]," 16 line_pattern)
  string(REGEX REPLACE "(${line_pattern})" "\\1\n    " bytes "${bytes}")
  string(APPEND arrays "// ${name}\nconst unsigned char kSource${index}[] = {\n    ${bytes}0x00};\n\n")
  string(APPEND entries "    {\"${name}\", reinterpret_cast<const char*>(kSource${index}), ${size}},\n")
  math(EXPR index "${index} + 1")
endforeach()

set(content "// Generated from ${SHADER_DIR} by embedShaders.cmake at build time. Do not edit.
#include \"oxbuiltinshaders.h\"

namespace oxGraphics::openGL {

namespace {

${arrays}// The closing empty entry keeps the array well-formed when there is no shader at all.
const builtinShader_t kShaders[] = {
${entries}    {nullptr, nullptr, 0},
};

} // namespace

std::span<const builtinShader_t> builtinShaders() { return {kShaders, ${index}}; }

} // namespace oxGraphics::openGL
")

# Rewrite only on change, so an unchanged shader set does not rebuild the library.
if(EXISTS ${OUTPUT})
  file(READ ${OUTPUT} previous)
  if(previous STREQUAL content)
    return()
  endif()
endif()
file(WRITE ${OUTPUT} "${content}")
