# Installation: headers, the shared libraries, a CMake package exporting
# zvtextparser::zvtextparser and the reader zvtextparser::import, and a
# pkg-config file for each.
include(CMakePackageConfigHelpers)

set(ZVTP_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/zvtextparser)
set(ZVTP_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/zvtextparser)

# <zvtextparser/...> from the include root; the platform headers keep their
# own names under zvtextparser/platform (see the platform targets).
target_include_directories(zvtextparser INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_include_directories(zvtextimport_shared INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

install(TARGETS zvtextparser zvtextimport_shared ${ZVTP_PLATFORM_TARGETS}
  EXPORT zvtextparserTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# Only the public headers: what a caller of the exported surface includes.
set(ZVTP_PUBLIC_HEADERS
  errors/export.hpp
  errors/msg_id_exception.hpp
  errors/tags.hpp
  name_value/set_parser_options.hpp
  parser/enums.hpp
  parser/options.hpp
  parser/record_readers.hpp
  parser/stop_characters.hpp)
# The reader's: its one call, and what that call's declarations use.
list(APPEND ZVTP_PUBLIC_HEADERS
  import/export.hpp
  import/output.hpp
  import/read_events.hpp
  import/reader_errors.hpp
  import/text_format.hpp
  import/value_types.hpp
  import/detect/detection.hpp
  import/table/arrow_c_abi.h
  import/table/arrow_export.hpp
  import/table/arrow_table.hpp)
install(FILES import/read.hpp DESTINATION ${ZVTP_INSTALL_INCLUDEDIR})
foreach(header IN LISTS ZVTP_PUBLIC_HEADERS)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${header} DESTINATION ${ZVTP_INSTALL_INCLUDEDIR}/${folder})
endforeach()
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
configure_file(cmake/zvtextimport.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zvtextimport.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zvtextparser.pc ${CMAKE_CURRENT_BINARY_DIR}/zvtextimport.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
