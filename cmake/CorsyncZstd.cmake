# SPDX-License-Identifier: Apache-2.0
# Makes corsync_zstd, which stands for libzstd. What it comes with depends on who built it: a CMake
# package, with a shared or a static library, or a pkg-config file.
if(NOT TARGET corsync_zstd)
  add_library(corsync_zstd INTERFACE)
  find_package(zstd CONFIG QUIET)
  if(TARGET zstd::libzstd_shared)
    target_link_libraries(corsync_zstd INTERFACE zstd::libzstd_shared)
  elseif(TARGET zstd::libzstd_static)
    target_link_libraries(corsync_zstd INTERFACE zstd::libzstd_static)
  else()
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(LIBZSTD REQUIRED IMPORTED_TARGET libzstd)
    target_link_libraries(corsync_zstd INTERFACE PkgConfig::LIBZSTD)
  endif()
endif()
