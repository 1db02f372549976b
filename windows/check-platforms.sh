#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compares the tests that ran under Wine (the last ./test --windows) with those of the Linux build (the
# last ./test), and both with tests/platforms.txt, which has to give a reason for each test that only
# one of them has.
#
#   check-platforms.sh           fails when the list is not complete or says too much
#   check-platforms.sh --list    prints the tests that only one system has
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for name in $(ctest --test-dir build/windows-test -N -L gtest | sed -n 's/^ *Test *#[0-9]*: //p'); do
    sed -n 's/.*<testcase name="\([^"]*\)".*status="run".* classname="\([^"]*\)".*/\2.\1/p' \
        "build/windows-test/tests/$name.xml"
done | sort -u >"$work/windows"
for program in build/release/tests/*_tests/*_tests; do
    "$program" --gtest_list_tests 2>/dev/null
done | sed 's/ *#.*//' | awk '/^[^ ].*\.$/ { suite = $1; next } /^  / { print suite $1 }' | sort -u >"$work/linux"
for system in linux windows; do
    [ -s "$work/$system" ] || { echo "check-platforms.sh: no tests for $system" >&2; exit 1; }
done

{
    comm -23 "$work/linux" "$work/windows" | sed 's/$/ Linux/'
    comm -13 "$work/linux" "$work/windows" | sed 's/$/ Windows/'
} | sort >"$work/one"
if [ "${1:-}" = --list ]; then
    cat "$work/one"
    exit
fi
list=tests/platforms.txt
wrong=$(grep -v '^#' "$list" | awk -F'\t' 'NF != 3 || $1 == "" || $3 == "" || ($2 != "Linux" && $2 != "Windows")')
[ -z "$wrong" ] || { echo "$list: not a test, a system and a reason:"; echo "$wrong"; } >&2
grep -v '^#' "$list" | awk -F'\t' '{ print $1, $2 }' | sort >"$work/list"
missing=$(comm -23 "$work/one" "$work/list")
extra=$(comm -13 "$work/one" "$work/list")
[ -z "$missing" ] || { echo "Not in $list:"; echo "$missing"; } >&2
[ -z "$extra" ] || { echo "In $list, but not so:"; echo "$extra"; } >&2
number() { wc -l <"$work/$1" | sed ':next; s/\B[0-9]\{3\}\>/,&/; t next'; }
echo "$(number linux) tests run on Linux and $(number windows) on Windows," \
    "$(comm -12 "$work/linux" "$work/windows" | wc -l) of them the same."
[ -z "$wrong$missing$extra" ]
