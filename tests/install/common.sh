# SPDX-License-Identifier: Apache-2.0
# Read by the scripts beside. The first argument of each is the folder that they share; below it
# install.sh leaves what they use in prefix/.
set -euo pipefail
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$1
prefix=$work/prefix
shift
# Nothing of the caller's environment leads to another corsync, its settings or its libraries.
unset LD_LIBRARY_PATH CMAKE_PREFIX_PATH CPATH LIBRARY_PATH Corsync_DIR
export LC_ALL=C.UTF-8

fail() {
    echo "$1" >&2
    exit 1
}

# empty NAME: makes this folder anew and goes there.
empty() {
    rm -rf "${work:?}/$1"
    mkdir -p "$work/$1"
    cd "$work/$1"
}

# private_home FOLDER: settings, database and home lie there from here on.
private_home() {
    export HOME=$1 XDG_CONFIG_HOME=$1/config XDG_DATA_HOME=$1/data XDG_CACHE_HOME=$1/cache
    mkdir -p "$HOME"
}

# quietly COMMAND...: its output is of interest only when it fails.
quietly() {
    "$@" >"$work/quietly.$$" 2>&1 || {
        cat "$work/quietly.$$" >&2
        fail "This failed: $*"
    }
    rm -f "$work/quietly.$$"
}

# build_against_prefix SOURCE BUILD OPTION...: a project that must find the installed Corsync and no other.
build_against_prefix() {
    local source=$1 build=$2
    shift 2
    quietly cmake -S "$source" -B "$build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
        -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" "$@"
    ! grep -q '^Corsync_DIR:' "$build/CMakeCache.txt" ||
        grep -q "^Corsync_DIR:PATH=$prefix/" "$build/CMakeCache.txt" || fail "$source found another corsync."
    quietly cmake --build "$build"
}

# Two files of examples/garden-shed, which have links and lack nothing.
selection=("sample/scene/Work bench.gltf" sample/Lantern.glb)

# check_copies SAMPLE FOLDER: the folder holds what an import of the selection makes, and nothing else.
check_copies() {
    local sample=$1 copies=$2 expected name
    expected=$(printf '%s\n' Lantern.glb "Work bench.gltf" geometry/Bench.bin textures/Planks.png \
        "textures/Roof tiles.png")
    diff <(echo "$expected") <(cd "$copies" && find . -type f | sed 's#^[.]/##' | LC_ALL=C sort) ||
        fail "These are not the files that the import makes."
    cmp "$sample/scene/geometry/Bench.bin" "$copies/geometry/Bench.bin"
    for name in Planks.png "Roof tiles.png"; do
        cmp "$sample/textures/$name" "$copies/textures/$name"
    done
    # The one link of the scene that another place of its file changes.
    sed 's#"[.][.]/textures/Planks[.]png"#"textures/Planks.png"#' "$sample/scene/Work bench.gltf" |
        cmp - "$copies/Work bench.gltf"
    ! cmp -s "$sample/scene/Work bench.gltf" "$copies/Work bench.gltf" || fail "No link was rewritten."
}
