#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Gets and cross-builds what the Windows build links, from Debian's source packages, into a cache
# folder that all builds of this machine share: $CORSYNC_CACHE, or ~/.cache/corsync/windows. A
# dependency whose version and recipe have not changed is reused. Writes
# build/windows-dependencies.cmake, which windows/toolchain.cmake reads.
set -euo pipefail
root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
cd "$root"
. cmake/setup.sh
cache=${CORSYNC_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/corsync/windows}
jobs=${CORSYNC_JOBS:-$(nproc)}
mkdir -p "$cache" build
cache=$(cd "$cache" && pwd)
# Two builds of one machine must not make the same dependency at once.
exec 8>"$cache/lock"
flock 8
work=$cache/work
prefixes=()
sudo=
[ "$(id -u)" -eq 0 ] || sudo=sudo

# The versions to build are those of the native packages.
install_packages "${packages[@]}" g++-mingw-w64-x86-64-posix make dpkg-dev tcl xz-utils \
    qt6-base-dev-tools googletest

fail() {
    echo "windows/dependencies.sh: $1" >&2
    exit 1
}

# quietly LOG COMMAND...: shows the end of the output only when the command fails.
quietly() {
    local log=$1
    shift
    "$@" >"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        fail "this failed, the whole output is in $log: $*"
    }
}

# A version that two suites have comes from the first: the archive of security updates is the one that
# forgets what it no longer needs.
debian_sources() {
    apt-get indextargets --format '$(ORIGIN) deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' | sed -n 's/^Debian //p' | sort -u |
        awk '/-security/ { later = later $0 "\n"; next } { print } END { printf "%s", later }'
}

# apt with lists of its own for source packages, so that this machine's configuration stays as it is.
# The sources lie where this machine's Debian packages come from.
source_apt() {
    local list=$work/sources.list
    if [ -z "${lists_are_fresh:-}" ]; then
        debian_sources >"$list"
        # A fresh machine has no package lists yet.
        [ -s "$list" ] || { $sudo apt-get update >/dev/null && debian_sources >"$list"; }
        [ -s "$list" ] || fail "no Debian package source is configured on this machine"
    fi
    mkdir -p "$work/apt/lists/partial" "$work/apt/cache/archives/partial"
    "$@" -o Dir::Etc::sourcelist="$list" -o Dir::Etc::sourceparts=- \
        -o Dir::State::lists="$work/apt/lists" -o Dir::Cache="$work/apt/cache" \
        -o APT::Sandbox::User="$(id -un)"
}

# download PACKAGE VERSION: its source package. An archive keeps few versions: when it has moved on
# since this machine installed that one, the newest that can be had must do.
download() {
    local version
    for version in "$2" $(source_apt apt-cache showsrc --only-source "$1" |
        sed -n 's/^Version: //p' | sort -rVu); do
        source_apt apt-get -q source --download-only "$1=$version" && return 0
    done
    return 1
}

# get_source PACKAGE VERSION: fetches and unpacks it, with Debian's changes, to $work/PACKAGE.
get_source() {
    local package=$1 folder=$work/$1.get
    rm -rf "$folder" "${work:?}/$package"
    mkdir -p "$folder"
    cd "$folder"
    [ -n "${lists_are_fresh:-}" ] || quietly "$work/apt-update.log" source_apt apt-get -q update
    lists_are_fresh=yes
    quietly "$work/$package-get.log" download "$package" "$2"
    # apt has checked the files against the archive's signed index.
    quietly "$work/$package-unpack.log" dpkg-source --no-check -x ./*.dsc "$work/$package"
    cd "$root"
    rm -rf "$folder"
}

# cmake_build PACKAGE SOURCE PREFIX OPTION...
cmake_build() {
    local package=$1 source=$2 prefix=$3
    shift 3
    CORSYNC_WINDOWS_PREFIXES=$(IFS=';' && echo "${prefixes[*]}")
    export CORSYNC_WINDOWS_PREFIXES
    quietly "$work/$package-configure.log" cmake -S "$source" -B "$work/$package-build" -G Ninja \
        -DCMAKE_TOOLCHAIN_FILE="$root/windows/toolchain.cmake" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_INSTALL_PREFIX="$prefix" "$@"
    quietly "$work/$package-build.log" cmake --build "$work/$package-build" -j "$jobs"
    quietly "$work/$package-install.log" cmake --install "$work/$package-build" --strip
    rm -rf "$work/$package-build"
}

# The recipes: each gets the folder to install to and the version. Their text is part of the key.

# Core, Xml and Test. What is off either belongs to the modules that are off or would look for a
# library of the building machine. Regular expressions are not compiled to machine code: the stack
# for that is thread-local with a destructor, which this compiler's runtime may run after it has freed
# the thread's variables, so that a program with several threads crashes now and then.
build_qt6_base() {
    get_source qt6-base "$2"
    local options=(-DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DBUILD_WITH_PCH=ON
        -DCMAKE_C_FLAGS=-DPCRE2_DISABLE_JIT) feature
    for feature in gui widgets network sql dbus concurrent printsupport opengl animation \
        pkg_config glib icu zstd system_zlib system_pcre2 system_doubleconversion; do
        options+=("-DFEATURE_$feature=OFF")
    done
    cmake_build qt6-base "$work/qt6-base" "$1" "${options[@]}"
    install_licence qt6-base "$1" LICENSES/LGPL-3.0-only.txt LICENSES/GPL-3.0-only.txt \
        src/3rdparty/pcre2/LICENCE src/3rdparty/zlib/LICENSE src/3rdparty/double-conversion/LICENSE
}

# The thread pool of log4cplus waits in a static destructor for threads that Windows has ended
# already: with it the process hangs at exit.
build_log4cplus() {
    get_source log4cplus "$2"
    cmake_build log4cplus "$work/log4cplus" "$1" -DUNICODE=ON -DLOG4CPLUS_ENABLE_THREAD_POOL=OFF \
        -DLOG4CPLUS_BUILD_TESTING=OFF -DLOG4CPLUS_BUILD_LOGGINGSERVER=OFF -DWITH_UNIT_TESTS=OFF \
        -DLOG4CPLUS_ENABLE_DECORATED_LIBRARY_NAME=OFF
    install_licence log4cplus "$1" LICENSE
}

# A static library: CorsyncServices.dll is the one that holds it.
build_sqlite3() {
    get_source sqlite3 "$2"
    mkdir -p "$work/sqlite3/amalgamation" "$1/include" "$1/lib"
    cd "$work/sqlite3/amalgamation"
    quietly "$work/sqlite3-configure.log" ../configure --disable-shared --disable-readline
    quietly "$work/sqlite3-amalgamation.log" make sqlite3.c
    quietly "$work/sqlite3-build.log" x86_64-w64-mingw32-gcc-posix -O2 -DSQLITE_THREADSAFE=1 \
        -DSQLITE_ENABLE_COLUMN_METADATA -c sqlite3.c -o sqlite3.o
    x86_64-w64-mingw32-ar rcs "$1/lib/libsqlite3.a" sqlite3.o
    cp sqlite3.h ../src/sqlite3ext.h "$1/include/"
    cd "$root"
    install_licence sqlite3 "$1" LICENSE.md
}

build_sqlitecpp() {
    get_source sqlitecpp "$2"
    cmake_build sqlitecpp "$work/sqlitecpp" "$1" -DSQLITECPP_INTERNAL_SQLITE=OFF \
        -DSQLITECPP_RUN_CPPLINT=OFF -DSQLITECPP_RUN_CPPCHECK=OFF -DSQLITECPP_USE_STACK_PROTECTION=OFF
    install_licence sqlitecpp "$1" LICENSE.txt
}

# Static libraries, too, so that a plug-in needs no DLL of its own.
build_zlib() {
    get_source zlib "$2"
    mkdir -p "$1/include" "$1/lib/pkgconfig"
    cd "$work/zlib"
    # Debian leaves out the files for building it on Windows, which only name these sources.
    quietly "$work/zlib-build.log" x86_64-w64-mingw32-gcc-posix -O3 -D_LARGEFILE64_SOURCE=1 -c ./*.c
    x86_64-w64-mingw32-ar rcs libz.a ./*.o
    cp zlib.h zconf.h "$1/include/"
    cp libz.a "$1/lib/"
    pkgconfig "$1" zlib "$(sed -n 's/^#define ZLIB_VERSION "\(.*\)"/\1/p' zlib.h)" -lz ""
    cd "$root"
    install_licence zlib "$1" LICENSE
}

build_libzstd() {
    get_source libzstd "$2"
    cmake_build libzstd "$work/libzstd/build/cmake" "$1" -DZSTD_BUILD_SHARED=OFF \
        -DZSTD_BUILD_PROGRAMS=OFF -DZSTD_BUILD_TESTS=OFF
    install_licence libzstd "$1" LICENSE
}

build_expat() {
    get_source expat "$2"
    # Debian's corrections compare what this defines, as the other way to configure it does.
    sed -i 's/^#cmakedefine XML_DTD$/#cmakedefine XML_DTD 1/' "$work/expat/expat/expat_config.h.cmake"
    cmake_build expat "$work/expat/expat" "$1" -DEXPAT_SHARED_LIBS=OFF -DEXPAT_BUILD_DOCS=OFF \
        -DEXPAT_BUILD_TOOLS=OFF -DEXPAT_BUILD_EXAMPLES=OFF -DEXPAT_BUILD_TESTS=OFF
    install_licence expat "$1" expat/COPYING
}

build_utf8proc() {
    get_source utf8proc "$2"
    cmake_build utf8proc "$work/utf8proc" "$1" -DBUILD_SHARED_LIBS=OFF \
        -DUTF8PROC_ENABLE_TESTING=OFF
    install_licence utf8proc "$1" LICENSE.md
}

# pkgconfig PREFIX NAME VERSION LIBRARIES PACKAGES: a description that stays true where the folder is moved.
pkgconfig() {
    printf '%s\n' 'prefix=${pcfiledir}/../..' "Name: $2" "Description: $2" "Version: $3" \
        "Requires: $5" "Libs: -L\${prefix}/lib $4" 'Cflags: -I${prefix}/include' >"$1/lib/pkgconfig/$2.pc"
}

build_googletest() {
    cmake_build googletest /usr/src/googletest "$1" -DBUILD_GMOCK=ON
}

# Header libraries are the same for every system.
build_libcli11_dev() {
    mkdir -p "$1/include" "$1/share/cmake"
    cp -r /usr/include/CLI "$1/include/"
    cp -r /usr/share/cmake/CLI11 "$1/share/cmake/"
    install_copyright libcli11-dev "$1"
}

build_rapidjson_dev() {
    mkdir -p "$1/include"
    cp -r /usr/include/rapidjson "$1/include/"
    install_copyright rapidjson-dev "$1"
}

build_libutfcpp_dev() {
    mkdir -p "$1/include"
    cp -r /usr/include/utf8cpp "$1/include/"
    install_copyright libutfcpp-dev "$1"
}

build_libxxhash_dev() {
    mkdir -p "$1/include"
    cp /usr/include/xxhash.h "$1/include/"
    install_copyright libxxhash-dev "$1"
}

# install_licence PACKAGE PREFIX FILE...: the licence texts for the zip, and Debian's summary.
install_licence() {
    local package=$1 folder=$2/licences/$1 file
    shift 2
    mkdir -p "$folder"
    cp "$work/$package/debian/copyright" "$folder/copyright.txt"
    for file in "$@"; do
        cp "$work/$package/$file" "$folder/$(echo "${file#src/3rdparty/}" | tr / -)"
    done
}

install_copyright() {
    mkdir -p "$2/licences/$1"
    cp "/usr/share/doc/$1/copyright" "$2/licences/$1/copyright.txt"
}

# version_of PACKAGE: of the binary package that is installed. The tools of a Qt of another version
# must not be used, so that Qt's own follows the installed one too.
version_of() {
    dpkg-query -W -f '${source:Version}' "$1"
}

# dependency PACKAGE VERSION [PREFIX]: builds it unless the cache has it. PREFIX is what it links.
dependency() {
    local package=$1 version=$2 needs=${3:-} recipe=build_${1//-/_} key prefix
    key=$( (echo "$version ${needs##*/}"; declare -f "$recipe" cmake_build
            x86_64-w64-mingw32-g++-posix -dumpfullversion
            grep -v '^ *#' "$root/windows/toolchain.cmake") | sha256sum | cut -c1-12)
    prefix=$cache/$package-$key
    if [ ! -f "$prefix/complete" ]; then
        echo "Building $package $version for Windows" >&2
        rm -rf "$prefix" "${work:?}/$package-build"
        mkdir -p "$work" "$prefix"
        "$recipe" "$prefix" "$version"
        rm -rf "${work:?}/$package" "$work/$package"_*.orig*
    fi
    # The time tells which ones are still in use.
    touch "$prefix/complete"
    prefixes+=("$prefix")
}

dependency qt6-base "$(version_of qt6-base-dev)"
dependency log4cplus "$(version_of liblog4cplus-dev)"
dependency sqlite3 "$(version_of libsqlite3-dev)"
dependency sqlitecpp "$(version_of libsqlitecpp-dev)" "${prefixes[-1]}"
dependency zlib "$(version_of zlib1g-dev)"
dependency libzstd "$(version_of libzstd-dev)"
dependency expat "$(version_of libexpat1-dev)"
dependency googletest "$(version_of googletest)"
dependency libcli11-dev "$(version_of libcli11-dev)"
dependency rapidjson-dev "$(version_of rapidjson-dev)"
dependency utf8proc "$(version_of libutf8proc-dev)"
dependency libutfcpp-dev "$(version_of libutfcpp-dev)"
dependency libxxhash-dev "$(version_of libxxhash-dev)"

printf 'set(CORSYNC_WINDOWS_PREFIXES\n' >build/windows-dependencies.cmake.new
printf '  "%s"\n' "${prefixes[@]}" >>build/windows-dependencies.cmake.new
echo ')' >>build/windows-dependencies.cmake.new
if cmp -s build/windows-dependencies.cmake.new build/windows-dependencies.cmake; then
    rm build/windows-dependencies.cmake.new
else
    mv build/windows-dependencies.cmake.new build/windows-dependencies.cmake
    # What an earlier configuration found would be used further on.
    rm -f build/windows-*/CMakeCache.txt build/windows-*/build.ninja
fi

# What nothing has used for three months belongs to versions that are gone.
find "$cache" -mindepth 2 -maxdepth 2 -name complete -mtime +90 -printf '%h\0' | xargs -0 -r rm -rf
