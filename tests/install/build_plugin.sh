#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# build_plugin.sh WORK COMPILER FLAGS TEMPLATE: builds the plug-in to begin from against the installed package,
# and imports a file of its type with the installed command.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
compiler=$1 flags=$2 template=$3
empty plugin
private_home "$PWD/home"
cp -r "$template" source

quietly cmake -S source -B build -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Wshadow -Werror $flags"
quietly cmake --build build
grep -q "^Corsync_DIR:PATH=$prefix/" build/CMakeCache.txt || fail "The plug-in found another corsync."

# The kit is inside, and nothing that this plug-in does not use.
needed=$(readelf -d build/PathListSyncPlugin.so | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
! grep -E 'zstd|libz\.|expat|zip|utf8proc|Qt|Corsync' <<<"$needed" || fail "The plug-in wants more than it uses."

corsync=$prefix/bin/corsync
"$corsync" plugins --plugin-path build >plugins || fail "A plug-in does not load: $(cat plugins)"
grep -q '^ok .*(PathListSyncPlugin.so)' plugins || fail "The plug-in is not registered: $(cat plugins)"

mkdir -p mine/list mine/parts
printf '# Parts\r\n../parts/bolt.txt\r\n\r\n../parts/nut.txt\r\n../parts/bolt.txt' >mine/list/all.pathlist
printf 'bolt' >mine/parts/bolt.txt
printf 'nut' >mine/parts/nut.txt
cp -r mine before
quietly "$corsync" import --plugin-path build --to Mine mine/list/all.pathlist
copies=$HOME/Corsync/Mine
printf '# Parts\r\nparts/bolt.txt\r\n\r\nparts/nut.txt\r\nparts/bolt.txt' | cmp - "$copies/all.pathlist"
cmp mine/parts/bolt.txt "$copies/parts/bolt.txt"
cmp mine/parts/nut.txt "$copies/parts/nut.txt"
diff -r before mine || fail "The import changed a source."

# What it cannot read is its failure, with file, place and reason.
printf 'a.txt\n\377.txt\n' >mine/bad.pathlist
! "$corsync" links --plugin-path build mine/bad.pathlist >said 2>&1 || fail "A damaged file was read: $(cat said)"
grep -qF 'line 2 is no UTF-8 (byte 6)' said || fail "The reason is missing: $(cat said)"
