# SPDX-License-Identifier: Apache-2.0
# Makes Corsync::Zstd, which stands for libzstd: in the build, and for a program that finds an installed
# Corsync. What libzstd comes with depends on who built it: a CMake package, with a shared or a static
# library, or a pkg-config file.
if(NOT TARGET Corsync::Zstd)
  find_package(zstd CONFIG QUIET)
  if(TARGET zstd::libzstd_shared)
    set(_corsync_zstd zstd::libzstd_shared)
  elseif(TARGET zstd::libzstd_static)
    set(_corsync_zstd zstd::libzstd_static)
  else()
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(LIBZSTD REQUIRED IMPORTED_TARGET libzstd)
    set(_corsync_zstd PkgConfig::LIBZSTD)
  endif()
  add_library(Corsync::Zstd INTERFACE IMPORTED)
  target_link_libraries(Corsync::Zstd INTERFACE ${_corsync_zstd})
  unset(_corsync_zstd)
endif()
