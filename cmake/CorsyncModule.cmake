# SPDX-License-Identifier: Apache-2.0
# One folder of the module CorsyncFileLink, compiled once for the library and for the tests.
set(CORSYNC_MODULE_OPTIONS "" CACHE STRING "Further compiler options of the module's sources and of base/")
function(corsync_module_folder name)
  set(target corsync_${name}_objects)
  add_library(${target} OBJECT ${ARGN})
  target_compile_definitions(${target} PUBLIC FILELINK_BUILD)
  target_compile_options(${target} PRIVATE ${CORSYNC_MODULE_OPTIONS})
  target_include_directories(${target} PUBLIC ${CMAKE_SOURCE_DIR}/include ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${target} PRIVATE corsync_build
                                  PUBLIC corsync_base Qt6::Core Qt6::Xml log4cplus::log4cplus CorsyncServices)
  corsync_precompile_qt(${target} <QtCore/QRegularExpression> <QtXml/QDomDocument> <log4cplus/logger.h>
                        <log4cplus/loggingmacros.h>)
endfunction()
