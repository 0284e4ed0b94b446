# Installs the libraries with their public headers, CMake package files and one pkg-config file a library. Included by
# the root list after the libraries are defined.
include(CMakePackageConfigHelpers)

set(VELTO_CMAKE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/velto)
set(VELTO_PC_FOLDER ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
# Where the prefix is, seen from a .pc file: an installed copy may be moved.
file(RELATIVE_PATH VELTO_PREFIX_FROM_PC /prefix/${VELTO_PC_FOLDER} /prefix)

# velto_install(<target> NAME <library name> DESCRIPTION <text> [REQUIRES <module>...] [PRIVATE <module>...] [LIBS <text>])
# REQUIRES are the pkg-config modules whose headers ours include, PRIVATE those that are only linked.
function(velto_install target)
  cmake_parse_arguments(ARG "" "NAME;DESCRIPTION;LIBS" "REQUIRES;PRIVATE" ${ARGN})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${ARG_NAME} VERSION ${PROJECT_VERSION}
                        SOVERSION ${PROJECT_VERSION_MAJOR})
  install(TARGETS ${target} EXPORT ${ARG_NAME})
  install(EXPORT ${ARG_NAME} NAMESPACE velto:: FILE ${ARG_NAME}-targets.cmake DESTINATION ${VELTO_CMAKE_FOLDER})

  # Who links a static library links what it needs, too.
  if(NOT BUILD_SHARED_LIBS)
    list(APPEND ARG_REQUIRES ${ARG_PRIVATE})
    set(ARG_PRIVATE)
  endif()
  set(PC_NAME ${ARG_NAME})
  set(PC_LIBS ${ARG_LIBS})
  set(PC_DESCRIPTION ${ARG_DESCRIPTION})
  list(JOIN ARG_REQUIRES " " PC_REQUIRES)
  list(JOIN ARG_PRIVATE " " PC_REQUIRES_PRIVATE)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/velto.pc.in ${PROJECT_BINARY_DIR}/${ARG_NAME}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${ARG_NAME}.pc DESTINATION ${VELTO_PC_FOLDER})
endfunction()

velto_install(velto NAME velto DESCRIPTION "Advertising client library" PRIVATE glib-2.0 gobject-2.0)
# All headers of the library and of the headless platform; of the Linux platform only the public ones.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/velto/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velto
        FILES_MATCHING PATTERN "*.h" PATTERN GMemory.h EXCLUDE PATTERN gtk EXCLUDE)
if(TARGET velto_headless)
  velto_install(velto_headless NAME velto-headless DESCRIPTION "Velto in memory, for tests" REQUIRES velto)
endif()
if(TARGET velto_gtk)
  velto_install(velto_gtk NAME velto-gtk DESCRIPTION "Velto on Linux" REQUIRES velto gtk4
                PRIVATE webkitgtk-6.0 sqlite3 libcurl x11 LIBS " -Wl,-rpath,\${libdir}/velto")
  install(FILES ${PROJECT_SOURCE_DIR}/velto/gtk/VeltoGtk.h ${PROJECT_SOURCE_DIR}/velto/gtk/Slot.h
                ${PROJECT_SOURCE_DIR}/velto/gtk/WidgetView.h
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velto/gtk)
endif()

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/velto-config.cmake.in ${PROJECT_BINARY_DIR}/velto-config.cmake
                              INSTALL_DESTINATION ${VELTO_CMAKE_FOLDER})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velto-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velto-config.cmake ${PROJECT_BINARY_DIR}/velto-config-version.cmake
        DESTINATION ${VELTO_CMAKE_FOLDER})
