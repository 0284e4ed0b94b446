# Installs the libraries with their public headers, CMake package files and one pkg-config file a library. Included by
# the root list after the libraries are defined.
include(CMakePackageConfigHelpers)

set(VELTO_CMAKE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/velto)
set(VELTO_PC_FOLDER ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
# Where the prefix is, seen from a .pc file: an installed copy may be moved.
file(RELATIVE_PATH VELTO_PREFIX_FROM_PC /prefix/${VELTO_PC_FOLDER} /prefix)

# velto_install(<target> NAME <library name> DESCRIPTION <text> [REQUIRES <module>...] [PRIVATE <module>...] [LIBS <text>])
# REQUIRES are the pkg-config modules whose headers ours include, PRIVATE those that are only linked, LIBS for the linker.
function(velto_install target)
  cmake_parse_arguments(ARG "" "NAME;DESCRIPTION;LIBS" "REQUIRES;PRIVATE" ${ARGN})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${ARG_NAME} VERSION ${PROJECT_VERSION}
                        SOVERSION ${PROJECT_VERSION_MAJOR})
  install(TARGETS ${target} EXPORT ${ARG_NAME})
  install(EXPORT ${ARG_NAME} NAMESPACE velto:: FILE ${ARG_NAME}-targets.cmake DESTINATION ${VELTO_CMAKE_FOLDER})

  # Who links a static library links what it needs, too, and looks itself for the modules, which a shared one finds beside it.
  if(BUILD_SHARED_LIBS)
    set(ARG_LIBS)
  else()
    list(APPEND ARG_REQUIRES ${ARG_PRIVATE})
  endif()
  set(PC_NAME ${ARG_NAME})
  set(PC_LIBS ${ARG_LIBS})
  set(PC_DESCRIPTION ${ARG_DESCRIPTION})
  list(JOIN ARG_REQUIRES " " PC_REQUIRES)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/velto.pc.in ${PROJECT_BINARY_DIR}/${ARG_NAME}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${ARG_NAME}.pc DESTINATION ${VELTO_PC_FOLDER})
endfunction()

function(velto_install_headers)
  foreach(header ${ARGN})
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/velto/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velto/${folder})
  endforeach()
endfunction()

velto_install(velto NAME velto DESCRIPTION "Advertising client library" PRIVATE glib-2.0 gobject-2.0)
# The public headers, whose declarations bear VELTO_EXPORT: what velto.h is made of, what adapters of other networks are written
# with, and the seam, for platforms of others and for tests.
velto_install_headers(velto.h Export.h
  core/VeltoConstants.h core/VeltoErrorAd.h core/VeltoFramework.h core/VeltoSettings.h network/VeltoURL.h
  timeline/VeltoAdEndReason.h timeline/VeltoAdTimeline.h timeline/VeltoAdWeight.h timeline/VeltoMetrics.h timeline/VeltoTimelineEntry.h
  timeline/VeltoVideoSteps.h
  ui/VeltoBannerViewController.h ui/VeltoDelegates.h ui/VeltoInterstitialViewController.h video/VeltoVASTURL.h video/VeltoVideoAd.h video/VeltoVideoAdDelegate.h
  video/VeltoVideoAdSettings.h
  ads/VeltoAd.h ads/VeltoAdMediationAdapterDelegate.h ads/VeltoAdMediationAdapterNotifications.h
  ads/VeltoAdMediationAdapterProtocol.h ads/VeltoAdMediationAdapterRegistry.h ads/VeltoAdMediationCoreAdapter.h
  ads/VeltoMediationResponse.h network/VeltoTaskResponse.h)
file(GLOB_RECURSE seam CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/velto ${PROJECT_SOURCE_DIR}/velto/platform/*.h)
# What the view tree and the readers of texts are made of.
list(FILTER seam EXCLUDE REGEX "/(GMemory|Patterns|LayoutSolver|UIPresentation|UIViewAnimation)\\.h$")
velto_install_headers(${seam})
if(TARGET velto_headless)
  velto_install(velto_headless NAME velto-headless DESCRIPTION "Velto in memory, for tests" REQUIRES velto)
  file(GLOB_RECURSE headless CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/velto ${PROJECT_SOURCE_DIR}/velto/headless/*.h)
  velto_install_headers(${headless})
endif()
if(TARGET velto_vast)
  velto_install(velto_vast NAME velto-vast DESCRIPTION "Video ads and their documents" REQUIRES velto PRIVATE libxml-2.0)
  file(GLOB vast CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/velto ${PROJECT_SOURCE_DIR}/velto/vast/*.h)
  list(FILTER vast EXCLUDE REGEX "/VAST(Creatives|Merge|Node)\\.h$")
  velto_install_headers(${vast})
endif()
if(TARGET velto_gtk)
  velto_install(velto_gtk NAME velto-gtk DESCRIPTION "Velto on Linux" REQUIRES velto gtk4
                PRIVATE webkitgtk-6.0 sqlite3 libcurl x11 LIBS " -Wl,-rpath,\${libdir}/velto")
  velto_install_headers(gtk/VeltoGtk.h gtk/Slot.h gtk/WidgetView.h)
endif()

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/velto-config.cmake.in ${PROJECT_BINARY_DIR}/velto-config.cmake
                              INSTALL_DESTINATION ${VELTO_CMAKE_FOLDER})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velto-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velto-config.cmake ${PROJECT_BINARY_DIR}/velto-config-version.cmake
        DESTINATION ${VELTO_CMAKE_FOLDER})
