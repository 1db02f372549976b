#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Every C++ source that git knows is formatted as .clang-format says. Other versions of clang-format than
# Debian 12's format some lines otherwise.
#
#   format.sh          fails at sources that are not, and names the lines
#   format.sh --fix    formats them
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../.."
version=$(clang-format --version)
[[ $version =~ version\ 14\. ]] || { echo "format.sh: clang-format 14 is wanted, this is: $version" >&2; exit 1; }
mapfile -d '' -t sources < <(git ls-files -z -- '*.h' '*.cpp')
[ ${#sources[@]} -gt 0 ] || { echo "format.sh: git knows no sources here" >&2; exit 1; }
if [ "${1:-}" = --fix ]; then
    exec clang-format -i "${sources[@]}"
fi
clang-format --dry-run -Werror "${sources[@]}"
echo "${#sources[@]} sources are formatted"
