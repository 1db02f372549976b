#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# build_kit_parts.sh WORK COMPILER FLAGS PYTHON: builds a program that uses the parts of the kit with libraries
# of their own, and runs it.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
compiler=$1 flags=$2 python=$3
empty kit_parts
quietly cmake -S "$scripts/kit_parts" -B build -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags"
quietly cmake --build build
printf '<a><b/><c/><b/></a>' >doc.xml
"$python" -m zipfile -c archive.zip doc.xml
build/kit_parts archive.zip doc.xml >counts
printf 'a 1\nb 2\nc 1\n' | diff counts -
