# SPDX-License-Identifier: Apache-2.0
# Makes corsync_libzip, which stands for libzip. Debian's CMake files of libzip want its command-line
# tools as well: there pkg-config is asked.
if(NOT TARGET corsync_libzip)
  add_library(corsync_libzip INTERFACE)
  if(NOT CMAKE_CROSSCOMPILING)
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(LIBZIP REQUIRED IMPORTED_TARGET libzip)
    target_link_libraries(corsync_libzip INTERFACE PkgConfig::LIBZIP)
  else()
    find_package(libzip CONFIG REQUIRED)
    target_link_libraries(corsync_libzip INTERFACE libzip::zip)
  endif()
endif()
