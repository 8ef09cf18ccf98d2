# GLSL sources of the shader library, included by libs/graphics/CMakeLists.txt after the
# oxGraphicsInternal and oxGraphics targets exist.
#  - built-in copies: a source generated at build time from shaders/GLSL/*.glsl
#  - the same files next to the library, in <library dir>/../config/shaders, both in the build
#    tree (so the tests read them from files) and when installed; an installed file overrides its
#    built-in copy
set(OX_GLSL_DIR ${CMAKE_CURRENT_SOURCE_DIR}/shaders/GLSL)
file(GLOB OX_GLSL_FILES CONFIGURE_DEPENDS ${OX_GLSL_DIR}/*.glsl)
set(OX_BUILTIN_SHADERS_CPP ${CMAKE_CURRENT_BINARY_DIR}/generated/oxbuiltinshaders.cpp)

add_custom_command(
  OUTPUT ${OX_BUILTIN_SHADERS_CPP}
  COMMAND ${CMAKE_COMMAND} -DSHADER_DIR=${OX_GLSL_DIR} -DOUTPUT=${OX_BUILTIN_SHADERS_CPP}
          -P ${CMAKE_CURRENT_SOURCE_DIR}/src/resources/embedShaders.cmake
  DEPENDS ${OX_GLSL_FILES} ${CMAKE_CURRENT_SOURCE_DIR}/src/resources/embedShaders.cmake
  COMMENT "Embedding the built-in GLSL shader sources"
  VERBATIM)
target_sources(oxGraphicsInternal PRIVATE ${OX_BUILTIN_SHADERS_CPP})
target_include_directories(oxGraphicsInternal PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/src/resources)

# The build tree mirrors the installed layout: lib/libOxGraphics.so and config/shaders/*.glsl.
# Whatever links the library, shared or static, gets the copies first (executables in bin/ find
# the same ../config/shaders).
set(OX_GLSL_COPIED ${CMAKE_CURRENT_BINARY_DIR}/generated/shadersCopied.stamp)
add_custom_command(
  OUTPUT ${OX_GLSL_COPIED}
  COMMAND ${CMAKE_COMMAND} -E make_directory $<TARGET_FILE_DIR:oxGraphics>/../config/shaders
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${OX_GLSL_FILES} $<TARGET_FILE_DIR:oxGraphics>/../config/shaders
  COMMAND ${CMAKE_COMMAND} -E touch ${OX_GLSL_COPIED}
  DEPENDS ${OX_GLSL_FILES}
  COMMENT "Copying the GLSL shader sources to the build tree"
  VERBATIM)
add_custom_target(oxGraphicsShaderFiles DEPENDS ${OX_GLSL_COPIED})
add_dependencies(oxGraphicsInternal oxGraphicsShaderFiles)

install(FILES ${OX_GLSL_FILES} DESTINATION ${CMAKE_INSTALL_LIBDIR}/../config/shaders)
