#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compares the tests that ran under Wine (the last ./test --windows) with those of the Linux build (the
# last ./test), and both with docs/platforms.md, which has to give a reason for each test that only
# one of them has, and the number of tests that each runs.
#
#   check-platforms.sh           fails when the table is not complete or says too much
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
sed -n 's/^| `\([^`]*\)` | \(Linux\|Windows\) | [^ |].*/\1 \2/p' docs/platforms.md | sort >"$work/table"
missing=$(comm -23 "$work/one" "$work/table")
extra=$(comm -13 "$work/one" "$work/table")
[ -z "$missing" ] || { echo "Not in docs/platforms.md:"; echo "$missing"; } >&2
[ -z "$extra" ] || { echo "In docs/platforms.md, but not so:"; echo "$extra"; } >&2
number() { wc -l <"$work/$1" | sed ':next; s/\B[0-9]\{3\}\>/,&/; t next'; }
totals="$(number linux) tests run on Linux and $(number windows) on Windows"
wrong=
grep -qF "$totals" docs/platforms.md || wrong="docs/platforms.md has to say: $totals"
[ -z "$wrong" ] || echo "$wrong" >&2
echo "$totals, $(comm -12 "$work/linux" "$work/windows" | wc -l) of them the same."
[ -z "$missing$extra$wrong" ]
