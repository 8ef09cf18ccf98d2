# Installs the libraries, their public headers and a CMake package so that a host writes
#   find_package(oxGraphics REQUIRED)
#   target_link_libraries(app PRIVATE ox::oxGraphics)
include(CMakePackageConfigHelpers)

set(OX_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/oxGraphics)

set(ox_install_targets)
foreach(target oxUtils oxGeo oxGraphics)
  if(TARGET ${target})
    get_target_property(ox_sources ${target} SOURCES)
    if(ox_sources)
      list(APPEND ox_install_targets ${target})
      set_target_properties(${target} PROPERTIES EXPORT_NAME ${target})
    endif()
  endif()
endforeach()

install(TARGETS ${ox_install_targets}
  EXPORT oxGraphicsTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

foreach(lib utils geo graphics)
  if(EXISTS ${PROJECT_SOURCE_DIR}/libs/${lib}/inc)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/libs/${lib}/inc/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/oxGraphics)
  endif()
  if(EXISTS ${PROJECT_BINARY_DIR}/libs/${lib}/inc)
    install(DIRECTORY ${PROJECT_BINARY_DIR}/libs/${lib}/inc/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/oxGraphics)
  endif()
endforeach()

install(EXPORT oxGraphicsTargets NAMESPACE ox:: DESTINATION ${OX_INSTALL_CMAKEDIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/oxGraphicsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/oxGraphicsConfig.cmake INSTALL_DESTINATION ${OX_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/oxGraphicsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/oxGraphicsConfig.cmake ${PROJECT_BINARY_DIR}/oxGraphicsConfigVersion.cmake
  DESTINATION ${OX_INSTALL_CMAKEDIR})
