# SPDX-License-Identifier: Apache-2.0
# Makes corsync_utf8proc, corsync_utfcpp and corsync_xxhash, which stand for the libraries utf8proc (what
# letters are), utfcpp (UTF-8 and UTF-16, headers only) and xxHash (hashes, of which the headers are
# used). Who builds them decides what they come with: Debian's utf8proc has no CMake package.
if(NOT TARGET corsync_utf8proc)
  find_path(CORSYNC_UTF8PROC_INCLUDE utf8proc.h REQUIRED)
  find_library(CORSYNC_UTF8PROC_LIBRARY NAMES utf8proc utf8proc_static REQUIRED)
  add_library(corsync_utf8proc INTERFACE)
  target_include_directories(corsync_utf8proc SYSTEM INTERFACE ${CORSYNC_UTF8PROC_INCLUDE})
  target_link_libraries(corsync_utf8proc INTERFACE ${CORSYNC_UTF8PROC_LIBRARY})
  if(CORSYNC_UTF8PROC_LIBRARY MATCHES "\\.a$")
    target_compile_definitions(corsync_utf8proc INTERFACE UTF8PROC_STATIC)
  endif()

  find_path(CORSYNC_UTFCPP_INCLUDE utf8/unchecked.h PATH_SUFFIXES utf8cpp REQUIRED)
  add_library(corsync_utfcpp INTERFACE)
  target_include_directories(corsync_utfcpp SYSTEM INTERFACE ${CORSYNC_UTFCPP_INCLUDE})

  find_path(CORSYNC_XXHASH_INCLUDE xxhash.h REQUIRED)
  add_library(corsync_xxhash INTERFACE)
  target_include_directories(corsync_xxhash SYSTEM INTERFACE ${CORSYNC_XXHASH_INCLUDE})
endif()
