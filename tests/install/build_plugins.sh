#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# build_plugins.sh WORK COMPILER FLAGS EXAMPLES: builds a program with all of the kit, and the plug-in to begin
# from, which the installed corsync then has to load.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
compiler=$1 flags=$2 examples=$3
empty plugins
private_home "$PWD/home"
cp -r "$scripts/kit" "$examples/plugin-template" .

build_against_prefix kit kit-build
quietly kit-build/whole_kit "$PWD/scratch"

build_against_prefix plugin-template template-build -DCORSYNC_INCLUDE="$prefix/include"
quietly "$prefix/bin/corsync" plugins --plugin-path "$PWD/template-build"
"$prefix/bin/corsync" plugins --plugin-path "$PWD/template-build" | grep -q '^ok .*(PathListSyncPlugin' ||
    fail "The plug-in is not registered."
