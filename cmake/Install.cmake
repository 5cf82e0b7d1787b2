# Installation: headers, the shared libraries, a CMake package exporting
# zvtextparser::zvtextparser, and a pkg-config file.
include(CMakePackageConfigHelpers)

set(ZVTP_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/zvtextparser)
set(ZVTP_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/zvtextparser)

target_include_directories(zvtextparser INTERFACE $<INSTALL_INTERFACE:${ZVTP_INSTALL_INCLUDEDIR}>)

install(TARGETS zvtextparser ${ZVTP_PLATFORM_TARGETS}
  EXPORT zvtextparserTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(DIRECTORY parser/ DESTINATION ${ZVTP_INSTALL_INCLUDEDIR}/parser FILES_MATCHING PATTERN "*.hpp")
install(DIRECTORY errors/ DESTINATION ${ZVTP_INSTALL_INCLUDEDIR}/errors FILES_MATCHING PATTERN "*.hpp")
install(FILES name_value/set_parser_options.hpp DESTINATION ${ZVTP_INSTALL_INCLUDEDIR}/name_value)
foreach(platform_target IN LISTS ZVTP_PLATFORM_TARGETS)
  install(DIRECTORY platform/${platform_target}/include/
    DESTINATION ${ZVTP_INSTALL_INCLUDEDIR}/platform FILES_MATCHING PATTERN "*.hpp")
endforeach()

install(EXPORT zvtextparserTargets NAMESPACE zvtextparser:: DESTINATION ${ZVTP_INSTALL_CMAKEDIR})
configure_package_config_file(cmake/zvtextparserConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/zvtextparserConfig.cmake
  INSTALL_DESTINATION ${ZVTP_INSTALL_CMAKEDIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/zvtextparserConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/zvtextparserConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/zvtextparserConfigVersion.cmake
  DESTINATION ${ZVTP_INSTALL_CMAKEDIR})

file(RELATIVE_PATH _zvtp_pc_to_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REPLACE ";" " -l" _zvtp_platform_libs "-l${ZVTP_PLATFORM_TARGETS}")
configure_file(cmake/zvtextparser.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zvtextparser.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zvtextparser.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
