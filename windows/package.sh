#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# package.sh [PRESET]: installs what the Windows build needs, builds it and packs the zip for users from
# it, or from another Windows preset than windows-release. Prints where the zip lies.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. cmake/setup.sh
install_packages "${packages[@]}"
windows/dependencies.sh
preset=${1:-windows-release}
rm -f "build/$preset"/package/*.zip
build "$preset" package
ls "$PWD/build/$preset"/package/*.zip
