# Compares the dynamic symbols libOxGraphics exports with the allowlist, so that every export is
# deliberate.
#   cmake -DNM=<nm> -DLIBRARY=<libOxGraphics.so> -DALLOWLIST=<exportedSymbols.txt> -P checkExportedSymbols.cmake
# With OX_UPDATE_EXPORT_ALLOWLIST=1 in the environment the allowlist is rewritten from the library.
#
# Symbols are compared demangled, one name a line; the constructor and destructor variants that
# share a demangled name count once. Listed: the functions, data, thunks and typeinfo of
# namespace oxGraphics, and any C name. Left out, because whether the compiler emits them
# depends on inlining and the build type, not on what the headers export:
#  - vtables, VTTs and typeinfo names (each class's typeinfo stands for them);
#  - weak copies of other modules' entities: instantiations of std and __gnu_cxx templates, and
#    inline functions and class data of oxUtils and oxGeo, which those libraries export;
#  - the linker's own symbols (_edata, _end, __bss_start, _init, _fini).

foreach(variable NM LIBRARY ALLOWLIST)
  if(NOT ${variable})
    message(FATAL_ERROR "checkExportedSymbols.cmake needs -D${variable}=...")
  endif()
endforeach()

# -p keeps the symbol table's order, so the mangled and the demangled listing line up.
function(list_symbols result)
  execute_process(COMMAND ${NM} -D --defined-only -p ${ARGN} ${LIBRARY}
                  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${NM} failed on ${LIBRARY}: ${errors}")
  endif()
  # Square brackets ([abi:cxx11], operator[]) would group list elements: they are escaped here
  # and restored when the names are written.
  string(REPLACE "[" "<OPEN>" output "${output}")
  string(REPLACE "]" "<CLOSE>" output "${output}")
  string(REPLACE ";" "<SEMICOLON>" output "${output}")
  string(REPLACE "\n" ";" lines "${output}")
  set(names)
  foreach(line IN LISTS lines)
    if(line MATCHES "^[0-9a-fA-F]* *[A-Za-z] (.+)$")
      list(APPEND names "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  set(${result} "${names}" PARENT_SCOPE)
endfunction()

list_symbols(mangled)
list_symbols(demangled --demangle)
list(LENGTH mangled count)
list(LENGTH demangled demangledCount)
if(NOT count EQUAL demangledCount)
  message(FATAL_ERROR "${NM} listed ${count} symbols, but ${demangledCount} demangled")
endif()

set(exported)
if(count GREATER 0)
  math(EXPR last "${count} - 1")
  foreach(i RANGE ${last})
    list(GET mangled ${i} name)
    # _Z, then a special name (typeinfo TI, guard variable GV, a thunk's Th/Tv with its
    # offsets), a local entity's Z, then the nested name N (with qualifiers) in oxGraphics.
    if(name MATCHES "^_Z")
      if(NOT name MATCHES "^_Z(TI|GV|T[hv][0-9n_]*_)?Z?N[rVKRO]*10oxGraphics")
        continue()
      endif()
    elseif(name MATCHES "^(_edata|_end|__bss_start|_init|_fini)$")
      continue()
    endif()
    list(GET demangled ${i} readable)
    list(APPEND exported "${readable}")
  endforeach()
endif()
list(REMOVE_DUPLICATES exported)
list(SORT exported)

function(restore_brackets result text)
  string(REPLACE "<OPEN>" "[" text "${text}")
  string(REPLACE "<CLOSE>" "]" text "${text}")
  string(REPLACE "<SEMICOLON>" ";" text "${text}")
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

# The allowlist: the comment lines at its top, then one name a line.
set(header)
set(allowed)
if(EXISTS ${ALLOWLIST})
  file(READ ${ALLOWLIST} content)
  string(REPLACE "[" "<OPEN>" content "${content}")
  string(REPLACE "]" "<CLOSE>" content "${content}")
  string(REPLACE ";" "<SEMICOLON>" content "${content}")
  string(REPLACE "\n" ";" lines "${content}")
  foreach(line IN LISTS lines)
    if(line MATCHES "^#")
      string(APPEND header "${line}\n")
    elseif(NOT line STREQUAL "")
      list(APPEND allowed "${line}")
    endif()
  endforeach()
endif()

if("$ENV{OX_UPDATE_EXPORT_ALLOWLIST}" STREQUAL "1")
  list(JOIN exported "\n" body)
  restore_brackets(text "${header}${body}\n")
  file(WRITE ${ALLOWLIST} "${text}")
  list(LENGTH exported written)
  message(STATUS "wrote ${written} exported symbols to ${ALLOWLIST}")
  return()
endif()

set(added ${exported})
set(removed ${allowed})
if(allowed)
  list(REMOVE_ITEM added ${allowed})
endif()
if(exported)
  list(REMOVE_ITEM removed ${exported})
endif()
if(added OR removed)
  set(report "The exported symbols of ${LIBRARY} differ from ${ALLOWLIST}:\n")
  foreach(name IN LISTS added)
    string(APPEND report "+ ${name}\n")
  endforeach()
  foreach(name IN LISTS removed)
    string(APPEND report "- ${name}\n")
  endforeach()
  string(APPEND report "(+ exported but not listed, - listed but no longer exported.) Export only what a "
                       "host needs; to accept the change run the test with OX_UPDATE_EXPORT_ALLOWLIST=1 "
                       "and review the list's diff.")
  restore_brackets(report "${report}")
  # Printed as it is (an error message would be re-wrapped), then the failure.
  message(NOTICE "${report}")
  message(FATAL_ERROR "the exported symbols changed")
endif()
list(LENGTH exported total)
message(STATUS "${total} exported symbols, as listed")
