# SPDX-License-Identifier: Apache-2.0
# What every target of the project is built with.

option(CORSYNC_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)
option(CORSYNC_COVERAGE "Instrument for coverage" OFF)
set(CORSYNC_SANITIZE "" CACHE STRING "Sanitizers, as in -fsanitize=")

add_library(corsync_build INTERFACE)
target_compile_options(corsync_build INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror=switch
  $<$<BOOL:${CORSYNC_WARNINGS_AS_ERRORS}>:-Werror>)
target_compile_definitions(corsync_build INTERFACE
  QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS
  $<$<PLATFORM_ID:Windows>:NOMINMAX>)

if(CORSYNC_SANITIZE)
  add_compile_options(-fsanitize=${CORSYNC_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${CORSYNC_SANITIZE})
endif()
if(CORSYNC_COVERAGE)
  add_compile_options(--coverage -fprofile-abs-path)
  add_link_options(--coverage)
endif()

# A format plug-in: its library where the plug-in manager looks for it beside the program, and its
# registration file (configured with @PLUGIN_MODULE@, the library's file name) likewise.
function(corsync_add_plugin target registration)
  set_target_properties(${target} PROPERTIES
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin/SyncPlugins
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin/SyncPlugins)
  add_dependencies(plugins ${target})
  # Their exports are checked.
  set_property(GLOBAL APPEND PROPERTY CORSYNC_PLUGINS ${target})
  set(PLUGIN_MODULE ${CMAKE_SHARED_MODULE_PREFIX}${target}${CMAKE_SHARED_MODULE_SUFFIX})
  get_filename_component(name ${registration} NAME_WLE)
  configure_file(${registration} ${CMAKE_BINARY_DIR}/bin/SyncPluginRegFiles/${name} @ONLY)
  install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR}/SyncPlugins
                            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}/SyncPlugins)
  install(FILES ${CMAKE_BINARY_DIR}/bin/SyncPluginRegFiles/${name}
          DESTINATION ${CMAKE_INSTALL_BINDIR}/SyncPluginRegFiles)
endfunction()
