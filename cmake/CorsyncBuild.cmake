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
  add_compile_definitions(CORSYNC_SANITIZED)
endif()
if(CORSYNC_COVERAGE)
  add_compile_options(--coverage -fprofile-abs-path)
  add_link_options(--coverage)
endif()

# Most of what it takes to compile a source are the headers of libraries. Where they are precompiled a source
# may lack an #include without anybody noticing: the release build does not do it.
option(CORSYNC_PRECOMPILE "Precompile the headers of libraries")
function(corsync_precompile_qt target)
  if(CORSYNC_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE
      <QtCore/QDateTime> <QtCore/QDir> <QtCore/QFile> <QtCore/QFileInfo> <QtCore/QHash> <QtCore/QMap>
      <QtCore/QObject> <QtCore/QSet> <QtCore/QStringList> <algorithm> <functional> <memory> ${ARGN})
  endif()
endfunction()
