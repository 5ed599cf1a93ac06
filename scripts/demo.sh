#!/bin/bash
# SPDX-License-Identifier: MIT
# Shows what pixkit does: installs what the build needs, builds the command, applies every effect to pictures and leaves
# a page with the results.
#
#   demo.sh [PICTURE...]   without arguments: the project's own pictures
#
# Results go to out/gallery; open out/gallery/index.html.
set -euo pipefail
caller=$PWD
cd "$(dirname "$0")/.."

case ${1:-} in
-h | --help)
    sed -n '3,8p' "$0"
    exit 0
    ;;
esac

pictures=()
for picture in "$@"; do
    case $picture in
    /*) pictures+=("$picture") ;;
    *) pictures+=("$caller/$picture") ;;
    esac
done
[ ${#pictures[@]} -gt 0 ] || pictures=(samples/pictures/*.png)

scripts/setup.sh demo

. scripts/compiler_cache.sh
# A folder of its own: the tests, and what they need, stay out of it.
cmake --preset install -B build/demo >/dev/null
cmake --build build/demo --target pixkit-command

build/demo/src/cli/pixkit effects "${pictures[@]}" -o out/gallery
