#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds the project and tests it: natively at each level of the kernels, under sanitizers in both word sizes, and the same
# sources as Windows programs of both word sizes under Wine; makes packages of that and looks into them. Installs what it
# needs (scripts/setup.sh, scripts/wine.sh). CONTRIBUTING.md lists the tests that are apart.
#
#   test.sh            all of that
#   test.sh --native   only the native tests, with the compiler and libraries that are there
#
# One kind of tests alone: ctest --preset native, oracle, sanitizers, sanitizers-32, windows, com, windows-64, com-64.
# Logs go to build/test-logs. The last line is "N passed, N failed" (and ", N skipped"); a build that fails, a check that
# finds something and a program that ends without its results count as one failure each.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
case ${1:-} in
'' | --native) ;;
*)
    sed -n '3,8p' "$0"
    exit 2
    ;;
esac

logs=build/test-logs
rm -rf "$logs" build/*/results && mkdir -p "$logs" || exit 1
. scripts/compiler_cache.sh

# Runs a command whose success is expected; on failure shows the end of its log.
step() {
    local name=$1 log start=$SECONDS
    log=$logs/${name//[^A-Za-z0-9]/-}.log
    shift
    printf '%-40s' "$name"
    if "$@" >"$log" 2>&1 </dev/null; then
        echo "ok  $((SECONDS - start)) s"
    else
        echo "FAILED  $((SECONDS - start)) s"
        tail -n 40 "$log"
        echo "$name" >>"$logs/failed-steps"
        return 1
    fi
}

build() { step "$1: build" build_preset "$@"; }
build_preset() { cmake --preset "$@" && cmake --build --preset "$1"; }
# The results of each test are counted at the end, so a test that fails is no failed step.
tests() {
    ctest --preset "$1" --output-junit "$PWD/$logs/$1.xml" | grep -vE '^(Test project|Label|Sub|UpdateC|  *Start|$)'
    [ -s "$logs/$1.xml" ] || echo "$1: tests without results" >>"$logs/failed-steps"
}

# What would otherwise only be noticed at the next release.
packages() { rm -rf build/test-packages && scripts/package.sh --built --output build/test-packages && tests/package/contents_test.py build/test-packages --built; }

if [ "${1:-}" = --native ]; then
    build release && tests release
else
    step "set-up: packages" scripts/setup.sh
    build release && tests release
    step "checks: layout, clang-tidy, cppcheck" scripts/lint.sh build/release
    build asan && tests sanitizers
    build native32 && tests sanitizers-32
    step "set-up: Wine" scripts/wine.sh setup
    build win32 && tests win32
    step "checks: clang-tidy for Windows" scripts/lint.sh --windows build/win32
    build win64 && tests win64
    if git rev-parse HEAD >/dev/null 2>&1; then
        step "packages: made of these builds" packages
    else
        echo "packages: left out, git knows no commit of this folder"
    fi
fi
python3 scripts/count_tests.py "$logs"
