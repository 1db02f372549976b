#!/usr/bin/env bash
# check-package.sh [PRESET]: makes the zip from this build (windows-release), unpacks it and imports the
# sample project with its corsync.exe in a new Wine prefix. The copies must be those of the Linux run
# byte for byte, and the database must say the same.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. cmake/setup.sh
install_packages wine64 unzip sqlite3
zip=$(windows/package.sh "$@")
build release corsync plugins

work=$(mktemp -d)
export CORSYNC_WINE_PREFIX=$work/prefix
trap 'windows/run-wine.sh --stop; rm -rf "$work"' EXIT
unzip -q "$zip" -d "$work/zip"

# Whatever is in the zip has its licence in it.
for part in "$work"/zip/*/licences/*/ "$work"/zip/*/bin/*.dll "$work"/zip/*/bin/SyncPlugins/*.dll; do
    name=$(basename "$part")
    case $name in Corsync*.dll | *SyncPlugin.dll) continue ;; esac
    grep -qwF "$name" "$work"/zip/*/licences/README.txt ||
        { echo "licences.txt does not name $name" >&2; exit 1; }
done
corsync_exe=$(echo "$work"/zip/*/bin/corsync.exe)

# Both runs use the same folder, so that paths differ in the drive letter alone.
import() {
    local name=$1 drive=$2 code=0
    shift 2
    mkdir "$work/run" "$work/home"
    HOME=$work/home XDG_CONFIG_HOME=$work/home "$@" import --to Shed \
        --cloud-folder "$drive$work/run/cloud" --database "$drive$work/run/sync.db" \
        "$drive$PWD/examples/garden-shed/scene/Shed.gltf" \
        "$drive$PWD/examples/garden-shed/scene/Work bench.gltf" \
        "$drive$PWD/examples/garden-shed/Lantern.glb" >"$work/$name.out" 2>"$work/$name.err" </dev/null ||
        code=$?
    # One link of the sample is missing on purpose.
    [ "$code" -eq 4 ] || { cat "$work/$name.out" "$work/$name.err" >&2; echo "$name: exit code $code" >&2; return 1; }
    mv "$work/run" "$work/$name"
    rm -rf "$work/home"
}

# What a database holds, without times of the run and random ids. The history has no order of its own.
contents() {
    sqlite3 "$1/sync.db" "
        SELECT 'item', id, kind, authentication_id, local_path, path_key, cloud_path, cloud_root,
               product_configuration_id, root_folder_id, parent_folder_id, source_consumer_id,
               links_extracted_at IS NULL, sync_option FROM items ORDER BY id;
        SELECT 'link', item_id, position, linked_item_id, reference_id, path
               FROM item_links ORDER BY item_id, position;
        SELECT 'copy', authentication_id, source_path, source_key, target_path, source_modified,
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
echo "The zip imports $(find "$work/windows/cloud" -type f | wc -l) files like the Linux build;" \
    "$(wc -l <"$work/windows.sql") database rows are the same."
