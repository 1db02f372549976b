#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# build_headers.sh WORK COMPILER FLAGS
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
compiler=$1 flags=$2
# An earlier build is of use: what was compiled from the same header is not compiled again.
mkdir -p "$work/headers"
cd "$work/headers"
build_against_prefix "$scripts/headers" .
