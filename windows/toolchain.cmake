# SPDX-License-Identifier: Apache-2.0
# Cross build for Windows x64 with Debian's mingw-w64 (posix threads).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)

# The cross-built dependencies, one prefix each. windows/dependencies.sh writes the first file; while
# it builds them it names those that are ready itself, through the environment, because a toolchain
# file is read again in every try_compile.
if(DEFINED ENV{CORSYNC_WINDOWS_PREFIXES})
  set(prefixes $ENV{CORSYNC_WINDOWS_PREFIXES})
else()
  include(${CMAKE_CURRENT_LIST_DIR}/../build/windows-dependencies.cmake)
  set(prefixes ${CORSYNC_WINDOWS_PREFIXES})
endif()
list(APPEND CMAKE_PREFIX_PATH ${prefixes})

# Programs come from this machine, headers and libraries never do.
set(CMAKE_FIND_ROOT_PATH /usr/${triple} ${prefixes})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# moc and its like run here. The folder of their CMake files depends on this machine's architecture.
file(GLOB host_cmake /usr/lib/*-linux-gnu/cmake/Qt6HostInfo)
get_filename_component(host_cmake "${host_cmake}" DIRECTORY)
set(QT_HOST_PATH /usr CACHE PATH "")
set(QT_HOST_PATH_CMAKE_DIR ${host_cmake} CACHE PATH "")
