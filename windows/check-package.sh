#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check-package.sh [PRESET]: makes the zip from this build (windows-release), unpacks it and uses it in a
# new Wine prefix as README.txt says.
#
# - Every library that a program or library wants is in the zip or part of Windows, every plug-in loads.
# - The sample projects are imported. The copies must be those of the Linux run byte for byte, and the
#   database must say the same.
# - A host program and a plug-in, built from what is in the zip and Qt alone, work with it.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. cmake/setup.sh
install_packages wine64 unzip sqlite3 binutils-mingw-w64-x86-64
zip=$(windows/package.sh "$@")
build release corsync plugins

work=$(mktemp -d)
export CORSYNC_WINE_PREFIX=$work/prefix
trap 'windows/run-wine.sh --stop; rm -rf "$work"' EXIT
unzip -q "$zip" -d "$work/zip"
package=$(echo "$work"/zip/*)
corsync_exe=$package/bin/corsync.exe

fail() {
    echo "check-package.sh: $1" >&2
    exit 1
}

# use NAME PROGRAM ARGUMENT...: a program of the zip, which has to succeed. Leaves its output in NAME.out.
use() {
    local name=$1 code=0
    shift
    windows/run-wine.sh "$@" >"$work/$name.out" 2>"$work/$name.err" </dev/null || code=$?
    [ "$code" -eq 0 ] || { cat "$work/$name.out" "$work/$name.err" >&2; fail "$name: exit code $code"; }
}

# Whatever is in the zip is explained, and has its licence in it.
for part in "$package"/* "$package"/docs/*; do
    name=$(basename "$part")
    [ "$name" = README.txt ] || grep -qwF "$name" "$package/README.txt" || fail "README.txt does not name $name"
done
for part in "$package"/licences/*/ "$package"/bin/*.dll "$package"/bin/SyncPlugins/*.dll; do
    name=$(basename "$part")
    case $name in Corsync*.dll | *SyncPlugin.dll) continue ;; esac
    grep -qwF "$name" "$package/licences/README.txt" || fail "licences.txt does not name $name"
done

cmp LICENSE "$package/LICENSE"

# Wine has libraries that a Windows of today may not have, so these are all that may be wanted of it.
windows_dlls="advapi32 api-ms-win-core-synch-l1-2-0 authz kernel32 mpr msvcrt netapi32 ntdll ole32 shell32 user32
              userenv version winmm ws2_32"
for file in "$corsync_exe" "$package"/bin/*.dll "$package"/bin/SyncPlugins/*.dll; do
    wanted=$(x86_64-w64-mingw32-objdump -p "$file" | sed -n 's/^\tDLL Name: //p')
    [ -n "$wanted" ] || fail "$(basename "$file") wants no library at all"
    for dll in $wanted; do
        name=${dll,,}
        [ -f "$package/bin/$dll" ] || grep -qwF -- "${name%.dll}" <<<"$windows_dlls" ||
            fail "$(basename "$file") wants $dll, which is neither in the zip nor part of Windows"
    done
done

# Exit code 7 when one does not load.
use plugins "$corsync_exe" plugins
for dll in "$package"/bin/SyncPlugins/*.dll; do
    grep -q "^ok .*($(basename "$dll"))" "$work/plugins.out" || fail "$(basename "$dll") is not registered"
done

# Both runs use the same folder, so that paths differ in the drive letter alone.
import() {
    local name=$1 drive=$2 code=0
    shift 2
    mkdir "$work/run" "$work/home"
    HOME=$work/home XDG_CONFIG_HOME=$work/home "$@" import --to Shed \
        --cloud-folder "$drive$work/run/cloud" --database "$drive$work/run/sync.db" \
        "$drive$PWD/examples/garden-shed/scene/Shed.gltf" \
        "$drive$PWD/examples/garden-shed/scene/Work bench.gltf" \
        "$drive$PWD/examples/garden-shed/Lantern.glb" \
        "$drive$PWD/examples/lost-poster/Notice board.gltf" >"$work/$name.out" 2>"$work/$name.err" </dev/null ||
        code=$?
    # The poster is lost on purpose.
    [ "$code" -eq 4 ] || { cat "$work/$name.out" "$work/$name.err" >&2; echo "$name: exit code $code" >&2; return 1; }
    mv "$work/run" "$work/$name"
    rm -rf "$work/home"
}

# What a database holds, without times of the run and random ids. The history has no order of its own.
# Letter case belongs to the key of a path on Linux alone.
contents() {
    sqlite3 "$1/sync.db" "
        SELECT 'item', id, kind, authentication_id, local_path, lower(path_key), cloud_path, cloud_root,
               product_configuration_id, root_folder_id, parent_folder_id, source_consumer_id,
               links_extracted_at IS NULL, sync_option FROM items ORDER BY id;
        SELECT 'link', item_id, position, linked_item_id, reference_id, path
               FROM item_links ORDER BY item_id, position;
        SELECT 'copy', authentication_id, source_path, lower(source_key), target_path, source_modified,
               source_size, target_size, copy_date IS NULL FROM copy_history ORDER BY source_path;
        SELECT 'copied link', source_path, side, position, linked_item_id, reference_id, path
               FROM copy_history_links JOIN copy_history ON history_id = id
               ORDER BY source_path, side, position;" |
        sed 's#[Zz]:/#/#g'
}

import linux '' build/release/bin/corsync
import windows Z: windows/run-wine.sh "$corsync_exe"
diff -r "$work/linux/cloud" "$work/windows/cloud"
contents "$work/linux" >"$work/linux.sql"
contents "$work/windows" >"$work/windows.sql"
[ -s "$work/linux.sql" ]
diff "$work/linux.sql" "$work/windows.sql"

# A host program and a plug-in of somebody else. The plug-in is registered for all programs of the
# machine; its library lies where such a program looks for it.
qt=$(sed -n 's#^ *"\(.*/qt6-base-[^/]*\)"$#\1#p' build/windows-dependencies.cmake)
compiler=x86_64-w64-mingw32-g++-posix
"$compiler" -std=c++20 -O1 -Wall -Wextra -Werror "$package/examples/host/import_files.cpp" \
    -o "$package/bin/import_files.exe" -I "$package/include" -isystem "$qt/include" \
    -isystem "$qt/include/QtCore" -L "$package/lib" -lCorsyncJobs -lCorsyncFileLink -lCorsyncServices \
    -L "$qt/lib" -lQt6Core
cmake -S "$package/examples/plugin-template" -B "$work/plugin" -DCMAKE_SYSTEM_NAME=Windows \
    -DCMAKE_PREFIX_PATH="$package" -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" >"$work/plugin.out"
cmake --build "$work/plugin" >>"$work/plugin.out"
cp "$work/plugin/PathListSyncPlugin.dll" "$package/bin/SyncPlugins/"
registered="$CORSYNC_WINE_PREFIX/drive_c/ProgramData/Halvern/Halvern Sync/Plugins"
mkdir -p "$registered" "$work/mine/list" "$work/mine/parts"
cp "$work/plugin/PathList.syncplugin" "$registered/"
printf '# Parts\r\n../parts/bolt.txt' >"$work/mine/list/all.pathlist"
echo bolt >"$work/mine/parts/bolt.txt"
use host "$package/bin/import_files.exe" "Z:$work/mine/cloud" "Z:$work/mine/sync.db" Demo \
    "Z:$work/mine/list/all.pathlist"
printf '# Parts\r\nparts/bolt.txt' | cmp - "$work/mine/cloud/Demo/all.pathlist"
cmp "$work/mine/parts/bolt.txt" "$work/mine/cloud/Demo/parts/bolt.txt"

# Without any option everything lies where README.txt says.
use first "$corsync_exe" import "Z:$work/mine/list/*.pathlist" --to First
for file in AppData/Roaming/corsync/settings.ini AppData/Local/corsync/sync.db Corsync/First/all.pathlist \
    Corsync/First/parts/bolt.txt; do
    ls "$CORSYNC_WINE_PREFIX"/drive_c/users/*/"$file" >/dev/null || fail "the first import did not make $file"
done

echo "The zip imports $(find "$work/windows/cloud" -type f | wc -l) files like the Linux build;" \
    "$(wc -l <"$work/windows.sql") database rows are the same."
echo "Its $(wc -l <"$work/plugins.out") plug-ins load, and a host program and a plug-in build and work with it."
