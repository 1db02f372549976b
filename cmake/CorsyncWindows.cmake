# SPDX-License-Identifier: Apache-2.0
# What only the Windows build has: the libraries that travel with the programs, and the zip.
# CORSYNC_WINDOWS_PREFIXES comes from windows/toolchain.cmake.

# pkg-config knows the cross-built dependencies and nothing of this machine.
list(TRANSFORM CORSYNC_WINDOWS_PREFIXES APPEND /lib/pkgconfig OUTPUT_VARIABLE descriptions)
list(JOIN descriptions ":" descriptions)
set(ENV{PKG_CONFIG_LIBDIR} ${descriptions})

# Libraries have the names that the product has on Windows, also from a compiler that adds "lib".
set(CMAKE_SHARED_LIBRARY_PREFIX "")
set(CMAKE_SHARED_MODULE_PREFIX "")

# Copies DLLs beside the programs of the build, without their debugging information, and gives back
# the paths of the copies.
function(corsync_ship_dlls result)
  set(copies "")
  foreach(dll IN LISTS ARGN)
    if(NOT EXISTS ${dll})
      message(FATAL_ERROR "This library must travel with the programs, but is not there: ${dll}")
    endif()
    get_filename_component(name ${dll} NAME)
    set(copy ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name})
    if(${dll} IS_NEWER_THAN ${copy})
      file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
      execute_process(COMMAND ${CMAKE_STRIP} -o ${copy} ${dll} COMMAND_ERROR_IS_FATAL ANY)
    endif()
    list(APPEND copies ${copy})
  endforeach()
  set(${result} ${copies} PARENT_SCOPE)
endfunction()

# The compiler's shared runtime. It is one for the module and all its plug-ins: arrays that a
# plug-in makes with new[] are freed by the module.
set(runtime "")
foreach(name IN ITEMS libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                  OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
  list(APPEND runtime ${path})
endforeach()
corsync_ship_dlls(runtime ${runtime})

find_package(Qt6 6.4 REQUIRED COMPONENTS Core Xml)
find_package(log4cplus REQUIRED)
set(libraries "")
foreach(target IN ITEMS Qt6::Core Qt6::Xml log4cplus::log4cplus)
  get_target_property(path ${target} IMPORTED_LOCATION_RELEASE)
  list(APPEND libraries ${path})
endforeach()
corsync_ship_dlls(libraries ${libraries})
install(FILES ${runtime} ${libraries} DESTINATION ${CMAKE_INSTALL_BINDIR})

# The tests also need Qt's test library, which does not travel.
find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
get_target_property(path Qt6::Test IMPORTED_LOCATION_RELEASE)
corsync_ship_dlls(path ${path})
