#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_exports.sh LIBRARY LIST: fails when the library exports other classes and functions than the
# list names. A Windows library must export all of the list: there, a class exports its inline
# functions, too. An ELF library holds an inline function only when something in it calls that.
set -euo pipefail
library=$1
list=$2

# Names without parameters, so that they are the same where size_t has another name.
names() {
    sed -E 's/^(non-)?virtual thunk to //; s/\(.*//; s/\[abi:[^]]*\]//g' | LC_ALL=C sort -u
}

case $library in
    *.dll)
        exported=$(objdump -p "$library" | sed -n 's/^\t\[ *[0-9]*\] \([^ ]*\)$/\1/p' | c++filt | names)
        ;;
    *)
        # Templates of the standard library and of Qt are everybody's, the names of types belong to
        # their type information, and ELF gives a private nested class the visibility of the class
        # around it.
        exported=$(nm -D --defined-only "$library" | sed 's/.* //; s/@.*//' | c++filt |
            grep -vE '^(std::|Q[A-Z]|__|_)|^(vtable|typeinfo|VTT|guard variable) for (std::|Q[A-Z])|^typeinfo name for|<|::State::' | names)
        ;;
esac
[ -n "$exported" ] || { echo "no exports found in $library" >&2; exit 1; }

expected=$(LC_ALL=C sort -u "$list")
extra=$(LC_ALL=C comm -13 <(echo "$expected") <(echo "$exported"))
missing=$(LC_ALL=C comm -23 <(echo "$expected") <(echo "$exported"))
[[ $library == *.dll ]] || missing=
[ -z "$extra" ] || { echo "exported, but not in ${list##*/}:"; echo "$extra"; } >&2
[ -z "$missing" ] || { echo "in ${list##*/}, but not exported:"; echo "$missing"; } >&2
[ -z "$extra$missing" ]
