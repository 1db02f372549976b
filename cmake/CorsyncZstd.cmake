# SPDX-License-Identifier: Apache-2.0
# Makes Corsync::Zstd, which stands for libzstd. What it comes with depends on who built it: a CMake
# package, with a shared or a static library, or a pkg-config file. Programs that use the installed
# kit find out for themselves: this file is part of the CMake package.
if(NOT TARGET Corsync::Zstd)
  add_library(Corsync::Zstd INTERFACE IMPORTED)
  find_package(zstd CONFIG QUIET)
  if(TARGET zstd::libzstd_shared)
    target_link_libraries(Corsync::Zstd INTERFACE zstd::libzstd_shared)
  elseif(TARGET zstd::libzstd_static)
    target_link_libraries(Corsync::Zstd INTERFACE zstd::libzstd_static)
  else()
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(LIBZSTD REQUIRED IMPORTED_TARGET libzstd)
    target_link_libraries(Corsync::Zstd INTERFACE PkgConfig::LIBZSTD)
  endif()
endif()
