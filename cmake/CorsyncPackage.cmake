# The zip for Windows users; windows/package.sh makes it.
#
#   bin/       corsync.exe, every DLL that it needs, SyncPlugins/ and SyncPluginRegFiles/
#   include/   the public headers
#   lib/       import libraries for host programmers
#   licences/  the licence texts of everything that is in the zip

# The dependencies keep theirs beside what they install.
foreach(prefix IN LISTS CORSYNC_WINDOWS_PREFIXES)
  if(EXISTS ${prefix}/licences)
    install(DIRECTORY ${prefix}/licences/ DESTINATION licences)
  endif()
endforeach()
foreach(package IN ITEMS gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev)
  install(FILES /usr/share/doc/${package}/copyright DESTINATION licences/${package}
          RENAME copyright.txt)
endforeach()
install(FILES /usr/share/common-licenses/GPL-3 /usr/share/common-licenses/LGPL-3
        DESTINATION licences)
install(FILES windows/licences.txt DESTINATION licences RENAME README.txt)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME corsync-${PROJECT_VERSION}-windows-x64)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
