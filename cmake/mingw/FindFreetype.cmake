# FreeType for the Windows cross build: Debian's headers and an import library for
# libfreetype-6.dll (FreeType's MinGW DLL) made from the functions they export (see
# oxHostHeaders.cmake). Defines Freetype::Freetype.
include(${CMAKE_CURRENT_LIST_DIR}/oxHostHeaders.cmake)
ox_stage_host_headers(Freetype freetype2)
if(Freetype_INCLUDE_DIR)
  # FT_EXPORT( FT_Error )
  # FT_Init_FreeType( FT_Library  *alibrary );
  file(GLOB Freetype_HEADERS ${Freetype_INCLUDE_DIR}/freetype2/freetype/*.h)
  ox_import_library_from_headers(Freetype DLL libfreetype-6.dll
    FUNCTION "FT_EXPORT\\([^)]*\\)[ \n]*(FT_[A-Za-z0-9_]+)[ \n]*\\("
    HEADERS ${Freetype_HEADERS})
  set(Freetype_INCLUDE_DIR ${Freetype_INCLUDE_DIR}/freetype2)
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Freetype REQUIRED_VARS Freetype_INCLUDE_DIR Freetype_IMPORT_LIBRARY)
if(Freetype_FOUND)
  ox_add_host_library(Freetype::Freetype INCLUDE_DIR ${Freetype_INCLUDE_DIR} IMPORT_LIBRARY ${Freetype_IMPORT_LIBRARY})
endif()
