#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# missing_component.sh WORK COMPILER: what a program is told that asks for what is not there.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
compiler=$1
empty missing
cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(Missing LANGUAGES NONE)
find_package(Corsync ${VERSION} COMPONENTS ${COMPONENTS})
message("Found: ${Corsync_FOUND}. ${Corsync_NOT_FOUND_MESSAGE}")
END
