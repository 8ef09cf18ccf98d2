# fontconfig for the Windows cross build: Debian's headers and an import library for
# libfontconfig-1.dll (fontconfig's MinGW DLL) made from the functions they export (see
# oxHostHeaders.cmake). Defines Fontconfig::Fontconfig.
include(${CMAKE_CURRENT_LIST_DIR}/oxHostHeaders.cmake)
ox_stage_host_headers(Fontconfig fontconfig/fontconfig.h)
if(Fontconfig_INCLUDE_DIR)
  # FcPublic FcConfig *
  # FcConfigCreate (void);
  ox_import_library_from_headers(Fontconfig DLL libfontconfig-1.dll
    FUNCTION "FcPublic [^;(]*[ *\n](Fc[A-Za-z0-9_]+) *\\("
    HEADERS ${Fontconfig_INCLUDE_DIR}/fontconfig/fontconfig.h)
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Fontconfig REQUIRED_VARS Fontconfig_INCLUDE_DIR Fontconfig_IMPORT_LIBRARY)
if(Fontconfig_FOUND)
  ox_add_host_library(Fontconfig::Fontconfig INCLUDE_DIR ${Fontconfig_INCLUDE_DIR} IMPORT_LIBRARY ${Fontconfig_IMPORT_LIBRARY})
endif()
