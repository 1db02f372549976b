# SPDX-License-Identifier: Apache-2.0
# The zip for Windows users; windows/package.sh makes it.
#
#   README.txt LICENSE NOTICE
#   bin/       corsync.exe, every DLL that it needs, SyncPlugins/ and SyncPluginRegFiles/
#   docs/      what users, host programmers and plug-in authors read
#   examples/  programs that build against what is in the zip
#   include/   the public headers
#   lib/       import libraries for host programmers, and the CMake package that names them
#   licences/  the licence texts of everything that is in the zip

configure_file(windows/README.txt ${CMAKE_BINARY_DIR}/README.txt @ONLY NEWLINE_STYLE WIN32)
install(FILES ${CMAKE_BINARY_DIR}/README.txt LICENSE NOTICE DESTINATION .)
install(FILES docs/operations.md docs/reliability.md docs/formats.md docs/embedding.md docs/plugin-authors.md CHANGELOG.md
        DESTINATION docs)
install(DIRECTORY examples/host examples/plugin-template DESTINATION examples)

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
