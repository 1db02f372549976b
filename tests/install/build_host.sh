#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# build_host.sh WORK COMPILER FLAGS EXAMPLES: builds the example hosts against the installed package and imports
# with it.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
compiler=$1 flags=$2 examples=$3
empty host
private_home "$PWD/home"
cp -r "$examples/host" source
cp -r "$examples/garden-shed" sample

# It looks for plug-ins beside itself.
build_against_prefix source build -DCMAKE_RUNTIME_OUTPUT_DIRECTORY="$prefix/bin"

sources=("${selection[@]/#/"$PWD/"}")
quietly "$prefix/bin/import_files" "$PWD/cloud" "$PWD/sync.db" Demo "${sources[@]}"
check_copies sample cloud/Demo
[ -s sync.db ] || fail "There is no database."

# The same with the module alone.
quietly "$prefix/bin/one_shot" "$PWD/once" "$PWD/once.db" Demo "${sources[@]}"
check_copies sample once/Demo
