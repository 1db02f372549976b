#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# missing_component.sh WORK COMPILER: what a program is told that asks for what is not there.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
compiler=$1
empty missing
cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(Missing LANGUAGES CXX)
find_package(Corsync ${WANTED})
message(STATUS "Found: ${Corsync_FOUND}, Services: ${Corsync_Services_FOUND}")
END

# configure WANTED...: leaves what CMake says in `said`, without its line breaks.
configure() {
    local code=0 wanted
    wanted=$(IFS=';'; echo "$*")
    said=$(cmake -S . -B build -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" \
        "-DWANTED=$wanted" 2>&1) || code=$?
    said=$(tr -s ' \n' ' ' <<<"$said")
    return $code
}

# expect TEXT
expect() {
    [[ $said == *"$1"* ]] || fail "CMake does not say \"$1\" but: $said"
}

if configure REQUIRED COMPONENTS Services Kitchen; then
    fail "A component that does not exist was found: $said"
fi
expect "This installation of Corsync has no component Kitchen; it has"
configure COMPONENTS Services OPTIONAL_COMPONENTS Kitchen || fail "$said"
expect "Found: 1, Services: TRUE"
configure || fail "$said"
expect "Found: 1, Services: TRUE"
if configure 99.0 REQUIRED; then
    fail "A version of the future was found: $said"
fi
expect 'compatible with requested version "99.0"'
