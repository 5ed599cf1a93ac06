#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks the layout of every C++ file with clang-format, which rooms include which, and that the fuzz targets compile;
# says how much of the code is tests; and looks for faults: in all of src with cppcheck, and in the files of a build with
# clang-tidy and, through it, clang's static analyzer.
#
#   lint.sh BUILD-FOLDER          clang-tidy looks at what differs from the branch's origin (all in CI)
#   lint.sh --all BUILD-FOLDER    at every file
#   lint.sh --windows BUILD-FOLDER
#                                 only clang-tidy, at what the Windows side alone compiles, in a build for Windows
#
# The build folder is a configured one, whose compile_commands.json says how files are compiled.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
all=${CI:-}
if [ "${1:-}" = --all ]; then all=yes; shift; fi
if [ "${1:-}" = --windows ]; then
    find src/com src/platform/win32 -name '*.cpp' | xargs scripts/tidy.py "${2:?the folder of a build for Windows}"
    exit
fi
build=${1:?the folder of a native build}
failed=0

mapfile -t sources < <(find src include tests fuzz bench samples -name '*.cpp' -o -name '*.h')
clang-format --dry-run -Werror "${sources[@]}" || { echo "lint: clang-format wants other layouts (see above)"; failed=1; }

# A file includes its own room and lower floors only: the floors are those of the table in docs/architecture.md.
grep -rE '^ *#include "[a-z]+/' src --include='*.h' --include='*.cpp' | awk '
    FNR == NR && /^\| [0-9]/ {
        split($0, cells, "|")
        for (i = split(cells[3], words, /[ `]+/); i > 0; --i)
            if (sub(/^src\//, "", words[i]) && sub(/\/$/, "", words[i])) floor[words[i]] = cells[2] + 0
    }
    FNR == NR { next }
    {
        split($0, path, "/")
        included = $0
        sub(/^[^"]*"/, "", included)
        sub(/\/.*/, "", included)
        from = floor[path[2]]
        to = floor[included]
        if (included == path[2] || (from && to && to < from)) next
        print "lint: " $0 " leads to no lower floor"
        failed = 1
    }
    END { exit failed }' docs/architecture.md - || failed=1

# Mutexes of the Windows toolchain take memory (platform/Lock.h).
! grep -rn 'std::[a-z_]*mutex' src --exclude-dir=portable --exclude=Lock.h || { echo "lint: take platform::Lock"; failed=1; }

# Lines that are not blank, of what git knows; tests and fuzzers may be 33 % as long as all the rest.
code_lines() {
    git ls-files -z -- "$@" | grep -zE '\.(c|cc|cpp|h|hpp|inl|idl|rc|py|sh|vbs|js|ps1|cmake)$|CMakeLists\.txt$' |
        xargs -0 -r cat | grep -cv '^[[:space:]]*$'
}
if git rev-parse HEAD >/dev/null 2>&1; then
    tests=$(code_lines tests fuzz)
    rest=$(($(code_lines .) - tests))
    echo "lint: $tests lines of tests to $rest of code: $((100 * tests / rest)) %"
    [ $((100 * tests)) -le $((33 * rest)) ] || { echo "lint: more than 33 %"; failed=1; }
fi

# Both word sizes' and both systems' code, within seconds. What it is wrong about stands in the list, with reasons.
cppcheck -j "$(nproc)" --quiet --std=c++20 --enable=warning,portability --error-exitcode=1 -Isrc -Iinclude \
    '-DSTDMETHODIMP_(type)=type' --suppressions-list=scripts/cppcheck.txt \
    --template='lint: {file}:{line}: {message} [cppcheck: {id}]' src || failed=1

# Headers that the C++ reference can be made of: no comment that Doxygen takes for something else.
if command -v doxygen >/dev/null; then
    folder=$(mktemp -d)
    scripts/reference.py --cxx "$folder" || { echo "lint: doxygen complains of a header"; failed=1; }
    rm -r "$folder"
fi

# Only clang builds the fuzz targets, and the tests do not.
for target in fuzz/fuzz_*.cpp; do
    g++ -std=c++20 -fsyntax-only -Wall -Wextra -Wno-unknown-pragmas -DPIXKIT_FUZZ_PEERS '-D__has_feature(x)=0' \
        -Isrc -Iinclude -Itests "$target" || { echo "lint: $target is no program"; failed=1; }
done

# Every file says its licence, sources in a line of their own, and .reuse/dep5 for the rest.
if git grep -L SPDX-License-Identifier -- '*.cpp' '*.h' '*.sh' '*.py' | grep .; then
    echo "lint: sources without a licence"
    failed=1
fi
if command -v reuse >/dev/null; then
    reuse lint >/dev/null || { reuse lint | head -n 20; echo "lint: files without a licence"; failed=1; }
fi

# What a change may have made worse: the files that it touches, and those that include a header which it touches.
changed() {
    local base files
    [ -z "$all" ] && base=$(git merge-base HEAD '@{upstream}' 2>/dev/null) || { cat; return; }
    files=$(git diff --name-only "$base" -- '*.cpp' '*.h' && git ls-files --others --exclude-standard -- '*.cpp' '*.h')
    grep -Fx -e "$files" -e "$(grep -lFf <(grep '\.h$' <<<"$files" | sed 's|^[a-z]*/||') -r src tests --include=*.cpp)"
}

# Only what the native build compiles.
grep -o '"file": "[^"]*"' "$build/compile_commands.json" | cut -d'"' -f4 | sed "s|^$PWD/||" | grep -v '^/' | sort -u |
    changed | xargs -r scripts/tidy.py "$build" || failed=1
exit "$failed"
