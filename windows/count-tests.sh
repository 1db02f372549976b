#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What the last run of the Windows suite ran, from the results that its test programs wrote. Fails when
# one has left no results: it crashed, in the test that it named last.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../build/windows-test"
log=Testing/Temporary/LastTest.log
programs=0 ran=0 failed=0 code=0
for name in $(sed -n 's#^[0-9]*/[0-9]* Test: ##p' "$log" | grep -x '[a-z_]*' | sort -u); do
    results=tests/$name.xml
    if [ ! -s "$results" ]; then
        echo "$name left no results. Its last test was:" "$(sed -n "/Test: $name\$/,/ Test: /p" "$log" |
            sed -n 's/^\[ RUN      \] //p' | tail -n 1)" >&2
        code=1
        continue
    fi
    programs=$((programs + 1))
    ran=$((ran + $(grep -c '<testcase .*status="run"' "$results")))
    failed=$((failed + $(sed -n 's/^<testsuites .*failures="\([0-9]*\)".*/\1/p' "$results")))
done
echo "$ran Windows tests ran in $programs programs, $failed failed."
exit $code
