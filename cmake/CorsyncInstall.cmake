# SPDX-License-Identifier: Apache-2.0
# What `cmake --install` puts where, so that the tree can be moved as a whole:
#
#   bin/                     corsync, SyncPlugins/ and SyncPluginRegFiles/, which it looks for beside itself
#   lib/                     the libraries; on Windows their import libraries, the DLLs are in bin/
#   lib/cmake/Corsync/       find_package(Corsync COMPONENTS ...)
#   include/                 the public headers
#   share/doc/corsync/       LICENSE, NOTICE and THIRD-PARTY.md
#
# The zip for Windows is laid out likewise; CorsyncPackage.cmake says what it has besides.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Headers that the build writes.
set(CORSYNC_GENERATED_INCLUDE ${CMAKE_BINARY_DIR}/generated/include)

# Programs find the libraries, and libraries each other, wherever the tree lies.
if(CMAKE_EXECUTABLE_FORMAT STREQUAL "ELF")
  file(RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(CORSYNC_PROGRAM_RPATH $ORIGIN/${libraries})
  set(CORSYNC_LIBRARY_RPATH $ORIGIN)
endif()

# A program of the product.
function(corsync_install_program target)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "${CORSYNC_PROGRAM_RPATH}")
  install(TARGETS ${target})
endfunction()

# A shared library of the product. The CMake package has it under its name without "Corsync". A release
# that changes one of the first two numbers may break programs that were built before.
function(corsync_install_library target)
  string(REGEX REPLACE "^Corsync" "" name ${target})
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${name}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    INSTALL_RPATH "${CORSYNC_LIBRARY_RPATH}")
  target_include_directories(${target} INTERFACE
    $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include> $<BUILD_INTERFACE:${CORSYNC_GENERATED_INCLUDE}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${target} INTERFACE cxx_std_20)
  install(TARGETS ${target} EXPORT CorsyncTargets)
endfunction()

# The target that each folder of public headers belongs to. A folder whose target is not built is not
# installed.
set(CORSYNC_HEADER_FOLDERS
  "corsync=CorsyncJobs" "filelink=CorsyncFileLink" "pluginkit=CorsyncPluginKit"
  "syncplugin=syncplugin" "syncservices=CorsyncServices")

# Headers and the CMake package; called when all targets are there.
function(corsync_install_package)
  foreach(entry IN LISTS CORSYNC_HEADER_FOLDERS)
    string(REGEX MATCH "^(.*)=(.*)$" entry ${entry})
    if(TARGET ${CMAKE_MATCH_2})
      install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/${CMAKE_MATCH_1}
              DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
    endif()
  endforeach()
  install(DIRECTORY ${CORSYNC_GENERATED_INCLUDE}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
          FILES_MATCHING PATTERN "*.h")

  set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Corsync)
  configure_package_config_file(
    ${CMAKE_SOURCE_DIR}/cmake/CorsyncConfig.cmake.in ${CMAKE_BINARY_DIR}/CorsyncConfig.cmake
    INSTALL_DESTINATION ${package} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
  write_basic_package_version_file(${CMAKE_BINARY_DIR}/CorsyncConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_BINARY_DIR}/CorsyncConfig.cmake
                ${CMAKE_BINARY_DIR}/CorsyncConfigVersion.cmake
                ${CMAKE_SOURCE_DIR}/cmake/CorsyncZstd.cmake
          DESTINATION ${package})
  if(NOT WIN32)
    install(FILES ${CMAKE_SOURCE_DIR}/LICENSE ${CMAKE_SOURCE_DIR}/NOTICE ${CMAKE_SOURCE_DIR}/THIRD-PARTY.md
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/corsync)
  endif()
  install(EXPORT CorsyncTargets NAMESPACE Corsync:: DESTINATION ${package})
endfunction()
