#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs a Windows program under Wine: without a display, in a prefix of its own, with a time limit.
#
#   run-wine.sh [--terminal] [--bin FOLDER] PROGRAM ARGUMENT...
#   run-wine.sh --stop              ends whatever still runs in the prefix
#
# FOLDER holds the DLLs that are not beside PROGRAM. With --terminal the program has the caller's terminal
# as its console.
# The prefix is $CORSYNC_WINE_PREFIX, or build/wine; the limit $CORSYNC_WINE_TIMEOUT seconds, or 300.
# With CORSYNC_WINE_BRIEF set, tests that passed are left out of what a test program printed.
# The exit code is the program's, or 124 when the time was up.
set -euo pipefail
root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
export WINEPREFIX=${CORSYNC_WINE_PREFIX:-$root/build/wine} WINEARCH=win64 WINEDEBUG=-all
# No menus, no offer to fetch the .NET and HTML engines, and no debugger: it would take the place of a
# crashed program's exit code with its own.
export WINEDLLOVERRIDES="winemenubuilder.exe,winedbg.exe,mscoree,mshtml="
# File names of this machine are UTF-8, whatever its locale.
export LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY
wine=/usr/lib/wine/wine64
wineserver=/usr/lib/wine/wineserver64

if [ "${1:-}" = --stop ]; then
    [ -d "$WINEPREFIX" ] || exit 0
    timeout 30 "$wineserver" -k || true
    timeout 30 "$wineserver" -w || true
    exit 0
fi
terminal=
if [ "${1:-}" = --terminal ]; then
    terminal=yes
    shift
fi
if [ "${1:-}" = --bin ]; then
    WINEPATH="Z:${2//\//\\}"
    export WINEPATH
    shift 2
fi

# Several programs may start at once; the first makes the prefix.
if [ ! -f "$WINEPREFIX/corsync-ready" ]; then
    mkdir -p "$WINEPREFIX"
    exec 9>"$WINEPREFIX/corsync-lock"
    flock 9
    if [ ! -f "$WINEPREFIX/corsync-ready" ]; then
        timeout 240 "$wine" wineboot --init >/dev/null 2>&1 9>&- </dev/null ||
            { echo "run-wine.sh: cannot make the Wine prefix $WINEPREFIX" >&2; exit 125; }
        touch "$WINEPREFIX/corsync-ready"
    fi
    exec 9>&-
fi
# A folder of the prefix that programs see as \\corsync\share.
mkdir -p "$WINEPREFIX/dosdevices/unc/corsync/share"

limit=${CORSYNC_WINE_TIMEOUT:-300}
if [ -n "$terminal" ]; then
    # Ctrl-C comes by here, too; it must not begin the count-down to a kill.
    exec timeout --foreground --signal=KILL "$limit" "$wine" "$@"
fi

# The first program in a prefix starts Wine's services, and they keep its output open for as long as
# they run: through a pipe, the caller would wait for them. So they get files.
output=$(mktemp -d)
trap 'rm -rf "$output"' EXIT
code=0
timeout --kill-after=10 "$limit" "$wine" "$@" >"$output/out" 2>"$output/err" ||
    code=$?
if [ -n "${CORSYNC_WINE_BRIEF:-}" ]; then
    # Whoever reads the log of a failure sees that test first, and of a crash the test that ran.
    awk '/^\[ RUN      \]/ { held = $0; next }
         /^\[       OK \]/ { held = ""; next }
         /^\[-+\]/ { next }
         held != "" { print held; held = "" }
         { print }
         END { if (held != "") print held }' "$output/out"
else
    cat "$output/out"
fi
cat "$output/err" >&2
exit "$code"
