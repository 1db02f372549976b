# SPDX-License-Identifier: Apache-2.0
# Fails when the build installs a library (a -dev package of cmake/setup.sh) that THIRD-PARTY.md does not
# name.
file(READ ${SOURCE}/cmake/setup.sh setup)
if(NOT setup MATCHES "packages=\\(([^)]*)\\)")
  message(FATAL_ERROR "cmake/setup.sh has no list of packages.")
endif()
string(REGEX MATCHALL "[^ \n]+-dev" packages "${CMAKE_MATCH_1}")
file(READ ${SOURCE}/THIRD-PARTY.md notices)
set(missing "")
foreach(package IN LISTS packages)
  if(NOT notices MATCHES "[| ,]${package}[ ,|]")
    list(APPEND missing ${package})
  endif()
endforeach()
list(LENGTH packages count)
if(missing OR count LESS 5)
  message(FATAL_ERROR "Of ${count} libraries THIRD-PARTY.md does not name: ${missing}")
endif()
