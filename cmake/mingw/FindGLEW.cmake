# GLEW for the Windows cross build: Debian's GLEW headers and an import library for glew32.dll,
# GLEW's own name for its Windows DLL, made from the exports they declare (see
# oxHostHeaders.cmake). Defines GLEW::GLEW.
include(${CMAKE_CURRENT_LIST_DIR}/oxHostHeaders.cmake)
ox_stage_host_headers(GLEW GL/glew.h GL/wglew.h)
if(GLEW_INCLUDE_DIR)
  # Functions: GLEWAPI <type> GLEWAPIENTRY glewInit (void);
  # Variables: GLEW_FUN_EXPORT PFNGLBINDBUFFERPROC __glewBindBuffer; GLEWAPI GLboolean glewExperimental;
  ox_import_library_from_headers(GLEW DLL glew32.dll
    FUNCTION "GLEWAPI [^;(\n]* GLEWAPIENTRY (w?glew[A-Za-z0-9_]*) *\\("
    DATA "W?GLEW[A-Z_]* [A-Za-z0-9_]+ ([A-Za-z0-9_]+);"
    HEADERS ${GLEW_INCLUDE_DIR}/GL/glew.h ${GLEW_INCLUDE_DIR}/GL/wglew.h)
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(GLEW REQUIRED_VARS GLEW_INCLUDE_DIR GLEW_IMPORT_LIBRARY)
if(GLEW_FOUND)
  ox_add_host_library(GLEW::GLEW INCLUDE_DIR ${GLEW_INCLUDE_DIR} IMPORT_LIBRARY ${GLEW_IMPORT_LIBRARY})
endif()
