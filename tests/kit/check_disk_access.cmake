# SPDX-License-Identifier: Apache-2.0
# Fails when a plug-in or the services reach the disk through functions of the standard library in code
# that Windows builds. There they take no long path, and take a server for a folder of the current
# drive; under Wine they do neither, so that no test of behaviour would show it.
set(calls absolute canonical weakly_canonical copy copy_file create_directories create_directory
          directory_iterator recursive_directory_iterator equivalent exists file_size is_directory is_empty
          is_regular_file is_symlink last_write_time permissions remove remove_all rename resize_file status
          symlink_status)
list(JOIN calls "|" calls)
file(GLOB_RECURSE sources RELATIVE ${ROOT}
     ${ROOT}/kit/*.cpp ${ROOT}/include/pluginkit/*.h ${ROOT}/plugins/*.cpp ${ROOT}/plugins/*.h ${ROOT}/services/*.cpp ${ROOT}/services/*.h)
list(FILTER sources EXCLUDE REGEX "_posix\\.cpp$")
if(NOT sources)
  message(FATAL_ERROR "no sources in ${ROOT}")
endif()
set(found "")
foreach(source IN LISTS sources)
  file(READ ${ROOT}/${source} text)
  string(REGEX MATCHALL "(filesystem|fs)::(${calls})[^a-z_]" hits "${text}")
  string(REGEX MATCHALL "[io]?fstream>|[^a-z_]fopen\\(" streams "${text}")
  foreach(hit IN LISTS hits streams)
    list(APPEND found "${source}: ${hit}")
  endforeach()
endforeach()
if(found)
  list(JOIN found "\n  " found)
  message(FATAL_ERROR "Use PlatformFile.h (plug-ins) or Qt and Platform.h (services) for:\n  ${found}")
endif()
