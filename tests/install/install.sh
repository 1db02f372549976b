#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# install.sh WORK BUILD SOURCE: installs the build into an empty folder and moves that: nothing in it may lead
# to the build, to the sources or to where it was installed.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
build=$1 source=$2
rm -rf "$prefix"
empty first
quietly cmake --install "$build" --prefix "$work/first/prefix"
mv "$work/first/prefix" "$prefix"
cd "$prefix"

# Programs and libraries as well, unless they hold debugging information.
if leading=$(grep -rlIF -e "$source/" -e "$work/first" .); then
    fail "These lead out of the installed tree: $leading"
fi
while read -r file; do
    ! readelf -d "$file" | grep -E 'R(UN)?PATH' | grep -vF '[$ORIGIN' ||
        fail "$file looks for libraries elsewhere."
done < <(find bin lib -type f \( -name '*.so*' -o -perm -u+x \))

for header in "$source"/include/*/*.h; do
    cmp -s "$header" "include/${header#"$source"/include/}" || fail "$header is not installed as it is."
done
for file in bin/corsync lib/libCorsyncFileLink.so lib/libCorsyncServices.so include/syncservices/Version.h \
    lib/cmake/Corsync/CorsyncConfig.cmake lib/cmake/Corsync/CorsyncConfigVersion.cmake \
    share/doc/corsync/LICENSE share/doc/corsync/THIRD-PARTY.md; do
    [ -f "$file" ] || fail "$file is not installed."
done
for file in "$build"/bin/SyncPluginRegFiles/*; do
    [ -f "bin/SyncPluginRegFiles/${file##*/}" ] || fail "${file##*/} is not installed."
done
