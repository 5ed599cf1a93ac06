#!/bin/bash
# Checks the layout of every C++ file with clang-format, and the files of a native build with clang-tidy.
#
#   lint.sh BUILD-FOLDER      a configured native build, whose compile_commands.json says how files are compiled
#
# clang-tidy takes seconds for a file. A file that passed is not looked at again until it, a header that it includes, the
# way it is compiled or the settings change (marks in ~/.cache/pixkit-tidy).
set -uo pipefail
cd "$(dirname "$0")/.."
build=${1:?the folder of a native build}
export build
export marks=${XDG_CACHE_HOME:-${HOME:-/tmp}/.cache}/pixkit-tidy
mkdir -p "$marks"
failed=0

mapfile -t sources < <(find src include tests fuzz bench samples -name '*.cpp' -o -name '*.h')
clang-format --dry-run -Werror "${sources[@]}" || { echo "lint: clang-format wants other layouts (see above)"; failed=1; }

settings=$(clang-tidy --version | cat - .clang-tidy src/CMakeLists.txt tests/CMakeLists.txt \
    cmake/Settings.cmake | sha256sum)
export settings

# One file; prints nothing when it passes.
tidy() {
    local file=$1 headers mark output
    # Comments and all, because some of them speak to clang-tidy; only the project's own headers.
    headers=$(g++ -std=c++20 -MM -Isrc -Iinclude -Itests -Itests/support -mavx2 "$file" 2>/dev/null |
        tr -d '\\' | tr ' ' '\n' | grep -v -e '^/' -e ':$' | sort -u)
    mark=$marks/$({ echo "$settings $file"; sha256sum "$file" $headers; } | sha256sum | cut -c1-40)
    [ -e "$mark" ] && { touch "$mark"; return 0; }
    if output=$(clang-tidy --quiet -p "$build" "$file" 2>/dev/null); then
        touch "$mark"
    else
        echo "$output"
        return 1
    fi
}
export -f tidy

# Only what the native build compiles: the Windows side is left to its compiler's warnings.
grep -o '"file": "[^"]*"' "$build/compile_commands.json" | cut -d'"' -f4 | sed "s|^$PWD/||" | grep -v '^/' | sort -u |
    xargs -r -P "$(nproc)" -I{} bash -c 'tidy "$1"' tidy {} || failed=1
find "$marks" -type f -mtime +30 -delete
exit "$failed"
