#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# build_plugins.sh WORK COMPILER FLAGS EXAMPLES: builds a program with all of the kit, and the plug-in to begin
# from, with which the installed corsync then has to import.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
compiler=$1 flags=$2 examples=$3
empty plugins
private_home "$PWD/home"
cp -r "$scripts/kit" "$examples/plugin-template" .

build_against_prefix kit kit-build
quietly kit-build/whole_kit "$PWD/scratch"

build_against_prefix plugin-template template-build
corsync=$prefix/bin/corsync registered=(--plugin-path "$PWD/template-build")

# The kit is inside, and nothing that this plug-in does not use.
needed=$(readelf -d template-build/PathListSyncPlugin.so | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
[ -n "$needed" ] || fail "The libraries that the plug-in wants cannot be seen."
if grep -E 'zstd|libz\.|expat|utf8proc|Qt|Corsync' <<<"$needed"; then
    fail "The plug-in wants more than it uses."
fi

quietly "$corsync" plugins "${registered[@]}"
"$corsync" plugins "${registered[@]}" | grep -q '^ok .*(PathListSyncPlugin' ||
    fail "The plug-in is not registered."

mkdir -p mine/list mine/parts
printf '# Parts\r\n../parts/bolt.txt\r\n\r\n../parts/nut.txt\r\n../parts/bolt.txt' >mine/list/all.pathlist
printf bolt >mine/parts/bolt.txt
printf nut >mine/parts/nut.txt
cp -r mine before
quietly "$corsync" import "${registered[@]}" mine/list/all.pathlist --to Mine
copies=$HOME/Corsync/Mine
printf '# Parts\r\nparts/bolt.txt\r\n\r\nparts/nut.txt\r\nparts/bolt.txt' | cmp - "$copies/all.pathlist"
cmp mine/parts/bolt.txt "$copies/parts/bolt.txt"
cmp mine/parts/nut.txt "$copies/parts/nut.txt"
diff -r before mine || fail "The import changed its sources."

# What it cannot read is its failure, with file, reason and place.
printf 'a.txt\n\377.txt\n' >mine/bad.pathlist
if "$corsync" links "${registered[@]}" mine/bad.pathlist >said 2>&1; then
    fail "A damaged file was read: $(cat said)"
fi
grep -qF 'bad.pathlist: line 2 is no UTF-8 (byte 6)' said || fail "The reason is missing: $(cat said)"
