# SPDX-License-Identifier: Apache-2.0
# Fails when code that Windows builds reaches the disk through functions of the standard library, in
# base/ or in what stands on it. There they take no long path, and take a server for a folder of the
# current drive; under Wine they do neither, so that no test of behaviour would show it. Fails also
# where a folder other than base/ asks which system it is built for, or calls a system itself.
set(calls absolute canonical weakly_canonical copy copy_file create_directories create_directory
          directory_iterator recursive_directory_iterator equivalent exists file_size is_directory is_empty
          is_regular_file is_symlink last_write_time permissions remove remove_all rename resize_file status
          symlink_status)
list(JOIN calls "|" calls)
set(patterns "")
foreach(folder IN ITEMS base src services kit plugins include/pluginkit)
  list(APPEND patterns ${ROOT}/${folder}/*.cpp ${ROOT}/${folder}/*.h)
endforeach()
file(GLOB_RECURSE sources RELATIVE ${ROOT} ${patterns})
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

# The contract's own headers choose the width of characters and how a factory is exported.
file(GLOB_RECURSE sources RELATIVE ${ROOT} ${patterns})
list(FILTER sources EXCLUDE REGEX "^base/")
foreach(source IN LISTS sources)
  file(READ ${ROOT}/${source} text)
  string(REGEX MATCHALL
         "_WIN32|__linux__|Q_OS_[A-Z]+|<(windows|unistd|fcntl|dirent|sys/[a-z]+)\\.h>" hits "${text}")
  foreach(hit IN LISTS hits)
    list(APPEND found "${source}: ${hit}")
  endforeach()
endforeach()
if(found)
  list(JOIN found "\n  " found)
  message(FATAL_ERROR "Use what base/ has instead of:\n  ${found}")
endif()
