#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# build_headers.sh WORK COMPILER FLAGS
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
compiler=$1 flags=$2
# An earlier build is of use: what was compiled from the same header is not compiled again.
mkdir -p "$work/headers"
cd "$work/headers"
quietly cmake -S "$scripts/headers" -B . -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags"
quietly cmake --build .
grep -q "^Corsync_DIR:PATH=$prefix/" CMakeCache.txt || fail "Another corsync was found."
