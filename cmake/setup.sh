# SPDX-License-Identifier: Apache-2.0
# Shared by ./corsync and ./test: installs what the build needs when it is missing (Debian packages
# only), and configures the build once.

packages=(g++ cmake ninja-build git qt6-base-dev liblog4cplus-dev libsqlite3-dev libsqlitecpp-dev
          libcli11-dev rapidjson-dev zlib1g-dev libzstd-dev libexpat1-dev libutf8proc-dev
          libutfcpp-dev libxxhash-dev pkg-config libgtest-dev libgmock-dev python3)

# install_packages NAME...: installs those that are missing, as root or through sudo.
install_packages() {
    local missing=() name
    for name in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" = installed ] ||
            missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}" >&2
    local run=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "corsync: these packages are missing, and neither root nor sudo is at hand: ${missing[*]}" >&2
            return 1
        }
        run=(sudo)
    fi
    local install=("${run[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y
                   --no-install-recommends "${missing[@]}")
    # A fresh machine has no package lists, and an old one may have lists of packages that are gone.
    "${install[@]}" >/dev/null 2>&1 || { "${run[@]}" apt-get update >/dev/null && "${install[@]}" >&2; }
}

# install_gltf_validator: into build/programs, through npm; a proof needs it.
install_gltf_validator() {
    local version=2.0.0-dev.3.10 folder=build/programs
    local package=$folder/node_modules/gltf-validator/package.json
    grep -qs "\"version\": \"$version\"" "$package" && return 0
    # Whoever has npm from elsewhere than Debian keeps it: the two exclude each other.
    command -v npm >/dev/null || install_packages nodejs npm
    echo "Installing: gltf-validator $version (npm, into $folder)" >&2
    mkdir -p "$folder"
    npm install --prefix "$folder" --no-save --no-audit --no-fund --loglevel=error \
        "gltf-validator@$version" >&2
}

# build PRESET TARGET...: configures when needed and builds; quiet unless something fails.
build() {
    local preset=$1 log
    shift
    log=$(mktemp)
    if [ ! -f "build/$preset/build.ninja" ]; then
        echo "Configuring the build (once)" >&2
        cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; rm -f "$log"; return 1; }
    fi
    if [ -z "$(ninja -C "build/$preset" -n "$@" 2>/dev/null | grep 'no work to do')" ]; then
        echo "Building" >&2
        if [ -t 2 ]; then
            cmake --build --preset "$preset" --target "$@" >&2 || { rm -f "$log"; return 1; }
        else
            cmake --build --preset "$preset" --target "$@" >"$log" 2>&1 ||
                { cat "$log" >&2; rm -f "$log"; return 1; }
        fi
    fi
    rm -f "$log"
}
