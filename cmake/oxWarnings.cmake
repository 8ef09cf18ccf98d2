# Warnings stay PRIVATE to our own targets; hosts that consume the installed package get none of this.
function(ox_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wno-unused-parameter)
  if(OX_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  # Source paths in logs and assertion texts are relative to the repository root.
  target_compile_options(${target} PRIVATE "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
endfunction()
