# Windows stand-ins for dependencies that Debian ships for Linux only, used by the find modules
# beside this file in the MinGW-w64 cross build (cmake/mingw-w64-x86_64.cmake).
#
# Headers: the Debian package's own headers, linked into a folder of their own in the build tree.
# /usr/include itself is never on the include path, or its C library headers would shadow
# MinGW's.
#
# Libraries: an import library made with dlltool from the exports that the package's headers
# declare, under the file name of the package's MinGW DLL. Our DLLs then link exactly as they
# would against the package's own import library; nothing of the package runs here.
include_guard(GLOBAL)

set(OX_HOST_INCLUDE_DIR /usr/include CACHE PATH "Where the Debian headers used by the Windows cross build are")
set(OX_HOST_HEADERS_DIR ${CMAKE_BINARY_DIR}/hostHeaders CACHE INTERNAL "Headers and import libraries of the stand-ins")

# ox_stage_host_headers(<name> <relative path>...): <OX_HOST_HEADERS_DIR>/<name>/include holding
# the given files or folders of OX_HOST_INCLUDE_DIR; the include folder goes to <name>_INCLUDE_DIR.
# A missing one leaves <name>_INCLUDE_DIR at <name>_INCLUDE_DIR-NOTFOUND.
function(ox_stage_host_headers name)
  set(include_dir ${OX_HOST_HEADERS_DIR}/${name}/include)
  foreach(relative IN LISTS ARGN)
    if(NOT EXISTS ${OX_HOST_INCLUDE_DIR}/${relative})
      set(${name}_INCLUDE_DIR ${name}_INCLUDE_DIR-NOTFOUND PARENT_SCOPE)
      return()
    endif()
    get_filename_component(parent ${include_dir}/${relative} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${OX_HOST_INCLUDE_DIR}/${relative} ${include_dir}/${relative} SYMBOLIC)
  endforeach()
  set(${name}_INCLUDE_DIR ${include_dir} PARENT_SCOPE)
endfunction()

# ox_import_library_from_headers(<name> DLL <file> FUNCTION <regex> [DATA <regex>] HEADERS <file>...)
# Writes <name>.def listing every function and variable that the headers export (the first
# subexpression of each match of the FUNCTION and DATA expressions is the symbol) and makes
# lib<name>.dll.a from it; its path goes to <name>_IMPORT_LIBRARY.
function(ox_import_library_from_headers name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DLL;FUNCTION;DATA" "HEADERS")
  # A semicolon would split a match into two list elements: both sides see it as '@'.
  string(REPLACE ";" "@" arg_FUNCTION "${arg_FUNCTION}")
  string(REPLACE ";" "@" arg_DATA "${arg_DATA}")
  set(functions)
  set(variables)
  foreach(header IN LISTS arg_HEADERS)
    file(READ ${header} text)
    string(REPLACE ";" "@" text "${text}")
    string(REGEX MATCHALL "${arg_FUNCTION}" matches "${text}")
    foreach(match IN LISTS matches)
      string(REGEX REPLACE "${arg_FUNCTION}" "\\1" symbol "${match}")
      list(APPEND functions ${symbol})
    endforeach()
    if(arg_DATA)
      string(REGEX MATCHALL "${arg_DATA}" matches "${text}")
      foreach(match IN LISTS matches)
        string(REGEX REPLACE "${arg_DATA}" "\\1" symbol "${match}")
        list(APPEND variables ${symbol})
      endforeach()
    endif()
  endforeach()
  list(REMOVE_DUPLICATES functions)
  if(variables)
    list(REMOVE_DUPLICATES variables)
  endif()

  set(def ${OX_HOST_HEADERS_DIR}/${name}/${name}.def)
  set(lines "LIBRARY ${arg_DLL}\nEXPORTS\n")
  foreach(symbol IN LISTS functions)
    string(APPEND lines "  ${symbol}\n")
  endforeach()
  foreach(symbol IN LISTS variables)
    string(APPEND lines "  ${symbol} DATA\n")
  endforeach()
  file(CONFIGURE OUTPUT ${def} CONTENT "${lines}" @ONLY) # rewritten only when it changes

  set(implib ${OX_HOST_HEADERS_DIR}/${name}/lib${name}.dll.a)
  if(NOT EXISTS ${implib} OR ${def} IS_NEWER_THAN ${implib})
    if(NOT CMAKE_DLLTOOL)
      message(FATAL_ERROR "No dlltool (CMAKE_DLLTOOL) for the import library of ${arg_DLL}")
    endif()
    execute_process(COMMAND ${CMAKE_DLLTOOL} --input-def ${def} --output-lib ${implib} --dllname ${arg_DLL}
                    RESULT_VARIABLE failed ERROR_VARIABLE errors)
    if(failed)
      message(FATAL_ERROR "dlltool could not make the import library of ${arg_DLL}: ${errors}")
    endif()
  endif()
  list(LENGTH functions function_count)
  list(LENGTH variables variable_count)
  message(STATUS "Import library for ${arg_DLL} from Debian's headers: ${function_count} functions, ${variable_count} variables")
  set(${name}_IMPORT_LIBRARY ${implib} PARENT_SCOPE)
endfunction()

# ox_add_host_library(<target> INCLUDE_DIR <dir> [IMPORT_LIBRARY <file>] [DEFINITIONS <def>...])
function(ox_add_host_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "INCLUDE_DIR;IMPORT_LIBRARY" "DEFINITIONS")
  if(TARGET ${target})
    return()
  endif()
  if(arg_IMPORT_LIBRARY)
    add_library(${target} UNKNOWN IMPORTED)
    set_target_properties(${target} PROPERTIES IMPORTED_LOCATION ${arg_IMPORT_LIBRARY})
  else()
    add_library(${target} INTERFACE IMPORTED)
  endif()
  set_target_properties(${target} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${arg_INCLUDE_DIR})
  if(arg_DEFINITIONS)
    set_target_properties(${target} PROPERTIES INTERFACE_COMPILE_DEFINITIONS "${arg_DEFINITIONS}")
  endif()
endfunction()
