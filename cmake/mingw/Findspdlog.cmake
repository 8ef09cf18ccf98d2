# spdlog for the Windows cross build: Debian's headers, header-only, with fmt header-only too
# (see oxHostHeaders.cmake). Defines spdlog::spdlog.
include(${CMAKE_CURRENT_LIST_DIR}/oxHostHeaders.cmake)
ox_stage_host_headers(spdlog spdlog fmt)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(spdlog REQUIRED_VARS spdlog_INCLUDE_DIR)
if(spdlog_FOUND)
  ox_add_host_library(spdlog::spdlog INCLUDE_DIR ${spdlog_INCLUDE_DIR} DEFINITIONS FMT_HEADER_ONLY)
endif()
