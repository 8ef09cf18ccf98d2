# Cross build for 64-bit Windows with Debian's MinGW-w64 compilers, POSIX threads variant (the
# win32 variant has no std::thread or std::mutex in GCC 12).
#   cmake --preset mingw
# Only Windows libraries are searched for (the compiler's own sysroot). FreeType, fontconfig,
# GLEW and spdlog have no Windows builds in Debian: cmake/mingw/ stands in for them with their
# Debian headers and import libraries made from them, so every library compiles and links; see
# cmake/mingw/oxHostHeaders.cmake.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(OX_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${OX_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${OX_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${OX_MINGW_TRIPLE}-windres)

# Appended, so that a -DCMAKE_FIND_ROOT_PATH=<prefix> of installed Windows packages stays searched.
list(APPEND CMAKE_FIND_ROOT_PATH /usr/${OX_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Find modules for the dependencies without Windows builds come first.
list(PREPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR}/mingw)
