#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# run.sh WORK VERSION SAMPLE: the installed command, for a user who has never run it.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
version=$1 sample=$2
empty run
private_home "$PWD/home"
cp -r "$sample" sample
corsync=$prefix/bin/corsync

said=$("$corsync" --version)
[ "$said" = "corsync $version" ] || fail "--version says: $said"
while read -r library; do
    [[ $library == "$prefix"/* ]] || fail "corsync loads $library"
done < <(ldd "$corsync" | sed -n 's/.*=> \(.*libCorsync.*\) (.*/\1/p')

# Exit code 7 when one does not load.
quietly "$corsync" plugins
"$corsync" plugins >plugins
for library in "$prefix"/bin/SyncPlugins/*; do
    grep -q "^ok .*(${library##*/})" plugins || fail "${library##*/} is not registered: $(cat plugins)"
done

quietly "$corsync" import "${selection[@]}" --to Shed
check_copies sample "$HOME/Corsync/Shed"
[ -s "$XDG_DATA_HOME/corsync/sync.db" ] || fail "There is no database in the user's data folder."
